#include "controls/tree_view.h"

namespace varnel::controls {

void TreeView::EnableThreeStateChecks(int size) {
  states_.reset(ImageList_Create(size, size, ILC_COLOR32, 4, 0));
  HDC screen = GetDC(nullptr);
  HDC dc = CreateCompatibleDC(screen);
  // Image 0 is the "no box" slot the state index counts from.
  const UINT looks[] = {0, DFCS_BUTTONCHECK, DFCS_BUTTONCHECK | DFCS_CHECKED,
                        DFCS_BUTTON3STATE | DFCS_CHECKED};
  for (UINT look : looks) {
    HBITMAP bitmap = CreateCompatibleBitmap(screen, size, size);
    HGDIOBJ old = SelectObject(dc, bitmap);
    RECT r{0, 0, size, size};
    FillRect(dc, &r, GetSysColorBrush(COLOR_WINDOW));
    if (look != 0) {
      InflateRect(&r, -1, -1);
      DrawFrameControl(dc, &r, DFC_BUTTON, look | DFCS_FLAT);
    }
    SelectObject(dc, old);
    ImageList_Add(states_.get(), bitmap, nullptr);
    DeleteObject(bitmap);
  }
  DeleteDC(dc);
  ReleaseDC(nullptr, screen);
  SendMessageW(hwnd_, TVM_SETIMAGELIST, TVSIL_STATE, reinterpret_cast<LPARAM>(states_.get()));
}

void TreeView::CheckCascade(HTREEITEM node, CheckState state) {
  struct Walk {
    TreeView& tree;
    void Down(HTREEITEM n, CheckState s) {
      tree.SetCheck(n, s);
      for (HTREEITEM c = tree.Child(n); c; c = tree.Sibling(c)) Down(c, s);
    }
  } walk{*this};
  walk.Down(node, state);
  for (HTREEITEM up = Parent(node); up; up = Parent(up)) {
    bool any = false, all = true;
    for (HTREEITEM c = Child(up); c; c = Sibling(c)) {
      const CheckState s = Check(c);
      any = any || s != CheckState::Unchecked;
      all = all && s == CheckState::Checked;
    }
    SetCheck(up, all ? CheckState::Checked : any ? CheckState::Partial : CheckState::Unchecked);
  }
}

}  // namespace varnel::controls
