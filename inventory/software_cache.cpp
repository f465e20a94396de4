#include "inventory/software_cache.h"

#include <span>

#include "base/date_time.h"
#include "core/file_size.h"
#include "base/text.h"
#include "base/ext_ini_file.h"

namespace varnel {

std::wstring CacheFingerprint(ISystem& system, std::wstring_view installDateText,
                              std::wstring_view uninstallString) {
  std::wstring whole(installDateText);
  whole += uninstallString;
  const std::string ansi = system.ToAnsi(whole);
  const auto digest = system.Md5(std::span(reinterpret_cast<const std::uint8_t*>(ansi.data()),
                                           ansi.size()));
  static constexpr wchar_t kHex[] = L"0123456789abcdef";
  std::wstring out;
  out.reserve(digest.size() * 2);
  for (std::uint8_t byte : digest) {
    out += kHex[byte >> 4];
    out += kHex[byte & 0x0F];
  }
  return out;
}

void ApplySoftwareCache(const Platform& platform, SoftList& list, std::wstring_view cacheFile) {
  if (!platform.files.FileExists(cacheFile)) return;
  TExtIniFile cache;
  if (!cache.LoadFromFile(platform, cacheFile)) return;
  ISystem& system = platform.system;
  const TDateTime now = NowLocal(system);

  for (const auto& entry : list) {
    if (!entry || entry->Hidden) continue;
    TSoftInfo& info = *entry;
    const std::wstring& section = info.Name;
    const std::wstring cachedDate = cache.ReadString(section, cache_key::InstallDateText, L"");
    const std::wstring stored = cache.ReadString(section, cache_key::Fingerprint, L"");
    if (!text::SameText(CacheFingerprint(system, cachedDate, info.UninstallString), stored))
      continue;

    if (info.InstallDateText.empty()) {
      if (const auto date = ParseShortDate(system, cachedDate)) {
        info.InstallDateText = cachedDate;
        info.InstallDate = *date;
      } else {
        info.InstallDateText.clear();
        info.InstallDate = 0;
      }
    }
    if (info.Size == 0) info.Size = PlausibleSize(cache.ReadInt64(section, cache_key::Size, 0));
    info.SizeText = FormatFileSize(system, info.Size);
    if (info.DisplayIcon.empty()) {
      info.DisplayIcon = cache.ReadString(section, cache_key::DisplayIcon, L"");
      info.IconIndex = cache.ReadInteger(section, cache_key::IconIndex, 0);
    }
    if (info.InstallLocation.empty())
      info.InstallLocation = cache.ReadString(section, cache_key::Location, L"");
    info.LastAccessDate = cache.ReadFloat(section, cache_key::LastAccessDate, now);
  }
}

bool SaveSoftwareCache(const Platform& platform, std::wstring_view cacheFile,
                       const TExtIniFile& found) {
  const std::vector<std::wstring> sections = found.ReadSections();
  if (sections.empty()) return true;
  return UpdateIniFile(platform, cacheFile, [&](TExtIniFile& cache) {
    for (const std::wstring& section : sections)
      for (const std::wstring& key : found.ReadSection(section))
        cache.WriteString(section, key, found.ReadString(section, key, {}));
  });
}

}  // namespace varnel
