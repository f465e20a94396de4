#include <gtest/gtest.h>

#include <algorithm>

#include "core/os_name.h"
#include "base/text.h"
#include "base/text_file.h"
#include "platform/memory/memory_platform.h"
#include "uninstall/log_manager.h"
#include "uninstall/uninstall_log.h"

namespace varnel {
namespace {

constexpr wchar_t kDataFolder[] = L"C:\\Users\\test\\AppData\\Roaming\\Varnel\\Varnel Uninstaller";
constexpr wchar_t kDayLog[] =
    L"C:\\Users\\test\\AppData\\Roaming\\Varnel\\Varnel Uninstaller\\Log\\2013-05-14.log";

class UninstallLogTest : public testing::Test {
 protected:
  UninstallLogTest() {
    m.system.now = *m.system.FromLocalTime({2013, 5, 14, 9, 3, 7, 0});
    m.system.versionResources[text::Upper(m.system.modulePath)] = {
        std::make_pair(std::uint16_t{0x409}, std::uint16_t{1200}),
        {{L"\\StringFileInfo\\040904B0\\FileVersion", L"1.4.0.2"}}};
  }
  std::vector<std::uint8_t> Bytes(std::wstring_view path) {
    std::vector<std::uint8_t> bytes;
    m.files.ReadWholeFile(path, bytes);
    return bytes;
  }
  mem::MemoryPlatform m;
};

TEST_F(UninstallLogTest, FirstLogOfADayHasTheHeaderAndLaterOnesAppendOnlyTheirLines) {
  EXPECT_FALSE(m.files.DirectoryExists(kDataFolder));  // every level is made
  EXPECT_EQ(WriteUninstallLog(m.Get(), {L"[Alpha]", L""}), kDayLog);
  m.system.now += 36'000'000'000ULL;  // an hour later, the same day
  EXPECT_EQ(WriteUninstallLog(m.Get(), {L"[Beta]", L""}), kDayLog);
  const std::wstring rule(36, L'=');
  const std::wstring expected = rule + L"\r\nVarnel Uninstaller Log\r\nApplication Version:1.4.0.2\r\n" +
                                GetOSName(m.system) + L"\r\nTime:2013-05-14 09:03:07\r\n" + rule +
                                L"\r\n\r\n[Alpha]\r\n\r\n[Beta]\r\n\r\n";
  const auto bytes = Bytes(kDayLog);
  EXPECT_EQ(bytes, EncodeUtf8WithBom(expected));
}

TEST_F(UninstallLogTest, ExistingContentIsKeptWhateverItsEncoding) {
  m.files.AddFile(kDayLog, "caf\xE9\nold\n");  // ANSI with bare line feeds
  WriteUninstallLog(m.Get(), {L"[Gamma]"});
  EXPECT_EQ(Bytes(kDayLog), EncodeUtf8WithBom(L"caf\u00E9\r\nold\r\n[Gamma]\r\n"));
}

TEST_F(UninstallLogTest, FailuresAreSwallowed) {
  for (mem::Fault fault : {mem::Fault::FileWrite, mem::Fault::FolderCreate, mem::Fault::SpecialFolder}) {
    mem::MemoryPlatform fresh;
    fresh.faults.Set(fault);
    EXPECT_EQ(WriteUninstallLog(fresh.Get(), {L"[Alpha]"}), L"");
  }
}

TEST_F(UninstallLogTest, ListingTakesFilesWithDotLogAnywhereInTheName) {
  EXPECT_TRUE(ListUninstallLogs(m.Get()).empty());  // no folder yet
  const std::wstring folder = std::wstring(kDataFolder) + L"\\Log\\";
  for (const wchar_t* name : {L"2013-05-14.log", L"notes.LOG.txt", L"readme.txt", L"logbook"})
    m.files.AddFile(folder + name, "x");
  m.files.AddFolder(folder + L"x.log");
  std::vector<std::wstring> names;
  for (const SavedLog& log : ListUninstallLogs(m.Get())) {
    names.push_back(log.name);
    EXPECT_EQ(log.path, folder + log.name);
    EXPECT_EQ(log.size, 1u);
  }
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::wstring>{L"2013-05-14.log", L"notes.LOG.txt"}));
}

TEST_F(UninstallLogTest, DeleteFallsBackToRemovalAtRestart) {
  struct Case {
    std::vector<mem::Fault> faults;
    bool result, existsAfter;
    std::size_t queued;
  } cases[] = {
      {{}, true, false, 0},
      {{mem::Fault::FileDelete}, true, true, 1},
      {{mem::Fault::FileDelete, mem::Fault::MoveOnReboot}, false, true, 0},
  };
  for (const Case& c : cases) {
    mem::MemoryPlatform fresh;
    fresh.files.AddFile(kDayLog, "x");
    for (mem::Fault f : c.faults) fresh.faults.Set(f);
    EXPECT_EQ(DeleteUninstallLog(fresh.Get(), kDayLog), c.result);
    EXPECT_EQ(fresh.files.FileExists(kDayLog), c.existsAfter);
    ASSERT_EQ(fresh.files.PendingRenames().size(), c.queued);
    if (c.queued) {
      EXPECT_EQ(fresh.files.PendingRenames()[0].second, L"");
    }
  }
}

}  // namespace
}  // namespace varnel
