#include "inventory/soft_info.h"

#include "base/text.h"

namespace varnel {

SoftCategory CategoryOf(const TSoftInfo& info) {
  if (info.Hidden) return SoftCategory::None;
  if (info.IsToolbar) return SoftCategory::Toolbar;
  if (info.IsWindowsUpdate) return SoftCategory::WindowsUpdate;
  return SoftCategory::Program;
}

namespace {

void FillEmpty(std::wstring& target, const std::wstring& source) {
  if (target.empty() && !source.empty()) target = source;
}

}  // namespace

void MergeSoftInfo(TSoftInfo& target, const TSoftInfo& source) {
  FillEmpty(target.HelpLink, source.HelpLink);
  FillEmpty(target.Publisher, source.Publisher);
  FillEmpty(target.Version, source.Version);
  FillEmpty(target.URLInfoAbout, source.URLInfoAbout);
  FillEmpty(target.URLUpdateInfo, source.URLUpdateInfo);
  FillEmpty(target.InstallDateText, source.InstallDateText);
  if (target.InstallDate == 0 && source.InstallDate != 0) target.InstallDate = source.InstallDate;
  if (target.Size == 0 && source.Size != 0) {
    target.Size = source.Size;
    target.SizeText = source.SizeText;
  }
  FillEmpty(target.SizeText, source.SizeText);
  FillEmpty(target.DisplayIcon, source.DisplayIcon);
  FillEmpty(target.InstallLocation, source.InstallLocation);
  if (target.IconIndex == 0 && source.IconIndex != 0) target.IconIndex = source.IconIndex;
  FillEmpty(target.Readme, source.Readme);
}

void CopySoftInfo(TSoftInfo& target, const TSoftInfo& source) { target = source; }

bool IsProductCode(std::wstring_view text) {
  if (text.size() != 38 || text.front() != L'{' || text.back() != L'}') return false;
  for (std::size_t i = 1; i < 37; ++i) {
    wchar_t c = text[i];
    bool hyphen = i == 9 || i == 14 || i == 19 || i == 24;
    bool hex = (c >= L'0' && c <= L'9') || (c >= L'a' && c <= L'f') || (c >= L'A' && c <= L'F');
    if (hyphen ? c != L'-' : !hex) return false;
  }
  return true;
}

std::wstring MsiProductCode(const TSoftInfo& info) {
  std::wstring_view key = info.KeyPath;
  std::size_t slash = key.rfind(L'\\');
  std::wstring_view name = slash == std::wstring_view::npos ? key : key.substr(slash + 1);
  return IsProductCode(name) ? std::wstring(name) : std::wstring();
}

bool IsBrowserAddon(const TSoftInfo& info) {
  if (!info.IsToolbar) return false;
  return text::ContainsText(info.ToolbarFile, L"install.rdf") ||
         (!info.Extra1.empty() && info.UninstallString.empty());
}

}  // namespace varnel
