#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace varnel::controls {

// A non-owning handle to any window, one inline method per message or call.
class Window {
 public:
  Window() = default;
  explicit Window(HWND hwnd) : hwnd_(hwnd) {}

  HWND Handle() const { return hwnd_; }
  void Attach(HWND hwnd) { hwnd_ = hwnd; }
  explicit operator bool() const { return hwnd_ != nullptr; }

  int Id() const { return GetDlgCtrlID(hwnd_); }
  void Show(bool visible) { ShowWindow(hwnd_, visible ? SW_SHOW : SW_HIDE); }
  bool Visible() const { return IsWindowVisible(hwnd_) != FALSE; }
  void Enable(bool enabled) { EnableWindow(hwnd_, enabled ? TRUE : FALSE); }
  void Move(int x, int y, int width, int height) {
    SetWindowPos(hwnd_, nullptr, x, y, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
  }
  RECT Bounds() const {
    RECT r{};
    GetWindowRect(hwnd_, &r);
    return r;
  }
  RECT Client() const {
    RECT r{};
    GetClientRect(hwnd_, &r);
    return r;
  }
  void SetText(std::wstring_view text) { SetWindowTextW(hwnd_, std::wstring(text).c_str()); }
  std::wstring Text() const {
    const int length = GetWindowTextLengthW(hwnd_);
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(hwnd_, text.data(), length + 1)));
    return text;
  }
  void SetFont(HFONT font) {
    SendMessageW(hwnd_, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
  }
  void Focus() { SetFocus(hwnd_); }
  void Invalidate() { InvalidateRect(hwnd_, nullptr, TRUE); }
  void SetRedraw(bool on) { SendMessageW(hwnd_, WM_SETREDRAW, on ? TRUE : FALSE, 0); }

 protected:
  HWND hwnd_ = nullptr;
};

// A child control of `parent` with the given class, id and styles; visible.
HWND CreateChild(HWND parent, const wchar_t* className, std::wstring_view text, DWORD style,
                 int id, DWORD exStyle = 0);

}  // namespace varnel::controls
