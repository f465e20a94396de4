// Shell registrations that name the program's folder or classes: start-up
// values, App Paths, approved shell extensions, Control Panel items, clients,
// the MUI cache and browser toolbar values.
#include "base/text.h"
#include "leftovers/class_lookup.h"
#include "leftovers/scan_steps.h"
#include "leftovers/value_text.h"

namespace varnel::scan {

namespace {

constexpr RegRoot kMachine = RegRoot::LocalMachine;
constexpr RegRoot kUser = RegRoot::CurrentUser;
constexpr std::wstring_view kCurrentVersion = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
constexpr std::wstring_view kToolbar = L"\\SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar";
constexpr std::wstring_view kUserToolbar = L"\\Software\\Microsoft\\Internet Explorer\\Toolbar";

std::vector<std::wstring> SubKeysOf(const ScanContext& scan, RegRoot root, std::wstring_view path) {
  auto key = scan.Open(root, path);
  return key ? key->SubKeyNames() : std::vector<std::wstring>();
}

// Every value of the key whose text names the install folder; false when a
// stop was requested.
bool FolderValues(const ScanContext& scan, ScanSink& out, RegRoot root, const std::wstring& path,
                  TRegeditItemGroup& group) {
  auto key = scan.Open(root, path);
  if (!key) return true;
  for (const auto& name : key->ValueNames()) {
    if (!scan.Step()) return false;
    auto data = ReadValueText(*key, name);
    if (scan.TextHasInstallFolder(data)) out.AddValue(&group, root, path, name, data);
  }
  return true;
}

// A value naming the folder itself, without its trailing "\", counts too.
bool ValueNamesFolder(const ScanContext& scan, const IRegistryKey& key) {
  for (const auto& name : key.ValueNames()) {
    auto data = ReadValueText(key, name);
    if (data.empty()) continue;
    if (data.back() != L'\\') data += L'\\';
    if (scan.TextHasInstallFolder(data)) return true;
  }
  return false;
}

// "{class} {interface} 0x..." in the cache key, the class alone elsewhere.
bool NamesProgramClass(const ScanSink& found, std::wstring_view valueName) {
  auto blank = valueName.find(L' ');
  return IsProgramClassId(found, valueName.substr(0, blank));
}

}  // namespace

void RunValues(const ScanContext& scan, ScanSink& out) {
  if (scan.InstallFolder().empty()) return;
  const auto path = Join(kCurrentVersion, L"Run");
  // One group per root, so a user value named like a machine one is kept.
  if (!FolderValues(scan, out, kMachine, path, out.CategoryRoot(ScanCategory::Run, L"Run"))) return;
  FolderValues(scan, out, kUser, path, out.CategoryRoot(ScanCategory::Run, L"Run (current user)"));
}

void AppPaths(const ScanContext& scan, ScanSink& out) {
  if (scan.InstallFolder().empty()) return;
  const auto base = Join(kCurrentVersion, L"App Paths");
  // A per-user install registers its App Paths under the user's key.
  for (RegRoot root : {kMachine, kUser}) {
    for (const auto& name : SubKeysOf(scan, root, base)) {
      if (!scan.Step()) return;
      const auto path = Join(base, name);
      auto key = scan.Open(root, path);
      if (!key || !ValueNamesFolder(scan, *key)) continue;
      out.AddKey(ScanCategory::AppPaths, root, true,
                 root == kMachine ? name : L"HKEY_CURRENT_USER\\" + name, path);
    }
  }
}

void ShellExtensionsApproved(const ScanContext& scan, ScanSink& out) {
  if (scan.InstallFolder().empty() || out.Category(ScanCategory::ClsidMachine).Count() == 0) return;
  const auto base = Join(kCurrentVersion, L"Shell Extensions");
  for (const auto& list : SubKeysOf(scan, kMachine, base)) {
    const auto path = Join(base, list);
    auto key = scan.Open(kMachine, path);
    if (!key) continue;
    auto& group = out.CategoryRoot(ScanCategory::ShellExtApproved, list);
    for (const auto& name : key->ValueNames()) {
      if (!scan.Step()) return;
      if (NamesProgramClass(out, name))
        out.AddValue(&group, kMachine, path, name, ReadValueText(*key, name));
    }
  }
}

void ControlPanel(const ScanContext& scan, ScanSink& out) {
  if (scan.InstallFolder().empty()) return;
  FolderValues(scan, out, kMachine, Join(kCurrentVersion, L"Control Panel\\Cpls"),
               out.CategoryRoot(ScanCategory::Cpls, L"Cpls"));
}

void Clients(const ScanContext& scan, ScanSink& out) {
  if (scan.InstallFolder().empty()) return;
  const std::wstring base = L"\\SOFTWARE\\Clients";
  auto& types = out.Category(ScanCategory::Clients);
  for (const auto& type : SubKeysOf(scan, kMachine, base)) {
    if (!scan.Step()) return;
    const auto typePath = Join(base, type);
    int at = types.IndexOf(type);
    if (at < 0) {
      auto group = std::make_unique<TRegeditItemGroup>();
      group->Root = kMachine;
      group->KeyPath = typePath;
      types.Add(type, std::move(group));
      at = types.Count() - 1;
    }
    auto& group = types.Object(at);
    for (const auto& client : SubKeysOf(scan, kMachine, typePath)) {
      if (!scan.Step()) return;
      const auto clientPath = Join(typePath, client);
      if (scan.KeyRefersToInstallFolder(kMachine, clientPath))
        out.AddKey(group, kMachine, true, client, clientPath);
    }
  }
}

void MuiCache(const ScanContext& scan, ScanSink& out) {
  if (scan.InstallFolder().empty()) return;
  const std::wstring path = L"\\Software\\Microsoft\\Windows\\ShellNoRoam\\MUICache";
  auto key = scan.Open(kUser, path);
  if (!key) return;
  auto& group = out.CategoryRoot(ScanCategory::MUICache, L"MUICache");
  // Subkey names only, although the cache keeps its entries as values: a
  // cache that holds nothing but values yields nothing.
  for (const auto& name : key->SubKeyNames()) {
    if (!scan.Step()) return;
    if (scan.TextHasInstallFolder(name))
      out.AddValue(&group, kUser, path, name, ReadValueText(*key, name));
  }
}

void ToolbarValues(const ScanContext& scan, ScanSink& out, const std::wstring& toolbarClsid) {
  if (toolbarClsid.empty()) return;
  // The places the inventory lists browser toolbars from: the Toolbar key
  // of either root and its subkeys (WebBrowser, ShellBrowser, Explorer).
  for (RegRoot root : {kMachine, kUser}) {
    const std::wstring base(root == kMachine ? kToolbar : kUserToolbar);
    std::vector<std::wstring> places{L""};
    for (auto& sub : SubKeysOf(scan, root, base)) places.push_back(std::move(sub));
    for (const auto& place : places) {
      if (!scan.Step()) return;
      const auto path = place.empty() ? base : Join(base, place);
      auto key = scan.Open(root, path);
      if (!key || !key->ValueExists(toolbarClsid)) continue;
      TRegeditItemGroup* group = nullptr;
      if (root == kMachine && place.empty())
        group = &out.CategoryRoot(ScanCategory::Toolbar, L"Toolbar");
      else if (root == kUser && text::SameText(place, L"WebBrowser"))
        group = &out.CategoryRoot(ScanCategory::WebBrowser, L"WebBrowser");
      else
        group =
            &out.CategoryRoot(ScanCategory::Toolbar, (root == kMachine ? L"HKLM" : L"HKCU") + path);
      out.AddValue(group, root, path, toolbarClsid, ReadValueText(*key, toolbarClsid));
    }
  }
  // The toolbar's own class when its module lies in the toolbar's folder;
  // left alone it would keep naming a file that the file scan removes.
  const auto classPath = Join(L"\\SOFTWARE\\Classes\\CLSID", toolbarClsid);
  if (toolbarClsid.find(L'\\') != std::wstring::npos || !scan.ServerPathMatches(classPath)) return;
  out.AddKey(ScanCategory::ClsidMachine, kMachine, true, toolbarClsid, classPath);
  out.AddKey(ScanCategory::ClsidClassesRoot, RegRoot::ClassesRoot, true, toolbarClsid,
             ClassesRootMirror(classPath));
  const auto userPath = Join(L"\\Software\\Classes\\CLSID", toolbarClsid);
  if (scan.KeyExists(kUser, userPath))
    out.AddKey(ScanCategory::ClsidUser, kUser, true, toolbarClsid, userPath);
}

}  // namespace varnel::scan
