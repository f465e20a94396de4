#pragma once

#include <windows.h>

#include <exception>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "controls/handles.h"
#include "core/registry_snapshot.h"
#include "inventory/gui_dispatcher.h"
#include "leftovers/filter_manage.h"
#include "platform/platform.h"
#include "ui/forms/private_messages.h"

namespace varnel::forms {

// Appends a report of `error` to the error log; never throws.
void ReportToErrorLog(const Platform& platform, std::exception_ptr error) noexcept;

// What every window shares: the machine, the GUI-thread hand-over queue,
// the command line, the program icon, the message loop and the one
// exception handler, which writes "Error_Log.txt" and goes on.
class Application {
 public:
  Application(const Platform& platform, std::vector<std::wstring> args);
  ~Application();
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  const Platform& Machine() const { return platform_; }
  GuiDispatcher& Dispatcher() { return dispatcher_; }
  // The protection filter every scan of the session consults.
  const TFilterManage& Filter() const { return filter_; }
  const std::vector<std::wstring>& Args() const { return args_; }
  HICON Icon() const { return icon_; }
  // The Uninstall keys, read on a worker from the start while the windows
  // are made; the first call waits for them, later calls and a failed read
  // give null.
  std::unique_ptr<RegistrySnapshot> TakeUninstallKeys();
  std::wstring Title() const { return L"Varnel Uninstaller"; }

  void HandleException(std::exception_ptr error) noexcept;

  // Runs until WM_QUIT; keyboard shortcuts go to `main`.
  int Run(HWND main);
  // Runs the loop until `done` holds; used by modal windows.
  void RunUntil(HWND window, const bool& done);
  // Lets every message that waits now run.
  void ProcessMessages();

 private:
  bool Dispatch(MSG& message, HWND main);

  Platform platform_;
  std::vector<std::wstring> args_;
  GuiDispatcher dispatcher_;
  TFilterManage filter_;
  HICON icon_ = nullptr;  // a shared resource icon; not destroyed
  controls::UniqueAccel shortcuts_;
  HWND main_ = nullptr;
  std::future<std::unique_ptr<RegistrySnapshot>> uninstallKeys_;
};

}  // namespace varnel::forms
