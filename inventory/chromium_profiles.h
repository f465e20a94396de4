#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace varnel {

// The profile folder names "Local State" lists under profile.info_cache, in
// file order.
std::vector<std::wstring> ParseLocalStateProfiles(std::string_view localState);

// One extension as a profile's preferences record it.
struct ChromiumSetting {
  std::wstring id;
  int location = 0;      // the browser's install-location number
  bool enabled = true;
  std::wstring path;     // relative to the profile's "Extensions" folder, or absolute
};

// extensions.settings of a "Preferences" or "Secure Preferences" file.
std::vector<ChromiumSetting> ParseChromiumSettings(std::string_view preferences);

// Installed from outside the browser: an external JSON file (2, 6) or
// registry key (3).
bool IsExternalLocation(int location);
// Part of the browser itself (5, 10).
bool IsComponentLocation(int location);

}  // namespace varnel
