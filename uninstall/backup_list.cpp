#include "uninstall/backup_list.h"

#include "core/file_size.h"
#include "base/text.h"

namespace varnel {

BackupList::BackupList(const Platform& platform, BackupListTexts texts)
    : platform_(platform), texts_(std::move(texts)) {}

void BackupList::Refresh() { backups_ = ListBackups(platform_); }

const BackupSummary* BackupList::At(int selected) const {
  if (selected < 0 || static_cast<std::size_t>(selected) >= backups_.size()) return nullptr;
  return &backups_[static_cast<std::size_t>(selected)];
}

BackupRow BackupList::Row(std::size_t index) const {
  const BackupSummary* b = At(static_cast<int>(index));
  if (!b) return {};
  return {b->id, b->created, std::to_wstring(b->registryItems + b->fileItems),
          FormatFileSize(platform_.system, static_cast<std::int64_t>(b->bytes))};
}

bool BackupList::CanAct(int selected) const { return At(selected) != nullptr; }

std::wstring BackupList::RoomLine() const {
  if (backups_.empty()) return texts_.NoBackups;
  std::uint64_t total = 0;
  for (const BackupSummary& b : backups_) total += b.bytes;
  return text::ReplaceAll(texts_.Room, L"%s",
                          FormatFileSize(platform_.system, static_cast<std::int64_t>(total)));
}

std::optional<std::wstring> BackupList::Restore(int selected) {
  const BackupSummary* b = At(selected);
  if (!b) return std::nullopt;
  const auto result = RestoreBackup(platform_, b->id);
  if (!result) {
    // Removed behind the window's back: the list catches up.
    Refresh();
    return texts_.Missing;
  }
  std::wstring report =
      result->restored == 1
          ? texts_.OneRestored
          : text::ReplaceAll(texts_.Restored, L"%d", std::to_wstring(result->restored));
  if (!result->failed.empty()) {
    report += L"\r\n\r\n" + texts_.NotRestored;
    for (const std::wstring& item : result->failed) report += L"\r\n" + item;
  }
  return report;
}

bool BackupList::Delete(int selected) {
  const BackupSummary* b = At(selected);
  if (!b) return false;
  const bool deleted = DeleteBackup(platform_, b->id);
  Refresh();
  return deleted;
}

}  // namespace varnel
