#include "ui/software_rows.h"

#include <cmath>

#include "base/text.h"
#include "inventory/software_info.h"

namespace varnel {

int CategoryFilter(int button) {
  static constexpr int kFilters[] = {ListFilter::Programs,   ListFilter::Toolbars,
                                     ListFilter::Recent,     ListFilter::Large,
                                     ListFilter::RarelyUsed, ListFilter::WindowsUpdates};
  if (button < 0 || button >= static_cast<int>(std::size(kFilters))) return -1;
  return kFilters[button];
}

int DaysBetween(TDateTime a, TDateTime b) {
  // Half a millisecond of slack so that exactly N days never counts as N - 1.
  const double days = std::fabs(a - b) + 0.5 / 86400000.0;
  if (!std::isfinite(days) || days > 3.0e6) return 3000000;
  return static_cast<int>(days);
}

bool PassesFilter(const TSoftInfo& info, int filter, TDateTime now) {
  if (info.Hidden) return false;
  const bool ordinary = !info.IsToolbar && !info.IsWindowsUpdate;
  switch (filter) {
    case ListFilter::All:
      return true;
    case ListFilter::Programs:
      return !info.IsWindowsUpdate;
    case ListFilter::Toolbars:
      return info.IsToolbar;
    case ListFilter::WindowsUpdates:
      return info.IsWindowsUpdate;
    case ListFilter::Recent:
      return ordinary && DaysBetween(now, info.InstallDate) <= TSoftwareInfo::kRecentDays;
    case ListFilter::Large:
      return ordinary && info.Size >= TSoftwareInfo::kLargeSize;
    case ListFilter::RarelyUsed:
      return ordinary && DaysBetween(now, info.LastAccessDate) > TSoftwareInfo::kRarelyUsedDays;
    default:
      return false;
  }
}

bool PassesSearch(const TSoftInfo& info, std::wstring_view search) {
  return search.empty() || text::Upper(info.Name).find(text::Upper(search)) != std::wstring::npos;
}

std::wstring BoolText(bool value) { return value ? L"-1" : L"0"; }

void RefreshRow(SoftRow& row, const TSoftInfo& info) {
  row.caption = info.Name;
  if (info.Is64BitView) row.caption += L"(x64)";
  row.image = info.ImageIndex;
  row.sub[SubItem::SizeText] = info.SizeText;
  row.sub[SubItem::InstallDate] = info.InstallDateText;
  row.sub[SubItem::Version] = info.Version;
  row.sub[SubItem::Publisher] = info.Publisher;
  row.sub[SubItem::HelpLink] = info.HelpLink;
  row.sub[SubItem::InstallLocation] = info.InstallLocation;
  row.sub[SubItem::RootKey] = info.RootKey;
  row.sub[SubItem::KeyPath] = info.KeyPath;
  row.sub[SubItem::Is64BitView] = BoolText(info.Is64BitView);
  row.group = info.IsToolbar         ? RowGroup::Toolbars
              : info.IsWindowsUpdate ? RowGroup::WindowsUpdates
                                     : RowGroup::Programs;
}

SoftRow MakeRow(const TSoftInfo& info, int index) {
  SoftRow row;
  row.index = index;
  row.sub[SubItem::RecordIndex] = std::to_wstring(index);
  RefreshRow(row, info);
  return row;
}

std::vector<SoftRow> SelectRows(const SoftList& list, int filter, std::wstring_view search,
                                 TDateTime now) {
  std::vector<SoftRow> rows;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const TSoftInfo* info = list[i].get();
    if (!info || !PassesFilter(*info, filter, now) || !PassesSearch(*info, search)) continue;
    rows.push_back(MakeRow(*info, static_cast<int>(i)));
  }
  return rows;
}

}  // namespace varnel
