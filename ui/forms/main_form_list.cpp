#include "ui/forms/main_form.h"

#include <commctrl.h>

#include <utility>

#include "base/date_time.h"
#include "base/text.h"
#include "controls/dpi.h"
#include "ui/forms/main_form_ids.h"
#include "ui/row_compare.h"
#include "ui/row_details.h"

namespace varnel::forms {

namespace {

HICON IconOf(const IconHandle& handle) { return static_cast<HICON>(handle.get()); }

}  // namespace

int TUninstallForm_Main::ShowSoftwareList(int filter, const std::wstring& search) {
  if (!list_) return -1;
  std::vector<SoftRow> rows;
  if (inventory_)
    rows = SelectRows(inventory_->Items(), filter, search, NowLocal(app_.Machine().system));
  list_.SetRedraw(false);
  list_.DeleteAll();
  rows_.clear();
  list_.SetItemCountHint(static_cast<int>(rows.size()));
  int at = 0;
  for (SoftRow& row : rows) {
    const int index = row.index;
    const int group = row.group;
    rows_.emplace(index, std::move(row));
    list_.InsertCallbackItem(at++, index, group);
  }
  list_.SetRedraw(true);
  FitColumns();
  list_.Invalidate();
  UpdateDetails();
  return filter;
}

void TUninstallForm_Main::ShowCategory(int button) {
  // A box with the keys in it (F5 there) is emptied as on entering: no placeholder to type into.
  ApplySearchLook(search_.HasFocus() ? SearchBoxOnEnter(L"", messages_.searchSoftware)
                                                 : SearchBoxOnExit(L"", messages_.searchSoftware));
  if (!state_.ChooseCategory(button)) {
    if (button >= 0 && button < 6) controls::Button(categories_[button]).SetChecked(true);
    return;
  }
  ShowSoftwareList(state_.Filter(), L"");
  for (int i = 0; i < 6; ++i) controls::Button(categories_[i]).SetChecked(i == state_.Category());
  ShowCount();
  SortList();
}

void TUninstallForm_Main::ShowCount() {
  const int count = list_.Count();
  list_.SetColumnText(0, FormatCount(messages_.softwareFormat, count));
  bottomInfo_.SetText(count == 1 ? messages_.oneItem : FormatCount(messages_.items, count));
}

int CALLBACK TUninstallForm_Main::CompareRows(LPARAM a, LPARAM b, LPARAM self) {
  auto* form = reinterpret_cast<TUninstallForm_Main*>(self);
  try {
    const auto left = form->rows_.find(static_cast<int>(a));
    const auto right = form->rows_.find(static_cast<int>(b));
    if (left == form->rows_.end() || right == form->rows_.end()) return 0;
    const int column = form->state_.SortColumn();
    return varnel::CompareRows(form->app_.Machine().system, column, left->second, right->second,
                               form->state_.Direction(column));
  } catch (...) {
    // Nothing may cross the list's callback; a report per comparison would
    // flood the log.
    if (!form->sortFailure_) form->sortFailure_ = std::current_exception();
    return 0;
  }
}

void TUninstallForm_Main::SortList() {
  list_.Sort(&TUninstallForm_Main::CompareRows, reinterpret_cast<LPARAM>(this));
  if (sortFailure_) app_.HandleException(std::exchange(sortFailure_, nullptr));
  const int column = state_.SortColumn();
  for (int c = 0; c < MainId::VisibleColumns; ++c) {
    // Direction flag set = the comparison negated = descending.
    const int arrow = c != column ? 0 : state_.Direction(c) ? HDF_SORTDOWN : HDF_SORTUP;
    list_.SetSortArrow(c, arrow);
  }
}

const SoftRow* TUninstallForm_Main::RowAt(int item) const {
  if (item < 0) return nullptr;
  const auto it = rows_.find(static_cast<int>(list_.ItemParam(item)));
  return it == rows_.end() ? nullptr : &it->second;
}

const SoftRow* TUninstallForm_Main::SelectedRow() const { return RowAt(list_.Selected()); }

void TUninstallForm_Main::FillDispInfo(NMLVDISPINFOW& info) {
  const auto it = rows_.find(static_cast<int>(info.item.lParam));
  if (it == rows_.end()) return;
  const SoftRow& row = it->second;
  if (info.item.mask & LVIF_TEXT) {
    const int sub = info.item.iSubItem;
    const std::wstring* text = sub == 0                         ? &row.caption
                               : sub < MainId::VisibleColumns ? &row.sub[sub - 1]
                                                              : nullptr;
    if (text && info.item.pszText && info.item.cchTextMax > 0)
      lstrcpynW(info.item.pszText, text->c_str(), info.item.cchTextMax);
  }
  if (info.item.mask & LVIF_IMAGE) info.item.iImage = row.image;
}

// Grid lines in the list's own light grey under each row and at each
// column's right edge; the control's own grid has a fixed colour.
LRESULT TUninstallForm_Main::DrawGrid(NMLVCUSTOMDRAW& draw) {
  switch (draw.nmcd.dwDrawStage) {
    case CDDS_PREPAINT:
      return list_.View() == LV_VIEW_DETAILS ? CDRF_NOTIFYITEMDRAW : CDRF_DODEFAULT;
    case CDDS_ITEMPREPAINT:
      return CDRF_NOTIFYPOSTPAINT;
    case CDDS_ITEMPOSTPAINT: {
      RECT row{LVIR_BOUNDS, 0, 0, 0};
      if (!SendMessageW(list_.Handle(), LVM_GETITEMRECT, draw.nmcd.dwItemSpec,
                        reinterpret_cast<LPARAM>(&row)))
        return CDRF_DODEFAULT;
      HDC dc = draw.nmcd.hdc;
      const HGDIOBJ old = SelectObject(dc, gridPen_.get());
      MoveToEx(dc, row.left, row.bottom - 1, nullptr);
      LineTo(dc, row.right, row.bottom - 1);
      // Header and rows scroll together: the header's edges, in the list's
      // coordinates, are the columns' edges.
      HWND header = list_.Header();
      for (int c = 0, n = Header_GetItemCount(header); c < n; ++c) {
        RECT cell{};
        if (!Header_GetItemRect(header, c, &cell)) continue;
        MapWindowPoints(header, list_.Handle(), reinterpret_cast<POINT*>(&cell), 2);
        MoveToEx(dc, cell.right - 1, row.top, nullptr);
        LineTo(dc, cell.right - 1, row.bottom);
      }
      SelectObject(dc, old);
      return CDRF_DODEFAULT;
    }
    default:
      return CDRF_DODEFAULT;
  }
}

int TUninstallForm_Main::AddIcons(const IconHandle& small, const IconHandle& large) {
  small_.Add(IconOf(small));
  large_.Add(IconOf(large));
  return small_.Count() - 1;
}

void TUninstallForm_Main::UpdateRow(int index, const TSoftInfo& info) {
  const auto it = rows_.find(index);
  if (it == rows_.end()) return;
  RefreshRow(it->second, info);
  const int item = list_.FindParam(index);
  if (item < 0) return;
  list_.Update(item);
  if (item == list_.Selected()) UpdateDetails();
}

void TUninstallForm_Main::UpdateDetails() {
  const RowDetails d = DetailsOf(SelectedRow());
  detailsIdle_.Show(d.idlePicture);
  detailsName_.SetText(d.name);
  version_.SetText(d.version);
  publisher_.SetText(d.publisher);
  help_.SetText(d.helpInfo);
  help_.SetFont(d.helpIsLink ? linkFont_.get() : font_.get());
  detailsName_.Show(!d.idlePicture);
  detailsIcon_.Show(!d.idlePicture);
  versionTitle_.Show(d.showVersion);
  version_.Show(d.showVersion);
  publisherTitle_.Show(d.showPublisher);
  publisher_.Show(d.showPublisher);
  helpTitle_.Show(d.showHelpInfo);
  help_.Show(d.showHelpInfo);
  // The one program shown gets its 48-pixel icon from the large image: a
  // third list with every program's icon at that size cost more memory than
  // the rest of the window.
  controls::UniqueHicon icon;
  if (!d.idlePicture) {
    const controls::UniqueHicon large = large_.Icon(d.image);
    const int side = controls::Scale(48, dpi_);
    if (large) icon.reset(static_cast<HICON>(CopyImage(large.get(), IMAGE_ICON, side, side, 0)));
  }
  detailsIcon_.SetIcon(icon.get());
  detailsIconHandle_ = std::move(icon);
}

void TUninstallForm_Main::ApplySearchLook(const SearchBoxLook& look) {
  search_.SetLook(look.keepText ? nullptr : &look.text, look.clearButton, look.fontColour,
                  look.boxColour);
}

void TUninstallForm_Main::SearchKeyUp(unsigned key) {
  ApplySearchLook(SearchBoxOnKeyUp(search_.Text(), key));
  ShowSoftwareList(state_.Filter(), text::Trim(search_.Text()));
  ShowCount();
  SortList();
}

void TUninstallForm_Main::SearchCleared() {
  ShowSoftwareList(state_.Filter(), L"");
  ShowCount();
  SortList();
}

}  // namespace varnel::forms
