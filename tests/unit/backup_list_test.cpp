#include <gtest/gtest.h>

#include <functional>

#include "core/file_size.h"
#include "platform/memory/memory_platform.h"
#include "uninstall/backup_list.h"

namespace varnel {
namespace {

constexpr wchar_t kOld[] = L"C:\\Users\\test\\AppData\\Roaming\\Old\\old.dat";
constexpr wchar_t kNew[] = L"C:\\Users\\test\\AppData\\Roaming\\App\\new.dat";
constexpr wchar_t kKey[] = L"Software\\App";

// Two runs' backups a minute apart: the older holds one file, the newer a
// file and a registry value.
struct World {
  mem::MemoryPlatform m;
  std::wstring oldId, newId;
  World() {
    m.system.decimalSeparator = L',';
    m.files.AddFile(kOld, std::string(3000, 'o'));
    m.files.AddFile(kNew, "new");
    m.registry.SetString(RegRoot::CurrentUser, kKey, L"Mru", L"one");
    bool moved = false;
    auto older = Backup::Begin(m.Get());
    older->TakeFile(kOld, moved);
    oldId = older->Id();
    m.system.now += 60ULL * 10'000'000;
    auto newer = Backup::Begin(m.Get());
    newer->TakeFile(kNew, moved);
    newer->SaveValue(RegRoot::CurrentUser, kKey, L"Mru", true);
    m.registry.OpenKey(RegRoot::CurrentUser, kKey, RegAccess::Write, true)->DeleteValue(L"Mru");
    newId = newer->Id();
  }
};

TEST(BackupListTest, RowsNewestFirstAndTheRoomOfAllTogether) {
  World w;
  BackupList list(w.m.Get(), {});
  EXPECT_EQ(list.RoomLine(), L"There are no backups.");  // not read yet
  list.Refresh();
  ASSERT_EQ(list.Count(), 2u);
  const BackupRow newest = list.Row(0), oldest = list.Row(1);
  EXPECT_EQ(newest.id, w.newId);
  EXPECT_EQ(newest.items, L"2");
  EXPECT_EQ(oldest.id, w.oldId);
  EXPECT_EQ(oldest.items, L"1");
  EXPECT_EQ(oldest.size.find(L" KB"), oldest.size.size() - 3) << oldest.size;
  std::uint64_t total = 0;
  for (const BackupSummary& b : ListBackups(w.m.Get())) total += b.bytes;
  EXPECT_EQ(list.RoomLine(),
            L"All backups together take " + FormatFileSize(static_cast<std::int64_t>(total), L',') + L".");
  for (int selected : {-1, 2}) EXPECT_FALSE(list.CanAct(selected)) << selected;
  EXPECT_TRUE(list.CanAct(1));
}

// Restore and Delete on a selection, each over a fresh world.
TEST(BackupListTest, RestoreAndDeleteActOnTheSelectedBackupOnly) {
  enum Action { kRestore, kDelete };
  struct Case {
    const char* name;
    std::function<void(World&)> before;
    Action action;
    int selected;
    std::optional<std::wstring> report;  // Restore; Delete: set when it deletes
    std::size_t countAfter;
    bool newFileBack;
  };
  const Case cases[] = {
      {"everything comes back", {}, kRestore, 0, L"2 items were restored.", 2, true},
      {"a file in the way is named",
       [](World& w) { w.m.files.AddFile(kNew, "newer"); }, kRestore, 0,
       L"1 item was restored.\r\n\r\nThese items could not be restored:\r\n" + std::wstring(kNew),
       2, true},
      {"removed behind the window", [](World& w) { DeleteBackup(w.m.Get(), w.newId); }, kRestore,
       0, L"The backup no longer exists.", 1, false},
      {"no selection", {}, kRestore, -1, std::nullopt, 2, false},
      {"the older one goes", {}, kDelete, 1, L"", 1, false},
      {"past the end", {}, kDelete, 2, std::nullopt, 2, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    World w;
    BackupList list(w.m.Get(), {});
    list.Refresh();
    if (c.before) c.before(w);
    if (c.action == kRestore) {
      EXPECT_EQ(list.Restore(c.selected), c.report);
    } else {
      EXPECT_EQ(list.Delete(c.selected), c.report.has_value());
    }
    EXPECT_EQ(list.Count(), c.countAfter);
    EXPECT_EQ(w.m.files.FileExists(kNew), c.newFileBack);
    EXPECT_EQ(ListBackups(w.m.Get()).size(), c.countAfter);
  }
}

}  // namespace
}  // namespace varnel
