#include "controls/search_box.h"

#include <commctrl.h>

#include "controls/exception_sink.h"

namespace varnel::controls {

namespace {
constexpr UINT_PTR kSubclass = 1;
}  // namespace

SearchBox::~SearchBox() {
  if (edit_) RemoveWindowSubclass(edit_.Handle(), &EditProc, kSubclass);
}

void SearchBox::Create(HWND parent, int editId, int clearId, Events events) {
  events_ = std::move(events);
  edit_.Attach(CreateChild(parent, L"EDIT", L"", ES_AUTOHSCROLL | WS_TABSTOP | WS_GROUP, editId,
                           WS_EX_CLIENTEDGE));
  SetWindowSubclass(edit_.Handle(), &EditProc, kSubclass, reinterpret_cast<DWORD_PTR>(this));
  clear_.Attach(CreateChild(parent, L"STATIC", L"\u00d7",
                            SS_CENTER | SS_CENTERIMAGE | SS_NOTIFY | SS_NOPREFIX, clearId));
  clear_.Show(false);
}

void SearchBox::SetFont(HFONT font) {
  edit_.SetFont(font);
  clear_.SetFont(font);
}

void SearchBox::Move(int x, int y, int width, int height) {
  const int gap = height / 6;
  const int editWidth = width - height - gap;
  edit_.Move(x, y, editWidth > 0 ? editWidth : 0, height);
  clear_.Move(x + width - height, y, height, height);
}

void SearchBox::SetLook(const std::wstring* text, bool clearButton, std::uint32_t fontColour,
                        std::uint32_t boxColour) {
  if (text) edit_.SetText(*text);
  clear_.Show(clearButton);
  fontColour_ = fontColour;
  if (!brush_ || boxColour != boxColour_) {
    boxColour_ = boxColour;
    brush_.reset(CreateSolidBrush(boxColour_));
  }
  edit_.Invalidate();
}

bool SearchBox::OnCommand(int id, int code) {
  if (id == edit_.Id()) {
    if (code == EN_SETFOCUS && events_.enter) events_.enter();
    if (code == EN_KILLFOCUS && events_.exit) events_.exit();
    return true;
  }
  if (id != clear_.Id()) return false;
  if (code == STN_CLICKED) {
    edit_.SetText(L"");
    clear_.Show(false);
    edit_.Focus();
    if (events_.cleared) events_.cleared();
  }
  return true;
}

HBRUSH SearchBox::Colour(HWND control, HDC dc) const {
  if (control != edit_.Handle()) return nullptr;
  SetTextColor(dc, fontColour_);
  SetBkColor(dc, boxColour_);
  return brush_ ? brush_.get() : GetSysColorBrush(COLOR_WINDOW);
}

LRESULT CALLBACK SearchBox::EditProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam,
                                     UINT_PTR, DWORD_PTR data) {
  if (message == WM_KEYUP) {
    auto* box = reinterpret_cast<SearchBox*>(data);
    try {
      if (box->events_.keyUp) box->events_.keyUp(static_cast<unsigned>(wParam));
    } catch (...) {
      ReportException(std::current_exception());
    }
  }
  return DefSubclassProc(hwnd, message, wParam, lParam);
}

}  // namespace varnel::controls
