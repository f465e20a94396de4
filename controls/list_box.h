#pragma once

#include "controls/window.h"

namespace varnel::controls {

class ListBox : public Window {
 public:
  using Window::Window;
  void Clear() { SendMessageW(hwnd_, LB_RESETCONTENT, 0, 0); }
  int Add(std::wstring_view text) {
    return static_cast<int>(
        SendMessageW(hwnd_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(std::wstring(text).c_str())));
  }
  int Count() const { return static_cast<int>(SendMessageW(hwnd_, LB_GETCOUNT, 0, 0)); }
};

}  // namespace varnel::controls
