#include "cli/extensions_command.h"

#include <nlohmann/json.hpp>

#include "cli/json_output.h"
#include "base/text.h"
#include "inventory/browser_extensions.h"

namespace varnel::cli {
std::string FormatExtensionsText(const BrowserExtensions& extensions) {
  std::string out;
  for (const auto& e : extensions) {
    out += Utf8(e.browser) + "  " + Utf8(e.name) + "  " + Utf8(e.version.empty() ? L"-" : e.version) +
           (e.enabled ? "" : "  disabled") + "\n    " + Utf8(e.id) + "  " + Utf8(e.path) + "\n";
  }
  return out;
}

std::string FormatExtensionsJson(const BrowserExtensions& extensions) {
  nlohmann::ordered_json array = nlohmann::ordered_json::array();
  for (const auto& e : extensions) {
    array.push_back({
        {"browser", Utf8(e.browser)},
        {"profile", Utf8(e.profile)},
        {"id", Utf8(e.id)},
        {"name", Utf8(e.name)},
        {"version", Utf8(e.version)},
        {"enabled", e.enabled},
        {"path", Utf8(e.path)},
    });
  }
  return DumpJson(array);
}

int RunExtensions(const Platform& platform, const ExtensionsOptions& options, std::string& out,
                  std::string&) {
  const BrowserExtensions extensions = ListBrowserExtensions(platform);
  out += options.json ? FormatExtensionsJson(extensions) : FormatExtensionsText(extensions);
  return ExitCode::Ok;
}

}  // namespace varnel::cli
