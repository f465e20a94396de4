#include "ui/forms/main_form.h"

#include <algorithm>
#include <vector>

#include "controls/dpi.h"
#include "ui/forms/main_form_ids.h"

namespace varnel::forms {

void TUninstallForm_Main::ApplyDpi() {
  font_ = controls::MessageFont(dpi_);
  boldFont_ = controls::MessageFont(dpi_, true);
  linkFont_ = controls::MessageFont(dpi_, false, true);
  for (HWND child = GetWindow(hwnd_, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
    controls::Window(child).SetFont(font_.get());
  detailsName_.SetFont(boldFont_.get());
  UpdateDetails();
  Layout();
}

void TUninstallForm_Main::Layout() {
  if (!list_) return;
  RECT r;
  GetClientRect(hwnd_, &r);
  auto s = [this](int v) { return controls::Scale(v, dpi_); };
  const int m = s(10), left = s(180), button = s(32), gap = s(6);
  const int width = r.right, height = r.bottom;
  for (int i = 0; i < 6; ++i)
    controls::Window(categories_[i]).Move(m, m + i * (button + gap), left - m, button);
  int y = m + 6 * (button + gap) + s(18);
  for (controls::Button* b : {&uninstall_, &batch_, &forceUninstall_, &more_}) {
    b->Move(m, y, left - m, button);
    y += button + gap;
  }
  bottomInfo_.Move(m, height - m - s(20), left - m, s(20));

  const int x = left + m, rowH = s(22), detailsH = s(96);
  const int searchH = controls::SingleLineEditHeight(search_.Handle(), dpi_);
  search_.Move(x, m, width - x - m, searchH);
  const int listTop = m + searchH + s(8);
  const int listH = height - m - detailsH - s(8) - listTop;
  list_.Move(x, listTop, width - x - m, listH > 0 ? listH : 0);
  FitColumns();

  const int dy = height - m - detailsH;
  detailsIcon_.Move(x, dy + s(4), s(48), s(48));
  const int tx = x + s(60), title = s(90), valueW = width - tx - title - m;
  detailsName_.Move(tx, dy, width - tx - m, rowH);
  versionTitle_.Move(tx, dy + rowH, title, rowH);
  version_.Move(tx + title, dy + rowH, valueW, rowH);
  publisherTitle_.Move(tx, dy + 2 * rowH, title, rowH);
  publisher_.Move(tx + title, dy + 2 * rowH, valueW, rowH);
  helpTitle_.Move(tx, dy + 3 * rowH, title, rowH);
  help_.Move(tx + title, dy + 3 * rowH, valueW, rowH);
  detailsIdle_.Move(x, dy + s(30), width - x - m, rowH);
}

// The name column takes what the others leave of the list's client width,
// which loses the scroll bar's room only while there is one; never less
// than 300.
void TUninstallForm_Main::FitColumns() {
  const int rest = list_.Client().right - list_.ColumnWidth(1) - list_.ColumnWidth(2);
  const int least = controls::Scale(300, dpi_);
  list_.SetColumnWidth(0, rest > least ? rest : least);
}

void TUninstallForm_Main::OnSize(UINT, int, int) { Layout(); }

void TUninstallForm_Main::OnDpiChanged(UINT dpi, const RECT& suggested) {
  dpi_ = dpi;
  BaseWindow::OnDpiChanged(dpi, suggested);
  list_.SetColumnWidth(1, controls::Scale(80, dpi_));
  list_.SetColumnWidth(2, controls::Scale(130, dpi_));
  SizeImageLists();
  ApplyDpi();
}

// Every image again at the window's DPI (16 and 32 pixels at 100 %), drawn
// from the large list; image 0 stands for a program whose own icon is
// not known (yet). The small images' cells are as tall as a row should be,
// less what the list adds.
void TUninstallForm_Main::SizeImageLists() {
  std::vector<controls::UniqueHicon> icons;
  for (int i = 0, n = large_.Count(); i < n; ++i) icons.push_back(large_.Icon(i));
  if (icons.empty()) icons.emplace_back(CopyIcon(LoadIconW(nullptr, IDI_APPLICATION)));
  const int icon = controls::Scale(16, dpi_);
  small_.Resize(icon, std::max(icon, controls::Scale(kRowHeight, dpi_) - rowPadding_), icon);
  large_.Resize(controls::Scale(32, dpi_), controls::Scale(32, dpi_));
  for (const controls::UniqueHicon& each : icons) {
    small_.Add(each.get());
    large_.Add(each.get());
  }
  // The list measures its rows anew when it is given its lists.
  list_.SetImageList(small_.Handle(), LVSIL_SMALL);
  list_.SetImageList(large_.Handle(), LVSIL_NORMAL);
}

}  // namespace varnel::forms
