#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/cli_args.h"
#include "inventory/soft_list.h"
#include "platform/platform.h"

namespace varnel::cli {

// The records `list` shows: the visible ones, or with `all` every one.
std::string FormatListText(const SoftList& list, bool all);
std::string FormatListJson(const SoftList& list, bool all);

// Builds the inventory, waits for one analysis pass (which writes the
// software cache) and prints. Output is UTF-8.
int RunList(const Platform& platform, const ListOptions& options, std::string& out,
            std::string& err);

// Builds the inventory, lets one analysis pass fill in install folders, sizes
// and the cache, and hands the records to `use`.
void WithInventory(const Platform& platform, std::string& err,
                   const std::function<void(const SoftList&)>& use);

// The whole tool: arguments without the program name. `progress`, when set,
// receives what a long command does while it runs.
int RunCli(const Platform& platform, const std::vector<std::wstring>& args, std::string& out,
           std::string& err, const std::function<void(const std::string&)>& progress = {});

}  // namespace varnel::cli
