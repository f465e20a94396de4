#include <gtest/gtest.h>

#include "core/directory_tree.h"
#include "core/reboot_file_ops.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

class FileRoutinesTest : public testing::Test {
 protected:
  bool Exists(const wchar_t* path) { return m.files.GetAttributes(path).has_value(); }
  bool Schedule(std::wstring_view file, std::wstring_view to, int mode) {
    return ScheduleFileOnReboot(m.Get(), file, to, mode, &error);
  }
  mem::MemoryPlatform m;
  std::wstring error;
};

TEST_F(FileRoutinesTest, TreeDeletionTakesEverythingButStopsAtTheFirstFailure) {
  m.files.AddFile(L"C:\\App\\data\\hidden.dat", "x", FileAttr::Hidden | FileAttr::System);
  m.files.AddFile(L"C:\\App\\data\\deep\\er\\f.txt");
  m.files.AddFile(L"C:\\Apple\\keep.txt");  // a sibling with the same prefix
  EXPECT_TRUE(DeleteDirectoryTree(m.files, L"C:\\App"));
  EXPECT_FALSE(Exists(L"C:\\App"));
  EXPECT_TRUE(Exists(L"C:\\Apple\\keep.txt"));

  m.files.AddFile(L"C:\\App\\a.txt");
  m.files.AddFile(L"C:\\App\\b.txt", "", FileAttr::ReadOnly);
  m.files.AddFile(L"C:\\App\\c.txt");
  EXPECT_FALSE(DeleteDirectoryTree(m.files, L"C:\\App"));
  EXPECT_FALSE(Exists(L"C:\\App\\a.txt"));
  EXPECT_TRUE(Exists(L"C:\\App\\b.txt"));
  EXPECT_TRUE(Exists(L"C:\\App\\c.txt"));  // not reached

  EXPECT_FALSE(DeleteDirectoryTree(m.files, L"C:\\Missing"));
  EXPECT_FALSE(DeleteDirectoryTree(m.files, L""));  // not the current drive's root
  EXPECT_FALSE(DeleteDirectoryTree(m.files, L"C:\\" + std::wstring(32000, L'x')));
  EXPECT_TRUE(Exists(L"C:\\Windows\\regedit.exe"));
}

TEST_F(FileRoutinesTest, TreeDeletionRemovesLinksWithoutFollowingThem) {
  m.files.AddFile(L"C:\\App\\link\\target-owned.txt");
  m.files.SetAttributes(L"C:\\App\\link", FileAttr::Directory | FileAttr::ReparsePoint);
  DeleteDirectoryTree(m.files, L"C:\\App");
  EXPECT_TRUE(Exists(L"C:\\App\\link\\target-owned.txt"));

  m.files.AddFolder(L"C:\\Other\\emptylink");
  m.files.SetAttributes(L"C:\\Other\\emptylink", FileAttr::Directory | FileAttr::ReparsePoint);
  EXPECT_TRUE(DeleteDirectoryTree(m.files, L"C:\\Other"));
}

TEST_F(FileRoutinesTest, RebootQueueOnNtAndRefusalOnWin32s) {
  EXPECT_TRUE(Schedule(L"C:\\App\\old.dll", L"ignored", RebootMode::Delete));
  EXPECT_TRUE(Schedule(L"C:\\App\\old.dll", L"C:\\App\\new.dll", RebootMode::Rename));
  EXPECT_FALSE(Schedule(L"C:\\App\\old.dll", L"C:\\App\\x.dll", 3));
  // An empty target must not turn a rename into a deletion.
  EXPECT_FALSE(Schedule(L"C:\\App\\old.dll", L"", RebootMode::Rename));
  using Pending = std::vector<std::pair<std::wstring, std::wstring>>;
  EXPECT_EQ(m.files.PendingRenames(),
            (Pending{{L"C:\\App\\old.dll", L""}, {L"C:\\App\\old.dll", L"C:\\App\\new.dll"}}));
  m.faults.Set(mem::Fault::MoveOnReboot);
  EXPECT_FALSE(Schedule(L"C:\\App\\old.dll", L"", RebootMode::Delete));
  EXPECT_EQ(error, L"");

  m.system.osVersion.platformId = 0;
  m.faults.Clear();
  EXPECT_FALSE(Schedule(L"C:\\App\\old.dll", L"", RebootMode::Delete));
  EXPECT_EQ(m.system.lastError, 50u);
  EXPECT_EQ(m.files.PendingRenames().size(), 2u);
}

TEST_F(FileRoutinesTest, OldPlatformValidatesThenDiscardsTheWininitList) {
  m.system.osVersion.platformId = 1;
  m.files.AddFile(L"C:\\Windows\\wininit.ini", "[Other]\r\nA=B\r\n");
  m.files.AddFile(L"C:\\App\\A Long Existing Name.dll");
  EXPECT_TRUE(Schedule(L"C:\\App\\old.dll", L"", RebootMode::Delete));
  EXPECT_TRUE(Schedule(L"C:\\App\\old.dll", L"C:\\App\\NEW.DLL", RebootMode::Rename));
  EXPECT_TRUE(Schedule(L"C:\\App\\old.dll", L"C:\\App\\A Long Existing Name.dll", 2));
  EXPECT_EQ(error, L"");
  EXPECT_FALSE(Schedule(L"C:\\App\\old.dll", L"C:\\App\\TooLongName.dll", RebootMode::Rename));
  EXPECT_EQ(error, L"Invalid File!");

  std::vector<std::uint8_t> ini;
  ASSERT_TRUE(m.files.ReadWholeFile(L"C:\\Windows\\wininit.ini", ini));
  EXPECT_EQ(std::string(ini.begin(), ini.end()), "[Other]\r\nA=B\r\n");
  EXPECT_TRUE(m.files.PendingRenames().empty());

  EXPECT_TRUE(IsShortFileName(L"ABCDEFGH"));
  EXPECT_TRUE(IsShortFileName(L"ABCDEFGH.TXT"));
  EXPECT_FALSE(IsShortFileName(L"ABCDEFGHI"));
  EXPECT_FALSE(IsShortFileName(L"A.TEXT"));
  EXPECT_FALSE(IsShortFileName(L"A.B.CD"));  // "B.CD" follows the first dot
}

}  // namespace
}  // namespace varnel
