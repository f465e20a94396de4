#pragma once

#include <functional>
#include <memory>

#include "core/folder_listing_cache.h"
#include "platform/platform.h"

namespace varnel {

// What the leftover scans of one batch read in bulk, read once for all of
// them: the registry trees the scanners walk key by key, copied at the first
// read of each view by as many readers as pay, and the folder listings of
// the file scan. Other reads and every write go to the live machine.
// Deletions never go through it: drop it once the batch's scans ended.
class ScanReads {
 public:
  // `wait` is called while readers copy; a false from it abandons the copy.
  ScanReads(const Platform& live, std::function<bool()> wait);
  ~ScanReads();
  ScanReads(const ScanReads&) = delete;
  ScanReads& operator=(const ScanReads&) = delete;

  const Platform& Machine() const { return platform_; }

 private:
  class Registry;
  std::unique_ptr<Registry> registry_;
  FolderListingCache files_;
  Platform platform_;
};

}  // namespace varnel
