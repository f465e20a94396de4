#include "inventory/firefox_profiles.h"

#include <unordered_set>

#include "core/app_frame.h"
#include "base/text.h"
#include "core/wow64.h"
#include "inventory/uninstall_keys.h"
#include "base/ext_ini_file.h"

namespace varnel {
namespace {

bool IsProfileSection(std::wstring_view section) {
  constexpr std::wstring_view kProfile = L"Profile";
  if (section.size() <= kProfile.size() || !text::StartsWithText(section, kProfile)) return false;
  for (wchar_t c : section.substr(kProfile.size()))
    if (c < L'0' || c > L'9') return false;
  return true;
}

}  // namespace

std::wstring FirefoxBase(const Platform& platform) {
  const std::wstring appData = TAppFrame(platform).UserAppData;
  if (appData.empty()) return {};
  return text::IncludeTrailingBackslash(appData) + L"Mozilla\\Firefox\\";
}

std::vector<std::wstring> ParseFirefoxProfiles(std::wstring_view iniText, std::wstring_view base,
                                               bool firstOnly) {
  TExtIniFile ini;
  ini.LoadFromText(iniText);
  std::vector<std::wstring> sections;
  if (firstOnly) {
    sections.emplace_back(L"Profile0");
  } else {
    for (auto& section : ini.ReadSections())
      if (IsProfileSection(section)) sections.push_back(std::move(section));
  }
  std::vector<std::wstring> folders;
  std::unordered_set<std::wstring> seen;
  for (const auto& section : sections) {
    std::wstring path = text::Trim(ini.ReadString(section, L"Path", L""));
    path = text::ExcludeTrailingBackslash(text::ReplaceAll(path, L"/", L"\\"));
    if (path.empty()) continue;
    if (ini.ReadBool(section, L"IsRelative", false)) {
      if (base.empty()) continue;
      path = text::IncludeTrailingBackslash(base) + path;
    }
    if (seen.insert(text::Lower(path)).second) folders.push_back(std::move(path));
  }
  return folders;
}

std::vector<std::wstring> ReadFirefoxProfiles(const Platform& platform, bool firstOnly) {
  const std::wstring base = FirefoxBase(platform);
  std::vector<std::uint8_t> bytes;
  if (base.empty() || !platform.files.ReadWholeFile(base + L"profiles.ini", bytes)) return {};
  // The browser writes the file in UTF-8, mark or not.
  std::string_view utf8(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (utf8.starts_with("\xEF\xBB\xBF")) utf8.remove_prefix(3);
  return ParseFirefoxProfiles(text::FromUtf8(utf8), base, firstOnly);
}

bool IsFirefoxInstalled(const Platform& platform) {
  const bool wow64 = IsWow64(platform.system);
  for (RegRoot root : {RegRoot::LocalMachine, RegRoot::CurrentUser}) {
    for (bool use64 : {false, true}) {
      if (use64 && !wow64) break;
      auto key = platform.registry.OpenKey(root, kUninstallKeyPath, RegAccess::Read, use64);
      if (!key) continue;
      for (const auto& name : key->SubKeyNames())
        if (text::ContainsText(name, L"Mozilla Firefox")) return true;
    }
  }
  return false;
}

}  // namespace varnel
