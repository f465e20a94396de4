#include "inventory/toolbar_discovery.h"

#include "core/registry_values.h"
#include "core/safe_folder.h"
#include "base/text.h"
#include "inventory/browser_extensions.h"
#include "inventory/firefox_addons.h"
#include "inventory/firefox_profiles.h"

namespace varnel {
namespace {

constexpr std::wstring_view kToolbarKey = L"\\SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar";

std::wstring DefaultValue(IRegistry& registry, const std::wstring& path, bool use64) {
  auto key = registry.OpenKey(RegRoot::ClassesRoot, path, RegAccess::Read, use64);
  return key ? ReadKeyString(*key, L"") : std::wstring();
}

// The class ids under the Toolbar key and each of its subkeys, key first.
std::vector<std::wstring> ToolbarClassIds(IRegistry& registry, RegRoot root, bool use64) {
  std::vector<std::wstring> ids;
  auto toolbar = registry.OpenKey(root, kToolbarKey, RegAccess::Read, use64);
  if (!toolbar) return ids;
  std::vector<std::wstring> places{L""};
  for (auto& name : toolbar->SubKeyNames()) places.push_back(std::move(name));
  for (const auto& place : places) {
    auto key = place.empty() ? std::move(toolbar)
                             : registry.OpenKey(root, std::wstring(kToolbarKey) + L"\\" + place,
                                                RegAccess::Read, use64);
    if (!key) continue;
    for (auto& name : key->ValueNames())
      if (!name.empty()) ids.push_back(std::move(name));
  }
  return ids;
}

std::unique_ptr<TSoftInfo> NewToolbar(TDateTime now) {
  auto info = std::make_unique<TSoftInfo>();
  info->HelpLink = info->Publisher = info->Version = L"-";
  info->IsToolbar = true;
  info->LastAccessDate = now;
  return info;
}

void AppendRegisteredToolbars(const Platform& platform, SoftList& list, bool use64,
                              TDateTime now) {
  for (RegRoot root : {RegRoot::CurrentUser, RegRoot::LocalMachine}) {
    for (const auto& clsid : ToolbarClassIds(platform.registry, root, use64)) {
      const std::wstring classKey = L"\\CLSID\\" + clsid;
      if (!platform.registry.KeyExists(RegRoot::ClassesRoot, classKey, use64)) continue;
      auto info = NewToolbar(now);
      info->Name = DefaultValue(platform.registry, classKey, use64);
      // A class without a name would be an empty row.
      if (text::Trim(info->Name).empty()) info->Name = clsid;
      info->ToolbarClsid = clsid;
      info->ToolbarFile = DefaultValue(platform.registry, classKey + L"\\InprocServer32", use64);
      info->InstallLocation = text::ExtractFilePath(info->ToolbarFile);
      info->Is64BitView = use64;
      if (IsSafeFolder(platform, info->InstallLocation)) list.push_back(std::move(info));
    }
  }
}

void HideRepeatedToolbars(SoftList& list, std::size_t first) {
  for (std::size_t i = first; i < list.size(); ++i) {
    TSoftInfo& a = *list[i];
    if (a.Hidden || !a.IsToolbar) continue;
    for (std::size_t j = i + 1; j < list.size(); ++j) {
      const TSoftInfo& b = *list[j];
      if (b.Hidden || !b.IsToolbar) continue;
      if (text::SameText(a.ToolbarClsid, b.ToolbarClsid) &&
          text::SameText(a.ToolbarFile, b.ToolbarFile)) {
        a.Hidden = true;
        break;
      }
    }
  }
}

}  // namespace

bool IsToolbarName(std::wstring_view name) { return text::ContainsText(name, L"Toolbar"); }

std::unique_ptr<TSoftInfo> AddonToolbarRecord(const BrowserExtension& extension, TDateTime now) {
  auto info = NewToolbar(now);
  info->Name = extension.name + L" (" + extension.browser + L")";
  info->ToolbarFile = extension.path;
  switch (extension.package) {
    case ExtensionPackage::FirefoxManifest:
      info->InstallLocation = text::ExtractFilePath(extension.path);
      break;
    case ExtensionPackage::FirefoxPackage:
      // A packed add-on has no folder of its own: its parent holds them all.
      if (!text::EndsWithText(extension.path, L".xpi"))
        info->InstallLocation = text::IncludeTrailingBackslash(extension.path);
      break;
    case ExtensionPackage::Chromium:
      info->InstallLocation = text::IncludeTrailingBackslash(extension.path);
      break;
  }
  if (extension.package != ExtensionPackage::FirefoxManifest && !extension.version.empty())
    info->Version = extension.version;
  info->Extra1 = extension.browser;
  info->Extra2 = extension.id;
  info->Extra3 = extension.profile;
  return info;
}

void DiscoverToolbars(const Platform& platform, SoftList& list, bool use64BitView) {
  const std::size_t first = list.size();
  const TDateTime now = NowLocal(platform.system);
  AppendRegisteredToolbars(platform, list, use64BitView, now);
  // Profiles are files, the same in either view: read them once.
  if (!use64BitView) {
    BrowserExtensions extensions;
    if (IsFirefoxInstalled(platform))
      extensions = ReadFirefoxAddons(platform, ReadFirefoxProfiles(platform));
    for (auto& extension : ListChromiumExtensions(platform)) extensions.push_back(std::move(extension));
    for (const auto& extension : extensions)
      if (IsToolbarName(extension.name)) list.push_back(AddonToolbarRecord(extension, now));
  }
  HideRepeatedToolbars(list, first);
}

ToolbarDiscovery DefaultToolbarDiscovery(const Platform& platform) {
  return [platform](SoftList& list, bool use64BitView) {
    DiscoverToolbars(platform, list, use64BitView);
  };
}

}  // namespace varnel
