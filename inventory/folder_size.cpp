#include "inventory/folder_size.h"

#include <vector>

#include "core/safe_folder.h"
#include "base/text.h"

namespace varnel {

std::wstring SizeFolderOf(IFileSystem& files, const TSoftInfo& info,
                          std::wstring_view foundFolder) {
  if (!info.InstallLocation.empty()) return info.InstallLocation;
  if (!foundFolder.empty()) return std::wstring(foundFolder);
  if (info.Readme.empty()) return {};
  std::wstring folder = text::ExtractFilePath(text::RemoveAll(info.Readme, L"\""));
  if (folder.empty() || !files.DirectoryExists(folder)) return {};
  return folder;
}

std::int64_t FolderTreeSize(IFileSystem& files, std::wstring_view folder,
                            const std::function<bool()>& cancelled) {
  if (folder.empty()) return 0;
  std::vector<std::wstring> folders{text::IncludeTrailingBackslash(folder)};
  std::vector<FindEntry> entries;
  std::int64_t total = 0;
  // The list grows while it is walked: breadth first, no depth limit.
  for (std::size_t i = 0; i < folders.size(); ++i) {
    if (cancelled && cancelled()) break;
    if (!files.FindEntries(folders[i] + L"*.*", entries)) continue;
    for (const FindEntry& entry : entries) {
      if (entry.name == L"." || entry.name == L"..") continue;
      if (entry.attributes & FileAttr::Directory) {
        if (!(entry.attributes & FileAttr::ReparsePoint))
          folders.push_back(folders[i] + entry.name + L'\\');
      } else {
        total += static_cast<std::int64_t>(entry.size);
      }
    }
  }
  return total;
}

std::int64_t SafeFolderSize(const Platform& platform, std::wstring_view folder,
                            const std::function<bool()>& cancelled) {
  if (!IsSafeFolder(platform, folder)) return 0;
  return FolderTreeSize(platform.files, folder, cancelled);
}

}  // namespace varnel
