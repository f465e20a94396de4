#include "uninstall/run_uninstaller.h"

namespace varnel {

TUninstallRunner::TUninstallRunner(const Platform& platform, std::atomic<bool>& stop,
                                   std::function<void(const std::wstring&)> showCaption,
                                   std::function<void()> processMessages)
    : platform_(platform),
      stop_(stop),
      showCaption_(std::move(showCaption)),
      processMessages_(std::move(processMessages)) {}

TUninstallRun TUninstallRunner::RunUninstaller(const TSoftList& list, int index,
                                               const std::wstring&, const std::wstring&) {
  TUninstallRun run;
  if (index < 0 || index >= static_cast<int>(list.size())) return run;
  run.index = index;
  return run;
}

bool TUninstallRunner::IsBrowserImage(std::wstring_view) { return false; }

}  // namespace varnel
