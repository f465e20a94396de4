#pragma once

#include <cstdint>
#include <string_view>

#include "platform/registry.h"

namespace varnel {

// Callers pass IsWow64() as use64 to reach the 64-bit view.

// The value read as a signed 32-bit integer; 0 when the key or value is
// missing or is not a DWORD. rootName must be written exactly as a root
// name in capitals; any other text reads under HKEY_CURRENT_USER.
std::int64_t ReadRegistryInteger(IRegistry& registry, std::wstring_view rootName,
                                 std::wstring_view key, std::wstring_view valueName, bool use64);

// False only for an unknown root name; a key that was already gone, or that
// could not be deleted, still gives true.
bool DeleteRegistryKeyByName(IRegistry& registry, std::wstring_view rootName,
                             std::wstring_view key, bool use64);
// Always true.
bool DeleteRegistryKey(IRegistry& registry, RegRoot root, std::wstring_view key, bool use64);
// The deletion's result when the value exists; true when the key or the value
// is missing. An empty name is the key's default value.
bool DeleteRegistryValue(IRegistry& registry, RegRoot root, std::wstring_view key,
                         std::wstring_view valueName, bool use64);

}  // namespace varnel
