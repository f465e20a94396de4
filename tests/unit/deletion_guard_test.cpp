#include <gtest/gtest.h>

#include <functional>

#include "platform/memory/memory_platform.h"
#include "uninstall/backup.h"
#include "uninstall/deletion_guard.h"

namespace varnel {
namespace {

constexpr wchar_t kApp[] = L"C:\\Program Files\\App";
constexpr wchar_t kOther[] = L"C:\\Program Files\\Other";
constexpr wchar_t kKept[] = L"C:\\Data\\Keep\\precious.txt";

enum class Ends { Refused, Skipped, Deleted, AtRestart };

struct GuardCase {
  const char* name;
  std::function<DeletionOutcome(DeletionGuard&)> act;
  std::vector<mem::Fault> faults;  // switched on after the world is built
  Ends ends;
  std::vector<std::wstring> present;  // files or folders still there after
  std::vector<std::wstring> absent;
};

void Build(mem::MemoryPlatform& m) {
  m.files.AddFile(std::wstring(kApp) + L"\\app.exe", "exe");
  m.files.AddFile(std::wstring(kApp) + L"\\data\\settings.ini", "x=1");
  m.files.AddFile(std::wstring(kOther) + L"\\bin\\other.dll", "dll");
  m.files.AddFile(kKept, "keep");
  m.files.AddFile(L"C:\\Windows\\System32\\kernel32.dll", "k");
  m.files.AddLink(std::wstring(kApp) + L"\\link", L"C:\\Data\\Keep");
  m.files.AddLink(L"C:\\Program Files\\AppLink", L"C:\\Data\\Keep");
  m.registry.SetString(RegRoot::LocalMachine, L"SOFTWARE\\Vendor\\App", L"Path", kApp);
}

TEST(DeletionGuardTest, RefusesProtectedPlacesAndLinksAndDeletesTheRestWithABackup) {
  const std::wstring app = kApp;
  const GuardCase cases[] = {
      {"protected folder", [](DeletionGuard& g) { return g.DeleteFolderTree(L"C:\\Program Files"); },
       {}, Ends::Refused, {std::wstring(kApp) + L"\\app.exe"}, {}},
      {"ancestor of a protected folder, spelled around",
       [](DeletionGuard& g) { return g.DeleteFolderTree(L"c:/users/test/appdata/..//.."); },
       {}, Ends::Refused, {L"C:\\Users\\test"}, {}},
      {"inside the Windows folder",
       [](DeletionGuard& g) { return g.DeleteSingleFile(L"C:\\Program Files\\..\\Windows\\System32\\kernel32.dll"); },
       {}, Ends::Refused, {L"C:\\Windows\\System32\\kernel32.dll"}, {}},
      {"another program's folder", [](DeletionGuard& g) { return g.DeleteSingleFile(L"C:\\Program Files\\Other\\bin\\other.dll"); },
       {}, Ends::Refused, {std::wstring(kOther) + L"\\bin\\other.dll"}, {}},
      {"a file reached through a junction",
       [](DeletionGuard& g) { return g.DeleteSingleFile(std::wstring(kApp) + L"\\link\\precious.txt"); },
       {}, Ends::Refused, {kKept}, {}},
      {"registry key Windows owns", [](DeletionGuard& g) { return g.DeleteKey(RegRoot::LocalMachine, L"\\SOFTWARE\\", true); },
       {}, Ends::Refused, {}, {}},
      {"junction as the start of a tree deletion",
       [](DeletionGuard& g) { return g.DeleteFolderTree(L"C:\\Program Files\\AppLink"); },
       {}, Ends::Deleted, {kKept}, {L"C:\\Program Files\\AppLink"}},
      {"junction inside a deleted tree", [app](DeletionGuard& g) { return g.DeleteFolderTree(app); },
       {}, Ends::Deleted, {kKept}, {app}},
      {"junction inside a tree that is copied, not moved",
       [app](DeletionGuard& g) { return g.DeleteFolderTree(app); },
       {mem::Fault::FileMove}, Ends::Deleted, {kKept}, {app}},
      {"junction that is not moved is removed as a link",
       [](DeletionGuard& g) { return g.DeleteFolderTree(L"C:\\Program Files\\AppLink"); },
       {mem::Fault::FileMove}, Ends::Deleted, {kKept}, {L"C:\\Program Files\\AppLink"}},
      {"locked file: copied, then queued for the restart",
       [app](DeletionGuard& g) { return g.DeleteSingleFile(app + L"\\app.exe"); },
       {mem::Fault::FileDelete, mem::Fault::FileMove}, Ends::AtRestart, {app + L"\\app.exe"}, {}},
      {"file moved into a backup that cannot be written down: moved back",
       [app](DeletionGuard& g) { return g.DeleteSingleFile(app + L"\\app.exe"); },
       {mem::Fault::FileWrite}, Ends::Skipped, {app + L"\\app.exe"}, {}},
      {"folder whose backup fails", [app](DeletionGuard& g) { return g.DeleteFolderTree(app); },
       {mem::Fault::FileMove, mem::Fault::FileWrite}, Ends::Skipped, {app + L"\\data\\settings.ini"}, {}},
      {"key whose backup fails",
       [](DeletionGuard& g) { return g.DeleteKey(RegRoot::LocalMachine, L"SOFTWARE\\Vendor\\App", true); },
       {mem::Fault::FileWrite}, Ends::Skipped, {}, {}},
  };
  for (const GuardCase& c : cases) {
    SCOPED_TRACE(c.name);
    mem::MemoryPlatform m;
    Build(m);
    auto backup = Backup::Begin(m.Get());
    ASSERT_TRUE(backup);
    DeletionGuard guard(m.Get(), ProtectedPlaces(m.Get(), {kOther}), backup.get());
    for (mem::Fault fault : c.faults) m.faults.Set(fault);
    const DeletionOutcome outcome = c.act(guard);
    m.faults.Clear();

    EXPECT_EQ(outcome.refused != Refusal::None, c.ends == Ends::Refused);
    EXPECT_EQ(outcome.deleted, c.ends == Ends::Deleted);
    EXPECT_EQ(outcome.atRestart, c.ends == Ends::AtRestart);
    const bool skipped = c.ends == Ends::Refused || c.ends == Ends::Skipped;
    ASSERT_EQ(guard.Skipped().size(), skipped ? 1u : 0u);
    if (skipped) {
      EXPECT_FALSE(guard.Skipped()[0].reason.empty());
    }
    for (const std::wstring& path : c.present) EXPECT_TRUE(m.files.GetAttributes(path)) << path;
    for (const std::wstring& path : c.absent) EXPECT_FALSE(m.files.GetAttributes(path)) << path;
    if (c.ends == Ends::AtRestart) {
      ASSERT_EQ(m.files.PendingRenames().size(), 1u);
      EXPECT_EQ(m.files.PendingRenames()[0].first, app + L"\\app.exe");
      EXPECT_EQ(backup->Items().size(), 1u);
    }
    // Whatever was refused or could not be saved is still in place.
    if (skipped) {
      EXPECT_TRUE(m.registry.KeyExists(RegRoot::LocalMachine, L"SOFTWARE\\Vendor\\App", true));
    }
  }
}

TEST(DeletionGuardTest, WithoutABackupNothingGoesUnlessTheUserChoseSo) {
  const std::wstring app = kApp;
  const std::wstring key = L"SOFTWARE\\Vendor\\App";
  struct Item {
    std::function<DeletionOutcome(DeletionGuard&)> act;
    std::function<bool(mem::MemoryPlatform&)> there;
  };
  const Item items[] = {
      {[&](DeletionGuard& g) { return g.DeleteKey(RegRoot::LocalMachine, key, true); },
       [&](mem::MemoryPlatform& m) { return m.registry.KeyExists(RegRoot::LocalMachine, key, true); }},
      {[&](DeletionGuard& g) { return g.DeleteValue(RegRoot::LocalMachine, key, L"Path", true); },
       [&](mem::MemoryPlatform& m) {
         auto opened = m.registry.OpenKey(RegRoot::LocalMachine, key, RegAccess::Read, true);
         return opened && opened->ValueExists(L"Path");
       }},
      {[&](DeletionGuard& g) { return g.DeleteSingleFile(app + L"\\app.exe"); },
       [&](mem::MemoryPlatform& m) { return m.files.FileExists(app + L"\\app.exe"); }},
      {[&](DeletionGuard& g) { return g.DeleteFolderTree(app + L"\\data"); },
       [&](mem::MemoryPlatform& m) { return m.files.FileExists(app + L"\\data\\settings.ini"); }},
  };
  for (bool chosen : {false, true}) {
    SCOPED_TRACE(chosen ? "the user chose no backup" : "no backup could be begun");
    for (const Item& item : items) {
      mem::MemoryPlatform m;
      Build(m);
      DeletionGuard guard = chosen ? DeletionGuard::WithoutBackup(m.Get(), ProtectedPlaces(m.Get(), {}))
                                   : DeletionGuard(m.Get(), ProtectedPlaces(m.Get(), {}), nullptr);
      const DeletionOutcome outcome = item.act(guard);
      EXPECT_EQ(outcome.deleted, chosen) << outcome.item;
      EXPECT_EQ(outcome.reason, chosen ? L"" : L"no backup could be made") << outcome.item;
      EXPECT_EQ(item.there(m), !chosen) << outcome.item;
      EXPECT_EQ(guard.Skipped().size(), chosen ? 0u : 1u);
    }
  }
}

}  // namespace
}  // namespace varnel
