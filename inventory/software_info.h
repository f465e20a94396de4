#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "core/app_frame.h"
#include "core/registry_snapshot.h"
#include "inventory/analysis_thread.h"
#include "inventory/soft_list.h"

namespace varnel {

// Appends browser toolbars for one registry view; the inventory folds them
// into the programs they belong to.
using ToolbarDiscovery = std::function<void(SoftList& list, bool use64BitView)>;

// The Uninstall keys of both roots in every view the inventory walks, read
// ahead into memory.
std::unique_ptr<RegistrySnapshot> ReadUninstallKeys(const Platform& platform);

// Uninstall entries of the default view and, where one exists, the 64-bit
// view; then toolbars, folded into their programs. `keys` is a copy from
// ReadUninstallKeys; without one the keys are read now.
void CollectInstalledSoftware(const TAppFrame& frame, SoftList& list,
                              const ToolbarDiscovery& discoverToolbars = {},
                              RegistrySnapshot* keys = nullptr);

// The installed software: built once, completed in the background by the
// analysis thread, which lives and dies with it.
class TSoftwareInfo {
 public:
  struct Options {
    IInventoryView* view = nullptr;  // no icons and no row updates without one
    std::wstring displayText1;
    std::wstring displayText2;
    std::wstring cacheFile;
    TAnalysisThread::ErrorHandler onError;  // failures of the analysis
    ToolbarDiscovery discoverToolbars;  // the browsers' own when empty
    // Read ahead while the windows were made; used by the first build only.
    std::unique_ptr<RegistrySnapshot> uninstallKeys;
  };

  TSoftwareInfo(const Platform& platform, GuiDispatcher& dispatcher, Options options);
  // Stops the analysis and waits for it, serving its hand-overs meanwhile.
  ~TSoftwareInfo();
  TSoftwareInfo(const TSoftwareInfo&) = delete;
  TSoftwareInfo& operator=(const TSoftwareInfo&) = delete;

  SoftList& Items() { return items_; }
  const SoftList& Items() const { return items_; }
  TAnalysisThread& Analysis() { return *analysis_; }
  const std::wstring& CacheFile() const { return options_.cacheFile; }
  const std::wstring& DisplayText1() const { return options_.displayText1; }
  const std::wstring& DisplayText2() const { return options_.displayText2; }

  // Rebuilds the records in place: a pass in progress is stopped first, and
  // a new one starts over the new list.
  void RefreshInventory();
  // Deletes the Uninstall key of the record at `index`; false for an index
  // outside the list or a key the registry routine refuses.
  bool RemoveSoftwareEntry(int index);

  // Held for the main window's category views.
  static constexpr std::int64_t kLargeSize = 52428800;  // 50 MiB
  static constexpr int kRecentDays = 10;
  static constexpr int kRarelyUsedDays = 30;

 private:
  Platform platform_;
  Options options_;
  SoftList items_;
  std::unique_ptr<TAnalysisThread> analysis_;
};

}  // namespace varnel
