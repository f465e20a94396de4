#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "base/date_time.h"
#include "inventory/soft_list.h"

namespace varnel {

// The main window's list filters; the category buttons reach 1..6.
namespace ListFilter {
constexpr int All = 0;
constexpr int Programs = 1;
constexpr int Toolbars = 2;
constexpr int WindowsUpdates = 3;
constexpr int Recent = 4;
constexpr int Large = 5;
constexpr int RarelyUsed = 6;
}  // namespace ListFilter

// Sub-item positions of a list row; the window reads them back by position.
namespace SubItem {
constexpr int SizeText = 0;
constexpr int InstallDate = 1;
constexpr int Version = 2;
constexpr int Publisher = 3;
constexpr int HelpLink = 4;
constexpr int InstallLocation = 5;
constexpr int RootKey = 6;
constexpr int KeyPath = 7;
constexpr int RecordIndex = 8;
constexpr int Is64BitView = 9;
constexpr int Count = 10;
}  // namespace SubItem

// List groups, one per kind of record; Windows draws them, the tests read them.
namespace RowGroup {
constexpr int Programs = 1;
constexpr int Toolbars = 2;
constexpr int WindowsUpdates = 3;
}  // namespace RowGroup

struct SoftRow {
  std::wstring caption;
  std::array<std::wstring, SubItem::Count> sub;
  int image = 0;
  int index = -1;  // the record's index in the inventory
  int group = RowGroup::Programs;
};

// Category button 0..5 to its filter; -1 for any other button.
int CategoryFilter(int button);

// Whole days between two dates, as the calendar counts them apart.
int DaysBetween(TDateTime a, TDateTime b);

bool PassesFilter(const TSoftInfo& info, int filter, TDateTime now);
// Empty search, or the search text inside the name, both upper-cased.
bool PassesSearch(const TSoftInfo& info, std::wstring_view search);

// "0" for false, "-1" for true.
std::wstring BoolText(bool value);
SoftRow MakeRow(const TSoftInfo& info, int index);
void RefreshRow(SoftRow& row, const TSoftInfo& info);

// The rows a list shows for `filter` and `search`, in record order.
std::vector<SoftRow> SelectRows(const SoftList& list, int filter, std::wstring_view search,
                                 TDateTime now);

}  // namespace varnel
