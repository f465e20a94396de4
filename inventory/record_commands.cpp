#include "inventory/record_commands.h"

#include "core/uninstall_command.h"

namespace varnel {

namespace {

// The source's views point into `info` and `productCode`, which the caller
// keeps alive for the call.
UninstallSource SourceOf(const TSoftInfo& info, const std::wstring& productCode) {
  UninstallSource source;
  source.uninstallString = info.UninstallString;
  source.productCode = productCode;
  source.isBrowserAddon = IsBrowserAddon(info);
  source.addonPath = info.ToolbarFile;
  return source;
}

}  // namespace

TDateTime GetUninstallerFileDate(const TAppFrame& frame, const TSoftInfo& info) {
  const std::wstring productCode = MsiProductCode(info);
  return GetUninstallerFileDate(frame, SourceOf(info, productCode));
}

std::wstring GetInstallFolderFromUninstallString(const TAppFrame& frame, const TSoftInfo& info) {
  const std::wstring productCode = MsiProductCode(info);
  return GetInstallFolderFromUninstallString(frame, SourceOf(info, productCode));
}

}  // namespace varnel
