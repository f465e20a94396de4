#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "core/text.h"
#include "core/text_file.h"
#include "leftovers/scan_driver.h"
#include "platform/memory/memory_platform.h"
#include "scan_world.h"
#include "uninstall/uninstall_sequence.h"

namespace varnel {
namespace {

constexpr wchar_t kLogFolder[] = L"C:\\Users\\test\\AppData\\Roaming\\Varnel\\Varnel Uninstaller\\Log\\";

using Script = mem::MemoryProcesses::Script;
using Polls = std::vector<std::vector<std::wstring>>;

Script Polled(Polls polls) {
  Script script;
  script.polls = std::move(polls);
  return script;
}
Script QueriesFailing(int count) {
  Script script;
  script.failingQueries = count;
  return script;
}
Script NotStarting() {
  Script script;
  script.failsToStart = true;
  return script;
}
// The workers pause briefly, so that the wait loops still turn.
TUninstallSequence::Options Quick(bool restorePoint) {
  TUninstallSequence::Options options;
  options.restorePoint = restorePoint;
  options.workerDelayMs = 20;
  return options;
}

// The window as a list of what was asked of it. A caption that only adds dots
// to the line's last recorded text is an animation frame: counted, not listed.
class RecordingView : public IUninstallView {
 public:
  void SetStep(int step) override { events.push_back(L"step " + std::to_wstring(step)); }
  std::wstring Caption(StepLine line) const override {
    const auto it = captions.find(line);
    return it == captions.end() ? std::wstring() : it->second;
  }
  void SetCaption(StepLine line, std::wstring_view text) override {
    captions[line] = std::wstring(text);
    const std::wstring bare(text.substr(0, text.find_last_not_of(L'.') + 1));
    if (bare == recorded[line]) {
      ++frames;
      return;
    }
    recorded[line] = bare;
    events.push_back(L"caption " + std::to_wstring(static_cast<int>(line)) + L" " +
                     std::wstring(text));
  }
  void HideUninstallMarker() override { events.push_back(L"hide marker"); }
  void EnableScan() override { events.push_back(L"enable scan"); }
  void ProcessMessages() override {
    if (onMessages) onMessages();
  }
  void ShowMessage(std::wstring_view text) override {
    events.push_back(L"message " + std::wstring(text));
  }
  void CloseWindow() override { events.push_back(L"close"); }
  bool AdvancedChosen() const override { return advanced; }

  std::vector<std::wstring> events;
  std::map<StepLine, std::wstring> captions, recorded;
  int frames = 0;
  bool advanced = false;
  std::function<void()> onMessages;
};

class UninstallSequenceTest : public testing::Test {
 protected:
  UninstallSequenceTest() {
    m.system.now = *m.system.FromLocalTime({2013, 5, 14, 10, 21, 7, 0});
    m.system.shortDateFormat = L"dd.MM.yyyy";
    m.system.longTimeFormat = L"HH:mm:ss";
    AddProgram(L"Alpha", L"C:\\Alpha\\unins.exe");
    AddProgram(L"Beta", L"C:\\Beta\\unins.exe");
  }
  void AddProgram(const std::wstring& name, const std::wstring& command) {
    auto info = std::make_unique<TSoftInfo>();
    info->Name = name;
    info->UninstallString = command;
    list.push_back(std::move(info));
  }
  TUninstallSequence& Sequence(std::vector<std::wstring> jobs, int mode,
                               bool restorePoint = true) {
    sequence =
        std::make_unique<TUninstallSequence>(m.Get(), view, TUninstallTexts{}, Quick(restorePoint));
    sequence->SetSoftware(&list);
    sequence->SetJobs(&jobs, mode);
    sequence->Prepare();
    return *sequence;
  }
  // The day's log after the header, or nullopt when there is none.
  std::optional<std::vector<std::wstring>> LogBody() {
    std::wstring text;
    if (!ReadTextFile(m.Get(), std::wstring(kLogFolder) + L"2013-05-14.log", text)) {
      return std::nullopt;
    }
    std::vector<std::wstring> lines;
    for (auto line : SplitLines(text)) lines.emplace_back(line);
    if (lines.size() < 7) return std::nullopt;
    return std::vector<std::wstring>(lines.begin() + 7, lines.end());
  }
  std::vector<std::wstring> Processes(std::wstring_view kind) const {
    std::vector<std::wstring> out;
    for (const auto& e : m.processes.events)
      if (e.starts_with(kind)) out.push_back(e);
    return out;
  }
  static std::vector<std::wstring> Block(const std::wstring& name, const std::wstring& operation) {
    return {L"[" + name + L"]", L"Operation:" + operation, L"Date:14.05.2013 10:21:07", L""};
  }

  mem::MemoryPlatform m;
  TSoftList list;
  RecordingView view;
  std::unique_ptr<TUninstallSequence> sequence;
};

TEST_F(UninstallSequenceTest, StandardRunWalksTheStepsAndClosesWithTheNotice) {
  Sequence({L"0"}, JobMode::Uninstall).Run();
  EXPECT_EQ(view.events, (std::vector<std::wstring>{
                             L"step -1",
                             L"caption 0 Creating System Restore Point",
                             L"caption 1 Creating a full registry backup",
                             L"caption 2 Standard Uninstall",
                             L"step 0",
                             L"caption 0 Creating System Restore Point Finished.",
                             L"caption 1 Creating a Full Registry Backup Finished.",
                             L"step 1",
                             L"caption 2 Uninstall Finished.",
                             L"hide marker",
                             L"message Uninstall Finished.",
                             L"close",
                         }));
  EXPECT_EQ(m.restorePoints.begun, std::vector<std::wstring>{L"Varnel Uninstaller restore point"});
  EXPECT_EQ(Processes(L"start"), std::vector<std::wstring>{L"start C:\\Alpha\\unins.exe"});
  EXPECT_EQ(m.processes.shows, std::vector<int>{ShowCmd::Normal});
  EXPECT_EQ(LogBody(), Block(L"Alpha", L"Standard Uninstall"));
  EXPECT_EQ(sequence->LogFile(), std::wstring(kLogFolder) + L"2013-05-14.log");
  EXPECT_FALSE(LoadModeChoice(m.Get()));
}

TEST_F(UninstallSequenceTest, AdvancedChosenWhileTheUninstallerRunsOffersTheScanInstead) {
  m.processes.AddScript(L"C:\\Alpha\\unins.exe", Polled({{L"unins.exe"}, {}}));
  view.onMessages = [this] { view.advanced = true; };
  Sequence({L"0"}, JobMode::Uninstall, false).Run();
  const std::vector<std::wstring> tail(view.events.end() - 4, view.events.end());
  EXPECT_EQ(tail, (std::vector<std::wstring>{L"caption 2 Uninstall Finished.", L"hide marker",
                                             L"step 2", L"enable scan"}));
  EXPECT_TRUE(m.restorePoints.begun.empty());
  EXPECT_TRUE(LoadModeChoice(m.Get()));
}

TEST_F(UninstallSequenceTest, CancelDuringTheRestorePointSkipsEverythingElse) {
  view.onMessages = [this] { sequence->Cancel(); };
  Sequence({L"0"}, JobMode::Uninstall).Run();
  EXPECT_EQ(view.events.back(), L"close");
  EXPECT_EQ(std::count(view.events.begin(), view.events.end(), L"step 1"), 0);
  EXPECT_TRUE(m.processes.events.empty());
  EXPECT_FALSE(m.files.DirectoryExists(text::ExcludeTrailingBackslash(kLogFolder)));
  EXPECT_TRUE(sequence->Runs().empty());
}

TEST_F(UninstallSequenceTest, ProgramsRunOneAfterAnotherAndLogInJobOrder) {
  m.processes.AddScript(L"C:\\Alpha\\unins.exe", Polled({{L"unins.exe"}, {L"Au_.exe"}, {}}));
  m.processes.AddScript(L"C:\\Beta\\unins.exe", Polled({{L"unins.exe"}, {}}));
  Sequence({L"0", L"not a number", L"1"}, JobMode::Uninstall, false).Run();
  std::vector<std::wstring> order;
  for (const auto& e : m.processes.events)
    if (!e.starts_with(L"query") || order.empty() || order.back() != e) order.push_back(e);
  EXPECT_EQ(order, (std::vector<std::wstring>{
                       L"start C:\\Alpha\\unins.exe", L"query C:\\Alpha\\unins.exe",
                       L"end C:\\Alpha\\unins.exe", L"start C:\\Beta\\unins.exe",
                       L"query C:\\Beta\\unins.exe", L"end C:\\Beta\\unins.exe"}));
  auto expected = Block(L"Alpha", L"Standard Uninstall");
  auto beta = Block(L"Beta", L"Standard Uninstall");
  expected.insert(expected.end(), beta.begin(), beta.end());
  EXPECT_EQ(LogBody(), expected);
  ASSERT_EQ(sequence->Runs().size(), 2u);
  EXPECT_EQ(sequence->Runs()[1].exitCode, 0u);
  // The wait animated the step line with the program's name.
  EXPECT_NE(std::find(view.events.begin(), view.events.end(),
                      L"caption 2 Standard Uninstall Alpha."),
            view.events.end());
}

TEST_F(UninstallSequenceTest, CancelWhileAProgramRunsEndsItsWaitAndStartsNoOther) {
  m.processes.AddScript(L"C:\\Alpha\\unins.exe", Polled({{L"unins.exe"}}));
  view.onMessages = [this] {
    if (!m.processes.events.empty()) sequence->Cancel();
  };
  Sequence({L"0", L"1"}, JobMode::Uninstall, false).Run();
  EXPECT_EQ(Processes(L"start"), std::vector<std::wstring>{L"start C:\\Alpha\\unins.exe"});
  ASSERT_EQ(sequence->Runs().size(), 1u);
  EXPECT_TRUE(sequence->Runs()[0].waitAbandoned);
  EXPECT_FALSE(LogBody());
  EXPECT_EQ(view.events.back(), L"close");
}

TEST_F(UninstallSequenceTest, ForcedModeDeletesTheFileOrQueuesItAndLogsItsName) {
  const std::wstring file = L"C:\\Tools\\stuck.exe";
  struct Case {
    bool exists;
    bool deleteFails;
    bool existsAfter;
    std::size_t queued;
  } cases[] = {{true, false, false, 0}, {true, true, true, 1}, {false, false, false, 0}};
  for (const Case& c : cases) {
    mem::MemoryPlatform fresh;
    fresh.system.now = m.system.now;
    fresh.system.shortDateFormat = m.system.shortDateFormat;
    fresh.system.longTimeFormat = m.system.longTimeFormat;
    if (c.exists) fresh.files.AddFile(file, "MZ");
    fresh.faults.Set(mem::Fault::FileDelete, c.deleteFails);
    RecordingView v;
    TUninstallSequence s(fresh.Get(), v, TUninstallTexts{}, Quick(false));
    std::vector<std::wstring> jobs{file};
    s.SetJobs(&jobs, JobMode::Forced);
    s.Prepare();
    s.Run();
    EXPECT_EQ(fresh.files.FileExists(file), c.existsAfter);
    EXPECT_EQ(fresh.files.PendingRenames().size(), c.queued);
    std::wstring text;
    ASSERT_TRUE(ReadTextFile(fresh.Get(), s.LogFile(), text));
    const auto lines = SplitLines(text);
    ASSERT_EQ(lines.size(), 11u);
    EXPECT_EQ(lines[7], L"[stuck.exe]");
    EXPECT_EQ(lines[8], L"Operation:Forced Uninstall");
    EXPECT_TRUE(fresh.processes.events.empty());
  }
}

TEST_F(UninstallSequenceTest, OtherModesRunNothingButBeginTheDaysLog) {
  Sequence({L"0"}, JobMode::Forced + 1, false).Run();
  EXPECT_TRUE(m.processes.events.empty());
  EXPECT_EQ(LogBody(), std::vector<std::wstring>{});
  EXPECT_EQ(view.events.back(), L"close");
}

TEST_F(UninstallSequenceTest, QuietCommandReplacesTheRecordsOwnWithMacrosExpanded) {
  TUninstallSequence::Options options = Quick(false);
  options.commandFor = [](const TSoftInfo& info) {
    return info.Name == L"Beta" ? L"%SysDir%\\msiexec.exe /x {1} /qn" : L"";
  };
  sequence = std::make_unique<TUninstallSequence>(m.Get(), view, TUninstallTexts{}, options);
  sequence->SetSoftware(&list);
  std::vector<std::wstring> jobs{L"0", L"1"};
  sequence->SetJobs(&jobs, JobMode::Uninstall);
  sequence->Run();
  EXPECT_EQ(Processes(L"start"),
            (std::vector<std::wstring>{L"start C:\\Alpha\\unins.exe",
                                       L"start C:\\Windows\\system32\\msiexec.exe /x {1} /qn"}));
}

// Waits of one run, against what the job holds at each query.
TEST(UninstallRunnerTest, WaitEndsWhenOnlyBrowsersAreLeftOrTheJobCannotBeAsked) {
  struct Case {
    const char* what;
    Script script;
    std::size_t queries;
    bool started, abandoned;
  } cases[] = {
      {"empty at once", {}, 1, true, false},
      {"browser left", Polled({{L"unins.exe", L"CHROME.EXE"}, {L"chrome.exe", L"Opera.exe"}}), 2,
       true, false},
      {"other process left", Polled({{L"unins.exe"}, {L"chrome.exe", L"helper.exe"}, {}}), 3, true,
       false},
      {"ten failures then empty", QueriesFailing(10), 11, true, false},
      {"every query fails", QueriesFailing(-1), 11, true, true},
      {"cannot start", NotStarting(), 0, false, false},
      {"long wait", Polled([] {
         Polls polls(12, {L"unins.exe"});
         polls.emplace_back();
         return polls;
       }()),
       13, true, false},
  };
  for (auto& c : cases) {
    SCOPED_TRACE(c.what);
    mem::MemoryPlatform m;
    m.processes.AddScript(L"C:\\App\\unins.exe", c.script);
    TSoftList list;
    list.push_back(std::make_unique<TSoftInfo>());
    list[0]->Name = L"App";
    list[0]->UninstallString = L"C:\\App\\unins.exe";
    std::atomic<bool> stop{true};  // a stop left from an earlier run is cleared
    std::vector<std::wstring> captions;
    TUninstallRunner runner(m.Get(), stop, [&](const std::wstring& s) { captions.push_back(s); },
                            {});
    const TUninstallRun run = runner.RunUninstaller(list, 0, L"Standard Uninstall");
    EXPECT_EQ(run.name, L"App");
    EXPECT_EQ(run.started, c.started);
    EXPECT_EQ(run.waitAbandoned, c.abandoned);
    const auto queries = std::count_if(m.processes.events.begin(), m.processes.events.end(),
                                       [](const auto& e) { return e.starts_with(L"query"); });
    EXPECT_EQ(static_cast<std::size_t>(queries), c.queries);
    EXPECT_EQ(captions.size(), c.queries == 0 ? 0 : c.queries - 1);
    // One to five dots, the next one every ten passes.
    if (c.queries == 13) {
      EXPECT_EQ(captions.back(), L"Standard Uninstall App..");
    }
  }
}

TEST(UninstallRunnerTest, AddOnIsRemovedByItsManifestAndNothingRuns) {
  const std::wstring rdf = L"C:\\Users\\test\\AppData\\Roaming\\Fox\\ext\\Install.RDF";
  for (bool deleteFails : {false, true}) {
    mem::MemoryPlatform m;
    m.files.AddFile(rdf, "<RDF/>");
    m.faults.Set(mem::Fault::FileDelete, deleteFails);
    TSoftList list;
    list.push_back(std::make_unique<TSoftInfo>());
    list[0]->Name = L"Example Toolbar (Firefox)";
    list[0]->IsToolbar = true;
    list[0]->ToolbarFile = rdf;
    list[0]->UninstallString = L"C:\\App\\unins.exe";
    std::atomic<bool> stop{false};
    TUninstallRunner runner(m.Get(), stop, {}, {});
    const TUninstallRun run = runner.RunUninstaller(list, 0, L"x");
    EXPECT_TRUE(run.addonRemoved);
    EXPECT_TRUE(run.name.empty());
    EXPECT_TRUE(m.processes.events.empty());
    EXPECT_EQ(m.files.FileExists(rdf), deleteFails);
    EXPECT_EQ(m.files.PendingRenames().size(), deleteFails ? 1u : 0u);

    EXPECT_FALSE(runner.RunUninstaller(list, 1, L"x").addonRemoved);  // outside the list
  }
}

// Counts branches; the driver's own tests check their content.
class CountingTree : public IResultsTree {
 public:
  TreeNodeId AddNode(TreeNodeId parent, const std::wstring&, int, int,
                     std::unique_ptr<TMyTreeData>) override {
    if (parent == kTreeRoot) ++branches;
    return ++nodes;
  }
  int branches = 0;
  TreeNodeId nodes = 0;
};

TEST(UninstallScanTest, ScansEachListedProgramAndStopsWhenCancelled) {
  testing_scan::ScanWorld w;
  w.Set(RegRoot::CurrentUser, L"\\Software\\Somebody\\Paths", L"Writer",
        L"C:\\Program Files\\Acme\\Writer");
  w.m.files.RemoveFile(L"C:\\Program Files\\Acme\\Writer\\writer.exe");
  w.m.files.RemoveFolder(L"C:\\Program Files\\Acme\\Writer");
  TSoftList list;
  list.push_back(std::make_unique<TSoftInfo>(w.record));
  RecordingView view;
  TUninstallSequence sequence(w.m.Get(), view, TUninstallTexts{});
  sequence.SetSoftware(&list);
  std::vector<std::wstring> jobs{L"0", L"7", L"x"};  // 7 names no program, x is no number
  sequence.SetJobs(&jobs, JobMode::Uninstall);
  TScanDriver driver(w.m.Get());
  CountingTree tree;
  EXPECT_EQ(sequence.Scan(driver, nullptr, tree, nullptr), 1);
  EXPECT_EQ(tree.branches, 1);
  EXPECT_EQ(view.events.back(), L"step 3");

  sequence.Cancel();
  CountingTree after;
  EXPECT_EQ(sequence.Scan(driver, nullptr, after, nullptr), 0);
  EXPECT_EQ(after.nodes, 0);
}

}  // namespace
}  // namespace varnel
