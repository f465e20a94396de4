#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/list_command.h"
#include "core/data_folder.h"
#include "core/text.h"
#include "platform/memory/memory_platform.h"
#include "uninstall/uninstall_log.h"

namespace varnel {
namespace {

constexpr std::wstring_view kUninstall = L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";

// A file that reads as an NSIS uninstaller: one section ending at 0x200,
// then NSIS's first header.
std::string NsisUninstaller() {
  std::string bytes(0x200, '\0');
  auto put = [&](std::size_t at, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) bytes[at + i] = static_cast<char>(v >> (8 * i));
  };
  bytes[0] = 'M';
  bytes[1] = 'Z';
  put(0x3C, 0x40);
  bytes.replace(0x40, 4, std::string("PE\0\0", 4));
  put(0x44, 0x8664u | 1u << 16);
  put(0x54, 0);
  put(0x58 + 16, 0x100);
  put(0x58 + 20, 0x100);
  std::string header(8, '\0');
  header[0] = 1;
  header.replace(4, 4, "\xEF\xBE\xAD\xDE");
  return bytes + header + "NullsoftInst" + std::string(8, '\0');
}

class UninstallCliTest : public testing::Test {
 protected:
  // A program whose uninstaller removes its own entry when `removes`.
  std::wstring Program(const std::wstring& key, const std::wstring& name, bool removes,
                       const std::string& uninstaller = "MZ") {
    const std::wstring path = std::wstring(kUninstall) + key;
    const std::wstring exe = L"C:\\Apps\\" + key + L"\\uninst.exe";
    m.registry.SetString(RegRoot::LocalMachine, path, L"DisplayName", name, true);
    m.registry.SetString(RegRoot::LocalMachine, path, L"UninstallString", L"\"" + exe + L"\"",
                         true);
    m.files.AddFile(exe, uninstaller);
    mem::MemoryProcesses::Script script;
    script.polls = {{L"uninst.exe"}, {L"Au_.exe"}, {}};
    script.exitCode = 0;
    if (removes)
      script.onFinish = [this, path] { m.registry.DeleteKey(RegRoot::LocalMachine, path, true); };
    m.processes.AddScript(L"\"" + exe + L"\"", script);
    m.processes.AddScript(L"\"" + exe + L"\" /S", script);
    return exe;
  }
  int Run(std::vector<std::wstring> args) {
    out.clear();
    err.clear();
    progress.clear();
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
  Program(L"Alpha", L"Alpha", true);
  for (auto args : std::vector<std::vector<std::wstring>>{
           {L"uninstall"}, {L"uninstall", L"--quite", L"Alpha"}, {L"uninstall", L"--json"},
           {L"logs", L"--show"}, {L"logs", L"--json", L"--show", L"x.log"}, {L"logs", L"x"}})
    EXPECT_EQ(Run(args), 2) << err;
  EXPECT_EQ(Run({L"uninstall", L"Alpha", L"No Such Program"}), 1);
  EXPECT_NE(err.find("no program \"No Such Program\""), std::string::npos) << err;
  EXPECT_TRUE(Started().empty()) << "a mistyped name stops the whole batch";
}

// Alpha's uninstaller removes its entry, Beta's leaves it: both run in the
// order given, the log holds both, and the tool says Beta is still listed.
TEST_F(UninstallCliTest, ProgramsRunInOrderAndTheRegistrySaysWhatWasRemoved) {
  const std::wstring alpha = Program(L"Alpha", L"Alpha", true);
  const std::wstring beta = Program(L"Beta", L"Beta", false);
  ASSERT_EQ(Run({L"uninstall", L"beta", L"Alpha", L"--json"}), 3) << err;
  EXPECT_EQ(Started(), (std::vector<std::wstring>{L"\"" + beta + L"\"", L"\"" + alpha + L"\""}));
  auto json = nlohmann::json::parse(out);
  ASSERT_EQ(json["programs"].size(), 2u);
  EXPECT_EQ(json["programs"][0]["name"], "Beta");
  EXPECT_EQ(json["programs"][0]["command"], text::ToUtf8(L"\"" + beta + L"\""));
  EXPECT_EQ(json["programs"][0]["started"], true);
  EXPECT_EQ(json["programs"][0]["exitCode"], 0);
  EXPECT_EQ(json["programs"][0]["stillListed"], true);
  EXPECT_EQ(json["programs"][1]["name"], "Alpha");
  EXPECT_EQ(json["programs"][1]["stillListed"], false);
  EXPECT_TRUE(progress.empty()) << "JSON output is all there is";
  EXPECT_TRUE(m.restorePoints.begun.empty());

  const std::string logFile = json["logFile"];
  std::vector<std::uint8_t> bytes;
  ASSERT_TRUE(m.files.ReadWholeFile(text::FromUtf8(logFile), bytes));
  const std::string log(bytes.begin(), bytes.end());
  EXPECT_LT(log.find("[Beta]\r\nOperation:Standard Uninstall"), log.find("[Alpha]\r\n"));
  EXPECT_FALSE(m.files.FileExists(UserDataFolder(TAppFrame(m.Get()), false) + L"\\Select.ini"))
      << "the window's saved mode is not the console's business";

  ASSERT_EQ(Run({L"uninstall", L"Beta"}), 3);
  EXPECT_NE(out.find("Beta: still listed after its uninstaller ended (exit code 0)"),
            std::string::npos) << out;
  EXPECT_NE(progress.find("Standard Uninstall Beta\n"), std::string::npos) << progress;
}

TEST_F(UninstallCliTest, QuietRunsTheQuietFormAndSkipsProgramsWithout) {
  const std::wstring nsis = Program(L"Nsis", L"Nsis", true, NsisUninstaller());
  Program(L"Plain", L"Plain", true);
  ASSERT_EQ(Run({L"uninstall", L"Nsis", L"--quiet", L"--restore-point", L"--json"}), 0) << err;
  EXPECT_EQ(Started(), std::vector<std::wstring>{L"\"" + nsis + L"\" /S"});
  EXPECT_EQ(m.restorePoints.begun.size(), 1u);

  m.processes.events.clear();
  ASSERT_EQ(Run({L"uninstall", L"Plain", L"--quiet", L"--json"}), 1);
  auto json = nlohmann::json::parse(out);
  EXPECT_TRUE(Started().empty());
  EXPECT_EQ(json["programs"][0]["started"], false);
  EXPECT_NE(json["programs"][0]["skipped"].get<std::string>().find("no quiet form"),
            std::string::npos);
  EXPECT_TRUE(json["logFile"].is_null()) << "nothing ran, nothing logged";
}

TEST_F(UninstallCliTest, AnUninstallerThatCannotStartIsAFailure) {
  const std::wstring exe = Program(L"Broken", L"Broken", true);
  mem::MemoryProcesses::Script script;
  script.failsToStart = true;
  m.processes.AddScript(L"\"" + exe + L"\"", script);
  EXPECT_EQ(Run({L"uninstall", L"Broken"}), 1);
  EXPECT_NE(out.find("Broken: could not start"), std::string::npos) << out;
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

}  // namespace
}  // namespace varnel
