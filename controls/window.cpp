#include "controls/window.h"

namespace varnel::controls {

HWND CreateChild(HWND parent, const wchar_t* className, std::wstring_view text, DWORD style,
                 int id, DWORD exStyle) {
  return CreateWindowExW(exStyle, className, std::wstring(text).c_str(),
                         WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, parent,
                         reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                         GetModuleHandleW(nullptr), nullptr);
}

}  // namespace varnel::controls
