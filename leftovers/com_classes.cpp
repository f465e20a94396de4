// COM classes of the program and what hangs on them: AppIDs, type
// libraries, ProgIDs, browser entries, interfaces.
#include <array>
#include <memory>
#include <utility>

#include "base/text.h"
#include "leftovers/class_lookup.h"
#include "leftovers/scan_steps.h"
#include "leftovers/value_text.h"

namespace varnel::scan {

namespace {

constexpr RegRoot kMachine = RegRoot::LocalMachine;
constexpr RegRoot kUser = RegRoot::CurrentUser;
constexpr std::wstring_view kClsid = L"\\SOFTWARE\\Classes\\CLSID";
constexpr std::wstring_view kUserClsid = L"\\Software\\Classes\\CLSID";
constexpr std::wstring_view kAppId = L"\\SOFTWARE\\Classes\\AppID";
constexpr std::wstring_view kTypeLib = L"\\SOFTWARE\\Classes\\TypeLib";
constexpr std::wstring_view kInterface = L"\\SOFTWARE\\Classes\\Interface";
constexpr std::wstring_view kToolbar = L"\\SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar";
constexpr std::wstring_view kWebBrowser =
    L"\\Software\\Microsoft\\Internet Explorer\\Toolbar\\WebBrowser";
constexpr std::wstring_view kBrowserExtensions =
    L"\\SOFTWARE\\Microsoft\\Internet Explorer\\Extensions";

std::wstring SubKeyDefault(const ScanContext& scan, const std::wstring& path,
                           std::wstring_view sub) {
  auto key = scan.Open(kMachine, Join(path, sub));
  return key ? ReadValueText(*key, L"") : std::wstring();
}

// A name read from a value becomes a key path: it must stay one key below
// its parent and never name a key that holds every program's entries.
bool UsableName(std::wstring_view name) {
  return !name.empty() && name.find(L'\\') == std::wstring_view::npos &&
         !IsStructuralClassesKey(name) && !IsSharedFileClass(name);
}

// The key under HKLM "\SOFTWARE\Classes" and its HKEY_CLASSES_ROOT mirror.
void AddWithMirror(ScanSink& out, ScanCategory machine, ScanCategory mirror,
                   const std::wstring& name, const std::wstring& path) {
  out.AddKey(machine, kMachine, true, name, path);
  out.AddKey(mirror, RegRoot::ClassesRoot, true, name, ClassesRootMirror(path));
}

// Registry links can make a walk go round; real verbs are three levels deep.
constexpr int kMaxCommandDepth = 8;

// Depth first: the key holding a key named "command" at or below `key` whose
// default value names the install folder (the verb); empty when none.
std::wstring CommandBelow(const ScanContext& scan, const std::wstring& path,
                          const IRegistryKey& key, int depth = 0) {
  if (depth >= kMaxCommandDepth) return {};
  for (const auto& sub : key.SubKeyNames()) {
    auto subPath = Join(path, sub);
    auto child = scan.Open(kMachine, subPath);
    if (!child) continue;
    if (text::SameText(sub, L"command") && scan.TextHasInstallFolder(ReadValueText(*child, L"")))
      return path;
    auto verb = CommandBelow(scan, subPath, *child, depth + 1);
    if (!verb.empty()) return verb;
  }
  return {};
}

enum class Tie { None, Server, Command };

// With Tie::Command, `verb` is the key of the verb that names the folder.
Tie ClassTie(const ScanContext& scan, const std::wstring& path, const IRegistryKey& key,
             const std::vector<std::wstring>& subKeys, std::wstring& verb) {
  for (std::wstring_view server : {L"InprocServer32", L"LocalServer32"}) {
    auto name = FindName(subKeys, server);
    if (name.empty()) continue;
    auto serverKey = scan.Open(kMachine, Join(path, name));
    if (serverKey && scan.ServerTextMatches(ReadValueText(*serverKey, L""))) return Tie::Server;
  }
  verb = CommandBelow(scan, path, key);
  return verb.empty() ? Tie::None : Tie::Command;
}

// The browser keys every class is looked up in, opened once.
struct BrowserKeys {
  std::unique_ptr<IRegistryKey> toolbar;     // HKLM, values named by class
  std::unique_ptr<IRegistryKey> webBrowser;  // HKCU, values named by class
};

void ReportAttachments(const ScanContext& scan, ScanSink& out, const std::wstring& id,
                       const std::wstring& path, const IRegistryKey& key,
                       const std::vector<std::wstring>& subKeys, const BrowserKeys& browser) {
  const std::wstring userPath = Join(kUserClsid, id);
  if (scan.KeyExists(kUser, userPath))
    out.AddKey(ScanCategory::ClsidUser, kUser, true, id, userPath);

  auto appId = ReadValueText(key, L"AppID");
  if (UsableName(appId))
    AddWithMirror(out, ScanCategory::AppIdMachine, ScanCategory::AppIdClassesRoot, appId,
                  Join(kAppId, appId));

  struct Link {
    std::wstring_view subKey;
    ScanCategory machine, mirror;
    std::wstring_view parent;
  };
  static constexpr std::array<Link, 2> kLinks = {{
      {L"TypeLib", ScanCategory::TypeLibMachine, ScanCategory::TypeLibClassesRoot, kTypeLib},
      {L"ProgID", ScanCategory::ProgIdMachine, ScanCategory::ProgIdClassesRoot, kMachineClasses},
  }};
  for (const auto& link : kLinks) {
    auto sub = FindName(subKeys, link.subKey);
    if (sub.empty()) continue;
    auto name = SubKeyDefault(scan, path, sub);
    if (UsableName(name))
      AddWithMirror(out, link.machine, link.mirror, name, Join(link.parent, name));
  }

  if (browser.toolbar && browser.toolbar->ValueExists(id))
    out.AddValue(&out.CategoryRoot(ScanCategory::Toolbar, L"Toolbar"), kMachine,
                 std::wstring(kToolbar), id, ReadValueText(*browser.toolbar, id));
  out.AddKey(out.CategoryRoot(ScanCategory::Extensions, L"Extensions"), kMachine, true, id,
             Join(kBrowserExtensions, id));
  out.AddKey(ScanCategory::PreApproved, kMachine, true, id,
             Join(L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Ext\\PreApproved", id));
  // The classes key in front is where these settings were looked for; kept.
  out.AddKey(
      ScanCategory::ExtSettingsMachine, kMachine, true, id,
      Join(L"\\SOFTWARE\\Classes\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Ext\\Settings",
           id));
  out.AddKey(ScanCategory::ExtSettingsUser, kUser, true, id,
             Join(L"\\Software\\Microsoft\\Windows\\CurrentVersion\\Ext\\Settings", id));
  out.AddKey(ScanCategory::ExtStats, kUser, true, id,
             Join(L"\\Software\\Microsoft\\Windows\\CurrentVersion\\Ext\\Stats", id));
  if (browser.webBrowser && browser.webBrowser->ValueExists(id))
    out.AddValue(&out.CategoryRoot(ScanCategory::WebBrowser, L"WebBrowser"), kUser,
                 std::wstring(kWebBrowser), id, ReadValueText(*browser.webBrowser, id));
  out.AddKey(
      ScanCategory::BrowserHelper, kMachine, true, id,
      Join(L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Browser Helper Objects",
           id));
}

std::vector<std::wstring> SubKeysOf(const ScanContext& scan, std::wstring_view path) {
  auto key = scan.Open(kMachine, path);
  return key ? key->SubKeyNames() : std::vector<std::wstring>();
}

// Whether a "win32" or "win64" file of the library's registration lies in
// the install folder ({id}\version\language\platform).
bool TypeLibInFolder(const ScanContext& scan, const std::wstring& path) {
  for (const auto& version : SubKeysOf(scan, path)) {
    const auto versionPath = Join(path, version);
    for (const auto& language : SubKeysOf(scan, versionPath)) {
      if (text::SameText(language, L"FLAGS") || text::SameText(language, L"HELPDIR")) continue;
      const auto languagePath = Join(versionPath, language);
      for (const auto& platform : SubKeysOf(scan, languagePath)) {
        if (!text::SameText(platform, L"win32") && !text::SameText(platform, L"win64")) continue;
        if (scan.ServerTextMatches(SubKeyDefault(scan, languagePath, platform))) return true;
      }
    }
  }
  return false;
}

// False when a stop was requested.
bool TypeLibraries(const ScanContext& scan, ScanSink& out) {
  auto& filed = out.Category(ScanCategory::TypeLibMachine);
  for (const auto& id : SubKeysOf(scan, kTypeLib)) {
    if (!scan.Step()) return false;
    if (filed.Contains(id)) continue;
    const auto path = Join(kTypeLib, id);
    if (TypeLibInFolder(scan, path))
      AddWithMirror(out, ScanCategory::TypeLibMachine, ScanCategory::TypeLibClassesRoot, id, path);
  }
  return true;
}

}  // namespace

std::wstring ClassesRootMirror(std::wstring_view machinePath) {
  return std::wstring(machinePath.substr(std::min(machinePath.size(), kMachineClasses.size())));
}

bool IsProgramClassId(const ScanSink& found, std::wstring_view id) {
  return !id.empty() && (found.Category(ScanCategory::ClsidMachine).Contains(id) ||
                         found.Category(ScanCategory::ClsidUser).Contains(id));
}

std::wstring FindName(const std::vector<std::wstring>& names, std::wstring_view name) {
  for (const auto& n : names)
    if (text::SameText(n, name)) return n;
  return {};
}

bool IsStructuralClassesKey(std::wstring_view name) {
  static constexpr std::array<std::wstring_view, 15> kStructural = {
      L"AppID",          L"CLSID",      L"Component Categories",
      L"DirectShow",     L"Installer",  L"Interface",
      L"Local Settings", L"Media Type", L"MediaFoundation",
      L"MIME",           L"PROTOCOLS",  L"Record",
      L"SOFTWARE",       L"TypeLib",    L"Wow6432Node"};
  for (auto known : kStructural)
    if (text::SameText(name, known)) return true;
  return false;
}

bool IsSharedFileClass(std::wstring_view name) {
  static constexpr std::array<std::wstring_view, 30> kShared = {
      L"*", L"AllFilesystemObjects", L"Applications", L"batfile", L"cmdfile", L"comfile",
      L"CompressedFolder", L"DesktopBackground", L"Directory", L"dllfile", L"Drive", L"exefile",
      L"file", L"Folder", L"ftp", L"htmlfile", L"http", L"https", L"inifile",
      L"InternetShortcut", L"LibraryFolder", L"lnkfile", L"mailto", L"Network", L"Printers",
      L"regfile", L"SystemFileAssociations", L"sysfile", L"txtfile", L"Unknown"};
  for (auto known : kShared)
    if (text::SameText(name, known)) return true;
  return false;
}

void ComClasses(const ScanContext& scan, ScanSink& out) {
  if (scan.InstallFolder().empty()) return;
  const auto ids = SubKeysOf(scan, kClsid);
  const BrowserKeys browser{scan.Open(kMachine, kToolbar), scan.Open(kUser, kWebBrowser)};
  for (const auto& id : ids) {
    if (!scan.Step()) break;
    const auto path = Join(kClsid, id);
    auto key = scan.Open(kMachine, path);
    if (!key) continue;
    const auto subKeys = key->SubKeyNames();
    std::wstring verb;
    const Tie tie = ClassTie(scan, path, *key, subKeys, verb);
    if (tie == Tie::Server) {
      AddWithMirror(out, ScanCategory::ClsidMachine, ScanCategory::ClsidClassesRoot, id, path);
      ReportAttachments(scan, out, id, path, *key, subKeys, browser);
    } else if (tie == Tie::Command) {
      // A class reached through a verb only may be anybody's (a shell
      // folder Windows ships, say): the verb is the program's, not the class,
      // and nothing that hangs on the class is followed. Filed by its path,
      // so that the class never counts as one of the program's.
      AddWithMirror(out, ScanCategory::ClsidMachine, ScanCategory::ClsidClassesRoot, verb, verb);
    }
  }
}

void AppIdNames(const ScanContext& scan, ScanSink& out) {
  auto& filed = out.Category(ScanCategory::AppIdMachine);
  // Only the AppIDs the classes named; names filed below must not widen the test.
  const int known = filed.Count();
  if (known == 0) return;
  for (const auto& name : SubKeysOf(scan, kAppId)) {
    if (!scan.Step()) break;
    const auto path = Join(kAppId, name);
    auto key = scan.Open(kMachine, path);
    if (!key) continue;
    const auto appId = ReadValueText(*key, L"AppID");
    if (appId.empty()) continue;
    const int at = filed.IndexOf(appId);
    if (at < 0 || at >= known) continue;
    AddWithMirror(out, ScanCategory::AppIdMachine, ScanCategory::AppIdClassesRoot, name, path);
  }
}

void Interfaces(const ScanContext& scan, ScanSink& out) {
  if (scan.InstallFolder().empty() || !TypeLibraries(scan, out)) return;
  auto& libraries = out.Category(ScanCategory::TypeLibMachine);
  if (libraries.Count() == 0 && out.Category(ScanCategory::ClsidMachine).Count() == 0 &&
      out.Category(ScanCategory::ClsidUser).Count() == 0)
    return;
  for (const auto& id : SubKeysOf(scan, kInterface)) {
    if (!scan.Step()) break;
    const auto path = Join(kInterface, id);
    auto key = scan.Open(kMachine, path);
    if (!key) continue;
    const auto subKeys = key->SubKeyNames();
    bool belongs = false;
    const auto typeLib = FindName(subKeys, L"TypeLib");
    const auto library = typeLib.empty() ? std::wstring() : SubKeyDefault(scan, path, typeLib);
    if (!library.empty()) {
      // Every library whose files lie in the folder was filed just before.
      belongs = libraries.Contains(library);
    } else if (auto proxy = FindName(subKeys, L"ProxyStubClsid32"); !proxy.empty()) {
      belongs = IsProgramClassId(out, SubKeyDefault(scan, path, proxy));
    }
    if (belongs)
      AddWithMirror(out, ScanCategory::InterfaceMachine, ScanCategory::InterfaceClassesRoot, id,
                    path);
  }
}

}  // namespace varnel::scan
