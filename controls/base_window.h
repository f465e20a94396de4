#pragma once

#include <windows.h>

#include <string_view>

#include "controls/exception_sink.h"

namespace varnel::controls {

// A top-level window whose procedure finds its object through
// GWLP_USERDATA, set at WM_NCCREATE; T handles messages in
// `LRESULT HandleMessage(UINT, WPARAM, LPARAM)`. An exception a handler
// throws stops at this boundary and goes to the application's handler.
template <typename T>
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

  HWND CreateBase(std::wstring_view className, std::wstring_view title, DWORD style,
                  DWORD exStyle, int width, int height, HWND owner) {
    return CreateWindowExW(exStyle, std::wstring(className).c_str(), std::wstring(title).c_str(),
                           style, CW_USEDEFAULT, CW_USEDEFAULT, width, height, owner, nullptr,
                           GetModuleHandleW(nullptr), this);
  }

  LRESULT Default(UINT message, WPARAM wParam, LPARAM lParam) {
    return DefWindowProcW(hwnd_, message, wParam, lParam);
  }

  HWND hwnd_ = nullptr;

 private:
  static LRESULT CALLBACK Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    T* self = nullptr;
    if (message == WM_NCCREATE) {
      auto* create = reinterpret_cast<CREATESTRUCTW*>(lParam);
      self = static_cast<T*>(static_cast<BaseWindow*>(create->lpCreateParams));
      self->hwnd_ = hwnd;
      SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    } else {
      self = reinterpret_cast<T*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    }
    if (!self) return DefWindowProcW(hwnd, message, wParam, lParam);
    try {
      const LRESULT result = self->HandleMessage(message, wParam, lParam);
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
