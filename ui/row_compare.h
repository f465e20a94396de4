#pragma once

#include <string_view>

#include "platform/system.h"
#include "ui/software_rows.h"

namespace varnel {

// 10 for a size text holding "K", else 100 for "M", else 1000 for "G", else 1.
int SizeUnitRank(std::wstring_view sizeText);
// Rank first, then length, then text ignoring case.
int CompareSizeTexts(std::wstring_view a, std::wstring_view b);
// Empty first text is smaller; then an empty second is smaller; else the
// dates in the user's short format. A text that is no date counts as day 0.
int CompareDateTexts(ISystem& system, std::wstring_view a, std::wstring_view b);

// The list's comparison for sort column 0..2 (name, size, install date),
// negated when the column's direction flag is set.
int CompareRows(ISystem& system, int column, const SoftRow& a, const SoftRow& b,
                bool directionFlag);

}  // namespace varnel
