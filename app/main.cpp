// VarnelUninstaller.exe: one instance per session; a second start brings the
// first to the front and ends.
#include <windows.h>

#include <commctrl.h>
#include <objbase.h>
#include <shellapi.h>

#include <string>
#include <vector>

#include "platform/win32/win32_platform.h"
#include "ui/forms/application.h"
#include "ui/forms/force_uninstall_form.h"
#include "ui/forms/main_form.h"
#include "ui/forms/log_manager_form.h"
#include "ui/forms/powerscan_form.h"
#include "ui/forms/uninstalling_form.h"

namespace {

std::vector<std::wstring> Arguments() {
  int count = 0;
  LPWSTR* argv = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::wstring> args;
  for (int i = 1; argv && i < count; ++i) args.emplace_back(argv[i]);
  if (argv) LocalFree(argv);
  return args;
}

void ActivateRunningInstance() {
  HWND running = FindWindowW(L"TUninstallForm_Main", nullptr);
  if (!running) return;
  if (IsIconic(running)) PostMessageW(running, WM_SYSCOMMAND, SC_RESTORE, 0);
  SetForegroundWindow(running);
  SendMessageW(running, varnel::forms::WM_ACTIVATE_INSTANCE, varnel::forms::kActivateWParam,
               varnel::forms::kActivateLParam);
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
  // Never released or closed: it marks the instance for the process's life.
  HANDLE mutex = CreateMutexW(nullptr, TRUE, L"_Varnel_Uninstaller_");
  if (GetLastError() == ERROR_ALREADY_EXISTS) {
    ActivateRunningInstance();
    return 0;
  }
  (void)mutex;

  INITCOMMONCONTROLSEX common{sizeof common, ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES |
                                                 ICC_LINK_CLASS};
  InitCommonControlsEx(&common);
  const HRESULT com = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
  int code = 0;
  try {
    varnel::win32::Win32Platform machine;
    varnel::forms::Application app(machine.Get(), Arguments());
    // Created once, in this order, and kept until the end; the main window
    // owns the others.
    varnel::forms::TUninstallForm_Main main(app);
    varnel::forms::TUninstalling_Form uninstalling(app, main.Handle());
    varnel::forms::TForceUninstall_Form force(app, main.Handle(), uninstalling);
    varnel::forms::TPowerScan_Form scan(app, main.Handle());
    varnel::forms::TLogManager_Form logs(app, main.Handle());
    main.SetPeers(uninstalling, force, scan, logs);
    uninstalling.SetResultsWindow(&scan);
    main.Show();
    code = app.Run(main.Handle());
  } catch (...) {
    // The windows could not be made, or something escaped the loop.
    code = 1;
    varnel::win32::Win32Platform machine;
    varnel::forms::ReportToErrorLog(machine.Get(), std::current_exception());
  }
  if (SUCCEEDED(com)) CoUninitialize();
  return code;
}
