#pragma once

#include <string>
#include <vector>

#include "platform/platform.h"

namespace varnel {

// The folder of the day's logs: the program's data folder + "\Log\"; empty
// when there is no application-data folder.
std::wstring UninstallLogFolder(const Platform& platform);
// "yyyy-mm-dd.log" of today's local date.
std::wstring UninstallLogFileName(const Platform& platform);

// Appends `lines` to today's log, starting a new file with its header. The
// whole file is rewritten (UTF-8 with a byte-order mark, CR LF); failures are
// swallowed. Returns the file's path, empty when it could not be written.
std::wstring WriteUninstallLog(const Platform& platform, const std::vector<std::wstring>& lines);

}  // namespace varnel
