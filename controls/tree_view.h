#pragma once

#include <windows.h>

#include <commctrl.h>

#include <string_view>

#include "controls/window.h"

namespace varnel::controls {

// A tree whose nodes carry a state image (the results window's check boxes:
// the index into the state image list, 0 for none).
class TreeView : public Window {
 public:
  using Window::Window;

  void SetImageList(HIMAGELIST list, int which) {
    SendMessageW(hwnd_, TVM_SETIMAGELIST, static_cast<WPARAM>(which),
                 reinterpret_cast<LPARAM>(list));
  }
  HTREEITEM Insert(HTREEITEM parent, std::wstring_view text, int image, int state,
                   LPARAM param) {
    std::wstring buffer(text);
    TVINSERTSTRUCTW insert{};
    insert.hParent = parent;
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_STATE | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    insert.item.pszText = buffer.data();
    insert.item.lParam = param;
    insert.item.iImage = insert.item.iSelectedImage = image < 0 ? I_IMAGENONE : image;
    insert.item.stateMask = TVIS_STATEIMAGEMASK;
    insert.item.state = INDEXTOSTATEIMAGEMASK(state);
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(hwnd_, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
  }
  void SetState(HTREEITEM node, int state) {
    TVITEMW item{};
    item.mask = TVIF_STATE | TVIF_HANDLE;
    item.hItem = node;
    item.stateMask = TVIS_STATEIMAGEMASK;
    item.state = INDEXTOSTATEIMAGEMASK(state);
    SendMessageW(hwnd_, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  }
  int State(HTREEITEM node) const {
    return static_cast<int>(SendMessageW(hwnd_, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(node),
                                         TVIS_STATEIMAGEMASK) >> 12);
  }
  LPARAM Param(HTREEITEM node) const {
    TVITEMW item{};
    item.mask = TVIF_PARAM | TVIF_HANDLE;
    item.hItem = node;
    return SendMessageW(hwnd_, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)) ? item.lParam
                                                                                  : -1;
  }
  // The node under a point of the tree's client area, and whether the point
  // lies on its state image.
  HTREEITEM HitTest(POINT at, bool& onStateImage) const {
    TVHITTESTINFO hit{};
    hit.pt = at;
    auto node = reinterpret_cast<HTREEITEM>(
        SendMessageW(hwnd_, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
    onStateImage = node && (hit.flags & TVHT_ONITEMSTATEICON) != 0;
    return node;
  }
  HTREEITEM Root() const { return Next(nullptr, TVGN_ROOT); }
  HTREEITEM Selected() const { return Next(nullptr, TVGN_CARET); }
  void Select(HTREEITEM node) {
    SendMessageW(hwnd_, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(node));
  }
  void Expand(HTREEITEM node) {
    SendMessageW(hwnd_, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(node));
  }
  void Clear() { SendMessageW(hwnd_, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT)); }

 private:
  HTREEITEM Next(HTREEITEM node, UINT how) const {
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(hwnd_, TVM_GETNEXTITEM, how, reinterpret_cast<LPARAM>(node)));
  }
};

}  // namespace varnel::controls
