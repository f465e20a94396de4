#include "uninstall/log_manager.h"

namespace varnel {

std::vector<TLogFile> ListUninstallLogs(const Platform&) { return {}; }
bool DeleteUninstallLog(const Platform&, const std::wstring&) { return false; }

}  // namespace varnel
