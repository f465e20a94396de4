#include "ui/list_export.h"

#include <cwchar>

#include "base/text.h"
#include "ui/language_catalog.h"

namespace varnel {

namespace {

constexpr std::wstring_view kForm = L"UninstallForm_Main";

std::wstring TwoDigits(int value) {
  wchar_t buffer[16];
  std::swprintf(buffer, 16, L"%02d", value);
  return buffer;
}

// "mm-dd-yyyy hh:mm:ss", month first.
std::wstring ExportStamp(const LocalDateTime& t) {
  wchar_t year[16];
  std::swprintf(year, 16, L"%04d", t.year);
  return TwoDigits(t.month) + L"-" + TwoDigits(t.day) + L"-" + year + L" " + TwoDigits(t.hour) +
         L":" + TwoDigits(t.minute) + L":" + TwoDigits(t.second);
}

}  // namespace

ExportLabels LoadExportLabels(const TLanguage& language) {
  auto m = [&](std::wstring_view key) { return CatalogMessage(language, kForm, key); };
  ExportLabels labels;
  labels.softwareList = m(L"M_SoftwareList");
  labels.appVersion = m(L"M_AppVersion");
  labels.exportTime = m(L"M_ExportTime");
  labels.saveDlgName = m(L"M_SaveDlgName");
  labels.name = m(L"M_SaveName");
  labels.version = m(L"M_SaveVersion");
  labels.publisher = m(L"M_SavePublisher");
  labels.installTime = m(L"M_SaveInstallTime");
  labels.size = m(L"M_SaveUseSize");
  labels.helpInfo = m(L"M_SaveHelpinfo");
  labels.uninstallCmd = m(L"M_SaveUninstallCmd");
  labels.registryKey = m(L"M_SaveRegistryKey");
  return labels;
}

std::wstring ExportFileName(std::wstring_view chosen) {
  std::wstring name(chosen);
  if (text::Upper(name).find(L".TXT") == std::wstring::npos) name += L".txt";
  return name;
}

std::wstring ExportListText(const SoftList& list, const ExportLabels& labels,
                            std::wstring_view appVersion, std::wstring_view osName,
                            const LocalDateTime& now) {
  const std::wstring rule(36, L'=');
  std::wstring out;
  auto line = [&out](std::wstring_view text) {
    out += text;
    out += L"\r\n";
  };
  line(rule);
  line(labels.softwareList);
  line(labels.appVersion + L":" + std::wstring(appVersion));
  line(osName);
  line(labels.exportTime + L":" + ExportStamp(now));
  line(rule);
  line(L"");
  for (const auto& record : list) {
    if (!record || record->Hidden) continue;
    const TSoftInfo& info = *record;
    line(labels.name + L": " + info.Name);
    line(labels.version + L": " + info.Version);
    line(labels.publisher + L": " + info.Publisher);
    line(labels.installTime + L": " + info.InstallDateText);
    line(labels.size + L": " + info.SizeText);
    line(labels.helpInfo + L": " + info.HelpLink);
    line(labels.registryKey + L": " + info.RootKey + info.KeyPath);
    line(labels.uninstallCmd + L": " + info.UninstallString);
    line(std::wstring(46, L'-'));
    line(L"");
  }
  return out;
}

}  // namespace varnel
