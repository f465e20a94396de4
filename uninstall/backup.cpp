#include "uninstall/backup.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "core/app_frame.h"
#include "core/data_folder.h"
#include "base/date_time.h"
#include "core/directory_tree.h"
#include "core/path_resolution.h"
#include "core/protected_places.h"
#include "core/registry_location.h"
#include "base/text.h"

namespace varnel {

namespace {

constexpr wchar_t kManifest[] = L"manifest.json";

std::wstring RegFileName(bool use64) { return use64 ? L"registry64.reg" : L"registry32.reg"; }

bool CopyFileBytes(IFileSystem& files, const std::wstring& from, const std::wstring& to) {
  std::vector<std::uint8_t> bytes;
  return files.ReadWholeFile(from, bytes) && files.WriteWholeFile(to, bytes);
}

// Copies a folder's contents into `to` (made when missing). Files already at
// the target are left alone when `keepExisting`; links are not followed but
// collected in `links`. False when anything could not be copied.
bool CopyTree(IFileSystem& files, const std::wstring& from, const std::wstring& to,
              bool keepExisting, std::vector<std::wstring>& links) {
  std::vector<TreeEntry> entries;
  bool ok = ListDirectoryTree(files, from, entries) && MakeDirectoryTree(files, to);
  for (const TreeEntry& entry : entries) {
    if (!ok) break;
    const std::wstring target = to + L"\\" + entry.relative;
    if (IsLinkEntry(entry.attributes)) {
      links.push_back(entry.relative);
    } else if (entry.attributes & FileAttr::Directory) {
      ok = files.DirectoryExists(target) || files.MakeDirectory(target);
    } else if (!(keepExisting && files.GetAttributes(target))) {
      ok = CopyFileBytes(files, from + L"\\" + entry.relative, target);
    }
  }
  return ok;
}

// Removes a backup's folder, read-only files included.
bool RemoveTree(IFileSystem& files, const std::wstring& folder) {
  std::vector<TreeEntry> entries;
  ListDirectoryTree(files, folder, entries);
  for (auto it = entries.rbegin(); it != entries.rend(); ++it) {
    const std::wstring path = folder + L"\\" + it->relative;
    if (it->attributes & FileAttr::ReadOnly)
      files.SetAttributes(path, it->attributes & ~FileAttr::ReadOnly);
    if (it->attributes & FileAttr::Directory) {
      files.RemoveFolder(path);
    } else {
      files.RemoveFile(path);
    }
  }
  return files.RemoveFolder(folder);
}

std::string Utf8(const std::wstring& s) { return text::ToUtf8(s); }

std::wstring Wide(const nlohmann::json& object, const char* name) {
  auto it = object.find(name);
  return it != object.end() && it->is_string() ? text::FromUtf8(it->get<std::string>())
                                                : std::wstring();
}

bool ValidId(std::wstring_view id) {
  return !id.empty() && id != L"." && id != L".." &&
         id.find_first_of(L"\\/:*?\"<>|") == std::wstring_view::npos;
}

std::optional<std::vector<BackupItem>> LoadManifest(const Platform& platform,
                                                    const std::wstring& folder,
                                                    std::wstring* created) {
  std::vector<std::uint8_t> bytes;
  if (!platform.files.ReadWholeFile(folder + L"\\" + kManifest, bytes)) return std::nullopt;
  return ReadManifest(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
                      created);
}

}  // namespace

std::wstring BackupRootFolder(const Platform& platform) {
  const std::wstring data = UserDataFolder(TAppFrame(platform), false);
  return data.empty() ? std::wstring() : data + L"\\Backup";
}

std::string ManifestText(const std::wstring& created, const std::vector<BackupItem>& items) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const BackupItem& item : items) {
    nlohmann::ordered_json entry = {{"kind", Utf8(item.kind)}, {"path", Utf8(item.path)}};
    if (item.kind == L"value") entry["value"] = Utf8(item.valueName);
    if (item.kind == L"key" || item.kind == L"value") entry["view"] = item.use64 ? 64 : 32;
    if (!item.kept.empty()) entry["kept"] = Utf8(item.kept);
    if (item.attributes) entry["attributes"] = item.attributes;
    list.push_back(std::move(entry));
  }
  const nlohmann::ordered_json manifest = {{"created", Utf8(created)}, {"items", std::move(list)}};
  return manifest.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

std::optional<std::vector<BackupItem>> ReadManifest(std::string_view text, std::wstring* created) {
  const auto manifest = nlohmann::json::parse(text, nullptr, false);
  if (manifest.is_discarded() || !manifest.is_object()) return std::nullopt;
  const auto list = manifest.find("items");
  if (list == manifest.end() || !list->is_array()) return std::nullopt;
  if (created) *created = Wide(manifest, "created");
  std::vector<BackupItem> items;
  for (const auto& entry : *list) {
    if (!entry.is_object()) return std::nullopt;
    BackupItem item;
    item.kind = Wide(entry, "kind");
    item.path = Wide(entry, "path");
    item.valueName = Wide(entry, "value");
    item.kept = Wide(entry, "kept");
    const auto view = entry.find("view");
    item.use64 = view != entry.end() && view->is_number_integer() && view->get<int>() == 64;
    const auto attributes = entry.find("attributes");
    if (attributes != entry.end() && attributes->is_number_unsigned())
      item.attributes = attributes->get<std::uint32_t>();
    if (item.kind.empty() || item.path.empty()) return std::nullopt;
    items.push_back(std::move(item));
  }
  return items;
}

Backup::Backup(const Platform& platform, std::wstring id, std::wstring folder, std::wstring created)
    : platform_(platform), id_(std::move(id)), folder_(std::move(folder)), created_(std::move(created)) {}

std::unique_ptr<Backup> Backup::Begin(const Platform& platform) {
  const std::wstring root = BackupRootFolder(platform);
  if (root.empty()) return nullptr;
  const TDateTime now = NowLocal(platform.system);
  const std::wstring stamp = FormatDate(L"yyyy-MM-dd_HHmmss", now);
  std::wstring id = stamp;
  for (int n = 2; platform.files.GetAttributes(root + L"\\" + id); ++n)
    id = stamp + L"-" + std::to_wstring(n);
  return std::unique_ptr<Backup>(new Backup(platform, id, root + L"\\" + id,
                                            FormatDate(L"yyyy-MM-dd HH:mm:ss", now)));
}

bool Backup::Prepare() {
  if (!made_) made_ = MakeDirectoryTree(platform_.files, folder_);
  return made_;
}

bool Backup::Flush() {
  if (!Prepare()) return false;
  IFileSystem& files = platform_.files;
  for (bool use64 : {true, false}) {
    const auto& keys = use64 ? keys64_ : keys32_;
    if (!keys.empty() && !files.WriteWholeFile(folder_ + L"\\" + RegFileName(use64), EncodeRegFile(keys)))
      return false;
  }
  const std::string manifest = ManifestText(created_, items_);
  return files.WriteWholeFile(folder_ + L"\\" + kManifest,
                              std::span(reinterpret_cast<const std::uint8_t*>(manifest.data()),
                                        manifest.size()));
}

bool Backup::AddRegistry(BackupItem item, std::vector<RegFileKey> keys) {
  auto& target = item.use64 ? keys64_ : keys32_;
  const std::size_t keysBefore = target.size();
  target.insert(target.end(), std::make_move_iterator(keys.begin()),
                std::make_move_iterator(keys.end()));
  item.kept = RegFileName(item.use64);
  items_.push_back(std::move(item));
  if (Flush()) return true;
  target.resize(keysBefore);
  items_.pop_back();
  return false;
}

bool Backup::SaveKey(RegRoot root, const std::wstring& keyPath, bool use64) {
  const std::wstring rootName = RootKeyName(root);
  if (rootName.empty()) return false;
  std::vector<RegFileKey> keys;
  // Parents before children, as "reg import" makes them.
  std::vector<std::wstring> pending{keyPath};
  while (!pending.empty()) {
    const std::wstring path = std::move(pending.back());
    pending.pop_back();
    auto key = platform_.registry.OpenKey(root, path, RegAccess::Read, use64);
    if (!key) return false;
    keys.push_back({rootName + L"\\" + path, key->Values()});
    auto names = key->SubKeyNames();
    for (auto it = names.rbegin(); it != names.rend(); ++it) pending.push_back(path + L"\\" + *it);
  }
  return AddRegistry({L"key", rootName + L"\\" + keyPath, L"", use64, L"", 0}, std::move(keys));
}

bool Backup::SaveValue(RegRoot root, const std::wstring& keyPath, const std::wstring& valueName,
                       bool use64) {
  const std::wstring rootName = RootKeyName(root);
  if (rootName.empty()) return false;
  auto key = platform_.registry.OpenKey(root, keyPath, RegAccess::Read, use64);
  if (!key) return false;
  auto value = key->ReadValue(valueName);
  if (!value) return false;
  const std::wstring name = rootName + L"\\" + keyPath;
  std::vector<RegFileKey> keys{{name, {{valueName, std::move(*value)}}}};
  return AddRegistry({L"value", name, valueName, use64, L"", 0}, std::move(keys));
}

bool Backup::TakeFile(const std::wstring& path, bool& moved) { return Take(path, false, moved); }
bool Backup::TakeFolder(const std::wstring& path, bool& moved) { return Take(path, true, moved); }

bool Backup::Take(const std::wstring& path, bool folder, bool& moved) {
  moved = false;
  IFileSystem& files = platform_.files;
  const auto attributes = files.GetAttributes(path);
  if (!attributes) return true;
  if (!Prepare()) return false;
  const std::wstring slot = L"items\\" + std::to_wstring(items_.size() + 1);
  const std::wstring kept = slot + L"\\" + text::ExtractFileName(path);
  const std::wstring target = folder_ + L"\\" + kept;
  if (!MakeDirectoryTree(files, folder_ + L"\\" + slot)) return false;

  BackupItem item{IsLinkEntry(*attributes) ? L"link" : folder ? L"folder" : L"file", path, L"", false,
                  kept, *attributes};
  std::vector<BackupItem> links;
  if (files.MoveEntry(path, target)) {
    moved = true;
  } else if (IsLinkEntry(*attributes)) {
    // A link holds nothing of its own: it is noted, not copied through.
    item.kept.clear();
  } else if (folder) {
    std::vector<std::wstring> inside;
    if (!CopyTree(files, path, target, false, inside)) {
      RemoveTree(files, folder_ + L"\\" + slot);
      return false;
    }
    for (const std::wstring& link : inside)
      links.push_back({L"link", path + L"\\" + link, L"", false, L"", 0});
  } else if (!CopyFileBytes(files, path, target)) {
    return false;
  }
  items_.push_back(item);
  items_.insert(items_.end(), links.begin(), links.end());
  if (Flush()) return true;
  items_.resize(items_.size() - 1 - links.size());
  if (moved) moved = !files.MoveEntry(target, path);
  return false;
}

std::vector<BackupSummary> ListBackups(const Platform& platform) {
  std::vector<BackupSummary> list;
  const std::wstring root = BackupRootFolder(platform);
  std::vector<FindEntry> entries;
  if (root.empty() || !platform.files.FindEntries(root + L"\\*.*", entries)) return list;
  for (const FindEntry& entry : entries) {
    if (!(entry.attributes & FileAttr::Directory) || IsLinkEntry(entry.attributes) ||
        !ValidId(entry.name))
      continue;
    BackupSummary summary;
    summary.id = entry.name;
    summary.folder = root + L"\\" + entry.name;
    const auto items = LoadManifest(platform, summary.folder, &summary.created);
    if (!items) continue;
    for (const BackupItem& item : *items)
      ++(item.kind == L"key" || item.kind == L"value" ? summary.registryItems : summary.fileItems);
    std::vector<TreeEntry> inside;
    ListDirectoryTree(platform.files, summary.folder, inside);
    for (const TreeEntry& file : inside)
      if (!(file.attributes & FileAttr::Directory)) summary.bytes += file.size;
    list.push_back(std::move(summary));
  }
  std::sort(list.begin(), list.end(), [](const BackupSummary& a, const BackupSummary& b) {
    return a.created != b.created ? a.created > b.created : a.id > b.id;
  });
  return list;
}

namespace {

std::optional<BackupSummary> FindBackup(const Platform& platform, const std::wstring& id) {
  const auto list = ListBackups(platform);
  if (list.empty()) return std::nullopt;
  if (id == L"latest") return list.front();
  for (const BackupSummary& summary : list)
    if (text::SameText(summary.id, id)) return summary;
  return std::nullopt;
}

// A key's parts, empty ones dropped, so that spellings compare on whole parts.
std::vector<std::wstring_view> KeyParts(std::wstring_view path) {
  std::vector<std::wstring_view> parts;
  for (std::size_t begin = 0; begin <= path.size();) {
    const std::size_t slash = std::min(path.find(L'\\', begin), path.size());
    if (slash > begin) parts.push_back(path.substr(begin, slash - begin));
    begin = slash + 1;
  }
  return parts;
}

bool KeyIsOrIsBelow(const std::vector<std::wstring_view>& key,
                    const std::vector<std::wstring_view>& top) {
  if (key.size() < top.size()) return false;
  for (std::size_t i = 0; i < top.size(); ++i)
    if (!text::SameText(key[i], top[i])) return false;
  return true;
}

// A key's name with its root ("HKEY_CURRENT_USER\Software\X") back into
// root and parts (viewing `name`); Invalid root when it names none.
std::pair<RegRoot, std::vector<std::wstring_view>> SplitKeyParts(std::wstring_view name) {
  const std::size_t slash = name.find(L'\\');
  return {RootKeyFromName(name.substr(0, slash)),
          slash == std::wstring_view::npos ? std::vector<std::wstring_view>()
                                           : KeyParts(name.substr(slash + 1))};
}

std::wstring JoinKey(const std::vector<std::wstring_view>& parts) {
  std::wstring out;
  for (std::wstring_view part : parts) out.append(out.empty() ? L"" : L"\\").append(part);
  return out;
}

// A registry item of the manifest: written back only where the guard would
// have let it be deleted.
struct RegistryGrant {
  RegRoot root;
  std::vector<std::wstring_view> key;
  const BackupItem* item;
  bool refused = false;
};

// Why a manifest item may not be put back; empty when it may.
std::wstring RegistryRefusal(const ProtectedPlaces& places, const BackupItem& item,
                             RegistryGrant& grant) {
  auto [root, key] = SplitKeyParts(item.path);
  grant = {root, std::move(key), &item, true};
  const bool wholeKey = item.kind == L"key";
  if (grant.root == RegRoot::Invalid) return RefusalReason(Refusal::Unresolvable);
  if (wholeKey && grant.key.empty()) return RefusalReason(Refusal::RegistryRoot);
  const Refusal r = places.CheckRegistry(grant.root, JoinKey(grant.key), wholeKey);
  grant.refused = r != Refusal::None;
  return grant.refused ? RefusalReason(r) : std::wstring();
}

// Writes one view's .reg back through the registry interface, each section
// only as far as a granted item covers it (a whole key with everything below
// it, or the named values of one key); what no item names is listed in
// `failed` (a refused item is listed on its own). False when the file cannot
// be read or a key cannot be made.
bool ImportRegFile(const Platform& platform, const std::wstring& file, bool use64,
                   const std::vector<RegistryGrant>& grants, std::vector<std::wstring>& failed) {
  std::vector<std::uint8_t> bytes;
  if (!platform.files.ReadWholeFile(file, bytes)) return false;
  const auto keys = ParseRegFile(bytes);
  if (!keys) return false;
  bool ok = true;
  for (const RegFileKey& section : *keys) {
    const auto [root, parts] = SplitKeyParts(section.name);
    bool whole = false, named = false;
    std::vector<std::wstring_view> names;
    for (const RegistryGrant& g : grants) {
      if (g.root != root || g.item->use64 != use64 || root == RegRoot::Invalid) continue;
      const bool key = g.item->kind == L"key" && KeyIsOrIsBelow(parts, g.key);
      const bool value = g.item->kind == L"value" && parts.size() == g.key.size() &&
                         KeyIsOrIsBelow(parts, g.key);
      named = named || key || value;
      if (g.refused) continue;
      whole = whole || key;
      if (value) names.push_back(g.item->valueName);
    }
    if (!whole && names.empty()) {
      if (!named) failed.push_back(section.name + L" (not listed in the backup)");
      continue;
    }
    auto key = platform.registry.CreateKey(root, JoinKey(parts), use64);
    if (!key) {
      ok = false;
      continue;
    }
    for (const auto& entry : section.values) {
      const std::wstring& name = entry.first;
      const bool granted = whole || std::any_of(names.begin(), names.end(), [&](auto n) {
                             return text::SameText(n, name);
                           });
      if (granted) ok = key->WriteValue(name, entry.second) && ok;
    }
  }
  return ok;
}

// Where a file or folder item is kept and where it goes back to, or why it
// may not: the copy must lie inside the backup folder, reached through no
// link, and the place must be one the guard would have let go, reached
// through no link either.
std::wstring FileRefusal(const Platform& platform, const ProtectedPlaces& places,
                         const std::wstring& folder, const BackupItem& item, std::wstring& from,
                         std::wstring& to) {
  const std::wstring base = ResolvePath(platform, folder);
  from = item.kept.empty() ? std::wstring() : ResolvePath(platform, folder + L"\\" + item.kept);
  if (base.empty() || from.size() <= base.size() || !PathIsOrIsBelow(from, base) ||
      PathCrossesLink(platform, from, true))
    return L"kept outside the backup";
  to = ResolvePath(platform, item.path);
  Refusal r = to.empty() ? Refusal::Unresolvable : places.CheckDeletion(to);
  if (r == Refusal::None && PathCrossesLink(platform, to, true)) r = Refusal::Link;
  return r == Refusal::None ? std::wstring() : RefusalReason(r);
}

bool RestoreFileItem(const Platform& platform, const BackupItem& item, const std::wstring& from,
                     const std::wstring& to) {
  IFileSystem& files = platform.files;
  if (!files.GetAttributes(from)) return false;
  if (!MakeDirectoryTree(files, text::ExcludeTrailingBackslash(text::ExtractFilePath(to))))
    return false;
  if (item.kind == L"folder") {
    std::vector<std::wstring> links;
    return CopyTree(files, from, to, true, links);
  }
  if (files.GetAttributes(to)) return false;  // never over something newer
  if (!CopyFileBytes(files, from, to)) return false;
  if (item.attributes & (FileAttr::ReadOnly | FileAttr::Hidden | FileAttr::System))
    files.SetAttributes(to, item.attributes);
  return true;
}

}  // namespace

// A restore may run elevated while the backup folder is the user's to write:
// nothing in it is trusted further than a deletion would be.
std::optional<RestoreResult> RestoreBackup(const Platform& platform, const std::wstring& id) {
  if (!ValidId(id)) return std::nullopt;
  const auto found = FindBackup(platform, id);
  if (!found) return std::nullopt;
  RestoreResult result;
  const auto items = LoadManifest(platform, found->folder, nullptr);
  if (!items) {
    result.failed.push_back(found->folder + L"\\" + kManifest);
    return result;
  }
  // Putting something back where no other program's folder is in the way.
  const ProtectedPlaces places(platform, {});
  std::vector<std::wstring> refusals(items->size());
  std::vector<RegistryGrant> grants;
  for (std::size_t i = 0; i < items->size(); ++i) {
    const BackupItem& item = (*items)[i];
    if (item.kind != L"key" && item.kind != L"value") continue;
    RegistryGrant grant;
    refusals[i] = RegistryRefusal(places, item, grant);
    grants.push_back(std::move(grant));
  }
  bool imported[2] = {false, false};
  for (bool use64 : {true, false}) {
    const std::wstring file = found->folder + L"\\" + RegFileName(use64);
    if (platform.files.FileExists(file))
      imported[use64] = ImportRegFile(platform, file, use64, grants, result.failed);
  }
  for (std::size_t i = 0; i < items->size(); ++i) {
    const BackupItem& item = (*items)[i];
    bool ok = false;
    if (!refusals[i].empty()) {
      // Refused above.
    } else if (item.kind == L"key" || item.kind == L"value") {
      const auto [root, parts] = SplitKeyParts(item.path);
      const std::wstring path = JoinKey(parts);
      if (item.kind == L"key") {
        ok = platform.registry.KeyExists(root, path, item.use64);
      } else {
        auto key = platform.registry.OpenKey(root, path, RegAccess::Read, item.use64);
        ok = key && key->ValueExists(item.valueName);
      }
      ok = ok && imported[item.use64];
    } else if (item.kind == L"file" || item.kind == L"folder") {
      std::wstring from, to;
      refusals[i] = FileRefusal(platform, places, found->folder, item, from, to);
      ok = refusals[i].empty() && RestoreFileItem(platform, item, from, to);
    }
    if (ok) {
      ++result.restored;
    } else {
      std::wstring line = item.kind == L"value" ? item.path + L" | " + item.valueName : item.path;
      if (!refusals[i].empty()) line += L" (" + refusals[i] + L")";
      result.failed.push_back(std::move(line));
    }
  }
  return result;
}

bool DeleteBackup(const Platform& platform, const std::wstring& id) {
  if (!ValidId(id) || id == L"latest") return false;
  const auto found = FindBackup(platform, id);
  return found && RemoveTree(platform.files, found->folder);
}

}  // namespace varnel
