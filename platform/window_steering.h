#pragma once

#include <cstdint>
#include <string_view>

namespace varnel {

using WindowId = std::uintptr_t;

namespace VirtualKey {
constexpr std::uint32_t Home = 0x24;
constexpr std::uint32_t Left = 0x25;
constexpr std::uint32_t Right = 0x27;
}  // namespace VirtualKey

// Finding another program's windows and sending them keys.
class IWindowSteering {
 public:
  virtual ~IWindowSteering() = default;
  // 0 when there is none.
  virtual WindowId FindTopWindow(std::wstring_view className) = 0;
  virtual WindowId FindChild(WindowId parent, std::wstring_view className) = 0;
  virtual void Show(WindowId window, int showCmd) = 0;
  virtual void BringToFront(WindowId window) = 0;
  virtual void Focus(WindowId window) = 0;
  virtual void SendKeyDown(WindowId window, std::uint32_t virtualKey) = 0;
  virtual void SendChar(WindowId window, wchar_t ch) = 0;
};

}  // namespace varnel
