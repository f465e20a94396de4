#include "base/text.h"
#include "platform/memory/memory_platform.h"

namespace varnel::mem {

struct MemoryFileSystem::Node {
  std::wstring name;
  std::wstring shortName;
  std::uint32_t attributes = FileAttr::Directory;
  std::vector<std::uint8_t> data;
  std::wstring linkTarget;  // a junction's target; the node itself holds nothing
  FileTime creation = 0, lastAccess = 0, lastWrite = 0;
  std::map<std::wstring, std::unique_ptr<Node>> children;  // by upper-cased name

  bool IsDirectory() const { return (attributes & FileAttr::Directory) != 0; }
};

using FsNode = MemoryFileSystem::Node;

namespace {

constexpr std::size_t kMaxPath = 32767;
constexpr std::size_t kMaxComponent = 255;
constexpr FileTime kTick = 10'000'000;  // one second

bool IsSeparator(wchar_t c, bool verbatim) { return c == L'\\' || (!verbatim && c == L'/'); }

bool IsBadNameChar(wchar_t c, bool allowWildcards) {
  if (static_cast<std::uint32_t>(c) < 0x20) return true;
  switch (c) {
    case L'<': case L'>': case L':': case L'"': case L'|':
      return true;
    case L'*': case L'?':
      return !allowWildcards;
    default:
      return false;
  }
}

// Splits an absolute path into the drive ("C:") and its components, with the
// normalisation Windows applies to ordinary paths. nullopt when not valid.
std::optional<std::vector<std::wstring>> ParsePath(std::wstring_view path, bool lastMayWildcard) {
  if (path.size() > kMaxPath) return std::nullopt;
  bool verbatim = false;
  if (path.substr(0, 4) == L"\\\\?\\") {
    path.remove_prefix(4);
    verbatim = true;
  }
  if (path.size() < 2 || path[1] != L':' || !((path[0] >= L'A' && path[0] <= L'Z') ||
                                               (path[0] >= L'a' && path[0] <= L'z')))
    return std::nullopt;
  if (path.size() > 2 && !IsSeparator(path[2], verbatim)) return std::nullopt;
  std::vector<std::wstring> parts{std::wstring{text::ToUpper(path[0]), L':'}};
  std::size_t start = 3;
  while (start < path.size()) {
    std::size_t end = start;
    while (end < path.size() && !IsSeparator(path[end], verbatim)) ++end;
    std::wstring part(path.substr(start, end - start));
    const bool last = end >= path.size();
    start = end + 1;
    if (!verbatim) {
      if (part == L".") continue;
      if (part == L"..") {
        if (parts.size() > 1) parts.pop_back();
        continue;
      }
      while (!part.empty() && (part.back() == L'.' || part.back() == L' ')) part.pop_back();
    }
    if (part.empty()) continue;
    if (part.size() > kMaxComponent) return std::nullopt;
    for (wchar_t c : part)
      if (IsBadNameChar(c, last && lastMayWildcard)) return std::nullopt;
    parts.push_back(std::move(part));
  }
  return parts;
}

bool GlobMatch(std::wstring_view pattern, std::wstring_view name) {
  std::size_t p = 0, n = 0, starP = std::wstring_view::npos, starN = 0;
  while (n < name.size()) {
    if (p < pattern.size() &&
        (pattern[p] == L'?' || text::ToUpper(pattern[p]) == text::ToUpper(name[n]))) {
      ++p;
      ++n;
    } else if (p < pattern.size() && pattern[p] == L'*') {
      starP = p++;
      starN = n;
    } else if (starP != std::wstring_view::npos) {
      p = starP + 1;
      n = ++starN;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == L'*') ++p;
  return p == pattern.size();
}

// Windows rules on top of a plain glob: "*.*" matches every name and a
// trailing ".*" also matches a name without extension.
bool WildcardMatch(std::wstring_view pattern, std::wstring_view name) {
  if (pattern == L"*.*" || pattern == L"*") return true;
  if (GlobMatch(pattern, name)) return true;
  if (pattern.size() >= 2 && pattern.substr(pattern.size() - 2) == L".*")
    return GlobMatch(pattern.substr(0, pattern.size() - 2), name);
  return false;
}

FindEntry EntryOf(const FsNode& node, std::wstring name) {
  FindEntry e;
  e.name = std::move(name);
  e.shortName = node.shortName;
  e.attributes = node.attributes;
  e.size = node.IsDirectory() ? 0 : node.data.size();
  e.creationTime = node.creation;
  e.lastAccessTime = node.lastAccess;
  e.lastWriteTime = node.lastWrite;
  return e;
}

FsNode* Child(FsNode& dir, const std::wstring& name) {
  auto it = dir.children.find(text::Upper(name));
  if (it != dir.children.end()) return it->second.get();
  for (auto& [_, child] : dir.children)
    if (!child->shortName.empty() && text::SameText(child->shortName, name)) return child.get();
  return nullptr;
}

// Windows gives up after this many links on one path; a loop ends here too.
constexpr int kMaxLinkHops = 63;

// The node `parts` name; links on the way are followed, the last one only
// when `followLast`. Null when a part is missing or links go round.
FsNode* Walk(FsNode& root, const std::vector<std::wstring>& parts, bool followLast, int& hops) {
  FsNode* node = &root;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (!node->IsDirectory()) return nullptr;
    node = Child(*node, parts[i]);
    if (!node) return nullptr;
    if (!node->linkTarget.empty() && (i + 1 < parts.size() || followLast)) {
      const auto target = ParsePath(node->linkTarget, false);
      if (!target || ++hops > kMaxLinkHops) return nullptr;
      node = Walk(root, *target, true, hops);
      if (!node) return nullptr;
    }
  }
  return node;
}

FsNode* Enter(FsNode& root, FsNode* node) {
  if (!node || node->linkTarget.empty()) return node;
  const auto target = ParsePath(node->linkTarget, false);
  int hops = 1;
  return target ? Walk(root, *target, true, hops) : nullptr;
}

// Takes `node` out of the folder `from` into the folder `to`, as `name`.
void Relink(FsNode& from, const FsNode& node, FsNode& to, const std::wstring& name) {
  const std::wstring key = text::Upper(node.name);
  auto owned = std::move(from.children[key]);
  from.children.erase(key);
  owned->name = name;
  owned->shortName.clear();
  to.children.emplace(text::Upper(name), std::move(owned));
}

}  // namespace

MemoryFileSystem::MemoryFileSystem(FaultSwitches& faults)
    : faults_(faults), root_(std::make_unique<Node>()), clock_(132'000'000'000'000'000ULL) {}

MemoryFileSystem::~MemoryFileSystem() = default;

FsNode* MemoryFileSystem::Find(std::wstring_view path) {
  auto parts = ParsePath(path, false);
  if (!parts) return nullptr;
  int hops = 0;
  return Walk(*root_, *parts, false, hops);
}

std::optional<MemoryFileSystem::Place> MemoryFileSystem::Split(std::wstring_view path,
                                                               bool lastMayWildcard) {
  auto parts = ParsePath(path, lastMayWildcard);
  if (!parts || parts->size() < 2) return std::nullopt;
  Place place;
  place.name = parts->back();
  parts->pop_back();
  place.atDriveRoot = parts->size() == 1;
  FsNode* dir = root_.get();
  for (const auto& part : *parts) {
    dir = dir->IsDirectory() ? Enter(*root_, Child(*dir, part)) : nullptr;
    if (!dir) return std::nullopt;
    place.chain.push_back(dir);
  }
  if (!dir->IsDirectory()) return std::nullopt;
  place.folder = dir;
  return place;
}

FsNode& MemoryFileSystem::AddChild(Node& folder, const std::wstring& name,
                                   std::uint32_t attributes) {
  auto node = std::make_unique<Node>();
  node->name = name;
  node->attributes = attributes;
  clock_ += kTick;
  node->creation = node->lastAccess = node->lastWrite = clock_;
  FsNode& added = *node;
  folder.children[text::Upper(name)] = std::move(node);
  return added;
}

std::optional<std::uint32_t> MemoryFileSystem::GetAttributes(std::wstring_view path) {
  ++readCalls_;
  if (faults_.Fails(Fault::FileAttributes)) return std::nullopt;
  const FsNode* node = Find(path);
  if (!node) return std::nullopt;
  return node->attributes;
}

std::optional<FindEntry> MemoryFileSystem::GetFileInfo(std::wstring_view path) {
  ++readCalls_;
  if (faults_.Fails(Fault::FileAttributes)) return std::nullopt;
  const FsNode* node = Find(path);
  if (!node) return std::nullopt;
  FindEntry entry;
  entry.attributes = node->attributes;
  entry.size = node->IsDirectory() ? 0 : node->data.size();
  entry.creationTime = node->creation;
  entry.lastAccessTime = node->lastAccess;
  entry.lastWriteTime = node->lastWrite;
  return entry;
}

bool MemoryFileSystem::SetAttributes(std::wstring_view path, std::uint32_t attributes) {
  if (faults_.Fails(Fault::FileAttributes)) return false;
  FsNode* node = Find(path);
  if (!node || node == root_.get()) return false;
  attributes &= ~(FileAttr::Directory | FileAttr::Normal);
  if (node->IsDirectory()) attributes |= FileAttr::Directory;
  if (attributes == 0) attributes = FileAttr::Normal;
  node->attributes = attributes;
  return true;
}

bool MemoryFileSystem::FindEntries(std::wstring_view pattern, std::vector<FindEntry>& out) {
  ++readCalls_;
  out.clear();
  if (faults_.Fails(Fault::FileFind)) return false;
  const auto where = Split(pattern, true);
  if (!where) return false;
  FsNode* dir = where->folder;
  const std::wstring& mask = where->name;
  if (mask.find_first_of(L"*?") == std::wstring::npos) {
    if (FsNode* hit = Child(*dir, mask)) out.push_back(EntryOf(*hit, hit->name));
    return !out.empty();
  }
  if (!where->atDriveRoot) {
    if (WildcardMatch(mask, L".")) out.push_back(EntryOf(*dir, L"."));
    if (WildcardMatch(mask, L"..")) out.push_back(EntryOf(*dir, L".."));
  }
  for (const auto& [_, child] : dir->children)
    if (WildcardMatch(mask, child->name) ||
        (!child->shortName.empty() && WildcardMatch(mask, child->shortName)))
      out.push_back(EntryOf(*child, child->name));
  return !out.empty();
}

bool MemoryFileSystem::ReadWholeFile(std::wstring_view path, std::vector<std::uint8_t>& out) {
  ++readCalls_;
  out.clear();
  if (faults_.Fails(Fault::FileRead)) return false;
  FsNode* node = Find(path);
  if (!node || node->IsDirectory()) return false;
  out = node->data;
  return true;
}

bool MemoryFileSystem::ReadFilePart(std::wstring_view path, std::uint64_t offset,
                                    std::size_t maxBytes, std::vector<std::uint8_t>& out) {
  ++readCalls_;
  out.clear();
  if (faults_.Fails(Fault::FileRead)) return false;
  FsNode* node = Find(path);
  if (!node || node->IsDirectory()) return false;
  if (offset < node->data.size()) {
    const auto from = node->data.begin() + static_cast<std::ptrdiff_t>(offset);
    const std::size_t count = std::min<std::size_t>(maxBytes, node->data.size() - offset);
    out.assign(from, from + static_cast<std::ptrdiff_t>(count));
  }
  return true;
}

bool MemoryFileSystem::WriteWholeFile(std::wstring_view path,
                                      std::span<const std::uint8_t> bytes) {
  if (faults_.Fails(Fault::FileWrite)) return false;
  const auto where = Split(path, false);
  if (!where) return false;
  clock_ += kTick;
  if (FsNode* existing = Child(*where->folder, where->name)) {
    if (existing->IsDirectory() || (existing->attributes & FileAttr::ReadOnly)) return false;
    existing->data.assign(bytes.begin(), bytes.end());
    existing->lastWrite = existing->lastAccess = clock_;
    return true;
  }
  FsNode& node = AddChild(*where->folder, where->name, FileAttr::Archive);
  node.data.assign(bytes.begin(), bytes.end());
  return true;
}

bool MemoryFileSystem::RemoveFile(std::wstring_view path) {
  if (faults_.Fails(Fault::FileDelete)) return false;
  const auto where = Split(path, false);
  if (!where) return false;
  FsNode* node = Child(*where->folder, where->name);
  if (!node || node->IsDirectory() || (node->attributes & FileAttr::ReadOnly)) return false;
  where->folder->children.erase(text::Upper(node->name));
  return true;
}

bool MemoryFileSystem::MakeDirectory(std::wstring_view path) {
  if (faults_.Fails(Fault::FolderCreate)) return false;
  const auto where = Split(path, false);
  if (!where || Child(*where->folder, where->name)) return false;
  AddChild(*where->folder, where->name, FileAttr::Directory);
  return true;
}

bool MemoryFileSystem::RemoveFolder(std::wstring_view path) {
  if (faults_.Fails(Fault::FolderRemove)) return false;
  const auto where = Split(path, false);
  if (!where) return false;
  FsNode* node = Child(*where->folder, where->name);
  if (!node || !node->IsDirectory() || !node->children.empty() ||
      (node->attributes & FileAttr::ReadOnly))
    return false;
  where->folder->children.erase(text::Upper(node->name));
  return true;
}

bool MemoryFileSystem::MoveEntry(std::wstring_view from, std::wstring_view to) {
  if (faults_.Fails(Fault::FileMove)) return false;
  const auto src = Split(from, false);
  const auto dst = Split(to, false);
  if (!src || !dst) return false;
  FsNode* node = Child(*src->folder, src->name);
  if (!node || Child(*dst->folder, dst->name)) return false;
  // A folder cannot move into itself or below itself.
  for (const FsNode* up : dst->chain)
    if (up == node) return false;
  Relink(*src->folder, *node, *dst->folder, dst->name);
  return true;
}

bool MemoryFileSystem::ReplaceEntry(std::wstring_view from, std::wstring_view to) {
  if (faults_.Fails(Fault::FileReplace)) return false;
  const auto src = Split(from, false);
  const auto dst = Split(to, false);
  if (!src || !dst) return false;
  FsNode* node = Child(*src->folder, src->name);
  if (!node || node->IsDirectory()) return false;
  if (const FsNode* old = Child(*dst->folder, dst->name)) {
    if (old == node) return true;
    if (old->IsDirectory() || (old->attributes & FileAttr::ReadOnly)) return false;
    dst->folder->children.erase(text::Upper(old->name));
  }
  Relink(*src->folder, *node, *dst->folder, dst->name);
  return true;
}

std::wstring MemoryFileSystem::SpelledPath(std::wstring_view path, bool shortNames) {
  auto parts = ParsePath(path, false);
  if (!parts) return {};
  FsNode* node = root_.get();
  std::wstring result;
  for (const auto& part : *parts) {
    node = Enter(*root_, node);
    node = node && node->IsDirectory() ? Child(*node, part) : nullptr;
    if (!node) return {};
    if (!result.empty()) result += L'\\';
    if (shortNames && !node->shortName.empty())
      result += node->shortName;
    else
      result += node->name.empty() ? part : node->name;
  }
  if (parts->size() == 1 || (!path.empty() && path.back() == L'\\')) result += L'\\';
  return result;
}

std::wstring MemoryFileSystem::LongPathName(std::wstring_view path) {
  if (faults_.Fails(Fault::LongPath)) return {};
  return SpelledPath(path, false);
}

std::wstring MemoryFileSystem::ShortPathName(std::wstring_view path) {
  if (faults_.Fails(Fault::ShortPath)) return {};
  return SpelledPath(path, true);
}

bool MemoryFileSystem::MoveOnReboot(std::wstring_view from, std::wstring_view to) {
  if (faults_.Fails(Fault::MoveOnReboot)) return false;
  if (!ParsePath(from, false)) return false;
  if (!to.empty() && !ParsePath(to, false)) return false;
  pending_.emplace_back(std::wstring(from), std::wstring(to));
  return true;
}

void MemoryFileSystem::AddFolder(std::wstring_view path) {
  auto parts = ParsePath(path, false);
  if (!parts) return;
  FsNode* node = root_.get();
  for (const auto& part : *parts) {
    FsNode* child = Child(*node, part);
    if (!child) child = &AddChild(*node, part, FileAttr::Directory);
    if (!child->IsDirectory()) return;
    node = Enter(*root_, child);
    if (!node) return;
  }
}

std::optional<MemoryFileSystem::Place> MemoryFileSystem::WithParents(std::wstring_view path) {
  auto parts = ParsePath(path, false);
  if (!parts || parts->size() < 2) return std::nullopt;
  const std::wstring name = parts->back();
  parts->pop_back();
  std::wstring folder;
  for (const auto& part : *parts) folder += part + L"\\";
  AddFolder(folder);
  return Split(folder + name, false);
}

void MemoryFileSystem::AddFile(std::wstring_view path, std::string_view content,
                               std::uint32_t attributes) {
  const auto where = WithParents(path);
  if (!where) return;
  where->folder->children.erase(text::Upper(where->name));
  attributes &= ~FileAttr::Directory;
  FsNode& node = AddChild(*where->folder, where->name, attributes ? attributes : FileAttr::Normal);
  node.data.assign(content.begin(), content.end());
}

void MemoryFileSystem::SetTimes(std::wstring_view path, FileTime creation, FileTime lastAccess,
                                FileTime lastWrite) {
  if (FsNode* node = Find(path)) {
    node->creation = creation;
    node->lastAccess = lastAccess;
    node->lastWrite = lastWrite;
  }
}

void MemoryFileSystem::AddLink(std::wstring_view path, std::wstring_view target) {
  const auto where = WithParents(path);
  if (!where || Child(*where->folder, where->name)) return;
  AddChild(*where->folder, where->name, FileAttr::Directory | FileAttr::ReparsePoint).linkTarget =
      target;
}

void MemoryFileSystem::SetShortName(std::wstring_view path, std::wstring_view shortName) {
  if (FsNode* node = Find(path)) node->shortName = shortName;
}

}  // namespace varnel::mem
