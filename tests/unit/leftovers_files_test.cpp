#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "core/app_frame.h"
#include "base/text.h"
#include "leftovers/scan_steps.h"
#include "platform/csidl.h"
#include "scan_world.h"

namespace varnel {
namespace {

using testing_scan::ExpectReported;
using testing_scan::ScanWorld;

const std::wstring kFolder = L"C:\\Program Files\\Acme\\Writer";

void Put32(std::string& b, std::size_t at, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) b[at + i] = static_cast<char>((v >> (8 * i)) & 0xFF);
}

// The smallest shell link with a local base path: header, then the
// link-information block holding the path.
std::string LinkTo(const std::string& target) {
  std::string b(76, '\0');
  Put32(b, 0, 76);
  std::string info(28, '\0');
  Put32(info, 4, 28);
  Put32(info, 8, 1);  // local volume and base path
  Put32(info, 16, 28);
  info += target;
  info.push_back('\0');
  Put32(info, 24, static_cast<std::uint32_t>(info.size()));
  info.push_back('\0');
  Put32(info, 0, static_cast<std::uint32_t>(info.size()));
  return b + info;
}

class LeftoverFilesTest : public testing::Test {
 protected:
  std::wstring Folder(int csidl) { return QuerySpecialFolder(w.m.system, csidl); }
  std::vector<std::wstring> FilesOnly() {
    w.SetUp().FileOnlyScan();
    return w.Captions();
  }
  const TFileInfo* Find(const std::wstring& path) const {
    for (const auto& f : w.files)
      if (f.Path == path) return &f;
    return nullptr;
  }

  ScanWorld w;
};

TEST_F(LeftoverFilesTest, TheInstallFolderGoesWholeAndItemByItemWithSizes) {
  w.record.InstallLocation = L"C:\\Program Files\\Acme\\Writer\\";
  w.m.files.AddFile(kFolder + L"\\data\\big.bin", std::string(70000, 'x'));
  w.m.files.AddFile(kFolder + L"\\.hidden", "x");
  auto all = FilesOnly();
  EXPECT_EQ(all, (std::vector<std::wstring>{kFolder, kFolder + L"\\data",
                                            kFolder + L"\\data\\big.bin",
                                            kFolder + L"\\writer.exe"}));
  ASSERT_NE(Find(kFolder + L"\\data\\big.bin"), nullptr);
  EXPECT_EQ(Find(kFolder + L"\\data\\big.bin")->Word1, 70000u);
  EXPECT_EQ(Find(kFolder + L"\\data\\big.bin")->Word2, 0u);
  EXPECT_EQ(Find(kFolder + L"\\data\\big.bin")->Kind, FileKind::File);
  EXPECT_EQ(Find(kFolder + L"\\data")->Kind, FileKind::Folder);

  // A junction is reported but never entered.
  w.m.files.AddFile(kFolder + L"\\link\\elsewhere.txt", "x");
  w.m.files.SetAttributes(kFolder + L"\\link", FileAttr::ReparsePoint);
  all = FilesOnly();
  EXPECT_TRUE(ScanWorld::Has(all, kFolder + L"\\link"));
  EXPECT_FALSE(ScanWorld::Has(all, kFolder + L"\\link\\elsewhere.txt"));

  // An install folder the uninstaller removed is no leftover.
  w.record.InstallLocation = L"C:\\Program Files\\Acme\\Gone";
  EXPECT_TRUE(w.Full().empty());
}

TEST_F(LeftoverFilesTest, KeptFilterPathsAreNeverReportedWhileTheFolderIsEntered) {
  w.filter.Add(L"Acme Acme Writer", L"",
               L"", L"CSIDL_LOCAPTION\\Languages,CSIDL_LOCAPTION\\conf\\main.ini");
  w.m.files.AddFile(kFolder + L"\\Languages\\en.lng", "x");
  w.m.files.AddFile(kFolder + L"\\conf\\main.ini", "x");
  w.m.files.AddFile(kFolder + L"\\conf\\other.ini", "x");
  w.m.files.AddFile(kFolder + L"\\bin\\tool.exe", "x");
  auto all = FilesOnly();
  EXPECT_EQ(all, (std::vector<std::wstring>{kFolder + L"\\bin", kFolder + L"\\bin\\tool.exe",
                                            kFolder + L"\\writer.exe"}));
}

TEST_F(LeftoverFilesTest, NameSearchTriesThePublisherFolderFirstAndComparesWholeNames) {
  const auto appData = Folder(Csidl::AppData);
  const auto common = Folder(Csidl::CommonAppData);
  // A depth-first walk meets "AAA" before "Acme".
  w.m.files.AddFile(appData + L"\\AAA\\Acme Writer\\stray.txt", "x");
  w.m.files.AddFile(appData + L"\\Acme\\Acme Writer\\settings.ini", "x");
  w.m.files.AddFile(appData + L"\\Acme\\shared.ini", "x");
  w.m.files.AddFile(common + L"\\Deep\\er\\ACME WRITER\\cache.bin", "x");
  w.m.files.AddFile(common + L"\\Acme Writer Pro\\no.txt", "x");
  auto all = FilesOnly();
  ExpectReported(all, {
      {appData + L"\\Acme\\Acme Writer", true},
      {appData + L"\\Acme\\Acme Writer\\settings.ini", true},
      {appData + L"\\Acme", false},
      {appData + L"\\Acme\\shared.ini", false},
      {appData + L"\\AAA\\Acme Writer", false},
      // No publisher folder there: the namesake at any depth, any case.
      {common + L"\\Deep\\er\\ACME WRITER\\cache.bin", true},
      {common + L"\\Acme Writer Pro", false},
  });

  w.record.Name = L"foo bar";
  w.record.Publisher = L"-";  // the inventory's "no publisher"
  w.m.files.AddFile(Folder(Csidl::Programs) + L"\\Tools\\Foo Bar\\Foo Bar.lnk", "x");
  all = FilesOnly();
  EXPECT_TRUE(ScanWorld::Has(all, Folder(Csidl::Programs) + L"\\Tools\\Foo Bar\\Foo Bar.lnk"));
  w.record.Name = L"foo";
  all = FilesOnly();
  EXPECT_FALSE(ScanWorld::Has(all, Folder(Csidl::Programs) + L"\\Tools\\Foo Bar"));
}

TEST_F(LeftoverFilesTest, DesktopShortcutsIntoTheFolderAreFoundAndBrokenOnesPassedOver) {
  const auto desktop = Folder(Csidl::DesktopDirectory);
  const auto publicDesktop = Folder(Csidl::CommonDesktopDirectory);
  w.m.files.AddFile(desktop + L"\\A broken.lnk", "not a link");
  w.m.files.AddFile(desktop + L"\\Writer.lnk",
                    LinkTo("C:\\Program Files\\Acme\\Writer\\writer.exe"));
  w.m.files.AddFile(desktop + L"\\Sub\\Writer.lnk",
                    LinkTo("C:\\Program Files\\Acme\\Writer\\writer.exe"));
  w.m.files.AddFile(desktop + L"\\Writer2.lnk", LinkTo("C:\\Program Files\\Acme\\Writer2\\w.exe"));
  w.m.files.AddFile(L"C:\\Program Files\\Acme\\Writer2\\w.exe", "MZ");
  w.m.files.AddFile(publicDesktop + L"\\Writer folder.lnk",
                    LinkTo("C:\\Program Files\\Acme\\Writer"));
  // What an uninstaller typically leaves: a link whose target it removed.
  w.m.files.AddFile(desktop + L"\\Gone.lnk", LinkTo("C:\\Program Files\\Acme\\Writer\\gone.exe"));
  auto all = FilesOnly();
  EXPECT_TRUE(ScanWorld::Has(all, desktop + L"\\Gone.lnk"));
  ASSERT_TRUE(ScanWorld::Has(all, desktop + L"\\Writer.lnk"));
  ExpectReported(all, {
      {publicDesktop + L"\\Writer folder.lnk", true},
      {desktop + L"\\Sub\\Writer.lnk", false},
      {desktop + L"\\Writer2.lnk", false},
      {desktop + L"\\A broken.lnk", false},
  });
  EXPECT_EQ(Find(desktop + L"\\Writer.lnk")->Kind, FileKind::File);
}

TEST_F(LeftoverFilesTest, InstallerCacheAndMakerPathsAreReportedOnce) {
  const std::wstring code = L"{6BA67843-0D45-48E2-9A39-FC786CBE3C43}";
  w.record.KeyPath = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\" + code;
  w.record.Publisher = L"Varnel";
  w.record.Name = L"Game Booster";
  const auto cache = Folder(Csidl::CommonAppData) + L"\\Microsoft\\Installer\\" + code;
  w.m.files.AddFile(cache + L"\\icon.ico", "x");
  // The Installer lists the install folder itself as one of its folders.
  const std::wstring folders =
      L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\Folders";
  w.Set(RegRoot::LocalMachine, folders, kFolder + L"\\", L"");
  const auto own = Folder(Csidl::AppData) + L"\\Varnel\\Game Booster";
  w.m.files.AddFile(own + L"\\state.dat", "x");
  auto all = w.Full();
  EXPECT_EQ(ScanWorld::CountOf(all, kFolder), 1);
  EXPECT_EQ(ScanWorld::CountOf(all, kFolder + L"\\writer.exe"), 1);
  EXPECT_EQ(ScanWorld::CountOf(all, cache), 1);
  EXPECT_EQ(ScanWorld::CountOf(all, cache + L"\\icon.ico"), 1);
  // Found by the name search and again as the maker's program path.
  EXPECT_EQ(ScanWorld::CountOf(all, own), 1);
  EXPECT_EQ(ScanWorld::CountOf(all, own + L"\\state.dat"), 1);
}

}  // namespace
}  // namespace varnel
