#include <gtest/gtest.h>

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
    TSoftList list;
    list.push_back(std::make_unique<TSoftInfo>(w.record));
    list[0]->InstallLocation = c.location;
    list[0]->Name = c.name;
    list[0]->Publisher = L"";
    list[0]->RootKey = L"HKEY_CURRENT_USER";
    list.push_back(std::make_unique<TSoftInfo>(w.record));
    list[1]->Name = L"Other App";
    list[1]->InstallLocation = L"C:\\Program Files\\Other App";
    TScanDriver driver(w.m.Get());
    const auto found = driver.Collect(list, 0, L"", nullptr);
    EXPECT_TRUE(found.Files.empty()) << c.location << " offers " << found.Files[0].Path;
    EXPECT_TRUE(found.Registry.empty()) << c.location << " offers " << found.Registry[0].KeyPath;
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
