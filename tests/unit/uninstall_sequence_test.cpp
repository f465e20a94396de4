#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "base/text_file.h"
#include "leftovers/scan_driver.h"
#include "platform/memory/memory_platform.h"
#include "scan_world.h"
#include "uninstall/backup.h"
#include "uninstall/uninstall_sequence.h"

namespace varnel {
namespace {

using Script = mem::MemoryProcesses::Script;
using Polls = std::vector<std::vector<std::wstring>>;
using Lines = std::vector<std::wstring>;

Script Polled(Polls polls) {
  Script script;
  script.polls = std::move(polls);
  return script;
}
// The workers pause briefly, so that the wait loops still turn.
UninstallSequence::Options Quick(bool restorePoint) {
  UninstallSequence::Options options;
  options.restorePoint = restorePoint;
  options.workerDelayMs = 20;
  return options;
}

// The window as a list of what was asked of it. A caption that only adds dots
// to the line's last recorded text is an animation frame and is not listed.
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
    if (bare == recorded[line]) return;
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

  Lines events;
  std::map<StepLine, std::wstring> captions, recorded;
  bool advanced = false;
  std::function<void()> onMessages;
};

// A machine with programs Alpha (0) and Beta (1), a fixed clock, and the
// sequence over a recording view.
struct World {
  World() {
    m.system.now = *m.system.FromLocalTime({2013, 5, 14, 10, 21, 7, 0});
    m.system.shortDateFormat = L"dd.MM.yyyy";
    m.system.longTimeFormat = L"HH:mm:ss";
    for (const wchar_t* name : {L"Alpha", L"Beta"}) {
      list.push_back(std::make_unique<TSoftInfo>());
      list.back()->Name = name;
      list.back()->UninstallString = L"C:\\" + std::wstring(name) + L"\\unins.exe";
    }
  }
  UninstallSequence& Run(Lines jobs, int mode, UninstallSequence::Options options) {
    sequence = std::make_unique<UninstallSequence>(m.Get(), view, UninstallTexts{}, options);
    sequence->SetSoftware(&list);
    sequence->SetJobs(&jobs, mode);
    sequence->Prepare();
    sequence->Run();
    return *sequence;
  }
  // The day's log after its header, or nullopt when there is none.
  std::optional<Lines> LogBody() {
    std::wstring text;
    if (!ReadTextFile(m.Get(),
                      L"C:\\Users\\test\\AppData\\Roaming\\Varnel\\Varnel Uninstaller\\Log\\"
                      L"2013-05-14.log",
                      text))
      return std::nullopt;
    const auto split = SplitLines(text);
    Lines lines(split.begin(), split.end());
    if (lines.size() < 7) return std::nullopt;
    return Lines(lines.begin() + 7, lines.end());
  }
  Lines Started() const {
    Lines out;
    for (const auto& e : m.processes.events)
      if (e.starts_with(L"start ")) out.push_back(e.substr(6));
    return out;
  }
  static Lines Block(const std::wstring& name, const std::wstring& operation) {
    return {L"[" + name + L"]", L"Operation:" + operation, L"Date:14.05.2013 10:21:07", L""};
  }

  mem::MemoryPlatform m;
  SoftList list;
  RecordingView view;
  std::unique_ptr<UninstallSequence> sequence;
};

// The mode is read when the uninstallers are done, not when the window opens.
TEST(UninstallSequenceTest, WalksTheStepsAndEndsAsTheModeChosenAtTheEndSays) {
  struct Case {
    bool switchToAdvanced, restorePoint;
    Lines tail;
  } cases[] = {
      {false, true,
       {L"step -1", L"caption 0 Creating System Restore Point",
        L"caption 1 Creating a full registry backup", L"caption 2 Standard Uninstall", L"step 0",
        L"caption 0 Creating System Restore Point Finished.",
        L"caption 1 Creating a Full Registry Backup Finished.", L"step 1",
        L"caption 2 Uninstall Finished.", L"hide marker", L"message Uninstall Finished.",
        L"close"}},
      {true, false, {L"caption 2 Uninstall Finished.", L"hide marker", L"step 2", L"enable scan"}},
  };
  for (const Case& c : cases) {
    World w;
    if (c.switchToAdvanced) w.view.onMessages = [&w] { w.view.advanced = true; };
    w.Run({L"0"}, JobMode::Uninstall, Quick(c.restorePoint));
    ASSERT_GE(w.view.events.size(), c.tail.size());
    EXPECT_EQ(Lines(w.view.events.end() - c.tail.size(), w.view.events.end()), c.tail);
    EXPECT_EQ(w.m.restorePoints.begun.size(), c.restorePoint ? 1u : 0u);
    EXPECT_EQ(w.Started(), Lines{L"C:\\Alpha\\unins.exe"});
    EXPECT_EQ(w.LogBody(), World::Block(L"Alpha", L"Standard Uninstall"));
    EXPECT_EQ(LoadModeChoice(w.m.Get()), c.switchToAdvanced);
  }
}

TEST(UninstallSequenceTest, CancelSkipsWhatIsLeftWritesNoLogAndCloses) {
  for (bool whileRunning : {false, true}) {
    World w;
    // Before the uninstall step, or once Alpha's never-ending uninstaller runs.
    w.m.processes.AddScript(L"C:\\Alpha\\unins.exe", Polled({{L"unins.exe"}}));
    w.view.onMessages = [&w, whileRunning] {
      if (!whileRunning || !w.m.processes.events.empty()) w.sequence->Cancel();
    };
    UninstallSequence& s = w.Run({L"0", L"1"}, JobMode::Uninstall, Quick(true));
    EXPECT_EQ(w.Started(), whileRunning ? Lines{L"C:\\Alpha\\unins.exe"} : Lines{});
    EXPECT_EQ(std::count(w.view.events.begin(), w.view.events.end(), L"step 1"), whileRunning);
    ASSERT_EQ(s.Runs().size(), whileRunning ? 1u : 0u);
    EXPECT_TRUE(!whileRunning || s.Runs()[0].waitAbandoned);
    EXPECT_FALSE(w.LogBody());
    EXPECT_FALSE(LoadModeChoice(w.m.Get())) << "no choice saved reads as Standard";
    EXPECT_EQ(w.view.events.back(), L"close");
  }
}

// Beta's command comes from the caller (the console tool's quiet form), with
// its macros expanded; entries that are no index are skipped.
TEST(UninstallSequenceTest, ProgramsRunOneAfterAnotherAndLogInJobOrder) {
  World w;
  const std::wstring msi = L"C:\\Windows\\system32\\msiexec.exe /x {1} /qn";
  w.m.processes.AddScript(L"C:\\Alpha\\unins.exe", Polled({{L"unins.exe"}, {L"Au_.exe"}, {}}));
  w.m.processes.AddScript(msi, Polled({{L"msiexec.exe"}, {}}));
  UninstallSequence::Options options = Quick(false);
  options.commandFor = [](const TSoftInfo& info) {
    return info.Name == L"Beta" ? L"%SysDir%\\msiexec.exe /x {1} /qn" : L"";
  };
  w.Run({L"0", L"not a number", L"1"}, JobMode::Uninstall, options);
  Lines order;
  for (const auto& e : w.m.processes.events)
    if (!e.starts_with(L"query") || order.empty() || order.back() != e) order.push_back(e);
  EXPECT_EQ(order, (Lines{L"start C:\\Alpha\\unins.exe", L"query C:\\Alpha\\unins.exe",
                          L"end C:\\Alpha\\unins.exe", L"start " + msi, L"query " + msi,
                          L"end " + msi}));
  Lines expected = World::Block(L"Alpha", L"Standard Uninstall");
  for (auto& line : World::Block(L"Beta", L"Standard Uninstall")) expected.push_back(line);
  EXPECT_EQ(w.LogBody(), expected);
  // The wait animated the step line with the program's name.
  EXPECT_NE(std::find(w.view.events.begin(), w.view.events.end(),
                      L"caption 2 Standard Uninstall Alpha."),
            w.view.events.end());
}

// Forced mode hands its file to the deletion guard: backed up and gone, or
// queued for the restart when locked, never a file the guard protects (the
// Windows folder, another listed program's folder); other modes run nothing,
// yet the day's log is begun.
TEST(UninstallSequenceTest, ForcedModeDeletesTheFileThroughTheGuardAndOtherModesRunNothing) {
  const std::wstring loose = L"C:\\Tools\\stuck.exe";
  const std::wstring system = L"C:\\Windows\\System32\\stuck.exe";
  const std::wstring betas = L"C:\\Beta\\bin\\stuck.exe";
  const Lines forced = World::Block(L"stuck.exe", L"Forced Uninstall");
  struct Case {
    std::wstring file;
    int mode;
    bool exists, locked, existsAfter, backedUp;
    std::size_t queued;
    Lines body;
  } cases[] = {
      {loose, JobMode::Forced, true, false, false, true, 0, forced},
      {loose, JobMode::Forced, true, true, true, true, 1, forced},
      {loose, JobMode::Forced, false, false, false, false, 0, forced},
      {system, JobMode::Forced, true, false, true, false, 0, forced},
      {betas, JobMode::Forced, true, false, true, false, 0, forced},
      {loose, JobMode::Forced + 1, true, false, true, false, 0, {}},
  };
  for (const Case& c : cases) {
    World w;
    w.list[1]->InstallLocation = L"C:\\Beta";
    if (c.exists) w.m.files.AddFile(c.file, "MZ");
    w.m.faults.Set(mem::Fault::FileDelete, c.locked);
    w.m.faults.Set(mem::Fault::FileMove, c.locked);
    const UninstallSequence& run = w.Run({c.file}, c.mode, Quick(false));
    EXPECT_EQ(w.m.files.FileExists(c.file), c.existsAfter) << c.file;
    EXPECT_EQ(w.m.files.PendingRenames().size(), c.queued) << c.file;
    EXPECT_EQ(w.LogBody(), c.body);
    EXPECT_TRUE(w.m.processes.events.empty());
    const Backup* backup = run.OwnBackup();
    EXPECT_EQ(backup && !backup->Items().empty(), c.backedUp) << c.file;
    const bool refused = run.ForcedOutcome() && run.ForcedOutcome()->refused != Refusal::None;
    EXPECT_EQ(refused, c.file != loose && c.exists && c.mode == JobMode::Forced) << c.file;
  }
}

// One run's wait against what the job holds at each query.
TEST(UninstallRunnerTest, WaitEndsWhenOnlyBrowsersAreLeftOrTheJobCannotBeAsked) {
  Polls longWait(12, {L"unins.exe"});
  longWait.emplace_back();
  Script failing10, failingAll, notStarting;
  failing10.failingQueries = 10;
  failingAll.failingQueries = -1;
  notStarting.failsToStart = true;
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
      {"ten failures then empty", failing10, 11, true, false},
      {"every query fails", failingAll, 11, true, true},
      {"cannot start", notStarting, 0, false, false},
      {"long wait", Polled(longWait), 13, true, false},
  };
  for (auto& c : cases) {
    SCOPED_TRACE(c.what);
    World w;
    w.m.processes.AddScript(L"C:\\Alpha\\unins.exe", c.script);
    std::atomic<bool> stop{true};  // a stop left from an earlier run is cleared
    Lines captions;
    UninstallRunner runner(w.m.Get(), stop, [&](const std::wstring& s) { captions.push_back(s); },
                            {});
    const UninstallRun run = runner.RunUninstaller(w.list, 0, L"Standard Uninstall");
    EXPECT_EQ(run.started, c.started);
    EXPECT_EQ(run.waitAbandoned, c.abandoned);
    const auto queries = std::count_if(w.m.processes.events.begin(), w.m.processes.events.end(),
                                       [](const auto& e) { return e.starts_with(L"query"); });
    EXPECT_EQ(static_cast<std::size_t>(queries), c.queries);
    EXPECT_EQ(captions.size(), c.queries == 0 ? 0 : c.queries - 1);
    // One to five dots, the next one every ten passes.
    if (c.queries == 13) {
      EXPECT_EQ(captions.back(), L"Standard Uninstall Alpha..");
    }
  }
}

TEST(UninstallRunnerTest, AddOnIsRemovedByItsManifestAndNothingRuns) {
  const std::wstring rdf = L"C:\\Users\\test\\AppData\\Roaming\\Fox\\ext\\Install.RDF";
  for (bool deleteFails : {false, true}) {
    World w;
    w.m.files.AddFile(rdf, "<RDF/>");
    // A locked manifest neither moves into the backup nor goes.
    w.m.faults.Set(mem::Fault::FileDelete, deleteFails);
    w.m.faults.Set(mem::Fault::FileMove, deleteFails);
    w.list[0]->IsToolbar = true;
    w.list[0]->ToolbarFile = rdf;
    std::atomic<bool> stop{false};
    UninstallRunner runner(w.m.Get(), stop, {}, {});
    EXPECT_TRUE(runner.RunUninstaller(w.list, 0, L"x").addonRemoved);
    EXPECT_TRUE(w.m.processes.events.empty());
    EXPECT_EQ(w.m.files.FileExists(rdf), deleteFails);
    EXPECT_EQ(w.m.files.PendingRenames().size(), deleteFails ? 1u : 0u);
    EXPECT_FALSE(runner.RunUninstaller(w.list, 2, L"x").addonRemoved);  // outside the list
  }
}

// Counts branches and keeps the captions; the driver's own tests check the rest.
class CountingTree : public IResultsTree {
 public:
  TreeNodeId AddNode(TreeNodeId parent, const std::wstring& caption, int, int,
                     std::unique_ptr<TMyTreeData>) override {
    if (parent == kTreeRoot) ++branches;
    captions.push_back(caption);
    return ++nodes;
  }
  int branches = 0;
  TreeNodeId nodes = 0;
  std::vector<std::wstring> captions;
};

TEST(UninstallScanTest, ScansEachListedProgramAndStopsWhenCancelled) {
  testing_scan::ScanWorld w;
  w.Set(RegRoot::CurrentUser, L"\\Software\\Somebody\\Paths", L"Writer",
        L"C:\\Program Files\\Acme\\Writer");
  w.m.files.RemoveFile(L"C:\\Program Files\\Acme\\Writer\\writer.exe");
  w.m.files.RemoveFolder(L"C:\\Program Files\\Acme\\Writer");
  SoftList list;
  list.push_back(std::make_unique<TSoftInfo>(w.record));
  RecordingView view;
  UninstallSequence sequence(w.m.Get(), view, UninstallTexts{});
  sequence.SetSoftware(&list);
  Lines jobs{L"0", L"7", L"x"};  // 7 names no program, x is no number
  sequence.SetJobs(&jobs, JobMode::Uninstall);
  ScanDriver driver(w.m.Get(), w.filter);
  CountingTree tree;
  EXPECT_EQ(sequence.Scan(driver, nullptr, tree, nullptr), 1);
  EXPECT_EQ(tree.branches, 1);
  EXPECT_EQ(view.events.back(), L"step 3");

  sequence.Cancel();
  CountingTree after;
  EXPECT_EQ(sequence.Scan(driver, nullptr, after, nullptr), 0);
  EXPECT_EQ(after.nodes, 0);
}

// A plug-in installed into its host's folder and uninstalled with it: the
// host's folder holds the plug-in's, yet neither protects the other, and the
// folders the guard keeps are those of the programs outside the batch alone
// (a hidden twin of a job is no other program).
TEST(UninstallScanTest, TheProgramsOfOneBatchDoNotProtectOneAnothersFolders) {
  testing_scan::ScanWorld w;
  const std::wstring host = w.record.InstallLocation;
  w.m.files.AddFile(host + L"\\Plugin\\plugin.dll", "MZ");
  w.m.files.AddFile(L"C:\\Program Files\\Other\\other.exe", "MZ");
  SoftList list;
  for (int i = 0; i < 4; ++i) list.push_back(std::make_unique<TSoftInfo>(w.record));
  list[1]->Name = L"Acme Writer Plugin";
  list[1]->InstallLocation = host + L"\\Plugin";
  list[2]->Hidden = true;
  list[3]->Name = L"Other";
  list[3]->InstallLocation = L"C:\\Program Files\\Other";
  RecordingView view;
  UninstallSequence sequence(w.m.Get(), view, UninstallTexts{});
  sequence.SetSoftware(&list);
  Lines jobs{L"0", L"1"};
  sequence.SetJobs(&jobs, JobMode::Uninstall);
  ScanDriver driver(w.m.Get(), w.filter);
  CountingTree tree;
  EXPECT_EQ(sequence.Scan(driver, nullptr, tree, nullptr), 2);
  EXPECT_NE(std::find(tree.captions.begin(), tree.captions.end(), host), tree.captions.end());
  EXPECT_EQ(sequence.OtherProgramFolders(), std::vector<std::wstring>{list[3]->InstallLocation});
}

}  // namespace
}  // namespace varnel
