#pragma once

#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/file_system.h"

namespace varnel {

// A file system that lists each folder once: a search repeated over the
// same folders (the leftover scans of a batch each walk AppData, the Start
// menu and the installer caches) is answered from the first listing. Every
// other call goes to the live file system; a change made through this one
// forgets every listing, a change made elsewhere is not seen, so keep it only
// as long as the searches that share it.
class FolderListingCache final : public IFileSystem {
 public:
  explicit FolderListingCache(IFileSystem& live) : live_(live) {}

  bool FindEntries(std::wstring_view pattern, std::vector<FindEntry>& out) override;

  std::optional<std::uint32_t> GetAttributes(std::wstring_view path) override {
    return live_.GetAttributes(path);
  }
  bool SetAttributes(std::wstring_view path, std::uint32_t attributes) override {
    return Changed(live_.SetAttributes(path, attributes));
  }
  std::optional<FindEntry> GetFileInfo(std::wstring_view path) override {
    return live_.GetFileInfo(path);
  }
  bool ReadWholeFile(std::wstring_view path, std::vector<std::uint8_t>& out) override {
    return live_.ReadWholeFile(path, out);
  }
  bool ReadFilePart(std::wstring_view path, std::uint64_t offset, std::size_t maxBytes,
                    std::vector<std::uint8_t>& out) override {
    return live_.ReadFilePart(path, offset, maxBytes, out);
  }
  bool WriteWholeFile(std::wstring_view path, std::span<const std::uint8_t> bytes) override {
    return Changed(live_.WriteWholeFile(path, bytes));
  }
  bool RemoveFile(std::wstring_view path) override { return Changed(live_.RemoveFile(path)); }
  bool MakeDirectory(std::wstring_view path) override {
    return Changed(live_.MakeDirectory(path));
  }
  bool RemoveFolder(std::wstring_view path) override { return Changed(live_.RemoveFolder(path)); }
  bool MoveEntry(std::wstring_view from, std::wstring_view to) override {
    return Changed(live_.MoveEntry(from, to));
  }
  bool ReplaceEntry(std::wstring_view from, std::wstring_view to) override {
    return Changed(live_.ReplaceEntry(from, to));
  }
  std::wstring LongPathName(std::wstring_view path) override { return live_.LongPathName(path); }
  std::wstring ShortPathName(std::wstring_view path) override {
    return live_.ShortPathName(path);
  }
  bool MoveOnReboot(std::wstring_view from, std::wstring_view to) override {
    return live_.MoveOnReboot(from, to);
  }

 private:
  bool Changed(bool result);

  IFileSystem& live_;
  std::mutex mutex_;
  // By the pattern as asked: the listing and whether the search succeeded.
  std::unordered_map<std::wstring, std::pair<bool, std::vector<FindEntry>>> listings_;
};

}  // namespace varnel
