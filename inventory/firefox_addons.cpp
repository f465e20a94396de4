#include "inventory/firefox_addons.h"

#include <nlohmann/json.hpp>
#include <unordered_set>

#include "base/text.h"
#include "inventory/install_rdf.h"
#include "inventory/json_fields.h"

namespace varnel {
namespace {

// Locations of add-ons that ship with the browser or the system.
bool IsBuiltIn(std::wstring_view location) {
  return text::StartsWithText(location, L"app-builtin") ||
         text::StartsWithText(location, L"app-system");
}

std::wstring ExtensionsFolder(const std::wstring& profile) {
  return text::IncludeTrailingBackslash(profile) + L"extensions";
}

}  // namespace

BrowserExtensions ParseExtensionsJson(std::string_view json, const std::wstring& profile) {
  BrowserExtensions found;
  const auto parsed = nlohmann::json::parse(json, nullptr, false);
  if (!parsed.is_object()) return found;
  const auto addons = parsed.find("addons");
  if (addons == parsed.end() || !addons->is_array()) return found;
  for (const auto& addon : *addons) {
    if (!addon.is_object() || json::String(addon, "type") != L"extension") continue;
    if (IsBuiltIn(json::String(addon, "location"))) continue;
    BrowserExtension extension;
    extension.browser = L"Firefox";
    extension.profile = profile;
    extension.id = json::String(addon, "id");
    extension.version = json::String(addon, "version");
    extension.path = text::ReplaceAll(json::String(addon, "path"), L"/", L"\\");
    extension.package = ExtensionPackage::FirefoxPackage;
    if (const auto locale = addon.find("defaultLocale"); locale != addon.end())
      extension.name = text::Trim(json::String(*locale, "name"));
    if (extension.name.empty()) extension.name = extension.id;
    extension.enabled = json::Bool(addon, "active", true) && !json::Bool(addon, "userDisabled", false);
    if (extension.path.empty() || extension.name.empty()) continue;
    found.push_back(std::move(extension));
  }
  return found;
}

BrowserExtensions ReadLegacyAddons(IFileSystem& files, const std::wstring& profile) {
  BrowserExtensions found;
  const std::wstring folder = ExtensionsFolder(profile);
  std::vector<FindEntry> entries;
  if (!files.DirectoryExists(folder) || !files.FindEntries(folder + L"\\*.*", entries)) return found;
  for (const auto& entry : entries) {
    if (!(entry.attributes & FileAttr::Directory) || entry.name == L"." || entry.name == L"..")
      continue;
    const std::wstring manifest = folder + L"\\" + entry.name + L"\\install.rdf";
    if (!files.FileExists(manifest)) continue;
    BrowserExtension extension;
    extension.name = ReadAddonName(files, manifest);
    if (extension.name.empty()) continue;
    extension.browser = L"Firefox";
    extension.profile = profile;
    extension.id = entry.name;
    extension.path = manifest;
    extension.package = ExtensionPackage::FirefoxManifest;
    found.push_back(std::move(extension));
  }
  return found;
}

BrowserExtensions ReadFirefoxAddons(const Platform& platform,
                                    const std::vector<std::wstring>& profiles) {
  BrowserExtensions found;
  // A legacy folder that extensions.json lists too is the same add-on.
  std::unordered_set<std::wstring> packages;
  for (const auto& profile : profiles) {
    for (auto& legacy : ReadLegacyAddons(platform.files, profile)) {
      packages.insert(text::Lower(text::ExtractFilePath(legacy.path)));
      packages.insert(text::Lower(legacy.path));
      found.push_back(std::move(legacy));
    }
    std::vector<std::uint8_t> bytes;
    if (!platform.files.ReadWholeFile(text::IncludeTrailingBackslash(profile) + L"extensions.json",
                                      bytes))
      continue;
    const std::string_view json(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    for (auto& addon : ParseExtensionsJson(json, profile)) {
      const std::wstring key = text::Lower(text::IncludeTrailingBackslash(addon.path));
      if (packages.contains(key) || packages.contains(text::Lower(addon.path))) continue;
      if (!platform.files.GetAttributes(addon.path)) continue;  // uninstalled meanwhile
      packages.insert(key);
      packages.insert(text::Lower(addon.path));
      found.push_back(std::move(addon));
    }
  }
  return found;
}

}  // namespace varnel
