#include <gtest/gtest.h>

#include <string>

#include "inventory/folder_size.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

class FolderSizeTest : public testing::Test {
 protected:
  void SetUp() override {
    m.files.AddFile(L"C:\\Apps\\Tool\\tool.exe", std::string(1000, 'x'));
    m.files.AddFile(L"C:\\Apps\\Tool\\LICENSE", std::string(24, 'x'));  // no dot in the name
    m.files.AddFile(L"C:\\Apps\\Tool\\.hidden", std::string(3, 'x'), FileAttr::Hidden);
    m.files.AddFolder(L"C:\\Apps\\Tool\\empty");
    m.files.AddFile(L"C:\\Apps\\Tool\\a\\b\\c\\d\\e\\deep.dat", std::string(500, 'x'));
    m.files.AddFile(L"C:\\Apps\\Tool\\a\\b\\side.dat", std::string(7, 'x'));
  }
  mem::MemoryPlatform m;
};

TEST_F(FolderSizeTest, SumsEveryFileAtEveryDepth) {
  EXPECT_EQ(FolderTreeSize(m.files, L"C:\\Apps\\Tool"), 1534);
  EXPECT_EQ(FolderTreeSize(m.files, L"c:\\apps\\tool\\"), 1534);
  EXPECT_EQ(FolderTreeSize(m.files, L"C:\\Apps\\Tool\\a"), 507);
  EXPECT_EQ(FolderTreeSize(m.files, L"C:\\Apps\\Missing"), 0);
  EXPECT_EQ(FolderTreeSize(m.files, L""), 0);
}

TEST_F(FolderSizeTest, DoesNotFollowLinkedFolders) {
  m.files.AddFile(L"C:\\Apps\\Tool\\link\\through.dat", std::string(4000, 'x'));
  ASSERT_TRUE(m.files.SetAttributes(L"C:\\Apps\\Tool\\link", FileAttr::ReparsePoint));
  EXPECT_EQ(FolderTreeSize(m.files, L"C:\\Apps\\Tool"), 1534);
}

TEST_F(FolderSizeTest, UnreadableFoldersCountNothingAndCancelStopsTheWalk) {
  m.faults.FailTimes(mem::Fault::FileFind, 1);
  EXPECT_EQ(FolderTreeSize(m.files, L"C:\\Apps\\Tool"), 0);

  int asked = 0;
  // Cancelled after the top folder: only its own files count.
  EXPECT_EQ(FolderTreeSize(m.files, L"C:\\Apps\\Tool", [&] { return ++asked > 1; }), 1027);
  EXPECT_EQ(asked, 2);
}

TEST_F(FolderSizeTest, UnsafeFoldersMeasureZero) {
  m.files.AddFile(L"C:\\Windows\\explorer.exe", std::string(10, 'x'));
  m.files.AddFile(L"C:\\Users\\test\\Desktop\\note.txt", std::string(10, 'x'));
  EXPECT_EQ(SafeFolderSize(m.Get(), L"C:\\Apps\\Tool\\"), 1534);
  EXPECT_EQ(SafeFolderSize(m.Get(), L"C:\\Windows"), 0);
  EXPECT_EQ(SafeFolderSize(m.Get(), L"C:\\Users\\test\\Desktop\\"), 0);
  EXPECT_EQ(SafeFolderSize(m.Get(), L"C:\\"), 0);
  EXPECT_EQ(SafeFolderSize(m.Get(), L"%ProgramFiles%\\Tool"), 0);
  EXPECT_EQ(SafeFolderSize(m.Get(), L""), 0);
}

TEST_F(FolderSizeTest, SizeFolderPrefersLocationThenFoundFolderThenReadme) {
  TSoftInfo info;
  info.Readme = L"\"C:\\Apps\\Tool\\docs\"\"\\readme.txt\"";
  m.files.AddFolder(L"C:\\Apps\\Tool\\docs");
  EXPECT_EQ(SizeFolderOf(m.files, info, L""), L"C:\\Apps\\Tool\\docs\\");
  EXPECT_EQ(SizeFolderOf(m.files, info, L"C:\\Found\\"), L"C:\\Found\\");
  info.InstallLocation = L"C:\\Apps\\Tool";
  EXPECT_EQ(SizeFolderOf(m.files, info, L"C:\\Found\\"), L"C:\\Apps\\Tool");

  info.InstallLocation.clear();
  info.Readme = L"C:\\Gone\\readme.txt";  // its folder does not exist
  EXPECT_EQ(SizeFolderOf(m.files, info, L""), L"");
  info.Readme = L"readme.txt";  // no folder part at all
  EXPECT_EQ(SizeFolderOf(m.files, info, L""), L"");
}

}  // namespace
}  // namespace varnel
