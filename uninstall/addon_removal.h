#pragma once

#include <string>

#include "inventory/soft_info.h"
#include "platform/platform.h"

namespace varnel {

// What removing a browser add-on record did.
struct AddonRemoval {
  bool handled = false;   // the record is an add-on: its uninstaller is not run
  bool removed = false;   // its files (and registration) are gone or queued for restart
  std::wstring inBrowser; // the browser it must be removed in, when it was left alone
};

// A legacy add-on's install.rdf is deleted, or queued for deletion at the
// next restart; the browser drops the add-on at its next start. False for
// any other record.
bool RemoveFirefoxAddon(const Platform& platform, const TSoftInfo& record);

// Any add-on record: the legacy manifest as above; a Firefox package in the
// profile's extensions folder deleted; a Chromium-family extension put there
// from outside the browser loses its registration and folder. What the
// browser installed itself is left for the browser to remove.
AddonRemoval RemoveBrowserAddon(const Platform& platform, const TSoftInfo& record);

}  // namespace varnel
