#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"

namespace varnel {

// Deletes the folder with everything in it. Stops at the first entry that
// cannot be deleted and returns false, leaving the rest in place.
bool DeleteDirectoryTree(IFileSystem& files, std::wstring_view folder);

struct TreeEntry {
  std::wstring relative;  // below the walked folder, "\"-separated
  std::uint32_t attributes = 0;
  std::uint64_t size = 0;
};

// Everything below `folder`, each folder before its contents (so the list
// read backwards is an order in which a tree can be removed); links are
// listed but never entered. False when a folder could not be listed.
bool ListDirectoryTree(IFileSystem& files, const std::wstring& folder,
                       std::vector<TreeEntry>& out);

bool IsLinkEntry(std::uint32_t attributes);

// Makes the folder (no trailing "\") and every missing folder above it,
// outermost first; true when it exists afterwards.
bool MakeDirectoryTree(IFileSystem& files, const std::wstring& folder);

}  // namespace varnel
