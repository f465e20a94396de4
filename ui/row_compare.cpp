#include "ui/row_compare.h"

#include "base/date_time.h"
#include "base/text.h"

namespace varnel {

namespace {

int Sign(int value) { return (value > 0) - (value < 0); }

int CompareText(std::wstring_view a, std::wstring_view b) {
  return Sign(text::Upper(a).compare(text::Upper(b)));
}

}  // namespace

int SizeUnitRank(std::wstring_view sizeText) {
  const std::wstring upper = text::Upper(sizeText);
  if (upper.find(L'K') != std::wstring::npos) return 10;
  if (upper.find(L'M') != std::wstring::npos) return 100;
  if (upper.find(L'G') != std::wstring::npos) return 1000;
  return 1;
}

int CompareSizeTexts(std::wstring_view a, std::wstring_view b) {
  const int rankA = SizeUnitRank(a);
  const int rankB = SizeUnitRank(b);
  if (rankA != rankB) return rankA > rankB ? 1 : -1;
  if (a.size() != b.size()) return a.size() > b.size() ? 1 : -1;
  return CompareText(a, b);
}

int CompareDateTexts(ISystem& system, std::wstring_view a, std::wstring_view b) {
  const std::wstring left = text::Trim(a);
  const std::wstring right = text::Trim(b);
  if (left.empty()) return -1;
  if (right.empty()) return 1;
  const TDateTime dateA = ParseShortDate(system, left).value_or(0);
  const TDateTime dateB = ParseShortDate(system, right).value_or(0);
  if (dateA > dateB) return 1;
  if (dateA < dateB) return -1;
  return 0;
}

int CompareRows(ISystem& system, int column, const SoftRow& a, const SoftRow& b,
                bool directionFlag) {
  int result = 0;
  switch (column) {
    case 0:
      result = CompareText(a.caption, b.caption);
      break;
    case 1:
      result = CompareSizeTexts(a.sub[SubItem::SizeText], b.sub[SubItem::SizeText]);
      break;
    case 2:
      result = CompareDateTexts(system, a.sub[SubItem::InstallDate], b.sub[SubItem::InstallDate]);
      break;
    default:
      break;
  }
  return directionFlag ? -result : result;
}

}  // namespace varnel
