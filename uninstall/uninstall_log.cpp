#include "uninstall/uninstall_log.h"

namespace varnel {

std::wstring UninstallLogFolder(const Platform&) { return {}; }
std::wstring UninstallLogFileName(const Platform&) { return {}; }
std::wstring WriteUninstallLog(const Platform&, const std::vector<std::wstring>&) { return {}; }

}  // namespace varnel
