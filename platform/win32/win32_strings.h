#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file_system.h"

// Conversions between the interfaces' types and what Win32 calls take.
namespace varnel::win32 {

// A zero-terminated copy, or nullopt when the text holds a zero character:
// the API would stop there and act on a different name.
std::optional<std::wstring> ApiString(std::wstring_view text);

// Path as the file APIs should see it: long absolute paths get the "\\?\"
// form (after normalising, since that form turns off "." / ".." / "/"
// handling); short and already-prefixed paths stay as they are. nullopt for
// a zero character or a long path that has no such form.
std::optional<std::wstring> ApiPath(std::wstring_view path);
// Undoes the prefix ApiPath added, so callers get back the form they gave.
std::wstring PlainPath(std::wstring path, std::wstring_view original);

inline FileTime ToFileTime(const FILETIME& ft) {
  return (static_cast<FileTime>(ft.dwHighDateTime) << 32) | ft.dwLowDateTime;
}
inline FILETIME ToFiletime(FileTime t) {
  return FILETIME{static_cast<DWORD>(t & 0xFFFFFFFFu), static_cast<DWORD>(t >> 32)};
}

}  // namespace varnel::win32
