#pragma once

#include <string>
#include <string_view>

#include "leftovers/scan_classes.h"

// The individual scanners of a full scan, each in the file named after it.
// Every one reads the scanner's search terms, reports through its add
// routines, calls `scan.Step()` once per item and leaves when it is false.
namespace varnel::scan {

// COM classes with everything hanging on them; install folder required.
void ComClasses(TRegeditScanClasses& scan);
// Subkeys of AppID whose "AppID" value names an AppID filed by ComClasses.
void AppIdNames(TRegeditScanClasses& scan);
// File classes under "\SOFTWARE\Classes\" with shell/shellex entries into the folder.
void FileClasses(TRegeditScanClasses& scan);
// Extensions and their classes under HKCU, then HKLM "\Software\Classes".
void Extensions(TRegeditScanClasses& scan);
// Interface keys tied to the program's type libraries or proxy classes.
void Interfaces(TRegeditScanClasses& scan);
void RunValues(TRegeditScanClasses& scan);
void AppPaths(TRegeditScanClasses& scan);
void ShellExtensionsApproved(TRegeditScanClasses& scan);
void AllFilesVerbs(TRegeditScanClasses& scan);
void ControlPanel(TRegeditScanClasses& scan);
void Clients(TRegeditScanClasses& scan);
void MuiCache(TRegeditScanClasses& scan);
// The two browser toolbar values of a toolbar class.
void ToolbarValues(TRegeditScanClasses& scan, const std::wstring& toolbarClsid);

// Windows Installer records by the packed product code; sets scan.ProductCode
// and collects scan.InstallerFolders. Runs without an install folder too.
void Installer(TRegeditScanClasses& scan);
void Services(TRegeditScanClasses& scan);
void Firewall(TRegeditScanClasses& scan);
void EventLog(TRegeditScanClasses& scan);

// Values under "\SOFTWARE" of HKLM, then HKCU, that name the install folder,
// never walking the protected vendor names.
void VendorKeys(TRegeditScanClasses& scan);
// The maker's own program key.
void MakerKey(TRegeditScanClasses& scan);

// Disk: install folder, installer folders, application data, installer
// cache, Start menu, desktop shortcuts, the maker's program paths.
void Files(TRegeditScanClasses& scan, const std::wstring& productCode);

}  // namespace varnel::scan
