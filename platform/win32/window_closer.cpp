#include "platform/win32/window_closer.h"

#include <windows.h>

namespace varnel::win32 {

bool CloseWindowAndWait(WindowId window, std::uint32_t timeoutMs) {
  HWND target = reinterpret_cast<HWND>(window);
  if (!IsWindow(target)) return true;
  if (!PostMessageW(target, WM_CLOSE, 0, 0)) return false;
  const ULONGLONG end = GetTickCount64() + timeoutMs;
  while (IsWindow(target)) {
    if (GetTickCount64() > end) return false;
    Sleep(20);
  }
  return true;
}

}  // namespace varnel::win32
