#pragma once

#include <string>

#include "cli/cli_args.h"
#include "platform/platform.h"

namespace varnel::cli {

// Lists the deletion runs' backups, newest first.
int RunBackups(const Platform& platform, const BackupsOptions& options, std::string& out,
               std::string& err);

// Puts one backup back; Failed when there is no such backup or an item
// could not be restored (each is named).
int RunRestore(const Platform& platform, const RestoreOptions& options, std::string& out,
               std::string& err);

}  // namespace varnel::cli
