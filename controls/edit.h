#pragma once

#include "controls/window.h"

namespace varnel::controls {

class Edit : public Window {
 public:
  using Window::Window;
  void SelectAll() { SendMessageW(hwnd_, EM_SETSEL, 0, -1); }
};

}  // namespace varnel::controls
