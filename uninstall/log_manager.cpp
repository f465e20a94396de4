#include "uninstall/log_manager.h"

#include "core/reboot_file_ops.h"
#include "base/text.h"
#include "uninstall/uninstall_log.h"

namespace varnel {

std::vector<SavedLog> ListUninstallLogs(const Platform& platform) {
  std::vector<SavedLog> logs;
  const std::wstring folder = UninstallLogFolder(platform);
  if (folder.empty()) return logs;
  std::vector<FindEntry> entries;
  if (!platform.files.FindEntries(folder + L"*.*", entries)) return logs;
  for (const FindEntry& entry : entries) {
    if (entry.name == L"." || entry.name == L".." || (entry.attributes & FileAttr::Directory)) {
      continue;
    }
    // Anywhere in the name, so renamed copies such as x.log.bak show too.
    if (!text::ContainsText(entry.name, L".Log")) continue;
    logs.push_back({entry.name, folder + entry.name, entry.size, entry.lastWriteTime});
  }
  return logs;
}

bool DeleteUninstallLog(const Platform& platform, const std::wstring& path) {
  if (path.empty()) return false;
  if (platform.files.RemoveFile(path)) return true;
  return ScheduleFileOnReboot(platform, path, L"", RebootMode::Delete);
}

}  // namespace varnel
