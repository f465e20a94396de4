#pragma once

#include <string>
#include <string_view>

#include "base/ext_ini_file.h"
#include "inventory/soft_list.h"
#include "platform/platform.h"

namespace varnel {

// "SoftwareCache.ini": one section per display name, so programs of the same
// name share one.
namespace cache_key {
constexpr std::wstring_view Size = L"size";
constexpr std::wstring_view SizeText = L"UseSize";
constexpr std::wstring_view Location = L"Location";
constexpr std::wstring_view DisplayIcon = L"DisplayIcon";
constexpr std::wstring_view IconIndex = L"IconIndex";
constexpr std::wstring_view InstallDateText = L"InstallDate";
constexpr std::wstring_view InstallDate = L"InstallDateT";
constexpr std::wstring_view LastAccessDate = L"LastAccessDate";
constexpr std::wstring_view Fingerprint = L"MD5";
}  // namespace cache_key

// MD5 of the install date text followed by the uninstall string, in the ANSI
// code page, as 32 lower-case hex digits. It tells whether a cached entry
// still belongs to the same installation; stored ones compare ignoring case.
std::wstring CacheFingerprint(ISystem& system, std::wstring_view installDateText,
                              std::wstring_view uninstallString);
// Fills what the cache knows into every visible record whose fingerprint
// still matches. A missing or unreadable file changes nothing.
void ApplySoftwareCache(const Platform& platform, SoftList& list, std::wstring_view cacheFile);
// Writes the values of `found` into the cache file as it stands now. A file
// that exists but cannot be read is not saved over: the findings are lost
// rather than every other program's entry.
bool SaveSoftwareCache(const Platform& platform, std::wstring_view cacheFile,
                       const TExtIniFile& found);

}  // namespace varnel
