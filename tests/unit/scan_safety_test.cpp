#include <gtest/gtest.h>

#include "leftovers/other_programs.h"
#include "leftovers/scan_driver.h"
#include "scan_world.h"

namespace varnel {
namespace {

using testing_scan::ScanWorld;

constexpr RegRoot HKLM = RegRoot::LocalMachine;

// A per-user entry (anyone can write one) whose install location names a
// place no program owns: nothing on disk and nothing found through the
// folder may be offered. Each place holds a file and is named by a Run
// value and a service, so a scan that took the folder would report them.
TEST(ScanSafetyTest, AHostileEntryOfEveryKindOffersNoFileAndNoFolderFinding) {
  const struct {
    const wchar_t* location;
    const wchar_t* name;
    const wchar_t* bait;  // a file the folder holds
  } cases[] = {
      {L"\\\\?\\C:\\windows\\system32", L"Acme Writer", L"C:\\Windows\\system32\\kernel32.dll"},
      {L"C:\\/", L"Acme Writer", L"C:\\boot.ini"},
      {L"C:\\Users\\test\\AppData\\Roaming", L"Acme Writer",
       L"C:\\Users\\test\\AppData\\Roaming\\Mail\\inbox.db"},
      {L"C:\\Program Files\\", L"Acme Writer", L"C:\\Program Files\\Office\\office.exe"},
      {L"C:\\Program Files\\Other App\\plugins\\..", L"Acme Writer",
       L"C:\\Program Files\\Other App\\other.exe"},
      // No folder at all, but a name that the name search would find in AppData.
      {L"", L"Microsoft", L"C:\\Users\\test\\AppData\\Roaming\\Microsoft\\Credentials\\x"},
  };
  for (const auto& c : cases) {
    ScanWorld w;
    w.m.files.AddFile(c.bait, "x");
    w.Set(HKLM, L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run", L"Bait", c.bait);
    w.Set(HKLM, L"\\SYSTEM\\CurrentControlSet\\services\\Bait", L"ImagePath", c.bait);
    SoftList list;
    list.push_back(std::make_unique<TSoftInfo>(w.record));
    list[0]->InstallLocation = c.location;
    list[0]->Name = c.name;
    list[0]->Publisher = L"";
    list[0]->RootKey = L"HKEY_CURRENT_USER";
    list.push_back(std::make_unique<TSoftInfo>(w.record));
    list[1]->Name = L"Other App";
    list[1]->InstallLocation = L"C:\\Program Files\\Other App";
    ScanDriver driver(w.m.Get(), w.filter);
    const auto found = driver.Collect(list, 0, L"", nullptr);
    EXPECT_TRUE(found.Files.empty()) << c.location << " offers " << found.Files[0].Path;
    EXPECT_TRUE(found.Registry.empty()) << c.location << " offers " << found.Registry[0].KeyPath;
  }
}

// A toolbar that has no uninstaller of its own and lives in the scanned
// program's folder belongs to that program: it does not make the folder
// another program's. Anything else listed keeps its folder protected.
TEST(ScanSafetyTest, OnlyALooseToolbarInTheProgramsOwnFolderIsPartOfIt) {
  const struct {
    const wchar_t* program;    // the scanned program's location
    const wchar_t* toolbar;    // the toolbar's location
    const wchar_t* uninstall;  // the toolbar's uninstaller
    bool protectedFolder;      // the toolbar's folder stays another program's
  } cases[] = {
      {L"C:\\Program Files\\Acme\\Writer", L"C:\\Program Files\\Acme\\Writer\\", L"", false},
      {L"C:\\Program Files\\Acme\\Writer\\writer.exe", L"C:\\PROGRA~1\\Acme\\Writer\\bar", L"",
       false},
      {L"C:\\Program Files\\Acme\\Writer", L"C:\\Program Files\\Acme\\Writer", L"bar.exe /u", true},
      {L"C:\\Program Files\\Acme\\Writer", L"C:\\Program Files\\Acme\\Bar", L"", true},
      {L"C:\\", L"C:\\Program Files\\Acme\\Bar", L"", true},
      {L"C:\\Users\\test\\AppData\\Roaming", L"C:\\Users\\test\\AppData\\Roaming\\Bar", L"", true},
  };
  for (const auto& c : cases) {
    ScanWorld w;
    w.m.files.AddFile(L"C:\\Program Files\\Acme\\Writer\\bar\\bar.dll", "MZ");
    w.m.files.AddFile(L"C:\\Program Files\\Acme\\Bar\\bar.dll", "MZ");
    w.m.files.AddFile(L"C:\\Users\\test\\AppData\\Roaming\\Bar\\bar.dll", "MZ");
    w.m.files.SetShortName(L"C:\\Program Files", L"PROGRA~1");
    SoftList list;
    list.push_back(std::make_unique<TSoftInfo>(w.record));
    list[0]->InstallLocation = c.program;
    list.push_back(std::make_unique<TSoftInfo>());
    list[1]->Name = L"Acme Bar";
    list[1]->IsToolbar = true;
    list[1]->InstallLocation = c.toolbar;
    list[1]->UninstallString = c.uninstall;
    const auto others = OtherProgramFolders(w.m.Get(), list, {0});
    EXPECT_EQ(others.size() == 1, c.protectedFolder) << c.program << " / " << c.toolbar;
    if (c.protectedFolder) continue;
    // The program's own folder is scanned as such.
    ScanDriver driver(w.m.Get(), w.filter);
    const auto found = driver.Collect(list, 0, L"", nullptr);
    EXPECT_FALSE(found.Files.empty()) << c.program << " / " << c.toolbar;
  }
}

// A tree nested hundreds deep, and a junction inside the install
// folder that leads back to it: the walk ends, reports the link once and
// never goes through it.
TEST(ScanSafetyTest, DeepTreesAndLinkLoopsEndTheWalk) {
  ScanWorld w;
  const std::wstring folder = L"C:\\Program Files\\Acme\\Writer";
  std::wstring deep = folder;
  for (int i = 0; i < 500; ++i) deep += L"\\d";
  w.m.files.AddFolder(deep);
  w.m.files.AddLink(folder + L"\\loop", folder);
  auto& scan = w.SetUp();
  scan.FileOnlyScan();
  std::size_t folders = 0, links = 0;
  for (const auto& f : w.files) {
    if (f.Kind == FileKind::Folder) ++folders;
    if (f.Path.find(L"\\loop") != std::wstring::npos) ++links;
  }
  EXPECT_EQ(links, 1u);
  EXPECT_EQ(folders, 2 + (deep.size() - folder.size()) / 2);  // the folder, the link, every "d"
}

}  // namespace
}  // namespace varnel
