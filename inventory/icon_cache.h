#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "inventory/soft_info.h"
#include "platform/file_system.h"
#include "platform/system.h"

namespace varnel {

// The icons the analysis extracted, kept in a file beside the software cache
// so that a later start restores them instead of extracting them again. An
// entry belongs to a software cache section (the display name, compared
// ignoring case) and counts only while the record still has the fingerprint
// and the icon location the entry was written with: a reinstalled program
// loses its icon with its cached fields.
class IconCache {
 public:
  struct Entry {
    std::wstring fingerprint;
    std::wstring iconLocation;
    std::vector<std::uint8_t> small, large;  // IShell::IconBits
  };

  // Replaces what is held by the file's entries. A missing file, or one that
  // is not whole and well-formed, gives none: false.
  bool Load(IFileSystem& files, std::wstring_view file);
  // Writes a temporary file beside `file` and puts it in its place, so that
  // a failed write never leaves a part of a file.
  bool Save(IFileSystem& files, std::wstring_view file) const;

  // The entry of the record's section, when it still belongs to the record.
  const Entry* Find(ISystem& system, const TSoftInfo& info) const;
  void Store(ISystem& system, const TSoftInfo& info, std::vector<std::uint8_t> small,
             std::vector<std::uint8_t> large);
  bool Changed() const { return changed_; }
  std::size_t Size() const { return entries_.size(); }

  // The file's bytes, and back; Decode is false, and leaves the cache
  // empty, for anything Encode did not make.
  std::vector<std::uint8_t> Encode() const;
  bool Decode(std::span<const std::uint8_t> bytes);

 private:
  std::map<std::wstring, Entry, std::less<>> entries_;  // by upper-cased name
  bool changed_ = false;
};

// The icon cache that goes with a software cache file: same folder.
std::wstring IconCacheFileFor(std::wstring_view softwareCacheFile);

}  // namespace varnel
