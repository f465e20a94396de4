#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "inventory/soft_list.h"
#include "platform/platform.h"
#include "uninstall/deletion_guard.h"

namespace varnel {

// What one run of a program's uninstaller did.
struct UninstallRun {
  int index = -1;
  std::wstring name;     // the record's display name; empty when nothing was run
  std::wstring command;  // the command started, after path-macro expansion
  bool started = false;
  bool addonRemoved = false;  // a browser add-on's files were deleted instead
  // The browser in which the add-on must be removed: it installed the
  // add-on itself, so its files were left alone. `name` is set.
  std::wstring removeInBrowser;
  std::wstring addonBackup;                 // the backup of the add-on's deleted files
  std::vector<DeletionOutcome> addonKept;   // what the guard would not delete, and why
  bool waitAbandoned = false; // the job could not be asked, or a stop ended the wait
  std::optional<std::uint32_t> exitCode;
};

// Runs a record's uninstaller in a job object and polls the job until only
// browsers (or nothing) are left in it, or the stop flag is set, or the job
// cannot be asked more than ten times. Never kills what it started.
class UninstallRunner {
 public:
  // `showCaption` receives the waiting caption at every pass; `processMessages`
  // runs at every pass (both may be empty).
  UninstallRunner(const Platform& platform, std::atomic<bool>& stop,
                   std::function<void(const std::wstring&)> showCaption,
                   std::function<void()> processMessages);

  // `caption` is the caption's text when the run begins. `command`, when not
  // empty, is run instead of the record's uninstall string (a quiet form).
  UninstallRun RunUninstaller(const SoftList& list, int index, const std::wstring& caption,
                               const std::wstring& command = {});

  // The programs a finished uninstaller may leave open on a farewell page.
  static bool IsBrowserImage(std::wstring_view imageName);

 private:
  Platform platform_;
  std::atomic<bool>& stop_;
  std::function<void(const std::wstring&)> showCaption_;
  std::function<void()> processMessages_;
};

}  // namespace varnel
