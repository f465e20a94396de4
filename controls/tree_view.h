#pragma once

#include <windows.h>

#include <commctrl.h>

#include <string_view>

#include "controls/handles.h"
#include "controls/window.h"

namespace varnel::controls {

enum class CheckState { Unchecked = 1, Checked = 2, Partial = 3 };

// A tree whose nodes carry three-state check boxes (the results window's).
class TreeView : public Window {
 public:
  using Window::Window;

  // Gives the tree a state image list of unchecked, checked and partly
  // checked boxes drawn by the theme-less frame painter at `size` pixels.
  void EnableThreeStateChecks(int size);

  HTREEITEM Insert(HTREEITEM parent, std::wstring_view text, LPARAM param,
                   CheckState state = CheckState::Checked) {
    std::wstring buffer(text);
    TVINSERTSTRUCTW insert{};
    insert.hParent = parent;
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_STATE;
    insert.item.pszText = buffer.data();
    insert.item.lParam = param;
    insert.item.stateMask = TVIS_STATEIMAGEMASK;
    insert.item.state = INDEXTOSTATEIMAGEMASK(static_cast<int>(state));
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(hwnd_, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
  }
  void SetCheck(HTREEITEM node, CheckState state) {
    TVITEMW item{};
    item.mask = TVIF_STATE | TVIF_HANDLE;
    item.hItem = node;
    item.stateMask = TVIS_STATEIMAGEMASK;
    item.state = INDEXTOSTATEIMAGEMASK(static_cast<int>(state));
    SendMessageW(hwnd_, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  }
  CheckState Check(HTREEITEM node) const {
    const UINT state = static_cast<UINT>(SendMessageW(
        hwnd_, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(node), TVIS_STATEIMAGEMASK));
    const UINT index = state >> 12;
    return index >= 1 && index <= 3 ? static_cast<CheckState>(index) : CheckState::Unchecked;
  }
  HTREEITEM Child(HTREEITEM node) const { return Next(node, TVGN_CHILD); }
  HTREEITEM Sibling(HTREEITEM node) const { return Next(node, TVGN_NEXT); }
  HTREEITEM Parent(HTREEITEM node) const { return Next(node, TVGN_PARENT); }
  void Clear() { SendMessageW(hwnd_, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT)); }

  // Sets a node and its whole subtree, then brings each ancestor to checked,
  // unchecked or partial after its children.
  void CheckCascade(HTREEITEM node, CheckState state);

 private:
  HTREEITEM Next(HTREEITEM node, UINT how) const {
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(hwnd_, TVM_GETNEXTITEM, how, reinterpret_cast<LPARAM>(node)));
  }
  UniqueImageList states_;
};

}  // namespace varnel::controls
