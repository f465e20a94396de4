#pragma once

#include "platform/file_system.h"

namespace varnel::win32 {

class Win32FileSystem final : public IFileSystem {
 public:
  std::optional<std::uint32_t> GetAttributes(std::wstring_view path) override;
  bool SetAttributes(std::wstring_view path, std::uint32_t attributes) override;
  std::optional<FindEntry> GetFileInfo(std::wstring_view path) override;
  bool FindEntries(std::wstring_view pattern, std::vector<FindEntry>& out) override;
  bool ReadWholeFile(std::wstring_view path, std::vector<std::uint8_t>& out) override;
  bool ReadFilePart(std::wstring_view path, std::uint64_t offset, std::size_t maxBytes,
                    std::vector<std::uint8_t>& out) override;
  bool WriteWholeFile(std::wstring_view path, std::span<const std::uint8_t> bytes) override;
  bool RemoveFile(std::wstring_view path) override;
  bool MakeDirectory(std::wstring_view path) override;
  bool RemoveFolder(std::wstring_view path) override;
  bool MoveEntry(std::wstring_view from, std::wstring_view to) override;
  bool ReplaceEntry(std::wstring_view from, std::wstring_view to) override;
  std::wstring LongPathName(std::wstring_view path) override;
  std::wstring ShortPathName(std::wstring_view path) override;
  bool MoveOnReboot(std::wstring_view from, std::wstring_view to) override;
};

}  // namespace varnel::win32
