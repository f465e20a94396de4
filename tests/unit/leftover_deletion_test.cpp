#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "base/text_file.h"
#include "platform/memory/memory_platform.h"
#include "uninstall/leftover_deletion.h"
#include "uninstall/uninstall_log.h"

namespace varnel {
namespace {

using Lines = std::vector<std::wstring>;

class Progress : public IDeletionProgress {
 public:
  void SetCaption(std::wstring_view text) override { captions.emplace_back(text); }
  void SetPosition(int percent) override { last = percent; }
  void ProcessMessages() override {
    if (onMessages) onMessages();
  }
  Lines captions;
  int last = -1;
  std::function<void()> onMessages;
};

LeftoverLeaf Key(const std::wstring& path, bool checked, const std::wstring& value = L"",
                 const std::wstring& data = L"") {
  LeftoverLeaf leaf;
  leaf.data.Kind = TreeDataKind::Registry;
  leaf.data.Is64BitView = true;
  leaf.data.KeyPath = path;
  leaf.data.ValueName = value;
  leaf.data.ValueData = data;
  leaf.checked = checked;
  return leaf;
}
LeftoverLeaf Disk(const std::wstring& path, std::uint32_t kind, bool checked) {
  LeftoverLeaf leaf;
  leaf.data.Kind = TreeDataKind::File;
  leaf.data.FilePath = path;
  leaf.data.FileKindWord = kind;
  leaf.checked = checked;
  return leaf;
}

// Acme with a checked key, a checked value, an unchecked key, a checked key
// Windows owns, a checked file, an unchecked folder and a checked folder
// inside the Windows folder; and a root whose caption has no count.
struct World {
  World() {
    m.system.now = *m.system.FromLocalTime({2013, 5, 14, 10, 21, 7, 0});
    m.system.shortDateFormat = L"dd.MM.yyyy";
    m.system.longTimeFormat = L"HH:mm:ss";
    m.registry.SetString(RegRoot::LocalMachine, L"\\SOFTWARE\\Acme", L"Path", L"x");
    m.registry.SetString(RegRoot::LocalMachine, L"\\SOFTWARE\\Keep", L"Path", L"x");
    m.registry.SetString(RegRoot::LocalMachine, L"\\SOFTWARE\\Classes\\.acme", L"", L"Acme.Doc");
    m.registry.SetString(RegRoot::LocalMachine, L"\\SOFTWARE\\Classes\\.acme", L"Other", L"x");
    m.registry.SetString(RegRoot::LocalMachine, kRun, L"Acme", L"C:\\Program Files\\Acme\\acme.exe");
    m.registry.SetString(RegRoot::LocalMachine, kRun, L"Other", L"other.exe");
    m.files.AddFile(L"C:\\Program Files\\Acme\\acme.exe", "MZ");
    m.files.AddFile(L"C:\\Program Files\\Acme\\data\\a.dat", "x");
    m.files.AddFolder(L"C:\\Windows\\Fonts");
    m.files.AddFile(L"C:\\Loose\\x.txt", "x");
    roots = {
        {L"Acme(8 items)",
         {{L"Registry(5 items)",
           {Key(L"\\SOFTWARE\\Acme", true), Key(kRun, true, L"Acme", L"C:\\Program Files\\Acme\\acme.exe"),
            Key(L"\\SOFTWARE\\Classes\\.acme", true, L"", L"Acme.Doc"), Key(L"\\SOFTWARE\\Keep", false),
            Key(L"\\SOFTWARE", true)}},
          {L"File(3 items)",
           {Disk(L"C:\\Program Files\\Acme\\acme.exe", FileKind::File, true),
            Disk(L"C:\\Program Files\\Acme", FileKind::Folder, false),
            Disk(L"C:\\Windows\\Fonts", FileKind::Folder, true)}}}},
        {L"Loose", {{L"File", {Disk(L"C:\\Loose\\x.txt", FileKind::File, true)}}}},
    };
  }
  DeletionResult Run() {
    ProtectedPlaces places(m.Get(), {});
    DeletionGuard guard = DeletionGuard::WithoutBackup(m.Get(), places);
    LeftoverDeletion deletion(m.Get(), guard, DeletionTexts{});
    return deletion.Run(roots, progress, cancel);
  }
  Lines LogLines() {
    std::wstring text;
    if (!ReadTextFile(m.Get(), UninstallLogFolder(m.Get()) + UninstallLogFileName(m.Get()), text))
      return {};
    Lines lines;
    for (auto line : SplitLines(text)) lines.emplace_back(line);
    return lines;
  }

  static constexpr const wchar_t* kRun = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";
  mem::MemoryPlatform m;
  std::vector<LeftoverRoot> roots;
  Progress progress;
  std::atomic<bool> cancel{false};
};

TEST(LeftoverDeletion, LogsEachCheckedItemSkipsRefusalsAndRemovesEveryFolder) {
  World w;
  const DeletionResult result = w.Run();
  // Key paths keep their leading "\", as the scan reports them.
  const Lines block = {
      L"[Acme]",
      L"Operation:Powerful Scan",
      L"Date:14.05.2013 10:21:07",
      L"",
      L"------Registry------",
      L"Deleted Registry Key HKEY_LOCAL_MACHINE\\\\SOFTWARE\\Acme",
      L"Deleted Registry Value HKEY_LOCAL_MACHINE\\\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion"
      L"\\Run | Acme - C:\\Program Files\\Acme\\acme.exe",
      L"Deleted Registry Value HKEY_LOCAL_MACHINE\\\\SOFTWARE\\Classes\\.acme | Default - Acme.Doc",
      L"Skipped HKEY_LOCAL_MACHINE\\\\SOFTWARE: " + RefusalReason(Refusal::RegistryRoot),
      L"",
      L"------File------",
      L"Deleted File C:\\Program Files\\Acme\\acme.exe",
      L"Skipped C:\\Windows\\Fonts: " + RefusalReason(Refusal::WindowsFolder),
      L"[]",
      L"Operation:Powerful Scan",
      L"Date:14.05.2013 10:21:07",
      L"",
      L"------------",
      L"Deleted File C:\\Loose\\x.txt",
  };
  EXPECT_EQ(result.logLines, block);
  const Lines log = w.LogLines();
  ASSERT_GE(log.size(), block.size());
  EXPECT_EQ(Lines(log.end() - static_cast<std::ptrdiff_t>(block.size()), log.end()), block);
  EXPECT_EQ(result.skipped, 2);
  EXPECT_FALSE(w.m.registry.KeyExists(RegRoot::LocalMachine, L"\\SOFTWARE\\Acme", true));
  EXPECT_TRUE(w.m.registry.KeyExists(RegRoot::LocalMachine, L"\\SOFTWARE\\Keep", true));
  auto run = w.m.registry.OpenKey(RegRoot::LocalMachine, World::kRun, RegAccess::Read, true);
  ASSERT_NE(run, nullptr);
  EXPECT_FALSE(run->ValueExists(L"Acme"));
  EXPECT_TRUE(run->ValueExists(L"Other"));
  // A default value goes alone, not with its key.
  auto shared = w.m.registry.OpenKey(RegRoot::LocalMachine, L"\\SOFTWARE\\Classes\\.acme",
                                     RegAccess::Read, true);
  ASSERT_NE(shared, nullptr);
  EXPECT_FALSE(shared->ValueExists(L""));
  // The unchecked folder goes all the same, with what it holds.
  EXPECT_FALSE(w.m.files.FileExists(L"C:\\Program Files\\Acme\\data\\a.dat"));
  EXPECT_FALSE(w.m.files.DirectoryExists(L"C:\\Program Files\\Acme"));
  EXPECT_TRUE(w.m.files.DirectoryExists(L"C:\\Windows\\Fonts"));
  // A pause for each registry item and file handed over at once.
  EXPECT_EQ(w.m.system.sleptMs, 10u * 6);
  EXPECT_EQ(w.progress.captions.front(), L"Deleting :HKEY_LOCAL_MACHINE\\\\SOFTWARE\\Acme");
}

TEST(LeftoverDeletion, CancelStopsAtTheNextItemAndWritesNoLog) {
  World w;
  int items = 0;
  w.progress.onMessages = [&] {
    if (++items == 2) w.cancel = true;
  };
  const DeletionResult result = w.Run();
  EXPECT_TRUE(result.cancelled);
  EXPECT_FALSE(w.m.registry.KeyExists(RegRoot::LocalMachine, L"\\SOFTWARE\\Acme", true));
  EXPECT_TRUE(w.m.files.FileExists(L"C:\\Program Files\\Acme\\acme.exe"));
  EXPECT_TRUE(w.m.files.DirectoryExists(L"C:\\Program Files\\Acme"));
  EXPECT_TRUE(w.LogLines().empty());
  EXPECT_TRUE(result.logFile.empty());
}

}  // namespace
}  // namespace varnel
