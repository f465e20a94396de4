#pragma once

#include <string>
#include <string_view>

#include "inventory/soft_list.h"
#include "platform/system.h"
#include "ui/language.h"

namespace varnel {

// The labels of the exported list, read once from the main window's "_M"
// section with their English defaults.
struct ExportLabels {
  std::wstring softwareList, appVersion, exportTime, saveDlgName;
  std::wstring name, version, publisher, installTime, size, helpInfo, uninstallCmd, registryKey;
};
ExportLabels LoadExportLabels(const TLanguage& language);

// The save dialog's name with ".txt" appended unless it already holds that
// text anywhere, in any case.
std::wstring ExportFileName(std::wstring_view chosen);

// Header, then one block per record in list order; hidden records skipped.
// Lines end in CRLF.
std::wstring ExportListText(const SoftList& list, const ExportLabels& labels,
                            std::wstring_view appVersion, std::wstring_view osName,
                            const LocalDateTime& now);

}  // namespace varnel
