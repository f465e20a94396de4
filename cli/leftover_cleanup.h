#pragma once

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "leftovers/scan_driver.h"
#include "platform/platform.h"
#include "uninstall/backup.h"
#include "uninstall/check_tree.h"
#include "uninstall/deletion_guard.h"

namespace varnel::cli {

// The leftovers of the programs a command removed, found and, when asked,
// deleted as the results window deletes them: every item checked, through
// the guard, backed up into one backup for the whole command, logged.
class LeftoverCleanup {
 public:
  // `remove`: delete what is found; `backup`: back it up first.
  LeftoverCleanup(const Platform& platform, bool remove, bool backup);

  // The one backup of the command (the forced file goes there too); begun
  // on first use; null without backups or when it could not be begun.
  Backup* RunBackup();
  const Platform& Machine() const { return platform_; }
  // The indexes scanned in this run: their folders are not other programs',
  // and their scans share their reads until Finish.
  void ScanTogether(std::vector<int> indexes) {
    driver_.SetScannedTogether(std::move(indexes));
    driver_.BeginBatch();
  }
  // Scans list[index] (or, with `filePath`, the disk around that file): the
  // findings are printed, and deleted by Finish.
  void Scan(const SoftList& list, int index, const std::wstring& filePath = {});
  // Deletes what was added (when asked), leaving `otherProgramFolders`
  // (install folders of the programs that stay) and the protected places alone.
  void Finish(const std::vector<std::wstring>& otherProgramFolders,
              const std::function<void(const std::string&)>& progress);

  // "leftovers", and after a deletion "deleted", "skipped" and "backup".
  void AddJson(nlohmann::ordered_json& result) const;
  std::string Text() const;
  // The backup's id; empty when nothing was backed up.
  std::wstring BackupId() const;

 private:
  Platform platform_;
  bool remove_;
  bool backup_;
  bool begun_ = false;
  std::unique_ptr<Backup> runBackup_;
  TFilterManage filter_;
  ScanDriver driver_;
  CheckTree tree_;
  std::vector<ScanFindings> found_;
  std::vector<DeletionOutcome> outcomes_;
  bool finished_ = false;
  std::wstring deletionError_;
};

}  // namespace varnel::cli
