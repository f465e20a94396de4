#include "inventory/software_info.h"

#include "core/registry_location.h"
#include "core/registry_routines.h"
#include "core/registry_snapshot.h"
#include "core/wow64.h"
#include "inventory/software_cache.h"
#include "inventory/toolbar_discovery.h"
#include "inventory/toolbar_folding.h"
#include "inventory/uninstall_keys.h"

namespace varnel {

std::unique_ptr<RegistrySnapshot> ReadUninstallKeys(const Platform& platform) {
  bool wow64 = IsWow64(platform.system);
  std::vector<RegistrySnapshot::Tree> trees;
  for (bool use64 : {false, true}) {
    if (use64 && !wow64) break;
    for (RegRoot root : {RegRoot::LocalMachine, RegRoot::CurrentUser}) {
      trees.push_back({root, std::wstring(kUninstallKeyPath), use64});
    }
  }
  auto keys = std::make_unique<RegistrySnapshot>(platform.registry);
  keys->Capture(trees);
  return keys;
}

void CollectInstalledSoftware(const TAppFrame& frame, SoftList& list,
                              const ToolbarDiscovery& discoverToolbars, RegistrySnapshot* keys) {
  ISystem& system = frame.Machine().system;
  bool wow64 = IsWow64(system);
  std::unique_ptr<RegistrySnapshot> readNow;
  if (!keys) {
    readNow = ReadUninstallKeys(frame.Machine());
    keys = readNow.get();
  }
  // The second view appends to the first, so its duplicate filter sees both.
  int programs = EnumerateUninstallKeys(frame, &list, false, keys);
  if (wow64) programs = EnumerateUninstallKeys(frame, &list, true, keys);
  if (!discoverToolbars) return;
  discoverToolbars(list, false);
  if (wow64) discoverToolbars(list, true);
  FoldToolbars(frame.Machine().files, list, static_cast<std::size_t>(programs));
}

TSoftwareInfo::TSoftwareInfo(const Platform& platform, GuiDispatcher& dispatcher,
                             Options options)
    : platform_(platform), options_(std::move(options)) {
  if (!options_.discoverToolbars) options_.discoverToolbars = DefaultToolbarDiscovery(platform_);
  CollectInstalledSoftware(TAppFrame(platform), items_, options_.discoverToolbars,
                           options_.uninstallKeys.get());
  options_.uninstallKeys.reset();
  ApplySoftwareCache(platform, items_, options_.cacheFile);
  analysis_ = std::make_unique<TAnalysisThread>(platform, dispatcher, options_.cacheFile,
                                                options_.onError);
  analysis_->SetJobs(options_.view, &items_);
  analysis_->Start();
  analysis_->RunPass();
}

void TSoftwareInfo::RefreshInventory() {
  analysis_->RequestStop();
  analysis_->WaitForPass();
  items_.clear();
  CollectInstalledSoftware(TAppFrame(platform_), items_, options_.discoverToolbars);
  ApplySoftwareCache(platform_, items_, options_.cacheFile);
  analysis_->RunPass();
}

bool TSoftwareInfo::RemoveSoftwareEntry(int index) {
  if (index < 0 || static_cast<std::size_t>(index) >= items_.size() || !items_[index]) return false;
  const TSoftInfo& info = *items_[index];
  if (!DeleteRegistryKeyByName(platform_.registry, info.RootKey, info.KeyPath, info.Is64BitView))
    return false;
  // The routine does not report a refused deletion; a key still there is one.
  return !platform_.registry.KeyExists(RootKeyFromName(info.RootKey), info.KeyPath,
                                       info.Is64BitView);
}

TSoftwareInfo::~TSoftwareInfo() {
  if (analysis_ && analysis_->Running()) analysis_->RequestStop();
  analysis_.reset();
  items_.clear();
}

}  // namespace varnel
