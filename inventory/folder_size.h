#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "inventory/soft_info.h"
#include "platform/platform.h"

namespace varnel {

// The folder whose size stands for the program's: its install location, else
// the folder found from the uninstall string, else the existing folder of its
// "Readme" file; empty when there is none.
std::wstring SizeFolderOf(IFileSystem& files, const TSoftInfo& info,
                          std::wstring_view foundFolder);

// Bytes of every file below `folder`, at any depth. Folders that are links
// (reparse points) are not entered: a junction loop would never end. Stops
// early, with what it has summed, once `cancelled` says so.
std::int64_t FolderTreeSize(IFileSystem& files, std::wstring_view folder,
                            const std::function<bool()>& cancelled = {});

// The tree size of a folder that passes IsSafeFolder; 0 for any other.
std::int64_t SafeFolderSize(const Platform& platform, std::wstring_view folder,
                            const std::function<bool()>& cancelled = {});

}  // namespace varnel
