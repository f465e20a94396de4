#pragma once

#include <string>
#include <vector>

#include "inventory/soft_list.h"
#include "platform/platform.h"

namespace varnel {

// The install locations (as written) of every shown record of `list` but
// the ones at `scanned`: the folders a scan of those must leave alone. A
// toolbar with no uninstaller of its own whose folder lies in the folder of
// a scanned program (one a program may own) is part of that program, not
// another one.
std::vector<std::wstring> OtherProgramFolders(const Platform& platform, const SoftList& list,
                                              const std::vector<int>& scanned);

}  // namespace varnel
