#include "leftovers/other_programs.h"

#include <algorithm>

#include "core/text.h"

namespace varnel {

std::vector<std::wstring> OtherProgramFolders(const TSoftList& list,
                                              const std::vector<int>& scanned) {
  std::vector<std::wstring> folders;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const auto& record = list[i];
    if (!record || record->Hidden) continue;
    if (std::find(scanned.begin(), scanned.end(), static_cast<int>(i)) != scanned.end()) continue;
    const auto location = text::Trim(record->InstallLocation);
    if (!location.empty()) folders.push_back(location);
  }
  return folders;
}

}  // namespace varnel
