#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"

namespace varnel {

// "Mozilla\Firefox\" below the user's application-data folder, with its
// trailing "\"; empty without that folder.
std::wstring FirefoxBase(const Platform& platform);

// The profile folders that profiles.ini names, each once, in file order:
// every "Profile<n>" section's "Path" ("/" or "\" separated), taken below
// `base` when "IsRelative" is 1. `firstOnly` reads "Profile0" alone.
std::vector<std::wstring> ParseFirefoxProfiles(std::wstring_view iniText, std::wstring_view base,
                                               bool firstOnly = false);
std::vector<std::wstring> ReadFirefoxProfiles(const Platform& platform, bool firstOnly = false);

// An Uninstall subkey of either root, in either view, is named like the browser.
bool IsFirefoxInstalled(const Platform& platform);

}  // namespace varnel
