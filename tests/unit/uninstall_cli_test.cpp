#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/list_command.h"
#include "core/data_folder.h"
#include "base/text.h"
#include "platform/memory/memory_platform.h"
#include "uninstall/backup.h"
#include "uninstall/uninstall_log.h"

namespace varnel {
namespace {

class UninstallCliTest : public testing::Test {
 protected:
  // A program named `key` whose uninstaller removes its entry when `removes`
  // and whose entry registers the quiet form "... /S" when `quiet`.
  std::wstring Program(const std::wstring& key, bool removes, bool quiet = false) {
    const std::wstring path =
        L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\" + key;
    const std::wstring file = L"C:\\Apps\\" + key + L"\\uninst.exe", exe = L"\"" + file + L"\"";
    m.files.AddFile(file, "MZ");
    m.registry.SetString(RegRoot::LocalMachine, path, L"DisplayName", key, true);
    m.registry.SetString(RegRoot::LocalMachine, path, L"UninstallString", exe, true);
    if (quiet)
      m.registry.SetString(RegRoot::LocalMachine, path, L"QuietUninstallString", exe + L" /S",
                           true);
    mem::MemoryProcesses::Script script;
    script.polls = {{L"uninst.exe"}, {L"Au_.exe"}, {}};
    if (removes)
      script.onFinish = [this, path] { m.registry.DeleteKey(RegRoot::LocalMachine, path, true); };
    m.processes.AddScript(exe, script);
    m.processes.AddScript(exe + L" /S", script);
    return exe;
  }
  int Run(std::vector<std::wstring> args) {
    out.clear();
    err.clear();
    progress.clear();
    m.processes.events.clear();
    return cli::RunCli(m.Get(), args, out, err,
                       [this](const std::string& line) { progress += line; });
  }
  std::vector<std::wstring> Started() {
    std::vector<std::wstring> started;
    for (const auto& e : m.processes.events)
      if (e.starts_with(L"start ")) started.push_back(e.substr(6));
    return started;
  }
  mem::MemoryPlatform m;
  std::string out, err, progress;
};

TEST_F(UninstallCliTest, BadCommandLinesGetCodeTwoAndUnknownNamesRunNothing) {
  Program(L"Alpha", true);
  for (auto args : std::vector<std::vector<std::wstring>>{
           {L"uninstall"}, {L"uninstall", L"--quite", L"Alpha"}, {L"uninstall", L"--json"},
           {L"logs", L"--show"}, {L"logs", L"--json", L"--show", L"x.log"}, {L"logs", L"x"},
           {L"uninstall", L"Alpha", L"--delete"},
           {L"uninstall", L"Alpha", L"--advanced", L"--no-backup"}, {L"force"},
           {L"force", L"C:\\a.exe", L"C:\\b.exe"}, {L"force", L"C:\\a.exe", L"--advanced"}})
    EXPECT_EQ(Run(args), 2) << err;
  EXPECT_EQ(Run({L"uninstall", L"Alpha", L"No Such Program"}), 1);
  EXPECT_NE(err.find("no program \"No Such Program\""), std::string::npos) << err;
  EXPECT_TRUE(Started().empty()) << "a mistyped name stops the whole batch";
}

// Alpha's uninstaller removes its entry, Beta's leaves it, Broken's cannot
// start: the exit code is the worst outcome's.
TEST_F(UninstallCliTest, ProgramsRunInOrderAndTheRegistrySaysWhatWasRemoved) {
  const std::wstring alpha = Program(L"Alpha", true);
  const std::wstring beta = Program(L"Beta", false);
  ASSERT_EQ(Run({L"uninstall", L"beta", L"Alpha", L"--json"}), 3) << err;
  EXPECT_EQ(Started(), (std::vector<std::wstring>{beta, alpha}));
  auto json = nlohmann::json::parse(out);
  std::vector<std::string> programs;
  for (const auto& p : json["programs"]) programs.push_back(p.dump());
  EXPECT_EQ(programs, (std::vector<std::string>{
                          R"({"command":"\"C:\\Apps\\Beta\\uninst.exe\"","exitCode":0,"index":1,)"
                          R"("name":"Beta","skipped":null,"started":true,"stillListed":true})",
                          R"({"command":"\"C:\\Apps\\Alpha\\uninst.exe\"","exitCode":0,"index":0,)"
                          R"("name":"Alpha","skipped":null,"started":true,"stillListed":false})"}));
  EXPECT_TRUE(m.files.FileExists(text::FromUtf8(json["logFile"].get<std::string>())));
  EXPECT_TRUE(progress.empty()) << "JSON output is all there is";
  EXPECT_TRUE(m.restorePoints.begun.empty());
  EXPECT_FALSE(m.files.FileExists(UserDataFolder(TAppFrame(m.Get()), false) + L"\\Select.ini"))
      << "the window's saved mode is not the console's business";

  mem::MemoryProcesses::Script broken;
  broken.failsToStart = true;
  m.processes.AddScript(Program(L"Broken", true), broken);
  ASSERT_EQ(Run({L"uninstall", L"Beta", L"Broken"}), 1);
  EXPECT_NE(out.find("Beta: still listed after its uninstaller ended (exit code 0)\n"
                     "Broken: could not start"),
            std::string::npos) << out;
  EXPECT_NE(progress.find("Standard Uninstall Beta\n"), std::string::npos) << progress;
}

TEST_F(UninstallCliTest, QuietRunsTheQuietFormAndSkipsProgramsWithout) {
  const std::wstring quiet = Program(L"Quiet", true, true);
  Program(L"Plain", true);
  ASSERT_EQ(Run({L"uninstall", L"Quiet", L"--quiet", L"--restore-point", L"--json"}), 0) << err;
  EXPECT_EQ(Started(), std::vector<std::wstring>{quiet + L" /S"});
  EXPECT_EQ(m.restorePoints.begun.size(), 1u);

  ASSERT_EQ(Run({L"uninstall", L"Plain", L"--quiet", L"--json"}), 1);
  auto json = nlohmann::json::parse(out);
  EXPECT_TRUE(Started().empty());
  EXPECT_EQ(json["programs"][0]["started"], false);
  EXPECT_NE(json["programs"][0]["skipped"].get<std::string>().find("no quiet form"),
            std::string::npos);
  EXPECT_TRUE(json["logFile"].is_null()) << "nothing ran, nothing logged";
}

TEST_F(UninstallCliTest, LogsAreListedAndShownByNameOnly) {
  const std::wstring file =
      WriteUninstallLog(m.Get(), {L"[Caf\u00e9 \u4e2d]", L"Operation:Standard Uninstall", L""});
  ASSERT_FALSE(file.empty());
  m.files.AddFile(L"C:\\elsewhere\\secret.log", "secret");
  ASSERT_EQ(Run({L"logs", L"--json"}), 0);
  auto json = nlohmann::json::parse(out);
  ASSERT_EQ(json.size(), 1u);
  EXPECT_EQ(json[0]["path"], text::ToUtf8(file));
  EXPECT_GT(json[0]["size"].get<int>(), 0);
  EXPECT_EQ(json[0]["time"].get<std::string>().size(), 19u);

  ASSERT_EQ(Run({L"logs", L"--show", text::FromUtf8(json[0]["name"].get<std::string>())}), 0);
  EXPECT_NE(out.find("[Caf\xC3\xA9 \xE4\xB8\xAD]\nOperation:Standard Uninstall\n"),
            std::string::npos) << out;
  EXPECT_EQ(out.find('\r'), std::string::npos);
  EXPECT_EQ(Run({L"logs", L"--show", L"..\\..\\..\\..\\..\\..\\elsewhere\\secret.log"}), 1);
  EXPECT_TRUE(out.empty());
}

// The leftovers of an uninstalled program are printed as `scan` prints them
// and deleted through the guard; files that will not go (locked, not even
// queued) are skipped with their reason and do not fail the command.
TEST_F(UninstallCliTest, AdvancedDeleteRemovesLeftoversBackedUpAndSkipsWhatWillNotGo) {
  Program(L"Alpha", true);
  const std::wstring key = L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Alpha";
  m.registry.SetString(RegRoot::LocalMachine, key, L"InstallLocation", L"C:\\Apps\\Alpha", true);
  m.registry.SetString(RegRoot::CurrentUser, L"Software\\Alpha\\Settings", L"Folder",
                       L"C:\\Apps\\Alpha", true);
  m.files.AddFile(L"C:\\Apps\\Alpha\\data\\a.dat", "x");
  for (mem::Fault fault : {mem::Fault::FileMove, mem::Fault::FileDelete,
                           mem::Fault::FolderRemove, mem::Fault::MoveOnReboot})
    m.faults.Set(fault);
  ASSERT_EQ(Run({L"uninstall", L"Alpha", L"--advanced", L"--delete", L"--json"}), 0) << err;
  const auto json = nlohmann::json::parse(out);
  EXPECT_EQ(json["leftovers"][0]["count"], 5) << out;
  EXPECT_EQ(json["leftovers"][0]["files"][2]["path"], "C:\\Apps\\Alpha\\data\\a.dat");
  EXPECT_EQ(json["deleted"]["registry"].size(), 1u) << out;
  auto settings = m.registry.OpenKey(RegRoot::CurrentUser, L"Software\\Alpha\\Settings",
                                    RegAccess::Read, true);
  EXPECT_TRUE(settings && !settings->ValueExists(L"Folder"));
  EXPECT_TRUE(json["deleted"]["files"].empty()) << out;
  ASSERT_EQ(json["skipped"].size(), 4u) << out;
  for (const auto& skipped : json["skipped"])
    EXPECT_EQ(skipped["reason"], "could not be deleted") << out;
  EXPECT_TRUE(m.files.FileExists(L"C:\\Apps\\Alpha\\data\\a.dat"));
  ASSERT_TRUE(json["backup"].is_string()) << out;
  EXPECT_EQ(ListBackups(m.Get()).front().id, text::FromUtf8(json["backup"].get<std::string>()));
}

// force: a file in a program's folder uninstalls that program; a loose file
// is itself deleted, backed up; a file in the Windows folder is refused.
TEST_F(UninstallCliTest, ForceUninstallsTheFilesProgramOrDeletesTheFileItself) {
  Program(L"0First", false);  // the first program is never matched
  const std::wstring alpha = Program(L"Alpha", true);
  m.registry.SetString(RegRoot::LocalMachine,
                       L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Alpha",
                       L"InstallLocation", L"C:\\Apps\\Alpha\\", true);
  for (const wchar_t* file : {L"C:\\Apps\\Alpha\\alpha.exe", L"C:\\Loose\\tool.exe",
                              L"C:\\Windows\\tool.exe"})
    m.files.AddFile(file, "MZ");

  ASSERT_EQ(Run({L"force", L"C:\\Apps\\Alpha\\alpha.exe", L"--json"}), 0) << err;
  auto json = nlohmann::json::parse(out);
  EXPECT_EQ(Started(), std::vector<std::wstring>{alpha});
  EXPECT_EQ(json["programs"].size(), 1u) << out;
  EXPECT_EQ(json["programs"][0]["name"], "Alpha");
  EXPECT_TRUE(json["leftovers"].is_array()) << out;

  ASSERT_EQ(Run({L"force", L"C:\\Loose\\tool.exe", L"--json"}), 0) << err;
  json = nlohmann::json::parse(out);
  EXPECT_TRUE(Started().empty());
  EXPECT_EQ(json["forced"]["deleted"], true) << out;
  EXPECT_FALSE(m.files.FileExists(L"C:\\Loose\\tool.exe"));
  ASSERT_FALSE(ListBackups(m.Get()).empty());
  EXPECT_EQ(ListBackups(m.Get()).front().fileItems, 1);

  EXPECT_EQ(Run({L"force", L"C:\\Windows\\tool.exe"}), 1);
  EXPECT_NE(err.find("no file to start from"), std::string::npos) << err;
  EXPECT_TRUE(m.files.FileExists(L"C:\\Windows\\tool.exe"));
}

}  // namespace
}  // namespace varnel
