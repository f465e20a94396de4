#pragma once

#include <string>

#include "cli/cli_args.h"
#include "cli/uninstall_command.h"
#include "platform/platform.h"

namespace varnel::cli {

// The forced uninstall without a window: the programs installed in the
// file's folder are uninstalled and their leftovers scanned; with none, the
// file itself is deleted through the guard (backed up) and the disk around
// it scanned. `--delete` deletes the leftovers too.
int RunForce(const Platform& platform, const ForceOptions& options, std::string& out,
             std::string& err, const Progress& progress);

}  // namespace varnel::cli
