#pragma once

#include "controls/window.h"

namespace varnel::controls {

// Push buttons, push-like radio and check buttons (the image buttons of the
// categories and the batch switch) and plain check boxes.
class Button : public Window {
 public:
  using Window::Window;
  bool Checked() const { return SendMessageW(hwnd_, BM_GETCHECK, 0, 0) == BST_CHECKED; }
  void SetChecked(bool on) { SendMessageW(hwnd_, BM_SETCHECK, on ? BST_CHECKED : BST_UNCHECKED, 0); }
  void Click() { SendMessageW(hwnd_, BM_CLICK, 0, 0); }
  void SetDefault(bool on) {
    LONG_PTR style = GetWindowLongPtrW(hwnd_, GWL_STYLE) & ~static_cast<LONG_PTR>(0xF);
    style |= on ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON;
    SendMessageW(hwnd_, BM_SETSTYLE, static_cast<WPARAM>(style), TRUE);
  }
  void SetIcon(HICON icon) {
    SendMessageW(hwnd_, BM_SETIMAGE, IMAGE_ICON, reinterpret_cast<LPARAM>(icon));
  }
};

}  // namespace varnel::controls
