#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace varnel {

// FILETIME as one number: 100 ns ticks since 1601-01-01 UTC.
using FileTime = std::uint64_t;

namespace FileAttr {
constexpr std::uint32_t ReadOnly = 0x1;
constexpr std::uint32_t Hidden = 0x2;
constexpr std::uint32_t System = 0x4;
constexpr std::uint32_t Directory = 0x10;
constexpr std::uint32_t Archive = 0x20;
constexpr std::uint32_t Normal = 0x80;
constexpr std::uint32_t ReparsePoint = 0x400;
}  // namespace FileAttr

struct FindEntry {
  std::wstring name;
  std::wstring shortName;  // 8.3 alias, empty when the name is already one
  std::uint32_t attributes = 0;
  std::uint64_t size = 0;
  FileTime creationTime = 0;
  FileTime lastAccessTime = 0;
  FileTime lastWriteTime = 0;
};

// Windows path rules: "\" separators, case-insensitive names.
class IFileSystem {
 public:
  virtual ~IFileSystem() = default;

  virtual std::optional<std::uint32_t> GetAttributes(std::wstring_view path) = 0;
  virtual bool SetAttributes(std::wstring_view path, std::uint32_t attributes) = 0;
  // Attributes, size and times of one file or folder (name left empty);
  // nullopt when it cannot be read.
  virtual std::optional<FindEntry> GetFileInfo(std::wstring_view path) = 0;

  // pattern is a folder + "\" + a name that may hold "*" and "?".
  // "." and ".." are reported as the system reports them.
  // False when nothing matched or the folder cannot be read.
  virtual bool FindEntries(std::wstring_view pattern, std::vector<FindEntry>& out) = 0;

  virtual bool ReadWholeFile(std::wstring_view path, std::vector<std::uint8_t>& out) = 0;
  // Up to `maxBytes` from `offset`: fewer at the end of the file, none past
  // it. False when the file cannot be read.
  virtual bool ReadFilePart(std::wstring_view path, std::uint64_t offset, std::size_t maxBytes,
                            std::vector<std::uint8_t>& out) = 0;
  // Creates or replaces the file.
  virtual bool WriteWholeFile(std::wstring_view path, std::span<const std::uint8_t> bytes) = 0;
  virtual bool RemoveFile(std::wstring_view path) = 0;
  virtual bool MakeDirectory(std::wstring_view path) = 0;
  // Removes an empty folder only.
  virtual bool RemoveFolder(std::wstring_view path) = 0;
  virtual bool MoveEntry(std::wstring_view from, std::wstring_view to) = 0;
  // Puts the file `from` in the place of the file `to` in one step, once
  // `from`'s content is on the disk; a file at `to` is replaced, a read-only
  // one refused. On failure `to` is as it was.
  virtual bool ReplaceEntry(std::wstring_view from, std::wstring_view to) = 0;

  // Empty when the path does not exist.
  virtual std::wstring LongPathName(std::wstring_view path) = 0;
  virtual std::wstring ShortPathName(std::wstring_view path) = 0;

  // Renames from -> to (to empty: deletes from) at the next start of Windows,
  // replacing an existing target.
  virtual bool MoveOnReboot(std::wstring_view from, std::wstring_view to) = 0;

  bool FileExists(std::wstring_view path) {
    auto a = GetAttributes(path);
    return a && !(*a & FileAttr::Directory);
  }
  bool DirectoryExists(std::wstring_view path) {
    auto a = GetAttributes(path);
    return a && (*a & FileAttr::Directory);
  }
};

}  // namespace varnel
