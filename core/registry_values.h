#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/registry.h"

namespace varnel {

// A REG_SZ or REG_EXPAND_SZ value as stored (not expanded); empty for a
// missing value or any other type.
std::wstring ReadKeyString(const IRegistryKey& key, std::wstring_view valueName);
// A REG_DWORD value as a 32-bit integer widened with sign; 0 for a missing
// value or any other type, REG_QWORD included.
std::int64_t ReadKeyInteger(const IRegistryKey& key, std::wstring_view valueName);

// The same by root name (ignoring case), key path and view; empty or 0 when
// the root is unknown or the key does not open.
std::wstring ReadRegistryString(IRegistry& registry, std::wstring_view rootName,
                                std::wstring_view key, std::wstring_view valueName, bool use64);
std::int64_t ReadRegistryInt64(IRegistry& registry, std::wstring_view rootName,
                               std::wstring_view key, std::wstring_view valueName, bool use64);

}  // namespace varnel
