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
// - no trailing "\" except on a drive root ("C:\");
// - blanks around the path are dropped (quotes are not: a quoted path is
//   not absolute).
// "\\server\share\x" stays a share path (never local). Empty when the path is
// not absolute (relative, drive-relative "C:x"), names a device ("\\.\X",
// "NUL", "COM1"), holds a character no name may hold (wildcards, ":" of a
// stream) or is too malformed to compare. Links are not followed: the result
// spells the path through them; see PathCrossesLink.
std::wstring ResolvePath(const Platform& platform, std::wstring_view path,
                         bool expandEnvironment = false);

// Whether `path` is `folder` or lies below it; both resolved, compared
// without regard to case, on whole parts ("C:\App" does not hold "C:\App2").
bool PathIsOrIsBelow(std::wstring_view path, std::wstring_view folder);

// Whether a folder on the way to `resolved` (and, when `includingLast`, the
// entry itself) is a junction or symbolic link, so that the real place is
// somewhere else than the spelling says.
bool PathCrossesLink(const Platform& platform, std::wstring_view resolved, bool includingLast);

}  // namespace varnel
