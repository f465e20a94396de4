#include "platform/win32/win32_window_steering.h"

#include <windows.h>

#include <vector>

#include "platform/win32/win32_strings.h"

namespace varnel::win32 {

namespace {

HWND ToHwnd(WindowId window) { return reinterpret_cast<HWND>(window); }
WindowId ToId(HWND window) { return reinterpret_cast<WindowId>(window); }

// Breadth-first, so a direct child wins as FindWindowExW would find it.
HWND FindDescendant(HWND parent, const wchar_t* className) {
  std::vector<HWND> level{parent};
  while (!level.empty()) {
    std::vector<HWND> next;
    for (HWND window : level) {
      if (HWND match = FindWindowExW(window, nullptr, className, nullptr)) return match;
      for (HWND child = FindWindowExW(window, nullptr, nullptr, nullptr); child;
           child = FindWindowExW(window, child, nullptr, nullptr)) {
        next.push_back(child);
      }
    }
    level = std::move(next);
  }
  return nullptr;
}

}  // namespace

WindowId Win32WindowSteering::FindTopWindow(std::wstring_view className) {
  auto name = ApiString(className);
  // FindWindowW with no class would take any window.
  if (!name || name->empty()) return 0;
  return ToId(FindWindowW(name->c_str(), nullptr));
}

// Other builds of the same program nest their controls one level deeper, so
// the search goes on below the direct children when none of them matches.
WindowId Win32WindowSteering::FindChild(WindowId parent, std::wstring_view className) {
  auto name = ApiString(className);
  if (!name || name->empty() || parent == 0 || !IsWindow(ToHwnd(parent))) return 0;
  return ToId(FindDescendant(ToHwnd(parent), name->c_str()));
}

void Win32WindowSteering::Show(WindowId window, int showCmd) {
  ShowWindow(ToHwnd(window), showCmd);
}

void Win32WindowSteering::BringToFront(WindowId window) { SetForegroundWindow(ToHwnd(window)); }

// SetFocus acts only on windows of this thread's input queue; a window of
// another thread needs the queues joined for the call.
void Win32WindowSteering::Focus(WindowId window) {
  HWND target = ToHwnd(window);
  if (!IsWindow(target)) return;
  DWORD own = GetCurrentThreadId();
  DWORD other = GetWindowThreadProcessId(target, nullptr);
  bool attached = other != 0 && other != own && AttachThreadInput(own, other, TRUE);
  SetFocus(target);
  if (attached) AttachThreadInput(own, other, FALSE);
}

void Win32WindowSteering::SendKeyDown(WindowId window, std::uint32_t virtualKey) {
  SendMessageW(ToHwnd(window), WM_KEYDOWN, virtualKey, 1);  // repeat count 1
}

void Win32WindowSteering::SendChar(WindowId window, wchar_t ch) {
  SendMessageW(ToHwnd(window), WM_CHAR, static_cast<WPARAM>(ch), 1);
}

}  // namespace varnel::win32
