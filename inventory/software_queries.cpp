#include "inventory/software_queries.h"

#include "core/path_resolution.h"
#include "base/text.h"

namespace varnel {

namespace {

// The comparable spelling of a folder ("C:/App/" and "c:\app" alike);
// empty when it names none.
std::wstring FolderKey(const Platform& platform, std::wstring_view folder) {
  const std::wstring resolved = ResolvePath(platform, folder);
  if (resolved.empty()) return {};
  return text::Upper(text::IncludeTrailingBackslash(resolved));
}

}  // namespace

std::vector<std::wstring> FindSoftwareByFolder(const Platform& platform, const SoftList& list,
                                               std::wstring_view filePath) {
  std::vector<std::wstring> found;
  const std::wstring fileFolder = FolderKey(platform, text::ExtractFilePath(filePath));
  if (fileFolder.empty()) return found;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const TSoftInfo* info = list[i].get();
    if (!info || info->Hidden) continue;
    if (FolderKey(platform, info->InstallLocation) == fileFolder)
      found.push_back(std::to_wstring(i));
  }
  return found;
}

std::vector<std::wstring> FindSoftwareByName(const SoftList& list, std::wstring_view text) {
  std::vector<std::wstring> found;
  const std::wstring wanted = text::Upper(text);
  for (std::size_t i = 0; i < list.size(); ++i) {
    const TSoftInfo* info = list[i].get();
    if (info && !info->Hidden && text::Upper(info->Name).find(wanted) != std::wstring::npos)
      found.push_back(std::to_wstring(i));
  }
  return found;
}

bool GetSoftwareRecord(const SoftList& list, int index, TSoftInfo& record) {
  if (index < 0 || index >= static_cast<int>(list.size()) || !list[index]) return false;
  CopySoftInfo(record, *list[index]);
  return true;
}

}  // namespace varnel
