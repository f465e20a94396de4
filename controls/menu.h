#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "controls/handles.h"

namespace varnel::controls {

// A popup menu that owns its handle (and so its submenus).
class PopupMenu {
 public:
  PopupMenu() : menu_(CreatePopupMenu()) {}
  HMENU Handle() const { return menu_.get(); }

  void Add(UINT id, std::wstring_view text) {
    AppendMenuW(menu_.get(), MF_STRING, id, std::wstring(text).c_str());
  }
  void AddSeparator() { AppendMenuW(menu_.get(), MF_SEPARATOR, 0, nullptr); }
  // The menu takes ownership of `sub`.
  void AddSub(PopupMenu&& sub, std::wstring_view text) {
    AppendMenuW(menu_.get(), MF_POPUP, reinterpret_cast<UINT_PTR>(sub.menu_.release()),
                std::wstring(text).c_str());
  }
  void Enable(UINT id, bool on) {
    EnableMenuItem(menu_.get(), id, MF_BYCOMMAND | (on ? MF_ENABLED : MF_GRAYED));
  }
  void Check(UINT id, bool on) {
    CheckMenuItem(menu_.get(), id, MF_BYCOMMAND | (on ? MF_CHECKED : MF_UNCHECKED));
  }
  // By command id, or by position with `byPosition`.
  std::wstring Text(UINT item, bool byPosition = false) const;
  void SetText(UINT item, std::wstring_view text, bool byPosition = false);
  // Opens at screen point x, y; the choice arrives as WM_COMMAND to `owner`.
  void Track(HWND owner, int x, int y) const {
    TrackPopupMenu(menu_.get(), TPM_LEFTALIGN | TPM_TOPALIGN | TPM_RIGHTBUTTON, x, y, 0, owner,
                   nullptr);
  }

 private:
  UniqueMenu menu_;
};

}  // namespace varnel::controls
