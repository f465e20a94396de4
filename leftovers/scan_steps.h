#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "leftovers/scan_context.h"
#include "leftovers/scan_sink.h"

// The individual scanners of a full scan, each in the file named after it.
// Every one reads the scan's context, files what it finds in the sink,
// calls `scan.Step()` once per item and leaves when it is false.
namespace varnel::scan {

// COM classes with everything hanging on them; install folder required.
void ComClasses(const ScanContext& scan, ScanSink& out);
// Subkeys of AppID whose "AppID" value names an AppID filed by ComClasses.
void AppIdNames(const ScanContext& scan, ScanSink& out);
// File classes under "\SOFTWARE\Classes\" with shell/shellex entries into the folder.
void FileClasses(const ScanContext& scan, ScanSink& out);
// Extensions and their classes under HKCU, then HKLM "\Software\Classes".
void Extensions(const ScanContext& scan, ScanSink& out);
// Interface keys tied to the program's type libraries or proxy classes.
void Interfaces(const ScanContext& scan, ScanSink& out);
void RunValues(const ScanContext& scan, ScanSink& out);
void AppPaths(const ScanContext& scan, ScanSink& out);
void ShellExtensionsApproved(const ScanContext& scan, ScanSink& out);
void AllFilesVerbs(const ScanContext& scan, ScanSink& out);
void ControlPanel(const ScanContext& scan, ScanSink& out);
void Clients(const ScanContext& scan, ScanSink& out);
void MuiCache(const ScanContext& scan, ScanSink& out);
// The two browser toolbar values of a toolbar class.
void ToolbarValues(const ScanContext& scan, ScanSink& out, const std::wstring& toolbarClsid);

// What the Windows Installer step learns for the file scan.
struct InstallerFindings {
  std::wstring ProductCode;
  // Existing folders named in the program's installer records, lower case, each once.
  std::vector<std::wstring> Folders;
};
// Windows Installer records by the packed product code. Runs without an
// install folder too.
InstallerFindings Installer(const ScanContext& scan, ScanSink& out);
void Services(const ScanContext& scan, ScanSink& out);
void Firewall(const ScanContext& scan, ScanSink& out);
void EventLog(const ScanContext& scan, ScanSink& out);

// Values under "\SOFTWARE" of HKLM, then HKCU, that name the install folder,
// never walking the protected vendor names.
void VendorKeys(const ScanContext& scan, ScanSink& out);
// The maker's own program key.
void MakerKey(const ScanContext& scan, ScanSink& out);

// Disk: install folder, installer folders, application data, installer
// cache, Start menu, desktop shortcuts, the maker's program paths.
void Files(const ScanContext& scan, ScanSink& out, const InstallerFindings& installer);

}  // namespace varnel::scan
