#include "inventory/chromium_extensions.h"

#include <array>
#include <unordered_set>

#include "core/app_frame.h"
#include "base/text.h"
#include "core/wow64.h"
#include "inventory/chromium_manifest.h"
#include "inventory/chromium_profiles.h"
#include "platform/csidl.h"

namespace varnel {
namespace {

constexpr std::array kBrowsers = {
    ChromiumBrowser{L"Chrome", Csidl::LocalAppData, L"Google\\Chrome\\User Data", false,
                    L"Google\\Chrome\\Extensions", L"Google\\Chrome\\Application"},
    ChromiumBrowser{L"Edge", Csidl::LocalAppData, L"Microsoft\\Edge\\User Data", false,
                    L"Microsoft\\Edge\\Extensions", L"Microsoft\\Edge\\Application"},
    ChromiumBrowser{L"Brave", Csidl::LocalAppData, L"BraveSoftware\\Brave-Browser\\User Data",
                    false, L"BraveSoftware\\Brave-Browser\\Extensions",
                    L"BraveSoftware\\Brave-Browser\\Application"},
    ChromiumBrowser{L"Vivaldi", Csidl::LocalAppData, L"Vivaldi\\User Data", false,
                    L"Vivaldi\\Extensions", L"Vivaldi\\Application"},
    ChromiumBrowser{L"Opera", Csidl::AppData, L"Opera Software\\Opera Stable", true,
                    L"Opera Software\\Extensions", L"Programs\\Opera"},
};

std::wstring Join(std::wstring_view folder, std::wstring_view name) {
  return text::IncludeTrailingBackslash(folder) + std::wstring(name);
}

// A single folder name taken from a file: no separators, no way up.
bool IsPlainName(std::wstring_view name) {
  return !name.empty() && name != L"." && name != L".." &&
         name.find_first_of(L"\\/:") == std::wstring_view::npos;
}

bool IsProfileFolderName(std::wstring_view name) {
  if (text::SameText(name, L"Default")) return true;
  constexpr std::wstring_view kProfile = L"Profile ";
  if (name.size() <= kProfile.size() || !text::StartsWithText(name, kProfile)) return false;
  for (wchar_t c : name.substr(kProfile.size()))
    if (c < L'0' || c > L'9') return false;
  return true;
}

std::string ReadBytes(IFileSystem& files, const std::wstring& path) {
  std::vector<std::uint8_t> bytes;
  if (!files.ReadWholeFile(path, bytes)) return {};
  return std::string(bytes.begin(), bytes.end());
}

std::vector<std::wstring> Subfolders(IFileSystem& files, const std::wstring& folder) {
  std::vector<std::wstring> names;
  std::vector<FindEntry> entries;
  if (!files.FindEntries(Join(folder, L"*"), entries)) return names;
  for (const auto& entry : entries) {
    if ((entry.attributes & FileAttr::Directory) && IsPlainName(entry.name))
      names.push_back(entry.name);
  }
  return names;
}

std::wstring AppFolderBase(ISystem& system, int csidl) { return QuerySpecialFolder(system, csidl); }

// The version folder the preferences name, else the first one that holds a manifest.
std::wstring PackageFolder(IFileSystem& files, const std::wstring& profile,
                           const ChromiumSetting& setting) {
  const std::wstring extensions = Join(profile, L"Extensions");
  if (!setting.path.empty()) {
    std::wstring path = text::ReplaceAll(setting.path, L"/", L"\\");
    const bool absolute = path.size() > 2 && (path[1] == L':' || path.starts_with(L"\\\\"));
    return absolute ? path : Join(extensions, path);
  }
  const std::wstring idFolder = Join(extensions, setting.id);
  for (const auto& version : Subfolders(files, idFolder)) {
    const std::wstring folder = Join(idFolder, version);
    if (files.FileExists(Join(folder, L"manifest.json"))) return folder;
  }
  return {};
}

std::wstring LocalisedName(IFileSystem& files, const std::wstring& folder,
                           const ChromiumManifest& manifest) {
  const std::wstring key = MessageKey(manifest.name);
  if (key.empty()) return manifest.name;
  if (!IsPlainName(manifest.defaultLocale)) return {};
  const std::string messages = ReadBytes(
      files, Join(folder, L"_locales\\" + manifest.defaultLocale + L"\\messages.json"));
  return LookUpMessage(messages, key);
}

}  // namespace

std::span<const ChromiumBrowser> ChromiumBrowsers() { return kBrowsers; }

const ChromiumBrowser* FindChromiumBrowser(std::wstring_view name) {
  for (const auto& browser : kBrowsers)
    if (text::SameText(browser.name, name)) return &browser;
  return nullptr;
}

bool IsChromiumExtensionId(std::wstring_view id) {
  if (id.size() != 32) return false;
  for (wchar_t c : id)
    if (c < L'a' || c > L'p') return false;
  return true;
}

ExternalRegistration FindExternalRegistration(const Platform& platform,
                                              const ChromiumBrowser& browser,
                                              std::wstring_view id) {
  ExternalRegistration found;
  if (!IsChromiumExtensionId(id)) return found;
  const std::wstring key = L"\\SOFTWARE\\" + std::wstring(browser.registryKey) + L"\\" +
                           std::wstring(id);
  // The user's hive is not split into views.
  const bool wow64 = IsWow64(platform.system);
  const std::array<RegistryPlace, 3> places = {RegistryPlace{RegRoot::LocalMachine, key, false},
                                               RegistryPlace{RegRoot::LocalMachine, key, true},
                                               RegistryPlace{RegRoot::CurrentUser, key, false}};
  for (const auto& place : places) {
    if (place.use64 && !wow64) continue;
    if (platform.registry.KeyExists(place.root, place.path, place.use64)) found.keys.push_back(place);
  }
  const std::wstring file = std::wstring(id) + L".json";
  std::unordered_set<std::wstring> seen;
  for (int csidl : {Csidl::ProgramFiles, Csidl::ProgramFilesX86, Csidl::LocalAppData}) {
    const std::wstring base = AppFolderBase(platform.system, csidl);
    if (base.empty()) continue;
    const std::wstring app = Join(base, browser.appPath);
    if (!seen.insert(text::Lower(app)).second || !platform.files.DirectoryExists(app)) continue;
    std::vector<std::wstring> candidates{Join(app, L"Extensions\\" + file)};
    for (const auto& version : Subfolders(platform.files, app))
      candidates.push_back(Join(app, version + L"\\Extensions\\" + file));
    for (auto& candidate : candidates)
      if (platform.files.FileExists(candidate)) found.files.push_back(std::move(candidate));
  }
  return found;
}

std::vector<std::wstring> ChromiumProfiles(const Platform& platform,
                                           const ChromiumBrowser& browser) {
  std::vector<std::wstring> profiles;
  const std::wstring base = QuerySpecialFolder(platform.system, browser.dataFolder);
  if (base.empty()) return profiles;
  const std::wstring data = Join(base, browser.dataPath);
  if (!platform.files.DirectoryExists(data)) return profiles;
  if (browser.singleProfile) return {data};
  std::vector<std::wstring> names =
      ParseLocalStateProfiles(ReadBytes(platform.files, Join(data, L"Local State")));
  for (auto& name : Subfolders(platform.files, data))
    if (IsProfileFolderName(name)) names.push_back(std::move(name));
  std::unordered_set<std::wstring> seen;
  for (const auto& name : names) {
    if (!IsPlainName(name) || !seen.insert(text::Lower(name)).second) continue;
    const std::wstring folder = Join(data, name);
    if (platform.files.DirectoryExists(folder)) profiles.push_back(folder);
  }
  return profiles;
}

BrowserExtensions ReadChromiumProfile(const Platform& platform, const ChromiumBrowser& browser,
                                      const std::wstring& profile) {
  BrowserExtensions found;
  IFileSystem& files = platform.files;
  // Newer profiles keep the settings in "Secure Preferences"; an id in both
  // is taken from the first.
  std::vector<ChromiumSetting> settings;
  std::unordered_set<std::wstring> ids;
  for (const wchar_t* name : {L"Secure Preferences", L"Preferences"}) {
    for (auto& setting : ParseChromiumSettings(ReadBytes(files, Join(profile, name))))
      if (ids.insert(setting.id).second) settings.push_back(std::move(setting));
  }
  for (const auto& setting : settings) {
    if (!IsChromiumExtensionId(setting.id) || IsComponentLocation(setting.location)) continue;
    const std::wstring folder = PackageFolder(files, profile, setting);
    if (folder.empty()) continue;
    const auto manifest = ParseChromiumManifest(ReadBytes(files, Join(folder, L"manifest.json")));
    if (!manifest || manifest->theme) continue;  // gone from disk, or a theme
    BrowserExtension extension;
    extension.browser = std::wstring(browser.name);
    extension.profile = profile;
    extension.id = setting.id;
    extension.name = LocalisedName(files, folder, *manifest);
    if (extension.name.empty()) extension.name = setting.id;
    extension.version = manifest->version;
    extension.enabled = setting.enabled;
    extension.path = text::ExcludeTrailingBackslash(folder);
    extension.package = ExtensionPackage::Chromium;
    extension.external = IsExternalLocation(setting.location) ||
                         !FindExternalRegistration(platform, browser, setting.id).Empty();
    found.push_back(std::move(extension));
  }
  return found;
}

}  // namespace varnel
