#include "uninstall/deletion_guard.h"

#include <utility>

#include "core/directory_tree.h"
#include "core/path_resolution.h"
#include "core/reboot_file_ops.h"
#include "core/registry_location.h"
#include "uninstall/backup.h"

namespace varnel {

namespace {

constexpr wchar_t kNoBackup[] = L"no backup could be made";

// The file is backed up by now, so a read-only mark does not keep it.
bool RemoveFileAnyway(IFileSystem& files, const std::wstring& path, std::uint32_t attributes) {
  if (files.RemoveFile(path)) return true;
  return (attributes & FileAttr::ReadOnly) &&
         files.SetAttributes(path, attributes & ~FileAttr::ReadOnly) && files.RemoveFile(path);
}

// Registry key paths compare on whole parts: no empty parts, no leading or
// trailing separator.
std::wstring NormalKeyPath(std::wstring_view path) {
  std::wstring out;
  for (wchar_t c : path) {
    if (c == L'\\' && (out.empty() || out.back() == L'\\')) continue;
    out += c;
  }
  if (!out.empty() && out.back() == L'\\') out.pop_back();
  return out;
}

}  // namespace

DeletionGuard::DeletionGuard(const Platform& platform, ProtectedPlaces places, Backup* backup)
    : platform_(platform), places_(std::move(places)), backup_(backup) {}

DeletionGuard DeletionGuard::WithoutBackup(const Platform& platform, ProtectedPlaces places) {
  DeletionGuard guard(platform, std::move(places), nullptr);
  guard.withoutBackup_ = true;
  return guard;
}

DeletionOutcome DeletionGuard::Refuse(DeletionOutcome outcome, Refusal refusal) {
  outcome.refused = refusal;
  outcome.reason = RefusalReason(refusal);
  skipped_.push_back(outcome);
  return outcome;
}

DeletionOutcome DeletionGuard::Skip(DeletionOutcome outcome, std::wstring reason) {
  outcome.reason = std::move(reason);
  skipped_.push_back(outcome);
  return outcome;
}

DeletionOutcome DeletionGuard::DeleteKey(RegRoot root, const std::wstring& keyPath, bool use64) {
  return DeleteRegistry(root, keyPath, {}, use64, true, {});
}

DeletionOutcome DeletionGuard::DeleteValue(RegRoot root, const std::wstring& keyPath,
                                           const std::wstring& valueName, bool use64) {
  return DeleteRegistry(root, keyPath, valueName, use64, false, {});
}

DeletionOutcome DeletionGuard::DeleteRegistry(RegRoot root, const std::wstring& keyPath,
                                              const std::wstring& valueName, bool use64,
                                              bool wholeKey, const std::wstring& data) {
  DeletionOutcome outcome;
  outcome.item = FormatRegistryLocation(root, keyPath, valueName, data);
  if (RootKeyName(root).empty()) return Refuse(std::move(outcome), Refusal::Unresolvable);
  const std::wstring key = NormalKeyPath(keyPath);
  if (key.empty() && wholeKey) return Refuse(std::move(outcome), Refusal::RegistryRoot);
  if (const Refusal r = places_.CheckRegistry(root, key, wholeKey); r != Refusal::None)
    return Refuse(std::move(outcome), r);
  if (Unbacked()) return Skip(std::move(outcome), kNoBackup);

  IRegistry& registry = platform_.registry;
  if (wholeKey) {
    if (!registry.KeyExists(root, key, use64)) {
      outcome.deleted = true;
      return outcome;
    }
    if (backup_ && !backup_->SaveKey(root, key, use64))
      return Skip(std::move(outcome), L"could not be backed up");
    if (registry.DeleteKey(root, key, use64)) {
      outcome.deleted = true;
      return outcome;
    }
    return Skip(std::move(outcome), L"could not be deleted");
  }

  auto opened = registry.OpenKey(root, key, RegAccess::Write, use64);
  if (!opened || !opened->ValueExists(valueName)) {
    // A key that opens for reading but not for writing still holds the value.
    auto readable = opened ? nullptr : registry.OpenKey(root, key, RegAccess::Read, use64);
    if (readable && readable->ValueExists(valueName))
      return Skip(std::move(outcome), L"could not be deleted");
    outcome.deleted = true;
    return outcome;
  }
  if (backup_ && !backup_->SaveValue(root, key, valueName, use64))
    return Skip(std::move(outcome), L"could not be backed up");
  if (opened->DeleteValue(valueName)) {
    outcome.deleted = true;
    return outcome;
  }
  return Skip(std::move(outcome), L"could not be deleted");
}

// Resolution and the protected places, shared by files and folders: empty
// when the item was refused (the outcome then says why).
std::wstring DeletionGuard::Admit(DeletionOutcome& outcome, const std::wstring& path) {
  const std::wstring resolved = ResolvePath(platform_, path);
  Refusal refusal = resolved.empty() ? Refusal::Unresolvable
                                     : places_.CheckDeletion(resolved, productCode_);
  if (refusal == Refusal::None) return resolved;
  outcome = Refuse(std::move(outcome), refusal);
  return {};
}

DeletionOutcome DeletionGuard::DeleteSingleFile(const std::wstring& path) { return DeletePath(path); }

DeletionOutcome DeletionGuard::DeleteFolderTree(const std::wstring& path) {
  return DeletePath(path);
}

// What is on disk decides, not what the caller thought it was: a folder goes
// with its contents, a link (to a file or a folder) alone.
DeletionOutcome DeletionGuard::DeletePath(const std::wstring& path) {
  DeletionOutcome outcome;
  outcome.item = path;
  const std::wstring resolved = Admit(outcome, path);
  if (resolved.empty()) return outcome;
  if (Unbacked()) return Skip(std::move(outcome), kNoBackup);
  IFileSystem& files = platform_.files;
  const auto attributes = files.GetAttributes(resolved);
  if (!attributes) {
    outcome.deleted = true;
    return outcome;
  }
  const bool folder = (*attributes & FileAttr::Directory) != 0;
  const bool tree = folder && !IsLinkEntry(*attributes);

  if (backup_) {
    bool moved = false;
    if (!(tree ? backup_->TakeFolder(resolved, moved) : backup_->TakeFile(resolved, moved)))
      return Skip(std::move(outcome), L"could not be backed up");
    if (moved) {
      outcome.deleted = true;
      return outcome;
    }
  }
  bool queue = false;
  if (tree) {
    RemoveTree(resolved, queue);
  } else if (!(folder ? files.RemoveFolder(resolved)
                      : RemoveFileAnyway(files, resolved, *attributes))) {
    queue = true;
  }
  if (!files.GetAttributes(resolved)) {
    outcome.deleted = true;
  } else if (queue && ScheduleFileOnReboot(platform_, resolved, L"", RebootMode::Delete)) {
    outcome.atRestart = true;
  } else {
    return Skip(std::move(outcome), L"could not be deleted");
  }
  return outcome;
}

// Removes what it can below and including `folder`; links are removed as
// links, never entered. A file that will not go now is queued for the next
// start and `queued` set; other errors are passed over.
void DeletionGuard::RemoveTree(const std::wstring& folder, bool& queued) {
  IFileSystem& files = platform_.files;
  std::vector<TreeEntry> entries;
  ListDirectoryTree(files, folder, entries);
  // Backwards: every folder's contents before the folder.
  for (auto it = entries.rbegin(); it != entries.rend(); ++it) {
    const std::wstring path = folder + L"\\" + it->relative;
    if (it->attributes & FileAttr::Directory) {
      files.RemoveFolder(path);
    } else if (!RemoveFileAnyway(files, path, it->attributes) &&
               ScheduleFileOnReboot(platform_, path, L"", RebootMode::Delete)) {
      queued = true;
    }
  }
  files.RemoveFolder(folder);
}

DeletionOutcome DeletionGuard::Delete(const TMyTreeData& item) {
  if (item.Kind == TreeDataKind::Registry) {
    return DeleteRegistry(item.Root, item.KeyPath, item.ValueName, item.Is64BitView,
                          item.ValueName.empty(), item.ValueData);
  }
  return item.FileKindWord == FileKind::File ? DeleteSingleFile(item.FilePath)
                                             : DeleteFolderTree(item.FilePath);
}

}  // namespace varnel
