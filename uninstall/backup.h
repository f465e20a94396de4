#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"
#include "uninstall/reg_file.h"

namespace varnel {

// One entry of the manifest. `path` is the file or folder, or the key with
// its root's name; `kept` is relative to the backup folder.
struct BackupItem {
  std::wstring kind;  // "key", "value", "file", "folder", "link"
  std::wstring path;
  std::wstring valueName;
  bool use64 = false;
  std::wstring kept;
  std::uint32_t attributes = 0;
};

// The backups' parent folder: the data folder + "\Backup"; empty when there
// is no application-data folder.
std::wstring BackupRootFolder(const Platform& platform);

// The manifest's text and its reader (nullopt when it is not one).
std::string ManifestText(const std::wstring& created, const std::vector<BackupItem>& items);
std::optional<std::vector<BackupItem>> ReadManifest(std::string_view text, std::wstring* created);

// One run's backup: a folder beside the logs ("<data folder>\Backup\<id>\")
// holding "registry64.reg" and "registry32.reg" (one per view, for
// "reg import /reg:64" and "/reg:32"), the moved or copied files and folders
// under "items\<n>\", and "manifest.json" listing what was taken, from where
// and where it is kept, so that a restore needs nothing else. The folder is
// made when the first item is taken: a run that deletes nothing leaves none.
class Backup {
 public:
  // Creates the folder for a new run; `id` is "yyyy-mm-dd_hhmmss" (made
  // unique with a suffix when needed).
  static std::unique_ptr<Backup> Begin(const Platform& platform);

  const std::wstring& Id() const { return id_; }
  const std::wstring& Folder() const { return folder_; }

  // Exports the key with everything below it, or one value; false when it
  // could not be read (the guard then does not delete it).
  bool SaveKey(RegRoot root, const std::wstring& keyPath, bool use64);
  bool SaveValue(RegRoot root, const std::wstring& keyPath, const std::wstring& valueName,
                 bool use64);
  // Moves the file or folder into the backup (same volume), else copies it;
  // true when the original may now be deleted or is gone already.
  // `moved` tells which happened.
  bool TakeFile(const std::wstring& path, bool& moved);
  bool TakeFolder(const std::wstring& path, bool& moved);

  // Writes the .reg files and the manifest; called after every item, so
  // that an interrupted run still restores.
  bool Flush();

  const std::vector<BackupItem>& Items() const { return items_; }

 private:
  Backup(const Platform& platform, std::wstring id, std::wstring folder, std::wstring created);
  bool Prepare();
  bool Take(const std::wstring& path, bool folder, bool& moved);
  bool AddRegistry(BackupItem item, std::vector<RegFileKey> keys);

  Platform platform_;
  std::wstring id_;
  std::wstring folder_;
  std::wstring created_;
  bool made_ = false;
  std::vector<RegFileKey> keys64_;
  std::vector<RegFileKey> keys32_;
  std::vector<BackupItem> items_;
};

struct BackupSummary {
  std::wstring id;
  std::wstring folder;
  std::wstring created;         // "yyyy-mm-dd hh:mm:ss"
  int registryItems = 0;
  int fileItems = 0;
  std::uint64_t bytes = 0;      // room the backup takes on disk
};

// Newest first; empty when there are none or the folder cannot be read.
std::vector<BackupSummary> ListBackups(const Platform& platform);

struct RestoreResult {
  int restored = 0;
  std::vector<std::wstring> failed;  // items that could not be put back
};
// "latest" takes the newest. nullopt when no such backup exists.
std::optional<RestoreResult> RestoreBackup(const Platform& platform, const std::wstring& id);
bool DeleteBackup(const Platform& platform, const std::wstring& id);

}  // namespace varnel
