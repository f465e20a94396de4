#pragma once

#include "inventory/browser_extension.h"
#include "platform/platform.h"

namespace varnel {

// Every extension of every profile of Firefox and of the Chromium family
// that is still on disk, toolbar or not.
BrowserExtensions ListBrowserExtensions(const Platform& platform);

// The extensions of all Chromium-family browsers alone.
BrowserExtensions ListChromiumExtensions(const Platform& platform);

}  // namespace varnel
