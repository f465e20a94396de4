#pragma once

#include <windows.h>

#include <commctrl.h>

#include "controls/window.h"

namespace varnel::controls {

// A report list with groups, check boxes, image lists, sortable columns with
// sort arrows and a large-icon view.
class ListView : public Window {
 public:
  using Window::Window;

  void SetExtendedStyle(DWORD mask, DWORD style) {
    SendMessageW(hwnd_, LVM_SETEXTENDEDLISTVIEWSTYLE, mask, style);
  }
  DWORD ExtendedStyle() const {
    return static_cast<DWORD>(SendMessageW(hwnd_, LVM_GETEXTENDEDLISTVIEWSTYLE, 0, 0));
  }
  void SetImageList(HIMAGELIST list, int which) {
    SendMessageW(hwnd_, LVM_SETIMAGELIST, which, reinterpret_cast<LPARAM>(list));
  }
  void SetView(DWORD view) { SendMessageW(hwnd_, LVM_SETVIEW, view, 0); }
  DWORD View() const { return static_cast<DWORD>(SendMessageW(hwnd_, LVM_GETVIEW, 0, 0)); }

  int InsertColumn(int index, std::wstring_view text, int width, int format = LVCFMT_LEFT) {
    std::wstring buffer(text);
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT | LVCF_SUBITEM;
    column.fmt = format;
    column.cx = width;
    column.pszText = buffer.data();
    column.iSubItem = index;
    return static_cast<int>(
        SendMessageW(hwnd_, LVM_INSERTCOLUMNW, index, reinterpret_cast<LPARAM>(&column)));
  }
  void SetColumnText(int index, std::wstring_view text) {
    std::wstring buffer(text);
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT;
    column.pszText = buffer.data();
    SendMessageW(hwnd_, LVM_SETCOLUMNW, index, reinterpret_cast<LPARAM>(&column));
  }
  std::wstring ColumnText(int index) const {
    wchar_t buffer[512] = {};
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT;
    column.pszText = buffer;
    column.cchTextMax = 512;
    SendMessageW(hwnd_, LVM_GETCOLUMNW, index, reinterpret_cast<LPARAM>(&column));
    return buffer;
  }
  void SetColumnWidth(int index, int width) {
    SendMessageW(hwnd_, LVM_SETCOLUMNWIDTH, index, MAKELPARAM(width, 0));
  }
  int ColumnWidth(int index) const {
    return static_cast<int>(SendMessageW(hwnd_, LVM_GETCOLUMNWIDTH, index, 0));
  }
  HWND Header() const { return reinterpret_cast<HWND>(SendMessageW(hwnd_, LVM_GETHEADER, 0, 0)); }
  // HDF_SORTUP, HDF_SORTDOWN or 0.
  void SetSortArrow(int column, int arrow) {
    HDITEMW item{};
    item.mask = HDI_FORMAT;
    HWND header = Header();
    if (!SendMessageW(header, HDM_GETITEMW, column, reinterpret_cast<LPARAM>(&item))) return;
    item.fmt = (item.fmt & ~(HDF_SORTUP | HDF_SORTDOWN)) | arrow;
    SendMessageW(header, HDM_SETITEMW, column, reinterpret_cast<LPARAM>(&item));
  }

  void EnableGroups(bool on) { SendMessageW(hwnd_, LVM_ENABLEGROUPVIEW, on ? TRUE : FALSE, 0); }
  void InsertGroup(int id, std::wstring_view header) {
    std::wstring buffer(header);
    LVGROUP group{};
    group.cbSize = sizeof group;
    group.mask = LVGF_HEADER | LVGF_GROUPID | LVGF_STATE;
    group.pszHeader = buffer.data();
    group.iGroupId = id;
    group.stateMask = LVGS_NORMAL;
    group.state = LVGS_NORMAL;
    SendMessageW(hwnd_, LVM_INSERTGROUP, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&group));
  }
  void SetGroupHeader(int id, std::wstring_view header) {
    std::wstring buffer(header);
    LVGROUP group{};
    group.cbSize = sizeof group;
    group.mask = LVGF_HEADER;
    group.pszHeader = buffer.data();
    SendMessageW(hwnd_, LVM_SETGROUPINFO, id, reinterpret_cast<LPARAM>(&group));
  }

  int Count() const { return static_cast<int>(SendMessageW(hwnd_, LVM_GETITEMCOUNT, 0, 0)); }
  void DeleteAll() { SendMessageW(hwnd_, LVM_DELETEALLITEMS, 0, 0); }
  void DeleteItem(int item) { SendMessageW(hwnd_, LVM_DELETEITEM, item, 0); }
  void SetItemCountHint(int count) { SendMessageW(hwnd_, LVM_SETITEMCOUNT, count, 0); }
  // Text and image come back through LVN_GETDISPINFO.
  int InsertCallbackItem(int at, LPARAM param, int group) {
    LVITEMW item{};
    item.mask = LVIF_TEXT | LVIF_IMAGE | LVIF_PARAM | LVIF_GROUPID;
    item.iItem = at;
    item.pszText = LPSTR_TEXTCALLBACKW;
    item.iImage = I_IMAGECALLBACK;
    item.lParam = param;
    item.iGroupId = group;
    return static_cast<int>(SendMessageW(hwnd_, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
  }
  int InsertItem(int at, std::wstring_view text, int image, LPARAM param) {
    std::wstring buffer(text);
    LVITEMW item{};
    item.mask = LVIF_TEXT | LVIF_IMAGE | LVIF_PARAM;
    item.iItem = at;
    item.pszText = buffer.data();
    item.iImage = image;
    item.lParam = param;
    return static_cast<int>(SendMessageW(hwnd_, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
  }
  // A report row's height, measured on a row put in and taken out again
  // when the list is empty; 0 when it cannot be measured.
  int RowHeight() {
    const bool empty = Count() == 0;
    if (empty && InsertItem(0, L"", 0, 0) < 0) return 0;
    RECT r{LVIR_BOUNDS, 0, 0, 0};
    const bool measured = SendMessageW(hwnd_, LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&r)) != FALSE;
    if (empty) DeleteItem(0);
    return measured ? r.bottom - r.top : 0;
  }
  // The distance between the corners of neighbouring icons.
  void SetIconSpacing(int width, int height) {
    SendMessageW(hwnd_, LVM_SETICONSPACING, 0, MAKELPARAM(width, height));
  }
  LPARAM ItemParam(int index) const {
    LVITEMW item{};
    item.mask = LVIF_PARAM;
    item.iItem = index;
    SendMessageW(hwnd_, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    return item.lParam;
  }
  int FindParam(LPARAM param) const {
    LVFINDINFOW find{};
    find.flags = LVFI_PARAM;
    find.lParam = param;
    return static_cast<int>(
        SendMessageW(hwnd_, LVM_FINDITEMW, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&find)));
  }
  std::wstring ItemText(int index, int subItem) const {
    wchar_t buffer[1024] = {};
    LVITEMW item{};
    item.iSubItem = subItem;
    item.pszText = buffer;
    item.cchTextMax = 1024;
    SendMessageW(hwnd_, LVM_GETITEMTEXTW, index, reinterpret_cast<LPARAM>(&item));
    return buffer;
  }
  void Update(int index) { SendMessageW(hwnd_, LVM_UPDATE, index, 0); }
  int NextItem(int start, UINT flags) const {
    return static_cast<int>(SendMessageW(hwnd_, LVM_GETNEXTITEM, start, flags));
  }
  int Selected() const { return NextItem(-1, LVNI_SELECTED); }
  void SetItemState(int index, UINT state, UINT mask) {
    LVITEMW item{};
    item.stateMask = mask;
    item.state = state;
    SendMessageW(hwnd_, LVM_SETITEMSTATE, index, reinterpret_cast<LPARAM>(&item));
  }
  void Select(int index) {
    SetItemState(index, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    SendMessageW(hwnd_, LVM_ENSUREVISIBLE, index, FALSE);
  }
  // -1 sets every row.
  void SetChecked(int index, bool on) {
    SetItemState(index, INDEXTOSTATEIMAGEMASK(on ? 2 : 1), LVIS_STATEIMAGEMASK);
  }
  bool Checked(int index) const {
    const UINT state =
        static_cast<UINT>(SendMessageW(hwnd_, LVM_GETITEMSTATE, index, LVIS_STATEIMAGEMASK));
    return (state >> 12) == 2;
  }
  void Sort(PFNLVCOMPARE compare, LPARAM context) {
    SendMessageW(hwnd_, LVM_SORTITEMS, context, reinterpret_cast<LPARAM>(compare));
  }
};

}  // namespace varnel::controls
