#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "inventory/soft_list.h"
#include "platform/platform.h"

namespace varnel {

// The indexes (decimal text, in list order) of the programs installed in the
// folder that holds `filePath`: install folder and the file's folder, each
// resolved and with a trailing "\", equal without regard to case. Hidden
// records (duplicates, folded toolbars) are never shown, so never found.
std::vector<std::wstring> FindSoftwareByFolder(const Platform& platform, const SoftList& list,
                                               std::wstring_view filePath);

// The indexes of the visible programs whose upper-cased name holds the
// upper-cased `text`.
std::vector<std::wstring> FindSoftwareByName(const SoftList& list, std::wstring_view text);

// A copy of the record at `index`; false when there is none.
bool GetSoftwareRecord(const SoftList& list, int index, TSoftInfo& record);

}  // namespace varnel
