#include <array>
#include <vector>

#include "core/protected_places.h"
#include "base/text.h"

// The registry keys Windows owns. Each list names keys by their path in one
// "place" (the shared classes, the SOFTWARE branch of a machine or a user,
// the rest of the machine, the rest of a user); a key is refused when it is
// one of them or holds one, so every ancestor of a listed key is covered
// without being written out. "<any>" stands for one part of any name.

namespace varnel {

namespace {

enum class Place { Classes, Software, Machine, User };

constexpr std::wstring_view kAny = L"<any>";

constexpr std::wstring_view kClassesKeys[] = {
    L"CLSID", L"Interface", L"TypeLib", L"AppID", L"Component Categories", L"MIME\\Database\\Content Type",
    L"MIME\\Database\\Codepage", L"MIME\\Database\\Charset", L"SystemFileAssociations\\<any>",
    L"Applications", L"Installer\\Products", L"Installer\\Features", L"Installer\\UpgradeCodes",
    L"Installer\\Components", L"Installer\\Patches", L"Installer\\Assemblies",
    L"Installer\\Dependencies", L"Local Settings\\Software\\Microsoft\\Windows\\Shell\\MuiCache",
    L"Local Settings\\MuiCache", L"Unknown\\shell\\openas\\command", L"Network\\shellex",
    L"Printers\\shellex", L"DesktopBackground\\Shell", L"Protocols\\Handler", L"Protocols\\Filter",
    L"PROTOCOLS\\Name-Space Handler", L"Wow6432Node",
};

// Shell classes Windows ships: their verbs, handler lists and icons are its
// own; verbs a program adds below them are not.
constexpr std::wstring_view kShellClasses[] = {
    L"*", L"Directory", L"Directory\\Background", L"Folder", L"Drive", L"AllFilesystemObjects",
    L"Unknown", L"lnkfile", L"exefile", L"txtfile", L"batfile", L"cmdfile", L"comfile",
    L"dllfile", L"sysfile", L"htmlfile", L"inifile", L"inffile", L"regfile", L"piffile",
    L"scrfile", L"VBSFile", L"JSFile", L"WSFFile", L"cplfile", L"mscfile", L"Msi.Package",
    L"Msi.Patch", L"InternetShortcut", L"CompressedFolder", L"http", L"https", L"ftp",
    L"mailto", L"file", L"Microsoft.PowerShellScript.1", L"SystemFileAssociations",
    L"Drive\\shellex\\FolderExtensions",
};
constexpr std::wstring_view kShellClassParts[] = {
    L"DefaultIcon", L"CLSID", L"ShellNew", L"shell\\open\\command",
    L"shell\\print\\command", L"shell\\printto\\command", L"shell\\runas\\command",
    L"shell\\runasuser\\command", L"shell\\open\\ddeexec", L"shell\\opennewwindow\\command",
    L"shell\\explore\\command", L"shell\\find\\command", L"shell\\cmd\\command",
    L"shell\\Powershell\\command", L"shell\\install\\command", L"shell\\repair\\command",
    L"shell\\uninstall\\command", L"shellex\\ContextMenuHandlers",
    L"shellex\\PropertySheetHandlers", L"shellex\\DragDropHandlers",
    L"shellex\\CopyHookHandlers", L"shellex\\ColumnHandlers", L"shellex\\IconHandler",
    L"shellex\\IconOverlayHandlers", L"shellex\\DataHandler", L"shellex\\DropHandler",
    L"shellex\\PropertyHandler", L"shellex\\{00021500-0000-0000-C000-000000000046}",
    L"shellex\\{BB2E617C-0920-11d1-9A0B-00C04FC2D6C1}",
    L"shellex\\{e357fccd-a995-4576-b01f-234630154e96}",
};
// Extensions no program may take as its own.
constexpr std::wstring_view kSystemExtensions[] = {
    L".exe", L".com", L".bat", L".cmd", L".lnk", L".dll", L".sys", L".msi", L".msp",
    L".reg", L".txt", L".ini", L".inf", L".url", L".htm", L".html", L".scr", L".pif",
    L".vbs", L".js", L".wsf", L".cpl", L".msc", L".zip", L".xml", L".ps1", L".ocx",
};
constexpr std::wstring_view kExtensionParts[] = {
    L"OpenWithList", L"OpenWithProgids", L"ShellNew", L"PersistentHandler", L"ShellEx",
};

constexpr std::wstring_view kSoftwareKeys[] = {
    L"Classes",
    L"Clients\\StartMenuInternet",
    L"Clients\\Mail",
    L"Clients\\Media",
    L"Clients\\News",
    L"Policies\\Microsoft",
    L"RegisteredApplications",
    L"Microsoft\\Windows\\CurrentVersion\\Run",
    L"Microsoft\\Windows\\CurrentVersion\\RunOnce",
    L"Microsoft\\Windows\\CurrentVersion\\RunOnceEx",
    L"Microsoft\\Windows\\CurrentVersion\\RunServices",
    L"Microsoft\\Windows\\CurrentVersion\\RunServicesOnce",
    L"Microsoft\\Windows\\CurrentVersion\\Uninstall",
    L"Microsoft\\Windows\\CurrentVersion\\App Paths",
    L"Microsoft\\Windows\\CurrentVersion\\SharedDLLs",
    L"Microsoft\\Windows\\CurrentVersion\\Policies\\Explorer",
    L"Microsoft\\Windows\\CurrentVersion\\Policies\\System",
    L"Microsoft\\Windows\\CurrentVersion\\Shell Extensions\\Approved",
    L"Microsoft\\Windows\\CurrentVersion\\Shell Extensions\\Blocked",
    L"Microsoft\\Windows\\CurrentVersion\\Shell Extensions\\Cached",
    L"Microsoft\\Windows\\CurrentVersion\\Ext\\Settings",
    L"Microsoft\\Windows\\CurrentVersion\\Ext\\Stats",
    L"Microsoft\\Windows\\CurrentVersion\\Ext\\PreApproved",
    L"Microsoft\\Windows\\CurrentVersion\\Control Panel\\Cpls",
    L"Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\<any>\\Products",
    L"Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\<any>\\Components",
    L"Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\<any>\\Patches",
    L"Microsoft\\Windows\\CurrentVersion\\Installer\\UpgradeCodes",
    L"Microsoft\\Windows\\CurrentVersion\\Installer\\Folders",
    L"Microsoft\\Windows\\CurrentVersion\\Installer\\Managed",
    L"Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
    L"Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders",
    L"Microsoft\\Windows\\CurrentVersion\\Explorer\\ShellExecuteHooks",
    L"Microsoft\\Windows\\CurrentVersion\\Explorer\\Browser Helper Objects",
    L"Microsoft\\Windows\\CurrentVersion\\Explorer\\ShellIconOverlayIdentifiers",
    L"Microsoft\\Windows\\CurrentVersion\\Explorer\\ShellServiceObjects",
    L"Microsoft\\Windows\\CurrentVersion\\Explorer\\SharedTaskScheduler",
    L"Microsoft\\Windows\\CurrentVersion\\Explorer\\Desktop\\NameSpace",
    L"Microsoft\\Windows\\CurrentVersion\\Explorer\\MyComputer\\NameSpace",
    L"Microsoft\\Windows\\CurrentVersion\\Explorer\\ControlPanel\\NameSpace",
    L"Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts",
    L"Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\Run",
    L"Microsoft\\Windows\\CurrentVersion\\Explorer\\Advanced",
    L"Microsoft\\Windows\\CurrentVersion\\Internet Settings\\ZoneMap",
    L"Microsoft\\Windows\\CurrentVersion\\Group Policy",
    L"Microsoft\\Windows\\CurrentVersion\\Setup",
    L"Microsoft\\Windows\\CurrentVersion\\SideBySide",
    L"Microsoft\\Windows\\CurrentVersion\\Component Based Servicing",
    L"Microsoft\\Windows\\CurrentVersion\\WindowsUpdate",
    L"Microsoft\\Windows\\ShellNoRoam\\MUICache",
    L"Microsoft\\Windows NT\\CurrentVersion\\Winlogon",
    L"Microsoft\\Windows NT\\CurrentVersion\\Windows",
    L"Microsoft\\Windows NT\\CurrentVersion\\ProfileList",
    L"Microsoft\\Windows NT\\CurrentVersion\\Image File Execution Options",
    L"Microsoft\\Windows NT\\CurrentVersion\\Fonts",
    L"Microsoft\\Windows NT\\CurrentVersion\\Drivers32",
    L"Microsoft\\Windows NT\\CurrentVersion\\Svchost",
    L"Microsoft\\Windows NT\\CurrentVersion\\AppCompatFlags\\Layers",
    L"Microsoft\\Windows NT\\CurrentVersion\\Schedule\\TaskCache",
    L"Microsoft\\Internet Explorer\\Toolbar",
    L"Microsoft\\Internet Explorer\\Extensions",
    L"Microsoft\\Internet Explorer\\Main",
    L"Microsoft\\Internet Explorer\\SearchScopes",
    L"Microsoft\\Active Setup\\Installed Components",
    L"Microsoft\\Cryptography",
    L"Microsoft\\.NETFramework",
    L"Microsoft\\Installer",
    L"Microsoft\\Windows Defender",
    L"Microsoft\\Ole",
    L"Microsoft\\Rpc",
    L"Microsoft\\Wbem",
};

constexpr std::wstring_view kMachineKeys[] = {
    L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application",
    L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\System",
    L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Security",
    L"SYSTEM\\CurrentControlSet\\Services\\SharedAccess\\Parameters\\FirewallPolicy\\FirewallRules",
    L"SYSTEM\\CurrentControlSet\\Services\\SharedAccess\\Parameters\\FirewallPolicy\\RestrictedServices\\Configurable\\System",
    L"SYSTEM\\CurrentControlSet\\Services\\SharedAccess\\Parameters\\FirewallPolicy\\RestrictedServices\\Static\\System",
    L"SYSTEM\\CurrentControlSet\\Services\\SharedAccess\\Parameters\\FirewallPolicy\\StandardProfile\\AuthorizedApplications\\List",
    L"SYSTEM\\CurrentControlSet\\Services\\SharedAccess\\Parameters\\FirewallPolicy\\DomainProfile\\AuthorizedApplications\\List",
    L"SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters",
    L"SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment",
    L"SYSTEM\\CurrentControlSet\\Control\\Class",
    L"SYSTEM\\CurrentControlSet\\Control\\Print\\Monitors",
    L"SYSTEM\\CurrentControlSet\\Control\\SafeBoot\\Minimal",
    L"SYSTEM\\CurrentControlSet\\Control\\SafeBoot\\Network",
    L"SYSTEM\\CurrentControlSet\\Enum\\<any>",
    L"SYSTEM\\CurrentControlSet\\Hardware Profiles",
    L"SYSTEM\\Setup",
    L"SYSTEM\\MountedDevices",
    L"SYSTEM\\Select",
};

// Below a user's hive, beside its SOFTWARE branch.
constexpr std::wstring_view kUserKeys[] = {
    L"Control Panel\\<any>", L"AppEvents\\Schemes\\Apps", L"AppEvents\\EventLabels",
    L"Keyboard Layout\\Preload", L"Printers\\Connections", L"Console\\<any>",
};

// Windows' own services: the service scan may match one through a shared
// host, and removing it would break the machine.
constexpr std::wstring_view kSystemServices[] = {
    L"EventLog", L"SharedAccess", L"Tcpip", L"Dnscache", L"Dhcp", L"RpcSs", L"RpcEptMapper",
    L"DcomLaunch", L"PlugPlay", L"Power", L"LanmanServer", L"LanmanWorkstation", L"Winmgmt",
    L"wuauserv", L"BITS", L"CryptSvc", L"msiserver", L"Schedule", L"Themes", L"AudioSrv",
    L"Spooler", L"W32Time", L"WinDefend", L"MpsSvc", L"BFE", L"nsi", L"ProfSvc", L"gpsvc",
    L"TrustedInstaller", L"VSS", L"mountmgr", L"volmgr", L"disk", L"Ntfs", L"ACPI", L"pci",
    L"usbhub", L"USBSTOR", L"iaStorV", L"storahci", L"stornvme", L"partmgr", L"Null", L"Beep",
};

std::vector<std::wstring_view> Split(std::wstring_view path) {
  std::vector<std::wstring_view> parts;
  std::size_t start = 0;
  while (start <= path.size()) {
    auto end = path.find(L'\\', start);
    if (end == std::wstring_view::npos) end = path.size();
    if (end > start) parts.push_back(path.substr(start, end - start));
    start = end + 1;
  }
  return parts;
}

// Whether `key` is `listed` or one of the keys above it.
bool HoldsListed(const std::vector<std::wstring_view>& key, std::wstring_view listed,
                 std::wstring_view tail = {}) {
  auto parts = Split(listed);
  for (auto part : Split(tail)) parts.push_back(part);
  if (key.size() > parts.size()) return false;
  for (std::size_t i = 0; i < key.size(); ++i)
    if (parts[i] != kAny && !text::SameText(parts[i], key[i])) return false;
  return true;
}

bool IsControlSet(std::wstring_view part) {
  return text::StartsWithText(part, L"ControlSet") && part.size() == 13;
}

struct Located {
  Place place = Place::Machine;
  std::vector<std::wstring_view> parts;
};

// Strips the view and alias parts so that every spelling of a key ends up
// in one place with one path.
Located Locate(RegRoot root, std::vector<std::wstring_view> parts) {
  auto dropWow = [](std::vector<std::wstring_view>& p, std::size_t at) {
    if (p.size() > at && text::SameText(p[at], L"Wow6432Node"))
      p.erase(p.begin() + static_cast<std::ptrdiff_t>(at));
  };
  auto softwareOrUser = [&](std::vector<std::wstring_view> p, Place otherwise) {
    Located where{otherwise, p};
    if (p.empty() || !text::SameText(p[0], L"SOFTWARE")) return where;
    p.erase(p.begin());
    dropWow(p, 0);
    if (!p.empty() && text::SameText(p[0], L"Classes")) {
      p.erase(p.begin());
      dropWow(p, 0);
      return Located{Place::Classes, p};
    }
    return Located{Place::Software, p};
  };
  switch (root) {
    case RegRoot::ClassesRoot:
      dropWow(parts, 0);
      return {Place::Classes, parts};
    case RegRoot::LocalMachine:
      if (parts.size() >= 2 && text::SameText(parts[0], L"SYSTEM") && IsControlSet(parts[1]))
        parts[1] = L"CurrentControlSet";
      return softwareOrUser(parts, Place::Machine);
    case RegRoot::CurrentUser:
      return softwareOrUser(parts, Place::User);
    case RegRoot::Users: {
      if (parts.empty()) return {Place::Machine, parts};
      const bool classes = text::EndsWithText(parts[0], L"_Classes");
      parts.erase(parts.begin());
      if (classes) {
        dropWow(parts, 0);
        return {Place::Classes, parts};
      }
      if (parts.empty()) return {Place::Machine, parts};  // a user's hive root
      return softwareOrUser(parts, Place::User);
    }
    default:
      return {Place::Machine, {}};
  }
}

bool ClassesKeyIsOwned(const std::vector<std::wstring_view>& key) {
  if (key.empty()) return true;
  for (auto listed : kClassesKeys)
    if (HoldsListed(key, listed)) return true;
  for (auto shellClass : kShellClasses)
    for (auto part : kShellClassParts)
      if (HoldsListed(key, shellClass, part)) return true;
  for (auto extension : kSystemExtensions)
    for (auto part : kExtensionParts)
      if (HoldsListed(key, extension, part)) return true;
  return false;
}

bool SoftwareKeyIsOwned(const std::vector<std::wstring_view>& key) {
  if (key.empty()) return true;
  for (auto listed : kSoftwareKeys)
    if (HoldsListed(key, listed)) return true;
  return false;
}

bool MachineKeyIsOwned(const std::vector<std::wstring_view>& key) {
  // A hive ("SYSTEM", "SAM", "HARDWARE", ...) and the control set itself.
  if (key.size() <= 1) return true;
  for (auto listed : kMachineKeys)
    if (HoldsListed(key, listed)) return true;
  for (auto service : kSystemServices)
    if (HoldsListed(key, L"SYSTEM\\CurrentControlSet\\Services", service)) return true;
  return false;
}

}  // namespace

Refusal ProtectedPlaces::CheckRegistryKey(RegRoot root, std::wstring_view keyPath,
                                          bool wholeKey) {
  switch (root) {
    case RegRoot::ClassesRoot:
    case RegRoot::CurrentUser:
    case RegRoot::LocalMachine:
    case RegRoot::Users:
      break;
    case RegRoot::CurrentConfig:
      return wholeKey && Split(keyPath).size() <= 1 ? Refusal::RegistryRoot : Refusal::None;
    default:
      return Refusal::Unresolvable;
  }
  if (!wholeKey) return Refusal::None;
  const auto where = Locate(root, Split(keyPath));
  bool owned = false;
  switch (where.place) {
    case Place::Classes: owned = ClassesKeyIsOwned(where.parts); break;
    case Place::Software: owned = SoftwareKeyIsOwned(where.parts); break;
    case Place::Machine: owned = MachineKeyIsOwned(where.parts); break;
    case Place::User:
      owned = where.parts.size() <= 1;
      for (auto listed : kUserKeys) owned = owned || HoldsListed(where.parts, listed);
      break;
  }
  return owned ? Refusal::RegistryRoot : Refusal::None;
}

}  // namespace varnel
