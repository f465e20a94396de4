#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "base/text.h"
#include "inventory/browser_extensions.h"
#include "inventory/software_info.h"
#include "inventory/toolbar_discovery.h"
#include "leftovers/scan_driver.h"
#include "platform/memory/memory_platform.h"
#include "scan_world.h"
#include "uninstall/addon_removal.h"
#include "uninstall/backup.h"
#include "uninstall/run_uninstaller.h"

namespace varnel {
namespace {

constexpr wchar_t kFirefox[] = L"C:\\Users\\test\\AppData\\Roaming\\Mozilla\\Firefox";
constexpr wchar_t kChrome[] = L"C:\\Users\\test\\AppData\\Local\\Google\\Chrome\\User Data";
constexpr wchar_t kChromeId[] = L"abcdefghijklmnopabcdefghijklmnop";
constexpr wchar_t kThemeId[] = L"ponmlkjihgfedcbaponmlkjihgfedcba";

std::string Rdf(const std::string& name) {
  return "<?xml version=\"1.0\"?><RDF xmlns=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\" "
         "xmlns:em=\"http://www.mozilla.org/2004/em-rdf#\"><Description><em:name>" +
         name + "</em:name></Description></RDF>";
}

class ToolbarDiscoveryTest : public testing::Test {
 protected:
  ToolbarDiscoveryTest() {
    m.registry.SetString(RegRoot::LocalMachine,
                         L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Mozilla Firefox 99.0 (x64 en-US)",
                         L"DisplayName", L"Mozilla Firefox");
  }
  void Profiles(const std::string& ini) { m.files.AddFile(std::wstring(kFirefox) + L"\\profiles.ini", ini); }
  void Legacy(const std::wstring& profile, const std::wstring& folder, const std::string& name) {
    m.files.AddFile(profile + L"\\extensions\\" + folder + L"\\install.rdf", Rdf(name));
  }
  void ChromeExtension(const std::wstring& profile, const std::wstring& id, const std::string& manifest,
                       int location = 1) {
    const std::wstring folder = profile + L"\\Extensions\\" + id + L"\\1.0_0";
    m.files.AddFile(folder + L"\\manifest.json", manifest);
    m.files.AddFile(profile + L"\\Preferences",
                    "{\"extensions\":{\"settings\":{\"" + text::ToUtf8(id) + "\":{\"location\":" +
                        std::to_string(location) + ",\"path\":\"" + text::ToUtf8(id) + "\\\\1.0_0\"}}}}");
  }
  std::vector<std::wstring> Names(bool use64 = false) {
    SoftList list;
    DiscoverToolbars(m.Get(), list, use64);
    std::vector<std::wstring> names;
    for (const auto& info : list)
      if (!info->Hidden) names.push_back(info->Name);
    return names;
  }
  mem::MemoryPlatform m;
};

// Registered toolbars: the key itself and its subkeys of both roots, one
// record per class and module, and none from a system folder.
TEST_F(ToolbarDiscoveryTest, RegisteredToolbarsAreListedOnceAndNeverFromSystemFolders) {
  const std::wstring toolbar = L"SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar";
  m.registry.SetString(RegRoot::CurrentUser, toolbar + L"\\WebBrowser", L"{A}", L"");
  m.registry.SetString(RegRoot::LocalMachine, toolbar, L"{A}", L"", false);
  m.registry.SetString(RegRoot::LocalMachine, toolbar, L"{S}", L"", false);
  for (const auto& [clsid, name, module] :
       {std::tuple{L"{A}", L"Acme Bar", L"C:\\Program Files\\Acme\\bar.dll"},
        std::tuple{L"{S}", L"Sys Bar", L"C:\\Windows\\system32\\sysbar.dll"}}) {
    m.registry.SetString(RegRoot::ClassesRoot, std::wstring(L"CLSID\\") + clsid, L"", name, false);
    m.registry.SetString(RegRoot::ClassesRoot, std::wstring(L"CLSID\\") + clsid + L"\\InprocServer32",
                         L"", module, false);
  }
  SoftList list;
  DiscoverToolbars(m.Get(), list, false);
  ASSERT_EQ(list.size(), 2u);  // HKCU's and HKLM's record of the same toolbar
  EXPECT_TRUE(list[0]->Hidden);
  EXPECT_FALSE(list[1]->Hidden);
  EXPECT_EQ(list[1]->Name, L"Acme Bar");
  EXPECT_EQ(list[1]->InstallLocation, L"C:\\Program Files\\Acme\\");
}

struct ProfileCase {
  const char* label;
  std::string ini;
  std::vector<std::wstring> names;
};

// profiles.ini forms, missing profiles and the toolbar word.
TEST_F(ToolbarDiscoveryTest, FirefoxProfilesAndTheToolbarWord) {
  const std::wstring relative = std::wstring(kFirefox) + L"\\Profiles\\a.default";
  const std::wstring absolute = L"D:\\Elsewhere\\b.work";
  Legacy(relative, L"one@x", "Example Toolbar");
  Legacy(relative, L"two@x", "Helper");
  Legacy(absolute, L"three@x", "Search TOOLBAR Pro");
  m.files.AddFile(absolute + L"\\extensions.json",
                  R"({"addons":[
    {"id":"j@x","type":"extension","location":"app-profile","version":"2","active":true,
     "defaultLocale":{"name":"Json toolbar"},"path":"D:\\Elsewhere\\b.work\\extensions\\j@x.xpi"},
    {"id":"t@x","type":"theme","defaultLocale":{"name":"Dark Toolbar"},
     "path":"D:\\Elsewhere\\b.work\\extensions\\t@x.xpi"},
    {"id":"g@x","type":"extension","location":"app-profile","defaultLocale":{"name":"Gone Toolbar"},
     "path":"D:\\Elsewhere\\b.work\\extensions\\g@x.xpi"},
    {"id":"s@x","type":"extension","location":"app-builtin","defaultLocale":{"name":"Builtin Toolbar"},
     "path":"D:\\Elsewhere\\b.work\\extensions\\s@x.xpi"}]})");
  m.files.AddFile(absolute + L"\\extensions\\j@x.xpi", "PK");
  m.files.AddFile(absolute + L"\\extensions\\t@x.xpi", "PK");
  m.files.AddFile(absolute + L"\\extensions\\s@x.xpi", "PK");

  const std::vector<ProfileCase> cases = {
      {"relative, slashes", "[Profile0]\nIsRelative=1\nPath=Profiles/a.default\n",
       {L"Example Toolbar (Firefox)"}},
      {"absolute, backslashes", "[Profile0]\nIsRelative=0\nPath=D:\\Elsewhere\\b.work\n",
       {L"Search TOOLBAR Pro (Firefox)", L"Json toolbar (Firefox)"}},
      {"every profile", "[Profile1]\nIsRelative=0\nPath=D:\\Elsewhere\\b.work\n[Profile0]\nIsRelative=1\nPath=Profiles\\a.default\n",
       {L"Search TOOLBAR Pro (Firefox)", L"Json toolbar (Firefox)", L"Example Toolbar (Firefox)"}},
      {"missing profile folder", "[Profile0]\nIsRelative=1\nPath=Profiles/none\n", {}},
  };
  for (const auto& c : cases) {
    Profiles(c.ini);
    EXPECT_EQ(Names(), c.names) << c.label;
  }
}

TEST_F(ToolbarDiscoveryTest, ChromiumProfilesLocalisedNamesAndThemes) {
  m.files.AddFile(std::wstring(kChrome) + L"\\Local State",
                  R"({"profile":{"info_cache":{"Profile 3":{},"..\\..":{}}}})");
  const std::wstring work = std::wstring(kChrome) + L"\\Profile 3";
  const std::wstring home = std::wstring(kChrome) + L"\\Default";
  ChromeExtension(work, kChromeId,
                  R"({"name":"__MSG_appName__","version":"1.0","default_locale":"de"})");
  m.files.AddFile(work + L"\\Extensions\\" + kChromeId + L"\\1.0_0\\_locales\\de\\messages.json",
                  R"({"APPNAME":{"message":"Suche Toolbar"}})");
  ChromeExtension(home, kThemeId, R"({"name":"Toolbar Theme","version":"3","theme":{}})");
  EXPECT_EQ(Names(), (std::vector<std::wstring>{L"Suche Toolbar (Chrome)"}));

  const auto all = ListBrowserExtensions(m.Get());
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].profile, work);
  EXPECT_EQ(all[0].version, L"1.0");
}

// Files are the same in both registry views: the add-ons come once.
TEST_F(ToolbarDiscoveryTest, ProfilesAreReadOnceOnA64BitSystem) {
  Profiles("[Profile0]\nIsRelative=1\nPath=Profiles/a.default\n");
  Legacy(std::wstring(kFirefox) + L"\\Profiles\\a.default", L"one@x", "Example Toolbar");
  SoftList list;
  CollectInstalledSoftware(TAppFrame(m.Get()), list, DefaultToolbarDiscovery(m.Get()));
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0]->Name, L"Example Toolbar (Firefox)");
}

struct RemovalCase {
  const char* label;
  TSoftInfo record;
  std::vector<std::wstring> gone, kept;
  std::wstring inBrowser;
  std::wstring otherProgram = {};  // install folder of another listed program
};

TSoftInfo Addon(std::wstring file, std::wstring browser, std::wstring id, std::wstring profile,
                std::wstring uninstall = L"") {
  TSoftInfo info;
  info.Name = L"Some Toolbar";
  info.IsToolbar = true;
  info.ToolbarFile = std::move(file);
  info.Extra1 = std::move(browser);
  info.Extra2 = std::move(id);
  info.Extra3 = std::move(profile);
  info.UninstallString = std::move(uninstall);
  return info;
}

TEST_F(ToolbarDiscoveryTest, RemovalTakesOnlyTheAddonsOwnFiles) {
  const std::wstring profile = std::wstring(kFirefox) + L"\\Profiles\\a.default";
  const std::wstring ext = profile + L"\\extensions\\";
  const std::wstring chrome = std::wstring(kChrome) + L"\\Default";
  const std::wstring chromeFolder = chrome + L"\\Extensions\\" + kChromeId;
  const std::wstring external = L"SOFTWARE\\Google\\Chrome\\Extensions\\" + std::wstring(kChromeId);
  for (const std::wstring& file : std::vector<std::wstring>{ext + L"old@x\\install.rdf", ext + L"old@x\\chrome.manifest",
                           ext + L"new@x.xpi", L"C:\\Program Files\\Mozilla Firefox\\distribution\\d@x.xpi",
                           chromeFolder + L"\\1.0_0\\manifest.json", L"C:\\Apps\\Other\\extensions\\o@x.xpi",
                           ext + L"dir@x\\install.rdf\\keep.txt"})
    m.files.AddFile(file, "x");

  std::vector<RemovalCase> cases = {
      {"legacy manifest, folded into a program",
       Addon(ext + L"old@x\\install.rdf", L"", L"", L"", L"C:\\App\\uninst.exe"),
       {ext + L"old@x\\install.rdf"}, {ext + L"old@x\\chrome.manifest"}, L""},
      {"package in the profile", Addon(ext + L"new@x.xpi", L"Firefox", L"new@x", profile),
       {ext + L"new@x.xpi"}, {}, L""},
      {"package of the installation",
       Addon(L"C:\\Program Files\\Mozilla Firefox\\distribution\\d@x.xpi", L"Firefox", L"d@x", profile),
       {}, {L"C:\\Program Files\\Mozilla Firefox\\distribution\\d@x.xpi"}, L"Firefox"},
      {"package with a way up", Addon(ext + L"..\\..\\a.default\\extensions\\new@x.xpi", L"Firefox", L"n", profile),
       {}, {}, L"Firefox"},
      {"installed in the browser", Addon(chromeFolder + L"\\1.0_0", L"Chrome", kChromeId, chrome),
       {}, {chromeFolder + L"\\1.0_0\\manifest.json"}, L"Chrome"},
      {"profile in another program's folder",
       Addon(L"C:\\Apps\\Other\\extensions\\o@x.xpi", L"Firefox", L"o@x", L"C:\\Apps\\Other"),
       {}, {L"C:\\Apps\\Other\\extensions\\o@x.xpi"}, L"", L"C:\\Apps\\Other"},
      {"manifest that is a folder", Addon(ext + L"dir@x\\install.rdf", L"", L"", L""),
       {}, {ext + L"dir@x\\install.rdf\\keep.txt"}, L""},
  };
  int deleting = 0;
  for (auto& c : cases) {
    std::atomic<bool> stop{false};
    UninstallRunner runner(m.Get(), stop, {}, {});
    SoftList list;
    list.push_back(std::make_unique<TSoftInfo>(c.record));
    if (!c.otherProgram.empty()) {
      list.push_back(std::make_unique<TSoftInfo>());
      list.back()->InstallLocation = c.otherProgram;
    }
    const UninstallRun run = runner.RunUninstaller(list, 0, L"Uninstalling");
    EXPECT_FALSE(run.started) << c.label;
    EXPECT_EQ(run.removeInBrowser, c.inBrowser) << c.label;
    EXPECT_EQ(run.addonRemoved, !c.gone.empty()) << c.label;
    EXPECT_EQ(run.addonKept.empty(), !c.inBrowser.empty() || !c.gone.empty()) << c.label;
    deleting += !c.gone.empty();
    for (const auto& path : c.gone) EXPECT_FALSE(m.files.FileExists(path)) << c.label;
    for (const auto& path : c.kept) EXPECT_TRUE(m.files.FileExists(path)) << c.label;
  }
  EXPECT_TRUE(m.processes.events.empty());
  // Each removal that deleted something has its backup; a refusal leaves none.
  EXPECT_EQ(ListBackups(m.Get()).size(), static_cast<std::size_t>(deleting));

  // Registered from outside: the registration (a key, a file in the listed
  // browser's own folder) and the extension's folder go; the browser stays.
  const std::wstring app = L"C:\\Program Files\\Google\\Chrome\\Application";
  m.files.AddFile(app + L"\\chrome.exe", "MZ");
  m.files.AddFile(app + L"\\Extensions\\" + kChromeId + L".json", "{}");
  m.registry.SetString(RegRoot::LocalMachine, external, L"path", L"C:\\x.crx", false);
  const AddonRemoval removal = RemoveBrowserAddon(
      m.Get(), Addon(chromeFolder + L"\\1.0_0", L"Chrome", kChromeId, chrome), {app});
  EXPECT_TRUE(removal.removed);
  EXPECT_FALSE(m.registry.KeyExists(RegRoot::LocalMachine, external, false));
  EXPECT_FALSE(m.files.FileExists(app + L"\\Extensions\\" + kChromeId + L".json"));
  EXPECT_TRUE(m.files.FileExists(app + L"\\chrome.exe"));
  EXPECT_FALSE(m.files.DirectoryExists(chromeFolder));
}

// A stop while the toolbar's browser entries are read ends the scan: the
// folder walk after it does not start.
TEST(ToolbarScan, AStopInTheToolbarBranchEndsTheFolderWalk) {
  testing_scan::ScanWorld w;
  w.record.IsToolbar = true;
  w.record.ToolbarClsid = L"{A}";
  w.Set(RegRoot::LocalMachine, L"\\SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar", L"{A}", L"");
  SoftList list;
  list.push_back(std::make_unique<TSoftInfo>(w.record));
  int steps = 0;
  ScanDriver* driverRef = nullptr;
  ScanDriver driver{w.m.Get(), w.filter, [&] {
                       if (++steps == 1) driverRef->Stop();
                     }};
  driverRef = &driver;
  const auto found = driver.Collect(list, 0, L"", nullptr);
  EXPECT_TRUE(found.Stopped);
  EXPECT_TRUE(found.Files.empty());
  EXPECT_EQ(steps, 1);
}

}  // namespace
}  // namespace varnel
