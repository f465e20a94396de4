#pragma once

#include <span>
#include <string>
#include <string_view>

#include "core/app_frame.h"

namespace varnel {

// One row of the macro table that TAppFrame::ExpandPathMacros walks. Both
// spellings are kept as data: the upper form is searched for, the lower form
// is what gets replaced (ignoring case).
struct PathMacro {
  std::wstring_view upper;
  std::wstring_view lower;
  std::wstring (*expand)(const TAppFrame& frame);
  std::wstring (*expandAllUsers)(const TAppFrame& frame);  // nullptr: none
};

// The rows in the order in which they are tried.
std::span<const PathMacro> PathMacroTable();

}  // namespace varnel
