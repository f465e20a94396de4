#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "uninstall/backup.h"

namespace varnel {

// The log manager's backup texts with their built-in English; the window
// replaces them from its language table.
struct BackupListTexts {
  std::wstring Room = L"All backups together take %s.";  // %s: the size
  std::wstring NoBackups = L"There are no backups.";
  std::wstring OneRestored = L"1 item was restored.";
  std::wstring Restored = L"%d items were restored.";
  std::wstring NotRestored = L"These items could not be restored:";
  std::wstring Missing = L"The backup no longer exists.";
};

// One row of the backups list: id, created, item count, size.
struct BackupRow {
  std::wstring id;
  std::wstring created;
  std::wstring items;
  std::wstring size;
};

// The backups the log manager lists, newest first, with what the window may
// do to the selected one. Rows are addressed by their index; anything else
// (no selection is -1) selects nothing.
class BackupList {
 public:
  BackupList(const Platform& platform, BackupListTexts texts);

  // Reads the backup folder afresh.
  void Refresh();

  std::size_t Count() const { return backups_.size(); }
  BackupRow Row(std::size_t index) const;
  // Restore and Delete act on a selected row only.
  bool CanAct(int selected) const;
  // How much room the backups take together, or that there are none.
  std::wstring RoomLine() const;

  // Puts the selected backup back and says what came back and what did not;
  // the backup stays. nullopt when nothing is selected.
  std::optional<std::wstring> Restore(int selected);
  // Removes the selected backup and reads the folder again; false when
  // nothing was removed.
  bool Delete(int selected);

 private:
  const BackupSummary* At(int selected) const;

  Platform platform_;
  BackupListTexts texts_;
  std::vector<BackupSummary> backups_;
};

}  // namespace varnel
