#pragma once

#include <string>

#include "cli/cli_args.h"
#include "inventory/browser_extension.h"
#include "platform/platform.h"

namespace varnel::cli {

std::string FormatExtensionsText(const BrowserExtensions& extensions);
std::string FormatExtensionsJson(const BrowserExtensions& extensions);

// Lists every extension of every browser profile. Output is UTF-8.
int RunExtensions(const Platform& platform, const ExtensionsOptions& options, std::string& out,
                  std::string& err);

}  // namespace varnel::cli
