#include <gtest/gtest.h>

#include "leftovers/scan_driver.h"
#include "leftovers/scan_steps.h"
#include "scan_world.h"

namespace varnel {
namespace {

using testing_scan::ScanWorld;
constexpr RegRoot HKLM = RegRoot::LocalMachine;
constexpr RegRoot HKCU = RegRoot::CurrentUser;

class ScanModelTest : public testing::Test {
 protected:
  ScanWorld w;
};

TEST_F(ScanModelTest, KeysAreReportedOncePerCategoryWithSubkeysBeforeValues) {
  const std::wstring key = L"\\SOFTWARE\\Classes\\AppID\\{A1}";
  w.Set(HKLM, key, L"", L"");  // an unset default value is never a leftover
  w.Set(HKLM, key, L"RunAs", L"Interactive User");
  w.Set(HKLM, key + L"\\Sub", L"Inner", L"1");
  auto all = w.Run([&](const ScanContext&, ScanSink& out) {
    ASSERT_NE(out.AddKey(ScanCategory::AppIdMachine, HKLM, true, L"{a1}", key), nullptr);
    EXPECT_EQ(out.AddKey(ScanCategory::AppIdMachine, HKLM, true, L"{A1}", key), nullptr);
    EXPECT_EQ(out.AddKey(ScanCategory::AppIdMachine, HKLM, true, L"{B2}", key + L"\\Gone"),
              nullptr);
  });
  EXPECT_EQ(all,
            (std::vector<std::wstring>{
                L"HKEY_LOCAL_MACHINE\\\\SOFTWARE\\Classes\\AppID\\{A1}",
                L"HKEY_LOCAL_MACHINE\\\\SOFTWARE\\Classes\\AppID\\{A1}\\Sub",
                L"HKEY_LOCAL_MACHINE\\\\SOFTWARE\\Classes\\AppID\\{A1}\\Sub | Inner - 1",
                L"HKEY_LOCAL_MACHINE\\\\SOFTWARE\\Classes\\AppID\\{A1} | RunAs - Interactive User",
            }));
  w.scanner->RunAlone([&](const ScanContext&, ScanSink& out) {
    // Another category files the same name again; a flat add leaves the subkey out.
    EXPECT_NE(out.AddKey(ScanCategory::AppIdClassesRoot, HKLM, false, L"{A1}", key), nullptr);
    EXPECT_EQ(w.registry.size(), 6u);
    // Values filed in one group are reported once by name.
    auto& run = out.CategoryRoot(ScanCategory::Run, L"Run");
    EXPECT_EQ(&run, &out.CategoryRoot(ScanCategory::Run, L"RUN"));
    out.AddValue(&run, HKLM, L"\\Run", L"Tray", L"x");
    out.AddValue(&run, HKLM, L"\\Run", L"tray", L"x");
    out.AddValue(nullptr, HKLM, L"\\Run", L"", L"");
    EXPECT_EQ(w.registry.size(), 7u);
  });
}

TEST_F(ScanModelTest, InstallFolderComesFromTheRecordAndRefusesFoldersNoProgramOwns) {
  auto folderOf = [&](const std::wstring& location) {
    w.record.InstallLocation = location;
    return w.SetUp().Context().InstallFolder();
  };
  EXPECT_EQ(folderOf(L"C:\\Program Files\\Acme\\Writer"), L"c:\\program files\\acme\\writer\\");
  EXPECT_EQ(folderOf(L"C:\\Program Files\\Acme\\Writer\\writer.exe"),
            L"c:\\program files\\acme\\writer\\");
  EXPECT_EQ(folderOf(L"\"C:\\Program Files\\Acme\\Writer\""),
            L"");  // not absolute as written: nothing is unquoted for it
  for (const wchar_t* hostile :
       {L"C:\\", L"c:", L"C:\\Windows\\", L"c:\\windows\\system32", L"%WINDIR%",
        L"%ProgramFiles%\\Acme", L"C:\\Program Files\\..\\Windows", L"C:\\.\\windows\\.",
        L"C:\\Program Files\\..\\..\\..", L"Writer", L"\\Acme", L"C:\\Users\\"})
    EXPECT_EQ(folderOf(hostile), L"") << hostile;
  EXPECT_EQ(folderOf(L"C:\\Program Files\\..\\Program Files\\Acme"),
            L"c:\\program files\\acme\\");
}

TEST_F(ScanModelTest, ServerPathMatchIsASubstringTestOnTheLongForm) {
  const std::wstring clsid = L"\\SOFTWARE\\Classes\\CLSID\\{C1}";
  w.m.files.AddFile(L"C:\\Program Files\\Acme\\Writer\\ext.dll", "MZ");
  w.m.files.SetShortName(L"C:\\Program Files", L"PROGRA~1");
  const auto& scan = w.SetUp().Context();
  auto matches = [&](const std::wstring& inproc, const std::wstring& local) {
    w.m.registry.DeleteKey(HKLM, clsid, true);
    if (!inproc.empty()) w.Set(HKLM, clsid + L"\\InprocServer32", L"", inproc);
    if (!local.empty()) w.Set(HKLM, clsid + L"\\LocalServer32", L"", local);
    return scan.ServerPathMatches(clsid);
  };
  EXPECT_TRUE(matches(L"  C:\\PROGRA~1\\Acme\\Writer\\ext.dll ", L""));
  EXPECT_TRUE(matches(L"D:\\backup\\c:\\program files\\acme\\writer\\x.dll", L""));
  EXPECT_TRUE(matches(L"C:\\Windows\\system32\\ole32.dll",
                      L"\"C:\\Program Files\\Acme\\Writer\\writer.exe\" /automation"));
  EXPECT_FALSE(matches(L"C:\\Program Files\\Acme\\Writer2\\x.dll", L""));
  EXPECT_FALSE(matches(L"C:\\PROGRA~1\\Acme\\Writer\\missing.dll", L""));  // no long form
  EXPECT_FALSE(matches(L"", L""));
}

TEST_F(ScanModelTest, VendorScanReportsValuesAndTheProductKeyButNeverProtectedVendors) {
  const std::wstring folder = L"C:\\Program Files\\Acme\\Writer";
  w.Set(HKLM, L"\\SOFTWARE\\Microsoft\\Windows\\Setup", L"Last", folder);
  w.Set(HKLM, L"\\SOFTWARE\\Classes\\Writer", L"Dir", folder);
  w.Set(HKCU, L"\\Software\\Wow6432Node\\Acme", L"Dir", folder);
  w.Set(HKLM, L"\\SOFTWARE\\Other Vendor\\Indexer\\Paths", L"P7", folder + L"\\data");
  w.Set(HKLM, L"\\SOFTWARE\\Other Vendor\\Indexer\\Paths", L"P8", L"C:\\Program Files\\Acme\\Writer2");
  w.Set(HKCU, L"\\Software\\Acme\\Acme Writer", L"ProgramFolder", folder);
  w.m.registry.SetDWord(HKCU, L"\\Software\\Acme\\Acme Writer", L"Width", 640);
  w.Set(HKCU, L"\\Software\\Acme\\Acme Painter", L"ProgramFolder", L"C:\\Program Files\\Acme\\Painter");
  EXPECT_EQ(w.Run(scan::VendorKeys),
            (std::vector<std::wstring>{
                L"HKEY_LOCAL_MACHINE\\\\SOFTWARE\\Other Vendor\\Indexer\\Paths | P7 - " + folder +
                    L"\\data",
                L"HKEY_CURRENT_USER\\\\Software\\Acme\\Acme Writer",
                L"HKEY_CURRENT_USER\\\\Software\\Acme\\Acme Writer | ProgramFolder - " + folder,
                L"HKEY_CURRENT_USER\\\\Software\\Acme\\Acme Writer | Width - 640",
            }));
}

TEST_F(ScanModelTest, MakerKeyGoesWholeOnlyForTheLastProgramUnderIt) {
  w.record.Publisher = L"Varnel";
  w.record.Name = L"Folder Guard 2.1";  // the filter row is a part of the name
  w.record.InstallLocation.clear();
  w.Set(HKLM, L"\\SOFTWARE\\Varnel\\Folder Guard", L"Path", L"x");
  w.Set(HKLM, L"\\SYSTEM\\CurrentControlSet\\services\\VarnelFolderGuard", L"Start", L"2");
  auto alone = w.Run(scan::MakerKey);
  EXPECT_TRUE(ScanWorld::Has(alone, L"HKEY_LOCAL_MACHINE\\\\SOFTWARE\\Varnel"));
  EXPECT_TRUE(ScanWorld::Has(alone, L"HKEY_LOCAL_MACHINE\\\\SYSTEM\\CurrentControlSet\\services\\VarnelFolderGuard"));
  w.Set(HKLM, L"\\SOFTWARE\\Varnel\\Toolbar", L"Path", L"y");
  auto shared = w.Run(scan::MakerKey);
  EXPECT_FALSE(ScanWorld::Has(shared, L"HKEY_LOCAL_MACHINE\\\\SOFTWARE\\Varnel"));
  EXPECT_TRUE(ScanWorld::Has(shared, L"HKEY_LOCAL_MACHINE\\\\SOFTWARE\\Varnel\\Folder Guard"));
  EXPECT_FALSE(ScanWorld::Has(shared, L"HKEY_LOCAL_MACHINE\\\\SOFTWARE\\Varnel\\Toolbar"));
}

// A stop asked for while one loop runs ends it at its next item, and no later
// step starts: the findings stay at what the loop had when it was asked.
TEST_F(ScanModelTest, AStopEndsEachLoopAtItsNextItem) {
  using Count = int (*)(ScanWorld&);
  const struct {
    const wchar_t* key;  // "#" is the item's number; none: files in the install folder
    const wchar_t* value;
    Count found;
  } cases[] = {
      {L"\\SOFTWARE\\Classes\\CLSID\\{#}\\InprocServer32", L"",
       [](ScanWorld& w) { return w.scanner->Sink().Category(ScanCategory::ClsidMachine).Count(); }},
      {L"\\SYSTEM\\CurrentControlSet\\services\\Svc#", L"ImagePath",
       [](ScanWorld& w) { return w.scanner->Sink().Category(ScanCategory::Services).Count(); }},
      {L"\\SOFTWARE\\Vendor#", L"Dir",
       [](ScanWorld& w) { return static_cast<int>(w.registry.size()); }},
      {nullptr, nullptr, [](ScanWorld& w) { return static_cast<int>(w.files.size()); }},
  };
  for (const auto& c : cases) {
    ScanWorld w;
    const std::wstring folder = L"C:\\Program Files\\Acme\\Writer\\";
    for (int i = 100; i < 140; ++i) {
      const auto n = std::to_wstring(i);
      std::wstring key = c.key ? c.key : L"";
      if (auto at = key.find(L'#'); at != std::wstring::npos) key.replace(at, 1, n);
      if (c.key) w.Set(HKLM, key, c.value, folder + n + L".exe");
      else w.m.files.AddFile(folder + n, "x");
    }
    auto& scan = w.SetUp([&] {
      if (c.found(w) >= 2) w.scanner->Stop();
    });
    scan.FullScan();
    EXPECT_EQ(c.found(w), 2) << (c.key ? text::ToUtf8(c.key) : "files");
    EXPECT_TRUE(!c.key || w.files.empty());  // the last step never began
    EXPECT_EQ(scan.RunState(), ScanRunState::Idle);
  }
}

// The results tree as a list of lines: depth, caption, image, state, data kind.
class FakeTree : public IResultsTree {
 public:
  TreeNodeId AddNode(TreeNodeId parent, const std::wstring& caption, int image, int stateIndex,
                     std::unique_ptr<TMyTreeData> data) override {
    int depth = parent == kTreeRoot ? 0 : depthOf[parent] + 1;
    lines.push_back(std::wstring(depth * 2, L' ') + caption + L" [" + std::to_wstring(image) +
                    L"," + std::to_wstring(stateIndex) + L"," +
                    (data ? std::to_wstring(data->Kind) : L"-") + L"]");
    if (data) datas.push_back(*data);
    depthOf.push_back(depth);
    return static_cast<TreeNodeId>(depthOf.size() - 1);
  }
  std::vector<std::wstring> lines;
  std::vector<TMyTreeData> datas;
  std::vector<int> depthOf{0};
};

class FakeImages : public IImageList {
 public:
  int Count() const override { return static_cast<int>(icons.size()); }
  IconHandle Icon(int index) const override { return icons.at(index); }
  int Add(const IconHandle& icon) override {
    icons.push_back(icon);
    return Count() - 1;
  }
  std::vector<IconHandle> icons;
};

class ScanDriverTest : public testing::Test {
 protected:
  ScanDriverTest() {
    list.push_back(std::make_unique<TSoftInfo>(w.record));
    listImages.icons = {std::make_shared<int>(0), std::make_shared<int>(1)};
    list[0]->ImageIndex = 1;
    driver.SingularPhrase = L"%d leftover";
    driver.PluralPhrase = L"%d leftovers";
  }
  int Scan() { return driver.ScanProgram(list, &listImages, 0, tree, L"", &treeImages); }
  ScanWorld w;
  SoftList list;
  FakeImages listImages, treeImages;
  FakeTree tree;
  int steps = 0;
  ScanDriver driver{w.m.Get(), w.filter, [this] {
                       if (++steps == stopAt) driver.Stop();
                     }};
  int stopAt = -1;
};

TEST_F(ScanDriverTest, OneFindingMakesABranchWithTheSingularPhrase) {
  w.Set(HKCU, L"\\Software\\Somebody\\Paths", L"Writer", L"C:\\Program Files\\Acme\\Writer");
  w.m.files.RemoveFile(L"C:\\Program Files\\Acme\\Writer\\writer.exe");
  w.m.files.RemoveFolder(L"C:\\Program Files\\Acme\\Writer");
  EXPECT_EQ(Scan(), 1);
  EXPECT_EQ(tree.lines, (std::vector<std::wstring>{
                            L"Acme Writer(1 leftover) [0,1,-]",
                            L"  Registry(1 leftover) [0,1,-]",
                            L"    HKEY_CURRENT_USER\\\\Software\\Somebody\\Paths | Writer - "
                            L"C:\\Program Files\\Acme\\Writer [2,1,0]",
                        }));
  ASSERT_EQ(treeImages.icons.size(), 1u);
  EXPECT_EQ(treeImages.icons[0], listImages.icons[1]);  // the record's own icon
  ASSERT_EQ(tree.datas.size(), 1u);
  EXPECT_TRUE(tree.datas[0].Is64BitView);
  EXPECT_EQ(tree.datas[0].ValueName, L"Writer");
  EXPECT_EQ(driver.CountPhrase(0), L"0 leftovers");
}

TEST_F(ScanDriverTest, NothingFoundOrAStopAddsNoBranch) {
  w.m.files.RemoveFile(L"C:\\Program Files\\Acme\\Writer\\writer.exe");
  w.m.files.RemoveFolder(L"C:\\Program Files\\Acme\\Writer");
  EXPECT_EQ(Scan(), 0);
  EXPECT_TRUE(tree.lines.empty());

  for (int i = 0; i < 50; ++i)
    w.Set(HKLM, L"\\SOFTWARE\\Vendor" + std::to_wstring(i), L"Dir",
          L"C:\\Program Files\\Acme\\Writer");
  steps = 0;
  stopAt = 10;
  EXPECT_EQ(Scan(), 0);
  EXPECT_TRUE(tree.lines.empty());
  stopAt = -1;
  EXPECT_EQ(Scan(), 50);  // the stop flag is cleared for the next program
}

// The scans of a batch list the walked registry trees and folders once: a
// live machine that lists nothing after the first scan changes none of a
// batch's findings, and all of a lone scan's but those it need not list.
TEST_F(ScanDriverTest, TheScansOfABatchListTheWalkedTreesAndFoldersOnce) {
  w.Set(HKLM, L"\\SYSTEM\\CurrentControlSet\\services\\AcmeSvc", L"ImagePath",
        L"C:\\Program Files\\Acme\\Writer\\writer.exe");
  w.m.files.AddFile(L"C:\\Users\\test\\AppData\\Roaming\\Acme\\Acme Writer\\settings.ini", "x");
  auto captions = [](const ScanFindings& found) {
    std::vector<std::wstring> all;
    for (const auto& item : found.Registry) all.push_back(item.KeyPath + L"|" + item.ValueName);
    for (const auto& item : found.Files) all.push_back(item.Path);
    return all;
  };
  for (bool batch : {true, false}) {
    SCOPED_TRACE(batch ? "batch" : "lone scans");
    driver.SetScannedTogether(batch ? std::vector<int>{0, 1} : std::vector<int>{0});
    driver.BeginBatch();
    const auto first = captions(driver.Collect(list, 0, L"", nullptr));
    ASSERT_EQ(first.size(), 6u);  // service, its value, folder, file, AppData folder, its file
    w.m.faults.Set(mem::Fault::RegEnumKeys);
    w.m.faults.Set(mem::Fault::FileFind);
    EXPECT_EQ(captions(driver.Collect(list, 0, L"", nullptr)) == first, batch);
    w.m.faults.Set(mem::Fault::RegEnumKeys, false);
    w.m.faults.Set(mem::Fault::FileFind, false);
    driver.EndBatch();
  }
}

}  // namespace
}  // namespace varnel
