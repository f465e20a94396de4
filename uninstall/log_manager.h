#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace varnel {

struct SavedLog {
  std::wstring name;  // file name, the list's caption
  std::wstring path;  // full path
  std::uint64_t size = 0;
  FileTime lastWrite = 0;
};

// The log folder's files whose name holds ".Log" anywhere (ignoring case),
// folders skipped, in the order the file system returns them.
std::vector<SavedLog> ListUninstallLogs(const Platform& platform);

// Deletes a log, or schedules it for deletion at the next restart when it
// cannot be deleted now; false when it is still there and could not even be
// scheduled.
bool DeleteUninstallLog(const Platform& platform, const std::wstring& path);

}  // namespace varnel
