#pragma once

#include <windows.h>

#include <commctrl.h>

#include <string>
#include <string_view>

#include "controls/exception_sink.h"

namespace varnel::controls {

// A top-level window whose procedure finds its object through
// GWLP_USERDATA, set at WM_NCCREATE. The common messages arrive unpacked in
// the On... hooks, everything else in HandleMessage; a form is its handlers.
// An exception a handler throws stops at this boundary and goes to the
// application's handler.
class BaseWindow {
 public:
  BaseWindow() = default;
  BaseWindow(const BaseWindow&) = delete;
  BaseWindow& operator=(const BaseWindow&) = delete;
  virtual ~BaseWindow() {
    if (hwnd_) {
      SetWindowLongPtrW(hwnd_, GWLP_USERDATA, 0);
      DestroyWindow(hwnd_);
    }
  }

  HWND Handle() const { return hwnd_; }

 protected:
  // WM_COMMAND: a control's notification, a menu item or an accelerator.
  virtual void OnCommand(int /*id*/, int /*code*/, HWND /*control*/) {}
  virtual LRESULT OnNotify(NMHDR& /*header*/) { return 0; }
  // WM_SIZE with the new client size.
  virtual void OnSize(UINT /*type*/, int /*width*/, int /*height*/) {}
  virtual void OnTimer(UINT_PTR /*id*/) {}
  // The window moved to a monitor of another scale; by default it takes the
  // suggested bounds, which sends WM_SIZE.
  virtual void OnDpiChanged(UINT /*dpi*/, const RECT& suggested) {
    SetWindowPos(hwnd_, nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
                 suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
  }
  // Every other message.
  virtual LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    return Default(message, wParam, lParam);
  }

  static bool RegisterClassOnce(std::wstring_view className, HICON icon) {
    WNDCLASSEXW wc{};
    wc.cbSize = sizeof wc;
    const std::wstring name(className);
    if (GetClassInfoExW(GetModuleHandleW(nullptr), name.c_str(), &wc)) return true;
    wc.cbSize = sizeof wc;
    wc.style = CS_HREDRAW | CS_VREDRAW | CS_DBLCLKS;
    wc.lpfnWndProc = &BaseWindow::Procedure;
    wc.hInstance = GetModuleHandleW(nullptr);
    wc.hIcon = icon;
    wc.hIconSm = icon;
    wc.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    wc.lpszClassName = name.c_str();
    return RegisterClassExW(&wc) != 0;
  }

  // An `owner` makes the window owned: it stays above the owner, has no
  // taskbar button of its own and goes with it.
  HWND CreateBase(std::wstring_view className, std::wstring_view title, DWORD style,
                  DWORD exStyle, int width, int height, HWND owner) {
    return CreateWindowExW(exStyle, std::wstring(className).c_str(), std::wstring(title).c_str(),
                           style, CW_USEDEFAULT, CW_USEDEFAULT, width, height, owner, nullptr,
                           GetModuleHandleW(nullptr), this);
  }

  // WM_ACTIVATE: the default handling gives the keys to the frame when the
  // window comes back, so the control that had them is remembered when it is
  // left and given them again (else, with `orFirstControl`, the first tab
  // stop). True when a control got the keys.
  bool KeepFocus(WPARAM wParam, bool orFirstControl) {
    if (LOWORD(wParam) == WA_INACTIVE) {
      if (HWND focus = GetFocus(); focus && IsChild(hwnd_, focus)) lastFocus_ = focus;
      return false;
    }
    HWND target = lastFocus_;
    if (!target || !IsChild(hwnd_, target) || !IsWindowVisible(target) ||
        !IsWindowEnabled(target))
      target = orFirstControl ? GetNextDlgTabItem(hwnd_, nullptr, FALSE) : nullptr;
    if (!target || IsIconic(hwnd_)) return false;
    SetFocus(target);
    return true;
  }

  LRESULT Default(UINT message, WPARAM wParam, LPARAM lParam) {
    return DefWindowProcW(hwnd_, message, wParam, lParam);
  }

  HWND hwnd_ = nullptr;
  // The control that gets the keys when the window is activated again.
  HWND lastFocus_ = nullptr;

 private:
  LRESULT Route(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
      case WM_COMMAND:
        OnCommand(LOWORD(wParam), HIWORD(wParam), reinterpret_cast<HWND>(lParam));
        return 0;
      case WM_NOTIFY:
        return OnNotify(*reinterpret_cast<NMHDR*>(lParam));
      case WM_SIZE:
        OnSize(static_cast<UINT>(wParam), LOWORD(lParam), HIWORD(lParam));
        return 0;
      case WM_TIMER:
        OnTimer(wParam);
        return 0;
      case WM_DPICHANGED:
        OnDpiChanged(HIWORD(wParam), *reinterpret_cast<const RECT*>(lParam));
        return 0;
      default:
        return HandleMessage(message, wParam, lParam);
    }
  }

  static LRESULT CALLBACK Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    BaseWindow* self = nullptr;
    if (message == WM_NCCREATE) {
      auto* create = reinterpret_cast<CREATESTRUCTW*>(lParam);
      self = static_cast<BaseWindow*>(create->lpCreateParams);
      self->hwnd_ = hwnd;
      SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    } else {
      self = reinterpret_cast<BaseWindow*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    }
    if (!self) return DefWindowProcW(hwnd, message, wParam, lParam);
    try {
      const LRESULT result = self->Route(message, wParam, lParam);
      if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(hwnd, GWLP_USERDATA, 0);
        self->hwnd_ = nullptr;
      }
      return result;
    } catch (...) {
      ReportException(std::current_exception());
      return DefWindowProcW(hwnd, message, wParam, lParam);
    }
  }
};

}  // namespace varnel::controls
