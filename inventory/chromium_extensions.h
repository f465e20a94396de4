#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "inventory/browser_extension.h"
#include "platform/platform.h"

namespace varnel {

// Where one browser of the Chromium family keeps its profiles and looks for
// extensions installed from outside it.
struct ChromiumBrowser {
  std::wstring_view name;
  int dataFolder;                // special folder the data path is below
  std::wstring_view dataPath;    // "User Data", or the one profile itself
  bool singleProfile;
  std::wstring_view registryKey; // below "\SOFTWARE": external registrations
  std::wstring_view appPath;     // below Program Files or local app data
};

std::span<const ChromiumBrowser> ChromiumBrowsers();
const ChromiumBrowser* FindChromiumBrowser(std::wstring_view name);

// The form the browser gives extension ids: 32 letters a to p. Anything
// else is never used to build a path or a key.
bool IsChromiumExtensionId(std::wstring_view id);

struct RegistryPlace {
  RegRoot root;
  std::wstring path;
  bool use64;
};

// What makes the browser install an extension from outside: registry keys
// named by its id, and JSON files "<id>.json" beside the browser.
struct ExternalRegistration {
  std::vector<RegistryPlace> keys;
  std::vector<std::wstring> files;
  bool Empty() const { return keys.empty() && files.empty(); }
};
ExternalRegistration FindExternalRegistration(const Platform& platform,
                                              const ChromiumBrowser& browser, std::wstring_view id);

// The profile folders that exist: those "Local State" lists, then any
// "Default" or "Profile <n>" folder it does not.
std::vector<std::wstring> ChromiumProfiles(const Platform& platform, const ChromiumBrowser& browser);

// The extensions of one profile that are on disk, without themes and the
// browser's own components.
BrowserExtensions ReadChromiumProfile(const Platform& platform, const ChromiumBrowser& browser,
                                      const std::wstring& profile);

}  // namespace varnel
