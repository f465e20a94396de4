#pragma once

#include <string>
#include <vector>

#include "cli/cli_args.h"
#include "platform/platform.h"
#include "uninstall/log_manager.h"

namespace varnel::cli {

std::string FormatLogsText(const Platform& platform, const std::vector<SavedLog>& logs);
std::string FormatLogsJson(const Platform& platform, const std::vector<SavedLog>& logs);

// Lists the uninstall logs, or prints the one named by --show as text.
int RunLogs(const Platform& platform, const LogsOptions& options, std::string& out,
            std::string& err);

}  // namespace varnel::cli
