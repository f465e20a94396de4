#include "inventory/browser_extensions.h"

#include "inventory/chromium_extensions.h"
#include "inventory/firefox_addons.h"
#include "inventory/firefox_profiles.h"

namespace varnel {

BrowserExtensions ListChromiumExtensions(const Platform& platform) {
  BrowserExtensions found;
  for (const auto& browser : ChromiumBrowsers()) {
    for (const auto& profile : ChromiumProfiles(platform, browser)) {
      for (auto& extension : ReadChromiumProfile(platform, browser, profile))
        found.push_back(std::move(extension));
    }
  }
  return found;
}

BrowserExtensions ListBrowserExtensions(const Platform& platform) {
  BrowserExtensions found = ReadFirefoxAddons(platform, ReadFirefoxProfiles(platform));
  for (auto& extension : ListChromiumExtensions(platform)) found.push_back(std::move(extension));
  return found;
}

}  // namespace varnel
