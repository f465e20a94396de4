#pragma once

#include <string>
#include <string_view>

#include "platform/platform.h"

namespace varnel {

// The one real spelling of a local path that a registry entry, a shortcut or
// a user gave, so that two spellings of a folder compare equal and a hostile
// spelling cannot slip past a prefix test:
// - "/" becomes "\", runs of "\" collapse;
// - "\\?\" and "\\.\" prefixes are dropped ("\\?\UNC\" becomes "\\");
// - %NAME% references are expanded when `expandEnvironment` (REG_EXPAND_SZ
//   values, shortcut targets), a "%" left over makes the path unresolvable;
// - "." and ".." are applied, never above the drive;
// - trailing dots and blanks of every part are dropped, as Windows does;
// - 8.3 short names of the parts that exist are replaced by their long names,
//   and the stored case of those parts is taken;
// - no trailing "\" except on a drive root ("C:\").
// Empty when the path is not absolute (relative, drive-relative "C:x"),
// names a device or is too malformed to compare.
std::wstring ResolvePath(const Platform& platform, std::wstring_view path,
                         bool expandEnvironment = false);

// Whether `path` is `folder` or lies below it; both resolved, compared
// without regard to case, on whole parts ("C:\App" does not hold "C:\App2").
bool PathIsOrIsBelow(std::wstring_view path, std::wstring_view folder);

}  // namespace varnel
