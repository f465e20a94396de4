#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace varnel {

// One run's backup: a folder beside the logs ("<data folder>\Backup\<id>\")
// holding "registry.reg" (both views kept apart, readable by "reg import"),
// the moved or copied files and folders, and "manifest.txt" listing what was
// taken and from where, so that a restore needs nothing else.
class Backup {
 public:
  // Creates the folder for a new run; `id` is "yyyy-mm-dd_hhmmss" (made
  // unique with a suffix when needed).
  static std::unique_ptr<Backup> Begin(const Platform& platform);

  const std::wstring& Id() const;
  const std::wstring& Folder() const;

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

  // Writes registry.reg and manifest.txt; called after every item, so that an
  // interrupted run still restores.
  bool Flush();

  // Members and the constructor are the implementation's.

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
