#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"
#include "ui/software_rows.h"

namespace varnel {

// Which items of the list's context menu are enabled.
struct SoftMenuState {
  bool uninstall = false;
  bool openFolder = false;
  bool searchOnline = false;
  bool viewEntry = false;
};
SoftMenuState MenuStateFor(const Platform& platform, const SoftRow* selected);

// Sub-item 8 as a number; -1 when it is not one.
int RecordIndexOf(std::wstring_view text);
// Remove Entry acts only on an index above 0: the first record is never
// removed this way.
bool MayRemoveEntry(int index);

// The registry key of a row: root name, "\", key path (which already starts
// with one).
std::wstring RegistryKeyOf(const SoftRow& row);

// Every UTF-8 byte of `name` as "%" and two lower-case hex digits.
std::wstring EncodeSearchName(std::wstring_view name);
// The browser's parameter for Search Online.
std::wstring SearchOnlineParameter(std::wstring_view caption);
constexpr std::wstring_view kSearchBrowser = L"iexplore.exe";

// Help Info click: the shell's "open" first, the browser when that fails.
// Nothing for "-".
void OpenHelpLink(const Platform& platform, std::wstring_view help);

// The jobs of an uninstall request, each a row's record index as text
// (sub-item 8): every checked row in batch mode, else the selected row.
std::vector<std::wstring> UninstallJobs(bool batchMode,
                                        const std::vector<const SoftRow*>& checked,
                                        const SoftRow* selected);

}  // namespace varnel
