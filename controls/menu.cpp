#include "controls/menu.h"

namespace varnel::controls {

std::wstring PopupMenu::Text(UINT item, bool byPosition) const {
  wchar_t buffer[256] = {};
  MENUITEMINFOW info{};
  info.cbSize = sizeof info;
  info.fMask = MIIM_STRING;
  info.dwTypeData = buffer;
  info.cch = 255;
  GetMenuItemInfoW(menu_.get(), item, byPosition ? TRUE : FALSE, &info);
  return buffer;
}

void PopupMenu::SetText(UINT item, std::wstring_view text, bool byPosition) {
  std::wstring buffer(text);
  MENUITEMINFOW info{};
  info.cbSize = sizeof info;
  info.fMask = MIIM_STRING;
  info.dwTypeData = buffer.data();
  SetMenuItemInfoW(menu_.get(), item, byPosition ? TRUE : FALSE, &info);
}

}  // namespace varnel::controls
