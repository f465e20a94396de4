#pragma once

#include "controls/window.h"

namespace varnel::controls {

// A static text, or with SS_ICON a picture.
class Label : public Window {
 public:
  using Window::Window;
  // Returns the icon shown before; the caller still owns both.
  HICON SetIcon(HICON icon) {
    return reinterpret_cast<HICON>(
        SendMessageW(hwnd_, STM_SETICON, reinterpret_cast<WPARAM>(icon), 0));
  }
};

}  // namespace varnel::controls
