#pragma once

#include <cstddef>

#include "inventory/soft_list.h"
#include "platform/file_system.h"

namespace varnel {

// Folds each visible toolbar record at `firstToolbar` or later into the first
// visible program before it that has its name or folder; the program takes
// the toolbar's class id and file, the toolbar record is hidden.
void FoldToolbars(IFileSystem& files, SoftList& list, std::size_t firstToolbar);

}  // namespace varnel
