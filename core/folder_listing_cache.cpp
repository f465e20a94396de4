#include "core/folder_listing_cache.h"

namespace varnel {

bool FolderListingCache::FindEntries(std::wstring_view pattern, std::vector<FindEntry>& out) {
  std::wstring key(pattern);
  {
    std::lock_guard lock(mutex_);
    if (auto found = listings_.find(key); found != listings_.end()) {
      out = found->second.second;
      return found->second.first;
    }
  }
  const bool found = live_.FindEntries(pattern, out);
  std::lock_guard lock(mutex_);
  listings_.insert_or_assign(std::move(key), std::make_pair(found, out));
  return found;
}

bool FolderListingCache::Changed(bool result) {
  std::lock_guard lock(mutex_);
  listings_.clear();
  return result;
}

}  // namespace varnel
