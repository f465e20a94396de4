#include "leftovers/other_programs.h"

#include <algorithm>

#include "core/path_resolution.h"
#include "core/protected_places.h"
#include "base/text.h"

namespace varnel {

namespace {

// A location as a scan takes it: resolved, a file standing for its folder.
std::wstring FolderOf(const Platform& platform, const std::wstring& location) {
  auto resolved = ResolvePath(platform, text::Trim(location));
  if (!resolved.empty() && platform.files.FileExists(resolved))
    resolved = text::ExcludeTrailingBackslash(text::ExtractFilePath(resolved));
  return resolved;
}

bool IsLooseToolbar(const TSoftInfo& record) {
  return record.IsToolbar && text::Trim(record.UninstallString).empty();
}

}  // namespace

std::vector<std::wstring> OtherProgramFolders(const Platform& platform, const SoftList& list,
                                              const std::vector<int>& scanned) {
  const auto isScanned = [&](std::size_t i) {
    return std::find(scanned.begin(), scanned.end(), static_cast<int>(i)) != scanned.end();
  };
  // Only a folder a program may own can take a toolbar in: a hostile entry
  // naming "C:\" must not strip every add-on's folder of its protection.
  std::vector<std::wstring> own;
  bool anyLooseToolbar = false;
  for (std::size_t i = 0; i < list.size(); ++i)
    anyLooseToolbar = anyLooseToolbar || (list[i] && !isScanned(i) && IsLooseToolbar(*list[i]));
  if (anyLooseToolbar) {
    const ProtectedPlaces places(platform, {});
    for (int index : scanned) {
      if (index < 0 || index >= static_cast<int>(list.size()) || !list[index]) continue;
      auto folder = FolderOf(platform, list[index]->InstallLocation);
      if (!folder.empty() && places.CheckInstallFolder(folder) == Refusal::None)
        own.push_back(std::move(folder));
    }
  }
  const auto inOwnFolder = [&](const TSoftInfo& record) {
    if (own.empty() || !IsLooseToolbar(record)) return false;
    const auto folder = FolderOf(platform, record.InstallLocation);
    return std::any_of(own.begin(), own.end(),
                       [&](const std::wstring& o) { return PathIsOrIsBelow(folder, o); });
  };

  std::vector<std::wstring> folders;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const auto& record = list[i];
    if (!record || record->Hidden || isScanned(i)) continue;
    const auto location = text::Trim(record->InstallLocation);
    if (!location.empty() && !inOwnFolder(*record)) folders.push_back(location);
  }
  return folders;
}

}  // namespace varnel
