#pragma once

#include "platform/window_steering.h"

namespace varnel::win32 {

class Win32WindowSteering final : public IWindowSteering {
 public:
  WindowId FindTopWindow(std::wstring_view className) override;
  WindowId FindChild(WindowId parent, std::wstring_view className) override;
  void Show(WindowId window, int showCmd) override;
  void BringToFront(WindowId window) override;
  void Focus(WindowId window) override;
  void SendKeyDown(WindowId window, std::uint32_t virtualKey) override;
  void SendChar(WindowId window, wchar_t ch) override;
};

}  // namespace varnel::win32
