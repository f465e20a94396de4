#include "inventory/software_info.h"

#include "core/wow64.h"
#include "inventory/software_cache.h"
#include "inventory/toolbar_folding.h"
#include "inventory/uninstall_keys.h"

namespace varnel {

void CollectInstalledSoftware(const TAppFrame& frame, TSoftList& list,
                              const ToolbarDiscovery& discoverToolbars) {
  ISystem& system = frame.Machine().system;
  bool wow64 = IsWow64(system);
  // The second view appends to the first, so its duplicate filter sees both.
  int programs = EnumerateUninstallKeys(frame, &list, false);
  if (wow64) programs = EnumerateUninstallKeys(frame, &list, true);
  if (!discoverToolbars) return;
  discoverToolbars(list, false);
  if (wow64) discoverToolbars(list, true);
  FoldToolbars(frame.Machine().files, list, static_cast<std::size_t>(programs));
}

TSoftwareInfo::TSoftwareInfo(const Platform& platform, TGuiDispatcher& dispatcher,
                             Options options)
    : options_(std::move(options)) {
  CollectInstalledSoftware(TAppFrame(platform), items_, options_.discoverToolbars);
  ApplySoftwareCache(platform, items_, options_.cacheFile);
  analysis_ = std::make_unique<TAnalysisThread>(platform, dispatcher, options_.cacheFile);
  analysis_->SetJobs(options_.view, &items_);
  analysis_->Start();
  analysis_->RunPass();
}

TSoftwareInfo::~TSoftwareInfo() {
  if (analysis_ && analysis_->Running()) analysis_->RequestStop();
  analysis_.reset();
  items_.clear();
}

}  // namespace varnel
