#include <gtest/gtest.h>

#include "inventory/software_queries.h"
#include "platform/memory/memory_platform.h"
#include "tests/unit/shell_link_bytes.h"
#include "uninstall/force_match.h"
#include "uninstall/uninstall_sequence.h"

namespace varnel {
namespace {

class ForceMatchTest : public testing::Test {
 protected:
  ForceMatchTest() {
    // Index 0 shares the folder and the name, and is still never offered.
    Add(L"Shared Zero", L"C:\\Shared\\");
    Add(L"Shared One", L"C:/Shared/", true);
    Add(L"Shared Two", L"c:\\shared");
    Add(L"Elsewhere", L"C:\\Shared\\Sub");
    Add(L"Shared Copy", L"C:\\Shared", false, true);
    m.files.AddFile(kFile, "MZ");
    m.files.AddFile(L"C:\\Lonely\\tool.exe", "MZ");
    match.SetSoftware(&list);
    match.UnknownText = L"(unknown)";
  }
  void Add(const std::wstring& name, const std::wstring& folder, bool x64 = false,
           bool hidden = false) {
    list.push_back(std::make_unique<TSoftInfo>());
    list.back()->Name = name;
    list.back()->InstallLocation = folder;
    list.back()->Is64BitView = x64;
    list.back()->Hidden = hidden;
  }
  std::vector<int> RowIndexes() const {
    std::vector<int> indexes;
    for (const ForceRow& row : match.Rows()) indexes.push_back(row.index);
    return indexes;
  }
  static constexpr const wchar_t* kFile = L"C:\\Shared\\app.exe";
  mem::MemoryPlatform m;
  SoftList list;
  ForceMatch match{m.Get()};
};

TEST_F(ForceMatchTest, ProgramsSharingTheFolderAreListedAndNextWithoutSelectionForcesTheFile) {
  EXPECT_EQ(FindSoftwareByFolder(m.Get(), list, L"c:\\SHARED\\app.exe"),
            (std::vector<std::wstring>{L"0", L"1", L"2"}));
  ASSERT_TRUE(match.ChooseFile(kFile));
  EXPECT_EQ(RowIndexes(), (std::vector<int>{1, 2}));
  EXPECT_EQ(match.Rows()[0].caption, L"Shared One(x64)");
  EXPECT_EQ(match.Name(), L"Shared One");

  struct Case {
    int selected;
    std::vector<std::wstring> jobs;
    int mode;
  };
  for (const Case& c : {Case{-1, {kFile}, JobMode::Forced},
                        Case{1, {L"2"}, JobMode::Uninstall},
                        Case{7, {kFile}, JobMode::Forced}}) {
    const auto handover = match.Next(c.selected);
    ASSERT_TRUE(handover);
    EXPECT_EQ(handover->jobs, c.jobs) << c.selected;
    EXPECT_EQ(handover->mode, c.mode) << c.selected;
  }

  // One program only: Next takes it without a selection.
  match.SearchByName(L"two");
  EXPECT_EQ(match.Next(-1)->jobs, std::vector<std::wstring>{L"2"});
  // The list rebuilt under the rows: the index names another program now.
  list[2]->Name = L"Someone Else";
  EXPECT_FALSE(match.Next(-1));
}

TEST_F(ForceMatchTest, IndexZeroIsNeverListedByFileOrByName) {
  list[1]->InstallLocation = list[2]->InstallLocation = L"C:\\Other";
  ASSERT_TRUE(match.ChooseFile(kFile));
  EXPECT_TRUE(match.Rows().empty()) << "only the first program lives there";
  EXPECT_FALSE(match.ListShown());
  match.SearchByName(L"shared");
  EXPECT_EQ(RowIndexes(), (std::vector<int>{1, 2}));
  match.SearchByName(L"zero");
  EXPECT_TRUE(match.Rows().empty());
}

TEST_F(ForceMatchTest, ShortcutsStandForTheirTargetsAndUnusableFilesAreRefused) {
  m.files.AddFile(L"C:\\Links\\App.ink", test::MakeLink({.basePath = "C:\\Shared\\app.exe"}));
  m.files.AddFile(L"C:\\Links\\App.LNK", test::MakeLink({.basePath = "C:\\Shared\\app.exe"}));
  for (const wchar_t* link : {L"C:\\Links\\App.ink", L"C:\\Links\\App.LNK"}) {
    match.Clear();
    ASSERT_TRUE(match.ChooseFile(link)) << link;
    EXPECT_EQ(match.File(), kFile);
  }

  m.files.AddFile(L"C:\\Windows\\notepad.exe", "MZ");
  m.files.AddFile(L"C:\\boot.ini", "x");
  m.files.AddFile(L"C:\\Links\\Broken.lnk", "not a link");
  for (const wchar_t* bad : {L"C:\\Shared\\missing.exe", L"C:\\Windows\\notepad.exe",
                             L"C:\\boot.ini", L"C:\\Links\\Broken.lnk"})
    EXPECT_FALSE(match.ChooseFile(bad)) << bad;
  EXPECT_EQ(match.File(), kFile) << "a refused file changes nothing";

  ASSERT_TRUE(match.ChooseFile(L"C:\\Lonely\\tool.exe"));
  EXPECT_FALSE(match.ListShown());
  EXPECT_EQ(match.Name(), L"(unknown)") << "no version resource";
  match.Clear();
  EXPECT_FALSE(match.Next(-1)) << "nothing chosen, nothing handed over";
}

}  // namespace
}  // namespace varnel
