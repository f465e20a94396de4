#pragma once

#include <string>
#include <string_view>

#include "inventory/browser_extension.h"
#include "platform/platform.h"

namespace varnel {

// The add-ons an extensions.json lists that are extensions (no themes,
// dictionaries or language packs) and do not come with the browser itself.
// Nothing is checked on disk.
BrowserExtensions ParseExtensionsJson(std::string_view json, const std::wstring& profile);

// The subfolders of the profile's "extensions" folder that hold an
// install.rdf with a name.
BrowserExtensions ReadLegacyAddons(IFileSystem& files, const std::wstring& profile);

// Both kinds for each profile, each package once, only those still on disk.
BrowserExtensions ReadFirefoxAddons(const Platform& platform,
                                    const std::vector<std::wstring>& profiles);

}  // namespace varnel
