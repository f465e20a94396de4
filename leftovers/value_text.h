#pragma once

#include <string>

#include "platform/registry.h"

namespace varnel {

// A value's data as the leftover scan compares and shows it: strings as they
// are, integers in decimal, the items of a multi-string joined by blanks,
// binary data as zero-terminated 8-bit text.
std::wstring RegValueText(const RegValue& value);

// The named value of an open key as text; empty when it is missing.
std::wstring ReadValueText(const IRegistryKey& key, std::wstring_view name);

}  // namespace varnel
