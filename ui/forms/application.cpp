#include "ui/forms/application.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <typeinfo>

#include "controls/exception_sink.h"
#include "base/text.h"
#include "inventory/software_info.h"
#include "ui/error_log.h"

namespace varnel::forms {

namespace {

// The readable class name of what was thrown.
std::wstring TypeName(const std::type_info& type) {
  int status = 0;
  std::unique_ptr<char, void (*)(void*)> name(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
  return text::FromUtf8(status == 0 && name ? name.get() : type.name());
}

}  // namespace

Application::Application(const Platform& platform, std::vector<std::wstring> args)
    : platform_(platform), args_(std::move(args)) {
  uninstallKeys_ =
      std::async(std::launch::async, [platform] { return ReadUninstallKeys(platform); });
  icon_ = LoadIconW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(1));
  if (!icon_) icon_ = LoadIconW(nullptr, IDI_APPLICATION);
  ACCEL keys[] = {
      {FVIRTKEY, VK_F5, static_cast<WORD>(Shortcut::Refresh)},
      {FVIRTKEY | FCONTROL, 'F', static_cast<WORD>(Shortcut::Search)},
  };
  shortcuts_.reset(CreateAcceleratorTableW(keys, 2));
  controls::SetExceptionSink([this](std::exception_ptr error) { HandleException(error); });
}

Application::~Application() { controls::SetExceptionSink({}); }

std::unique_ptr<RegistrySnapshot> Application::TakeUninstallKeys() {
  if (!uninstallKeys_.valid()) return nullptr;
  try {
    return uninstallKeys_.get();
  } catch (...) {
    return nullptr;  // read again by the inventory
  }
}

void ReportToErrorLog(const Platform& platform, std::exception_ptr error) noexcept {
  std::wstring type = L"unknown";
  std::wstring message;
  try {
    try {
      std::rethrow_exception(error);
    } catch (const std::exception& e) {
      type = TypeName(typeid(e));
      message = text::FromUtf8(e.what());
    } catch (...) {
      if (const std::type_info* thrown = abi::__cxa_current_exception_type())
        type = TypeName(*thrown);
    }
  } catch (...) {
    // No memory left to name it: the report goes out as it stands.
  }
  AppendErrorReport(platform, type, message);
}

void Application::HandleException(std::exception_ptr error) noexcept {
  ReportToErrorLog(platform_, error);
}

bool Application::Dispatch(MSG& message, HWND main) {
  HWND top = message.hwnd ? GetAncestor(message.hwnd, GA_ROOT) : nullptr;
  if (main && top == main && shortcuts_ &&
      TranslateAcceleratorW(main, shortcuts_.get(), &message))
    return true;
  // Tab, Enter and the arrows between the controls of whichever window has them.
  if (top && IsDialogMessageW(top, &message)) return true;
  TranslateMessage(&message);
  DispatchMessageW(&message);
  return true;
}

int Application::Run(HWND main) {
  main_ = main;
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    try {
      Dispatch(message, main_);
    } catch (...) {
      HandleException(std::current_exception());
    }
  }
  main_ = nullptr;
  return 0;
}

void Application::RunUntil(HWND window, const bool& done) {
  MSG message;
  while (!done && IsWindow(window)) {
    const BOOL got = GetMessageW(&message, nullptr, 0, 0);
    if (got <= 0) {
      // Hand the quit on to the outer loop.
      if (got == 0) PostQuitMessage(static_cast<int>(message.wParam));
      return;
    }
    try {
      Dispatch(message, main_);
    } catch (...) {
      HandleException(std::current_exception());
    }
  }
}

void Application::ProcessMessages() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    if (message.message == WM_QUIT) {
      PostQuitMessage(static_cast<int>(message.wParam));
      return;
    }
    Dispatch(message, main_);
  }
}

}  // namespace varnel::forms
