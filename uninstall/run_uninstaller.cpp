#include "uninstall/run_uninstaller.h"

#include <array>

#include "core/app_frame.h"
#include "base/text.h"
#include "leftovers/other_programs.h"
#include "platform/shell.h"
#include "uninstall/addon_removal.h"

namespace varnel {

namespace {

// Room for 101 ids, as the old 412-byte query buffer had.
constexpr std::size_t kJobIdCapacity = 101;
constexpr int kMaxFailedQueries = 10;
constexpr unsigned kPollMs = 50;

}  // namespace

UninstallRunner::UninstallRunner(const Platform& platform, std::atomic<bool>& stop,
                                   std::function<void(const std::wstring&)> showCaption,
                                   std::function<void()> processMessages)
    : platform_(platform),
      stop_(stop),
      showCaption_(std::move(showCaption)),
      processMessages_(std::move(processMessages)) {}

bool UninstallRunner::IsBrowserImage(std::wstring_view imageName) {
  static constexpr std::array<std::wstring_view, 5> kBrowsers = {
      L"iexplore.exe", L"firefox.exe", L"chrome.exe", L"opera.exe", L"safari.exe"};
  const std::wstring lower = text::Lower(imageName);
  for (std::wstring_view browser : kBrowsers) {
    if (lower == browser) return true;
  }
  return false;
}

UninstallRun UninstallRunner::RunUninstaller(const SoftList& list, int index,
                                               const std::wstring& caption,
                                               const std::wstring& command) {
  UninstallRun run;
  if (index < 0 || index >= static_cast<int>(list.size()) || !list[index]) return run;
  const TSoftInfo& record = *list[index];
  run.index = index;

  // An add-on's files stand in for its uninstaller; one folded into a
  // program is removed by its manifest alone, since the browser drops it at
  // its next start and the program's own uninstaller must not run for it.
  // The other programs' folders are off limits to whatever the browser's
  // files say.
  if (IsBrowserAddon(record)) {
    const AddonRemoval removal =
        RemoveBrowserAddon(platform_, record, OtherProgramFolders(platform_, list, {index}));
    run.addonRemoved = removal.removed;
    run.removeInBrowser = removal.inBrowser;
    run.addonBackup = removal.backupId;
    run.addonKept = removal.kept;
    if (!removal.inBrowser.empty()) {
      run.name = record.Name;
      if (showCaption_) showCaption_(caption + L" " + run.name);
    }
    return run;
  }

  stop_ = false;
  run.name = record.Name;
  std::wstring commandLine = command.empty() ? record.UninstallString : command;
  std::wstring allUsers;
  TAppFrame(platform_).ExpandPathMacros(commandLine, allUsers);
  run.command = commandLine;

  std::unique_ptr<IJob> job = platform_.processes.StartInJob(commandLine, ShowCmd::Normal);
  if (!job) return run;
  run.started = true;

  int failures = 0;
  int counter = 0;
  while (!stop_) {
    const auto ids = job->ProcessIds(kJobIdCapacity);
    if (!ids) {
      if (++failures > kMaxFailedQueries) {
        run.waitAbandoned = true;
        break;
      }
    } else {
      bool onlyBrowsers = true;
      for (std::uint32_t id : *ids) {
        if (!IsBrowserImage(platform_.processes.ImageName(id))) {
          onlyBrowsers = false;
          break;
        }
      }
      if (onlyBrowsers) break;
    }
    if (showCaption_) {
      showCaption_(caption + L" " + run.name + std::wstring(counter / 10 + 1, L'.'));
    }
    counter = (counter + 1) % 50;
    platform_.system.SleepMs(kPollMs);
    if (processMessages_) processMessages_();
  }
  if (stop_) run.waitAbandoned = true;
  run.exitCode = job->ExitCode();
  return run;
}

}  // namespace varnel
