#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/date_time.h"

namespace varnel {

// One installed program as the inventory lists it. Owned by the inventory's
// list and addressed by its index there.
struct TSoftInfo {
  std::wstring Name;             // "DisplayName", trimmed
  std::wstring HelpLink;         // "-" when empty
  std::wstring Publisher;        // "-" when empty
  std::wstring Version;          // "DisplayVersion"; "-" when empty
  std::wstring URLInfoAbout;
  std::wstring URLUpdateInfo;
  std::wstring InstallDateText;  // in the user's short date format
  std::wstring SizeText;
  std::wstring RootKey;          // "HKEY_LOCAL_MACHINE" or "HKEY_CURRENT_USER"
  std::wstring KeyPath;          // "\SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\..."
  std::wstring UninstallString;
  std::wstring DisplayIcon;
  std::wstring InstallLocation;
  std::int32_t IconIndex = 0;
  std::int32_t ImageIndex = 0;   // position in the list control's image lists
  std::int64_t Size = 0;         // bytes
  TDateTime InstallDate = 0;
  TDateTime LastAccessDate = 0;
  bool Is64BitView = false;
  bool IsWindowsUpdate = false;
  bool IsToolbar = false;
  bool Marked = false;           // free for the windows that act on records
  bool Hidden = false;           // a duplicate or a folded toolbar; never shown
  bool IsSystemComponent = false;
  std::wstring ToolbarClsid;
  std::wstring ToolbarFile;      // module, or an add-on's install.rdf, package or folder
  std::wstring Extra1;           // an add-on's browser ("Firefox", "Chrome", ...); else empty
  std::wstring Extra2;           // an add-on's id
  std::wstring Extra3;           // an add-on's profile folder
  std::wstring Readme;
};

enum class SoftCategory { None, Program, Toolbar, WindowsUpdate };

// None for hidden records.
SoftCategory CategoryOf(const TSoftInfo& info);

// Fills the empty fields of target from source.
void MergeSoftInfo(TSoftInfo& target, const TSoftInfo& source);
void CopySoftInfo(TSoftInfo& target, const TSoftInfo& source);

// A braced GUID of 38 characters, the form of a Windows Installer product code.
bool IsProductCode(std::wstring_view text);
// The Windows Installer product code: the uninstall key's own name when it is
// a braced GUID (38 characters), else empty.
std::wstring MsiProductCode(const TSoftInfo& info);
// A browser add-on whose files stand in for an uninstaller: a legacy
// manifest (also one folded into a program), or an add-on record of its own.
bool IsBrowserAddon(const TSoftInfo& info);

}  // namespace varnel
