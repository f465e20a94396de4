#pragma once

#include <string>
#include <string_view>

#include "core/app_frame.h"
#include "base/date_time.h"

namespace varnel {

// What a software record gives the command interpreter.
struct UninstallSource {
  std::wstring_view uninstallString;
  std::wstring_view productCode;  // braced GUID, or empty
  bool isBrowserAddon = false;
  std::wstring_view addonPath;    // the add-on's manifest
};

// Which launcher names ("RUNDLL.EXE", "RUNDLL32.EXE", "RUNDLL32", "RUNDLL")
// CleanUninstallCommand strips; each caller has its own rule.
enum class LauncherRule {
  UninstallerDate,  // at position 1, or " NAME" at position 2 or later
  InstallFolder,    // anywhere
  FolderPath,       // at position 1, or " NAME" anywhere
};

// The file a command line or icon location names; it may not exist.
std::wstring GetFileFromCommandLine(const TAppFrame& frame, std::wstring_view command);
// Cut just after the earliest executable extension; unchanged without one.
std::wstring CutAtExecutableExtension(std::wstring_view s);
// An upper-cased command reduced to one file path.
std::wstring CleanUninstallCommand(const TAppFrame& frame, std::wstring_view command,
                                   LauncherRule rule);
// Local creation time of the uninstaller file; 0 when there is none.
TDateTime GetUninstallerFileDate(const TAppFrame& frame, const UninstallSource& source);
// The folder holding the uninstaller, with its trailing "\"; empty when it
// does not exist or is not a program's own folder.
std::wstring GetInstallFolderFromUninstallString(const TAppFrame& frame,
                                                 const UninstallSource& source);
// The cleaned folder when it exists, else empty.
std::wstring CleanFolderPath(const TAppFrame& frame, std::wstring_view path);
// {12345678-ABCD-...} -> the 32 characters the Installer keys are named by;
// empty for anything but a braced GUID.
std::wstring MsiProductCodeToPackedGuid(std::wstring_view productCode);

}  // namespace varnel
