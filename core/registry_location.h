#pragma once

#include <string>
#include <string_view>

#include "platform/registry.h"

namespace varnel {

// "HKEY_CLASSES_ROOT" .. "HKEY_CURRENT_CONFIG", without regard to case;
// RegRoot::Invalid for anything else.
RegRoot RootKeyFromName(std::wstring_view name);
// The root's name; empty for a root without one (HKEY_PERFORMANCE_DATA).
std::wstring RootKeyName(RegRoot root);

// root name + "\" + key [+ " | " + value name or "Default" + " - " + data],
// the form in which registry leftovers are shown and logged.
std::wstring FormatRegistryLocation(RegRoot root, std::wstring_view key,
                                    std::wstring_view valueName, std::wstring_view data);

}  // namespace varnel
