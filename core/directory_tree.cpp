#include "core/directory_tree.h"

#include <string>
#include <vector>

namespace varnel {

namespace {

struct Level {
  std::wstring folder;
  std::vector<FindEntry> entries;
  std::size_t next = 0;
};

Level Open(IFileSystem& files, std::wstring folder) {
  Level level{std::move(folder), {}, 0};
  // A folder that cannot be listed is simply treated as empty; removing it
  // then decides the outcome.
  if (!files.FindEntries(level.folder + L"\\*.*", level.entries)) level.entries.clear();
  return level;
}

}  // namespace

bool DeleteDirectoryTree(IFileSystem& files, std::wstring_view folder) {
  // An empty name would address the root of the current drive.
  if (folder.empty()) return false;
  // An explicit stack instead of recursion: a path may nest thousands of
  // levels deep, which would exhaust a thread's stack.
  std::vector<Level> stack;
  stack.push_back(Open(files, std::wstring(folder)));
  while (!stack.empty()) {
    Level& top = stack.back();
    if (top.next == top.entries.size()) {
      const std::wstring done = std::move(top.folder);
      stack.pop_back();
      if (!files.RemoveFolder(done)) return false;
      continue;
    }
    const FindEntry& entry = top.entries[top.next++];
    if (entry.name == L"." || entry.name == L"..") continue;
    const std::wstring path = top.folder + L"\\" + entry.name;
    if (entry.attributes & FileAttr::Directory) {
      // A junction or symbolic link is removed as a link; following it
      // would delete a folder that belongs to someone else.
      if (entry.attributes & FileAttr::ReparsePoint) {
        if (!files.RemoveFolder(path)) return false;
        continue;
      }
      stack.push_back(Open(files, path));  // invalidates `top`
    } else if (!files.RemoveFile(path)) {
      return false;
    }
  }
  return true;
}

bool IsLinkEntry(std::uint32_t attributes) {
  return (attributes & FileAttr::ReparsePoint) != 0;
}

bool ListDirectoryTree(IFileSystem& files, const std::wstring& folder,
                       std::vector<TreeEntry>& out) {
  bool complete = true;
  std::vector<std::wstring> pending{L""};
  while (!pending.empty()) {
    const std::wstring relative = std::move(pending.back());
    pending.pop_back();
    std::vector<FindEntry> entries;
    const std::wstring here = relative.empty() ? folder : folder + L"\\" + relative;
    if (!files.FindEntries(here + L"\\*.*", entries)) {
      // An empty folder lists "." and ".." at least; nothing at all is a failure.
      complete = false;
      continue;
    }
    for (const FindEntry& entry : entries) {
      if (entry.name == L"." || entry.name == L"..") continue;
      const std::wstring child = relative.empty() ? entry.name : relative + L"\\" + entry.name;
      out.push_back({child, entry.attributes, entry.size});
      if ((entry.attributes & FileAttr::Directory) && !IsLinkEntry(entry.attributes))
        pending.push_back(child);
    }
  }
  return complete;
}

bool MakeDirectoryTree(IFileSystem& files, const std::wstring& folder) {
  if (folder.empty()) return false;
  // A share's root ("\\server\share") is there or not; it cannot be made.
  std::size_t pos = folder.find(L'\\', folder.starts_with(L"\\\\") ? 2 : 0);
  if (folder.starts_with(L"\\\\") && pos != std::wstring::npos) pos = folder.find(L'\\', pos + 1);
  for (; pos != std::wstring::npos; pos = folder.find(L'\\', pos + 1)) {
    const std::wstring part = folder.substr(0, pos);
    if (!part.empty() && part.back() != L':' && !files.DirectoryExists(part)) {
      files.MakeDirectory(part);
    }
  }
  if (!files.DirectoryExists(folder)) files.MakeDirectory(folder);
  return files.DirectoryExists(folder);
}

}  // namespace varnel
