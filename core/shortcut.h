#pragma once

#include <string>
#include <string_view>

#include "platform/file_system.h"
#include "platform/system.h"

namespace varnel {

// What GetShortcutLinkKind reports about a shell link file.
namespace LinkKind {
constexpr int LocalPath = 0;
constexpr int Network = 1;
constexpr int LocalAndNetwork = 2;
constexpr int Other = 3;
constexpr int BadHeader = 4;
constexpr int NoFile = 5;
}  // namespace LinkKind

// Reads the link file's bytes directly, without the shell. Bytes past the end
// of a truncated file read as zero. A file that exists but cannot be read
// counts as missing.
int GetShortcutLinkKind(IFileSystem& files, std::wstring_view fileName);

// The local base path of a link whose kind is LocalPath, decoded with the
// ANSI code page; empty for any other link or an implausible length.
std::wstring GetShortcutTarget(IFileSystem& files, ISystem& system, std::wstring_view fileName);

// The local base path as the link stores it, decoded with the ANSI code page,
// whether or not it still exists; empty where GetShortcutTarget has nothing.
std::wstring GetShortcutBasePath(IFileSystem& files, ISystem& system, std::wstring_view fileName);

}  // namespace varnel
