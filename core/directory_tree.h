#pragma once

#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace varnel {

// Deletes the folder with everything in it. Stops at the first entry that
// cannot be deleted and returns false, leaving the rest in place.
bool DeleteDirectoryTree(IFileSystem& files, std::wstring_view folder);

// Makes the folder (no trailing "\") and every missing folder above it,
// outermost first; true when it exists afterwards.
bool MakeDirectoryTree(IFileSystem& files, const std::wstring& folder);

}  // namespace varnel
