#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "base/date_time.h"
#include "base/text.h"
#include "inventory/analysis_thread.h"
#include "inventory/icon_cache.h"
#include "inventory/software_cache.h"
#include "platform/memory/memory_platform.h"
#include "base/ext_ini_file.h"

namespace varnel {
namespace {

using namespace std::chrono_literals;

constexpr const wchar_t* kCacheFile =
    L"C:\\Users\\test\\AppData\\Roaming\\Varnel\\Varnel Uninstaller\\SoftwareCache.ini";

// The list control's image lists and rows, as the main window would keep them.
class FakeView : public IInventoryView {
 public:
  int AddIcons(const IconHandle& small, const IconHandle& large) override {
    EXPECT_EQ(std::this_thread::get_id(), gui);
    EXPECT_TRUE(small && large && small != large);
    images.push_back(small);
    return static_cast<int>(images.size()) - 1;
  }
  void UpdateRow(int index, const TSoftInfo& info) override {
    EXPECT_EQ(std::this_thread::get_id(), gui);
    rows.push_back(index);
    if (onRow) onRow(index, info);
  }

  const std::thread::id gui = std::this_thread::get_id();
  std::vector<IconHandle> images{nullptr};  // the default icon sits at 0
  std::vector<int> rows;
  std::function<void(int, const TSoftInfo&)> onRow;
};

class AnalysisThreadTest : public testing::Test {
 protected:
  void SetUp() override {
    installed = *m.system.FromLocalTime(LocalDateTime{2010, 3, 15, 10, 0, 0, 0});
    used = *m.system.FromLocalTime(LocalDateTime{2021, 6, 1, 12, 30, 0, 0});
    m.files.AddFolder(L"C:\\Users\\test\\AppData\\Roaming\\Varnel\\Varnel Uninstaller");
  }

  // A program as the registry lists it, with an uninstaller (100 bytes), a
  // main file (1000 bytes, with an icon) and `extra` more files of 10 bytes
  // in subfolders of its folder.
  TSoftInfo& Add(const std::wstring& name, const std::wstring& folderName = L"", int extra = 0) {
    const std::wstring folder = L"C:\\Program Files\\" + (folderName.empty() ? name : folderName);
    AddFile(folder + L"\\unins000.exe", 100);
    AddFile(folder + L"\\app.exe", 1000);
    for (int i = 0; i < extra; ++i)
      AddFile(folder + L"\\data\\" + std::to_wstring(i) + L"\\part.bin", 10);
    m.shell.iconFiles[text::Upper(folder + L"\\app.exe")] = 1;

    auto info = std::make_unique<TSoftInfo>();
    info->Name = name;
    info->UninstallString = L"\"" + folder + L"\\unins000.exe\" /SILENT";
    info->DisplayIcon = folder + L"\\app.exe,0";
    info->LastAccessDate = 1.0;
    list.push_back(std::move(info));
    return *list.back();
  }

  void AddFile(const std::wstring& path, std::size_t bytes) {
    m.files.AddFile(path, std::string(bytes, 'x'));
    m.files.SetTimes(path, installed, used, installed);
  }

  std::unique_ptr<TAnalysisThread> StartThread(IInventoryView* v) {
    auto thread = std::make_unique<TAnalysisThread>(m.Get(), dispatcher, kCacheFile);
    thread->SetJobs(v, &list);
    thread->Start();
    return thread;
  }

  void RunOnce(IInventoryView* v) {
    auto thread = StartThread(v);
    thread->RunPass();
    thread->WaitForPass();
    EXPECT_TRUE(thread->Finished());
  }

  // The next start: the records as the registry gives them again, completed
  // from the cache.
  void Restart(const std::function<void(TSoftInfo&)>& change = {}) {
    for (auto& info : list) {
      auto fresh = std::make_unique<TSoftInfo>();
      fresh->Name = info->Name;
      fresh->UninstallString = info->UninstallString;
      fresh->DisplayIcon = info->DisplayIcon;
      fresh->LastAccessDate = 1.0;
      if (change) change(*fresh);
      info = std::move(fresh);
    }
    ApplySoftwareCache(m.Get(), list, kCacheFile);
  }

  TExtIniFile LoadCache() {
    TExtIniFile ini;
    EXPECT_TRUE(ini.LoadFromFile(m.Get(), kCacheFile));
    return ini;
  }

  TDateTime InstalledDate() { return FileTimeToLocalDateTime(m.system, installed); }

  mem::MemoryPlatform m;
  GuiDispatcher dispatcher;
  SoftList list;
  FakeView view;
  FileTime installed = 0, used = 0;
};

TEST_F(AnalysisThreadTest, FillsRecordsPaintsRowsAndWritesTheCache) {
  TSoftInfo& acme = Add(L"Acme", L"", 3);
  TSoftInfo& beta = Add(L"Beta");
  beta.DisplayIcon.clear();
  RunOnce(&view);

  EXPECT_EQ(view.rows, (std::vector<int>{0, 1}));
  EXPECT_EQ(acme.Size, 1130);
  EXPECT_EQ(acme.SizeText, L"1.10 KB");
  EXPECT_TRUE(text::SameText(acme.InstallLocation, L"C:\\Program Files\\Acme\\"));
  EXPECT_EQ(acme.ImageIndex, 1);
  EXPECT_EQ(acme.InstallDate, InstalledDate());
  EXPECT_EQ(acme.InstallDateText, L"3/15/2010");
  EXPECT_EQ(acme.LastAccessDate, NowLocal(m.system));  // tracking is off
  EXPECT_EQ(acme.DisplayIcon, L"C:\\Program Files\\Acme\\app.exe,0");
  // No icon location of its own and no Installer key: nothing to show.
  EXPECT_EQ(beta.Size, 1100);
  EXPECT_EQ(beta.ImageIndex, 0);
  EXPECT_EQ(view.images.size(), 2u);

  const TExtIniFile ini = LoadCache();
  EXPECT_EQ(ini.ReadSections().size(), 2u);
  EXPECT_EQ(ini.ReadString(L"Acme", L"size", L""), L"1130");
  EXPECT_EQ(ini.ReadString(L"Acme", L"UseSize", L""), L"1.10 KB");
  EXPECT_EQ(ini.ReadString(L"Acme", L"Location", L""), acme.InstallLocation);
  EXPECT_EQ(ini.ReadString(L"Acme", L"InstallDate", L""), L"3/15/2010");
  EXPECT_EQ(ini.ReadFloat(L"Acme", L"InstallDateT", 0), InstalledDate());
  EXPECT_EQ(ini.ReadFloat(L"Acme", L"LastAccessDate", 0), acme.LastAccessDate);
  EXPECT_EQ(ini.ReadString(L"Acme", L"MD5", L""),
            CacheFingerprint(m.system, L"3/15/2010", acme.UninstallString));
  EXPECT_FALSE(ini.ValueExists(L"Acme", L"DisplayIcon"));  // the record had one
  EXPECT_TRUE(ini.ValueExists(L"Beta", L"DisplayIcon"));
  EXPECT_EQ(ini.ReadString(L"Beta", L"IconIndex", L""), L"0");
}

TEST_F(AnalysisThreadTest, RegistryFieldsAreKeptAndSignTheCache) {
  TSoftInfo& acme = Add(L"Acme");
  acme.InstallDateText = L"1/2/2003";
  acme.InstallDate = 37623;
  acme.InstallLocation = L"C:\\Program Files\\Acme";
  acme.Size = 5;
  RunOnce(&view);
  EXPECT_EQ(acme.InstallDateText, L"1/2/2003");
  EXPECT_EQ(acme.InstallDate, 37623);
  EXPECT_EQ(acme.Size, 5);
  const TExtIniFile ini = LoadCache();
  EXPECT_FALSE(ini.ValueExists(L"Acme", L"size"));
  EXPECT_FALSE(ini.ValueExists(L"Acme", L"Location"));
  EXPECT_FALSE(ini.ValueExists(L"Acme", L"InstallDate"));
  EXPECT_FALSE(ini.ValueExists(L"Acme", L"DisplayIcon"));
  // Nothing was filled, so nothing is signed; only the new last use is kept.
  EXPECT_FALSE(ini.ValueExists(L"Acme", L"MD5"));
  EXPECT_TRUE(ini.ValueExists(L"Acme", L"LastAccessDate"));
}

TEST_F(AnalysisThreadTest, LastAccessDateFollowsTracking) {
  TSoftInfo& acme = Add(L"Acme");
  m.registry.SetDWord(RegRoot::LocalMachine, L"SYSTEM\\CurrentControlSet\\Control\\FileSystem",
                      L"NtfsDisableLastAccessUpdate", 0);
  RunOnce(&view);
  EXPECT_EQ(acme.LastAccessDate, FileTimeToLocalDateTime(m.system, used));

  m.registry.SetDWord(RegRoot::LocalMachine, L"SYSTEM\\CurrentControlSet\\Control\\FileSystem",
                      L"NtfsDisableLastAccessUpdate", 1);
  m.files.RemoveFile(kCacheFile);  // a finished record is not looked at again
  Restart();
  RunOnce(&view);
  EXPECT_EQ(list[0]->LastAccessDate, NowLocal(m.system));
}

TEST_F(AnalysisThreadTest, IconsAreAddedOnlyWhenBothCanBeExtracted) {
  TSoftInfo& acme = Add(L"Acme");
  TSoftInfo& noIcons = Add(L"No Icons");
  m.shell.iconFiles.erase(text::Upper(L"C:\\Program Files\\No Icons\\app.exe"));
  TSoftInfo& wrongIndex = Add(L"Wrong Index");
  wrongIndex.DisplayIcon += L",5";  // the file holds one icon
  TSoftInfo& negative = Add(L"Negative");
  negative.ImageIndex = -1;
  RunOnce(&view);

  EXPECT_EQ(acme.ImageIndex, 1);
  EXPECT_EQ(noIcons.ImageIndex, 0);
  EXPECT_EQ(wrongIndex.ImageIndex, 0);
  // Only a record at 0 takes the new index; the icon is still added.
  EXPECT_EQ(negative.ImageIndex, -1);
  EXPECT_EQ(view.images.size(), 3u);
  EXPECT_EQ(view.rows.size(), 4u);
}

TEST_F(AnalysisThreadTest, WithoutAViewRecordsAreFilledButNoIconExtracted) {
  TSoftInfo& acme = Add(L"Acme");
  RunOnce(nullptr);
  EXPECT_EQ(acme.Size, 1100);
  EXPECT_EQ(acme.ImageIndex, 0);
  EXPECT_EQ(m.shell.iconsExtracted, 0);
}

// A second start finds in the caches what the first found: no folder walk,
// no icon extraction, and in the console tool (no image lists) a record is
// finished without an image.
TEST_F(AnalysisThreadTest, ASecondStartIsServedFromTheCaches) {
  struct Case {
    const char* what;
    bool window;
    std::function<void(mem::MemoryPlatform&)> between;
    int extractedAgain;
    std::uint64_t mostReads;  // the second pass's
  };
  const std::wstring icons = IconCacheFileFor(kCacheFile);
  const Case cases[] = {
      {"window", true, {}, 0, 2},
      {"console", false, {}, 0, 1},
      {"truncated icon cache", true,
       [&](mem::MemoryPlatform& p) {
         std::vector<std::uint8_t> bytes;
         ASSERT_TRUE(p.files.ReadWholeFile(icons, bytes));
         bytes.resize(bytes.size() - 1);
         p.files.WriteWholeFile(icons, bytes);
       },
       1, 10},
      {"icon bits the backend rejects", true,
       [&](mem::MemoryPlatform& p) {
         IconCache cache;
         ASSERT_TRUE(cache.Load(p.files, icons));
         const TSoftInfo& info = *list[0];
         cache.Store(p.system, info, {1, 2, 3}, {4, 5, 6});
         ASSERT_TRUE(cache.Save(p.files, icons));
       },
       1, 10},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    m.files.RemoveFile(kCacheFile);
    m.files.RemoveFile(icons);
    list.clear();
    Add(text::Widen(c.what), L"", 80);
    RunOnce(c.window ? &view : nullptr);
    const int extracted = m.shell.iconsExtracted;
    const std::int64_t size = list[0]->Size;
    if (c.between) c.between(m);

    Restart();
    FakeView second;
    const auto reads = m.files.ReadCalls();
    RunOnce(c.window ? &second : nullptr);
    EXPECT_LE(m.files.ReadCalls() - reads, c.mostReads);
    EXPECT_EQ(list[0]->Size, size);
    EXPECT_EQ(m.shell.iconsExtracted - extracted, c.extractedAgain);
    EXPECT_EQ(list[0]->ImageIndex, c.window ? 1 : 0);
    EXPECT_EQ(second.rows, c.window ? std::vector<int>{0} : std::vector<int>{});
  }
}

TEST_F(AnalysisThreadTest, AChangedUninstallStringInvalidatesItsEntry) {
  Add(L"Acme", L"", 80);
  AddFile(L"C:\\Program Files\\Acme\\unins001.exe", 5);
  RunOnce(&view);

  const std::wstring moved = L"\"C:\\Program Files\\Acme\\unins001.exe\"";
  Restart([&](TSoftInfo& info) { info.UninstallString = moved; });
  EXPECT_EQ(list[0]->Size, 0);
  EXPECT_TRUE(list[0]->InstallLocation.empty());
  const auto again = m.files.ReadCalls();
  RunOnce(&view);
  EXPECT_GT(m.files.ReadCalls() - again, 80u);
  EXPECT_EQ(list[0]->Size, 1905);
  EXPECT_EQ(m.shell.iconsExtracted, 2);  // its cached icon went with the entry
  EXPECT_EQ(LoadCache().ReadString(L"Acme", L"MD5", L""),
            CacheFingerprint(m.system, L"3/15/2010", moved));
}

TEST_F(AnalysisThreadTest, ProgramsOfTheSameNameShareOneSection) {
  Add(L"Acme", L"Acme One");
  TSoftInfo& second = Add(L"ACME", L"Acme Two");
  AddFile(L"C:\\Program Files\\Acme Two\\more.bin", 50);
  RunOnce(&view);
  const TExtIniFile ini = LoadCache();
  EXPECT_EQ(ini.ReadSections().size(), 1u);
  // The later record wrote last.
  EXPECT_EQ(ini.ReadString(L"acme", L"size", L""), L"1150");
  EXPECT_EQ(ini.ReadString(L"acme", L"MD5", L""),
            CacheFingerprint(m.system, L"3/15/2010", second.UninstallString));

  Restart();
  EXPECT_EQ(list[0]->Size, 0);  // the section no longer signs the first one
  EXPECT_EQ(list[1]->Size, 1150);
}

TEST_F(AnalysisThreadTest, StopLeavesTheRestUnanalysedAndSavesWhatWasDone) {
  for (const wchar_t* name : {L"Acme", L"Beta", L"Gamma"}) Add(name);
  auto thread = StartThread(&view);
  view.onRow = [&](int, const TSoftInfo&) { thread->RequestStop(); };
  thread->RunPass();
  thread->WaitForPass();

  EXPECT_EQ(view.rows, (std::vector<int>{0}));
  EXPECT_EQ(list[0]->Size, 1100);
  for (std::size_t i : {1u, 2u}) {
    EXPECT_EQ(list[i]->Size, 0);
    EXPECT_TRUE(list[i]->InstallLocation.empty());
    EXPECT_EQ(list[i]->ImageIndex, 0);
  }
  const TExtIniFile ini = LoadCache();
  EXPECT_TRUE(ini.SectionExists(L"Acme"));
  EXPECT_FALSE(ini.SectionExists(L"Beta"));
  EXPECT_FALSE(ini.SectionExists(L"Gamma"));

  // The next pass starts afresh; the finished record is complete and skipped.
  view.onRow = nullptr;
  thread->RunPass();
  thread->WaitForPass();
  EXPECT_EQ(view.rows, (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(list[2]->Size, 1100);
}

// Runs a hook on the worker while it extracts a record's icons, i.e. in the
// middle of analysing that record.
class HookedShell : public IShell {
 public:
  explicit HookedShell(IShell& inner) : inner_(inner) {}
  std::intptr_t Execute(std::wstring_view verb, std::wstring_view file,
                        std::wstring_view parameters, std::wstring_view directory,
                        int show) override {
    return inner_.Execute(verb, file, parameters, directory, show);
  }
  bool ExecuteAndWaitIdle(std::wstring_view verb, std::wstring_view file, int show) override {
    return inner_.ExecuteAndWaitIdle(verb, file, show);
  }
  bool ExtractIcons(std::wstring_view file, int index, IconHandle& small,
                    IconHandle& large) override {
    if (onExtract) onExtract(file);
    return inner_.ExtractIcons(file, index, small, large);
  }
  IconHandle SmallFileIcon(std::wstring_view path, int& systemIndex) override {
    return inner_.SmallFileIcon(path, systemIndex);
  }
  std::vector<std::uint8_t> IconBits(const IconHandle& icon) override {
    return inner_.IconBits(icon);
  }
  IconHandle IconFromBits(std::span<const std::uint8_t> bits) override {
    return inner_.IconFromBits(bits);
  }
  std::function<void(std::wstring_view)> onExtract;

 private:
  IShell& inner_;
};

TEST_F(AnalysisThreadTest, StopWhileARecordIsAnalysedLeavesItsRowUnpainted) {
  for (const wchar_t* name : {L"Acme", L"Beta", L"Gamma"}) Add(name);
  HookedShell shell(m.shell);
  const Platform hooked{m.registry, m.files, m.system, shell, m.windows, m.processes,
                       m.restorePoints};
  TAnalysisThread thread(hooked, dispatcher, kCacheFile);
  shell.onExtract = [&](std::wstring_view file) {
    if (text::ContainsText(file, L"\\Beta\\")) thread.RequestStop();
  };
  thread.SetJobs(&view, &list);
  thread.Start();
  thread.RunPass();
  thread.WaitForPass();

  EXPECT_EQ(view.rows, (std::vector<int>{0}));
  EXPECT_EQ(view.images.size(), 2u);
  EXPECT_EQ(list[1]->Size, 0);
  EXPECT_EQ(list[1]->ImageIndex, 0);
  EXPECT_FALSE(LoadCache().SectionExists(L"Beta"));
}

TEST_F(AnalysisThreadTest, DestroyingMidPassNeitherDeadlocksNorLosesTheDoneRecords) {
  for (int i = 0; i < 40; ++i) Add(L"App " + std::to_wstring(i));
  view.onRow = [](int, const TSoftInfo&) { std::this_thread::sleep_for(5ms); };
  auto thread = StartThread(&view);
  thread->RunPass();
  while (view.rows.size() < 3) dispatcher.WaitAndDrain(100ms);

  // Nobody drains any more: the destructor has to serve the worker itself.
  const auto start = std::chrono::steady_clock::now();
  thread.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);

  const std::size_t painted = view.rows.size();
  EXPECT_LT(painted, 40u);
  const TExtIniFile ini = LoadCache();
  EXPECT_EQ(ini.ReadSections().size(), painted);
  for (std::size_t i = 0; i < list.size(); ++i)
    EXPECT_EQ(list[i]->Size != 0, i < painted) << i;
}

TEST_F(AnalysisThreadTest, IdleNeverStartedOrUnservedThreadsEndQuietly) {
  Add(L"Acme");
  { TAnalysisThread never(m.Get(), dispatcher, kCacheFile); }
  {
    auto idle = StartThread(&view);
    EXPECT_TRUE(idle->Running());
    EXPECT_TRUE(idle->Finished());
    idle->WaitForPass();  // nothing asked: returns at once
  }
  EXPECT_FALSE(m.files.FileExists(kCacheFile));

  // A closed dispatcher serves no hand-over: the pass ends at its first.
  dispatcher.Close();
  RunOnce(&view);
  EXPECT_TRUE(view.rows.empty());
  EXPECT_EQ(list[0]->Size, 0);
}

TEST_F(AnalysisThreadTest, FailingRowsAreReportedAndDoNotEndThePassOrItsSave) {
  Add(L"Acme");
  Add(L"Beta");
  view.onRow = [](int index, const TSoftInfo&) {
    if (index == 0) throw std::runtime_error("paint");
  };
  std::vector<std::string> reports;
  TAnalysisThread thread(m.Get(), dispatcher, kCacheFile, [&](std::exception_ptr error) {
    EXPECT_EQ(std::this_thread::get_id(), view.gui);
    try {
      std::rethrow_exception(error);
    } catch (const std::exception& e) {
      reports.push_back(e.what());
    }
  });
  thread.SetJobs(&view, &list);
  thread.Start();
  thread.RunPass();
  thread.WaitForPass();
  EXPECT_EQ(view.rows, (std::vector<int>{0, 1}));
  EXPECT_EQ(list[1]->Size, 1100);
  EXPECT_EQ(reports, (std::vector<std::string>{"paint"}));
  EXPECT_TRUE(LoadCache().SectionExists(L"Beta"));
}

TEST_F(AnalysisThreadTest, AStopAskedForBeforeThePassBeginsEndsIt) {
  Add(L"Acme");
  auto thread = StartThread(&view);
  // Nothing is served before WaitForPass, so the worker cannot be past its
  // first hand-over when the stop comes.
  thread->RunPass();
  thread->RequestStop();
  thread->WaitForPass();
  EXPECT_TRUE(view.rows.empty());
  EXPECT_EQ(list[0]->Size, 0);

  thread->RunPass();
  thread->WaitForPass();
  EXPECT_EQ(view.rows, (std::vector<int>{0}));
}

TEST_F(AnalysisThreadTest, HiddenAndCompleteRecordsAreLeftAlone) {
  TSoftInfo& hidden = Add(L"Hidden");
  hidden.Hidden = true;
  TSoftInfo& complete = Add(L"Complete");
  complete.InstallLocation = L"C:\\Program Files\\Complete\\";
  complete.Size = 7;
  complete.ImageIndex = 4;
  complete.InstallDate = 40000;
  Add(L"Open");
  RunOnce(&view);
  EXPECT_EQ(view.rows, (std::vector<int>{2}));
  EXPECT_EQ(hidden.Size, 0);
  EXPECT_EQ(complete.Size, 7);
  EXPECT_EQ(complete.LastAccessDate, 1.0);
}

TEST_F(AnalysisThreadTest, ReadmeFolderStandsInAndUnsafeFoldersMeasureZero) {
  TSoftInfo& tool = Add(L"Tool", L"Tool");
  tool.UninstallString = L"C:\\Gone\\uninst.exe";
  tool.Readme = L"\"C:\\Program Files\\Tool\\readme.txt\"";
  TSoftInfo& system = Add(L"System Tool");
  system.InstallLocation = L"C:\\Windows";
  AddFile(L"C:\\Windows\\notepad.exe", 100);
  RunOnce(&view);

  EXPECT_EQ(tool.Size, 1100);
  EXPECT_TRUE(tool.InstallLocation.empty());
  EXPECT_TRUE(LoadCache().ValueExists(L"Tool", L"Location"));
  EXPECT_EQ(system.Size, 0);
  EXPECT_EQ(system.SizeText, L"0 Byte");
}

// The cache file as another process may leave it: what the pass found is
// added to it, and a file that cannot be read is never saved over.
TEST_F(AnalysisThreadTest, ThePassAddsToTheCacheAndNeverSavesOverOneItCannotRead) {
  const std::string other = "\xef\xbb\xbf[Other]\r\nsize=5\r\n";
  struct Case {
    const char* what;
    std::optional<std::string> before;
    std::optional<mem::Fault> fault;
    std::optional<std::wstring> acmeSize;  // nullopt: no file afterwards
    bool otherKept;
  };
  const Case cases[] = {
      {"missing", std::nullopt, std::nullopt, L"1100", false},
      {"written by another", other, std::nullopt, L"1100", true},
      {"garbled", std::string("\xef\xbb\xbf[Acme\x00\xff\nsize=\x80\x81", 18), std::nullopt,
       L"1100", false},
      {"held unshared by another", other, mem::Fault::FileRead, L"", true},
      {"unwritable", std::nullopt, mem::Fault::FileWrite, std::nullopt, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    list.clear();
    m.files.RemoveFile(kCacheFile);
    if (c.before) m.files.AddFile(kCacheFile, *c.before);
    Add(L"Acme");
    if (c.fault) m.faults.Set(*c.fault);
    RunOnce(&view);
    m.faults.Clear();
    EXPECT_EQ(list[0]->Size, 1100);
    if (!c.acmeSize) {
      EXPECT_FALSE(m.files.FileExists(kCacheFile));
      continue;
    }
    const TExtIniFile ini = LoadCache();
    EXPECT_EQ(ini.ReadString(L"Acme", L"size", L""), *c.acmeSize);
    EXPECT_EQ(ini.ReadString(L"Other", L"size", L""), c.otherKept ? L"5" : L"");
  }
}

}  // namespace
}  // namespace varnel
