#include "core/safe_folder.h"

#include <array>
#include <string>

#include "core/app_frame.h"
#include "base/text.h"
#include "core/wow64.h"

namespace varnel {

namespace {

constexpr std::wstring_view kShellFolders =
    L"\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

std::wstring ReadString(const IRegistryKey* key, std::wstring_view name) {
  if (!key) return {};
  const auto value = key->ReadValue(name);
  if (!value || (value->type != RegType::String && value->type != RegType::ExpandString))
    return {};
  return text::FromUtf16Bytes(value->data);
}

}  // namespace

bool IsSafeFolder(const Platform& platform, std::wstring_view path) {
  if (path.find(L'%') != std::wstring_view::npos) return false;
  const std::wstring candidate = text::Upper(text::IncludeTrailingBackslash(path));
  if (candidate.size() <= 3) return false;

  // An unreadable key leaves these as a lone "\", which weakens the test
  // rather than failing it.
  const auto key = platform.registry.OpenKey(RegRoot::CurrentUser, kShellFolders, RegAccess::Read,
                                             IsWow64(platform.system));
  const std::array<std::wstring, 5> refused = {
      text::IncludeTrailingBackslash(ReadString(key.get(), L"Desktop")),
      text::IncludeTrailingBackslash(ReadString(key.get(), L"Start Menu")),
      text::IncludeTrailingBackslash(ReadString(key.get(), L"Recent")),
      text::IncludeTrailingBackslash(QuerySystemDir(platform.system)),
      text::IncludeTrailingBackslash(QueryWindowsDir(platform.system)),
  };
  for (const auto& folder : refused)
    if (text::SameText(candidate, folder)) return false;
  return true;
}

}  // namespace varnel
