#pragma once

#include <string>
#include <vector>

#include "inventory/soft_list.h"

namespace varnel {

// The install locations (as written) of every shown record of `list` but
// the ones at `scanned`: the folders a scan of those must leave alone.
std::vector<std::wstring> OtherProgramFolders(const TSoftList& list,
                                              const std::vector<int>& scanned);

}  // namespace varnel
