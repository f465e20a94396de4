#include <gtest/gtest.h>

#include "inventory/last_access.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

constexpr const wchar_t* kFileSystemKey = L"SYSTEM\\CurrentControlSet\\Control\\FileSystem";
constexpr const wchar_t* kValue = L"NtfsDisableLastAccessUpdate";

TEST(LastAccessTrackingTest, OnlyADwordZeroTurnsItOn) {
  mem::MemoryPlatform m;
  EXPECT_FALSE(LastAccessTracking(m.Get()));
  m.registry.SetDWord(RegRoot::LocalMachine, kFileSystemKey, kValue, 0);
  EXPECT_TRUE(LastAccessTracking(m.Get()));
  m.registry.SetDWord(RegRoot::LocalMachine, kFileSystemKey, kValue, 1);
  EXPECT_FALSE(LastAccessTracking(m.Get()));
  m.registry.SetDWord(RegRoot::LocalMachine, kFileSystemKey, kValue, 0x80000002u);
  EXPECT_FALSE(LastAccessTracking(m.Get()));
  m.registry.SetString(RegRoot::LocalMachine, kFileSystemKey, kValue, L"0");
  EXPECT_FALSE(LastAccessTracking(m.Get()));
  m.registry.SetRaw(RegRoot::LocalMachine, kFileSystemKey, kValue,
                    {RegType::QWord, std::vector<std::uint8_t>(8, 0)});
  EXPECT_FALSE(LastAccessTracking(m.Get()));
}

TEST(FileLastAccessDateTest, TrackedFileTimeElseNow) {
  mem::MemoryPlatform m;
  const TDateTime now = NowLocal(m.system);
  const std::wstring file = L"C:\\Program Files\\Acme\\acme.exe";
  m.files.AddFile(file);
  const FileTime accessed = *m.system.FromLocalTime(LocalDateTime{2021, 6, 1, 12, 0, 0, 0});
  m.files.SetTimes(file, accessed, accessed, accessed);
  const TDateTime expected = FileTimeToLocalDateTime(m.system, accessed);
  ASSERT_NE(expected, now);

  EXPECT_EQ(FileLastAccessDate(m.Get(), file, true), expected);
  EXPECT_EQ(FileLastAccessDate(m.Get(), file, false), now);
  EXPECT_EQ(FileLastAccessDate(m.Get(), L"C:\\Program Files\\Acme\\gone.exe", true), now);
  EXPECT_EQ(FileLastAccessDate(m.Get(), L"C:\\Program Files\\Acme", true), now);  // a folder
  EXPECT_EQ(FileLastAccessDate(m.Get(), L"", true), now);

  m.faults.FailTimes(mem::Fault::FileAttributes, 1);
  EXPECT_EQ(FileLastAccessDate(m.Get(), file, true), now);
  m.files.SetTimes(file, accessed, 0x8000'0000'0000'0000ULL, accessed);  // beyond any date
  EXPECT_EQ(FileLastAccessDate(m.Get(), file, true), now);
}

}  // namespace
}  // namespace varnel
