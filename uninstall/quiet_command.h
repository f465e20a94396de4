#pragma once

#include <string>
#include <string_view>

#include "inventory/soft_info.h"
#include "platform/platform.h"

namespace varnel {

// What an uninstaller is, as its own bytes (or, for Windows Installer, its
// registration) say; its file name proves nothing.
enum class UninstallerKind {
  Unknown,
  Registered,        // the entry names its own quiet command
  WindowsInstaller,
  Nsis,              // an NSIS uninstaller
  NsisInstaller,     // an NSIS installer: run quietly it would install
  InnoSetup,         // an Inno Setup uninstaller
  BrowserAddon,      // removed by deleting its manifest; nothing is run
};

struct QuietCommand {
  UninstallerKind kind = UninstallerKind::Unknown;
  // The command to run; empty when there is none (and for an add-on, whose
  // removal runs nothing).
  std::wstring command;
  // Why there is no quiet form; empty when there is one.
  std::wstring reason;

  bool Usable() const { return reason.empty(); }
};

// The record's quiet uninstall: its "QuietUninstallString" when the entry has
// one, else the form its uninstaller's technology accepts.
QuietCommand FindQuietCommand(const Platform& platform, const TSoftInfo& info);

// NSIS or Inno Setup from the file's header and the data after its image;
// reads a few kilobytes, never the whole file. Unknown for anything else,
// and for a file that cannot be read.
UninstallerKind ReadUninstallerKind(IFileSystem& files, std::wstring_view path);

// The braced product code after "/X" or "/I" in a Windows Installer command;
// empty when there is none.
std::wstring ProductCodeInCommand(std::wstring_view command);

}  // namespace varnel
