#pragma once

#include <string_view>

#include "platform/platform.h"

namespace varnel {

// Brings the system registry editor to `key` (a root name, "\" and the key
// path) and selects `valueName`, by sending the editor's tree and list the
// keys a user would type. Starts the editor when none is open; false when no
// editor window can be found.
bool OpenRegistryEditorAt(const Platform& platform, std::wstring_view key,
                          std::wstring_view valueName, bool use64);

}  // namespace varnel
