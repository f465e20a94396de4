#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/list_command.h"
#include "cli/scan_command.h"
#include "base/text.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

class ScanCommandTest : public testing::Test {
 protected:
  ScanCommandTest() {
    m.registry.SetString(RegRoot::CurrentUser, L"Software\\Acme\\Paths", L"Writer",
                         L"C:\\Apps\\Writer", true);
    m.files.AddFile(L"C:\\Apps\\Writer\\w.exe", "MZ");
  }
  int Run(std::vector<std::wstring> args) {
    out.clear();
    err.clear();
    return cli::RunCli(m.Get(), args, out, err);
  }
  void SaveRecord(const std::string& json) {
    m.files.AddFile(L"C:\\saved.json", json);
  }
  mem::MemoryPlatform m;
  std::string out, err;
};

TEST_F(ScanCommandTest, BadCommandLinesGetCodeTwoAndUnknownProgramsCodeOne) {
  for (auto args : std::vector<std::vector<std::wstring>>{
           {L"scan"}, {L"scan", L"a", L"b"}, {L"scan", L"a", L"--record"}, {L"scan", L"--jsn", L"a"}})
    EXPECT_EQ(Run(args), 2) << err;
  EXPECT_EQ(Run({L"scan", L"Nothing Installed"}), 1);
  EXPECT_NE(err.find("no program \"Nothing Installed\""), std::string::npos);
  EXPECT_EQ(Run({L"scan", L"--record", L"C:\\missing.json"}), 1);
  SaveRecord("{not json");
  EXPECT_EQ(Run({L"scan", L"--record", L"C:\\saved.json"}), 1);
}

TEST_F(ScanCommandTest, ASavedRecordIsScannedAndPrintedAsJson) {
  SaveRecord(R"([{"index": 4, "name": "Other", "installLocation": "C:\\Apps\\Other"},
                 {"index": 7, "name": "Writer", "publisher": "Acme",
                  "installLocation": "C:\\Apps\\Writer", "is64BitView": true}])");
  ASSERT_EQ(Run({L"scan", L"writer", L"--record", L"C:\\saved.json", L"--json"}), 0) << err;
  auto json = nlohmann::json::parse(out);
  EXPECT_EQ(json["program"], "Writer");
  EXPECT_EQ(json["count"], 3);
  ASSERT_EQ(json["registry"].size(), 1u);
  EXPECT_EQ(json["registry"][0]["root"], "HKEY_CURRENT_USER");
  EXPECT_EQ(json["registry"][0]["key"], "\\Software\\Acme\\Paths");
  EXPECT_EQ(json["registry"][0]["value"], "Writer");
  EXPECT_EQ(json["registry"][0]["data"], "C:\\Apps\\Writer");
  EXPECT_EQ(json["registry"][0]["is64BitView"], true);
  EXPECT_EQ(json["registry"][0]["text"],
            "HKEY_CURRENT_USER\\\\Software\\Acme\\Paths | Writer - C:\\Apps\\Writer");
  EXPECT_EQ(json["files"], nlohmann::json::parse(R"([
      {"path": "C:\\Apps\\Writer", "kind": "folder"},
      {"path": "C:\\Apps\\Writer\\w.exe", "kind": "file"}])"));

  // By the index it was saved with, never by its place in the array, and as text.
  ASSERT_EQ(Run({L"scan", L"7", L"--record", L"C:\\saved.json"}), 0) << err;
  EXPECT_EQ(out.substr(0, out.find('\n')), "Writer: 3 leftovers");
  EXPECT_EQ(Run({L"scan", L"1", L"--record", L"C:\\saved.json"}), 1);
}

TEST_F(ScanCommandTest, ANameWinsOverAnIndex) {
  SoftList list;
  for (const wchar_t* name : {L"Zero", L"2", L"One", L"Hidden"}) {
    list.push_back(std::make_unique<TSoftInfo>());
    list.back()->Name = name;
  }
  list[3]->Hidden = true;
  EXPECT_EQ(cli::FindProgram(list, L"one"), 2);
  EXPECT_EQ(cli::FindProgram(list, L"2"), 1);
  EXPECT_EQ(cli::FindProgram(list, L"3"), 3);  // hidden records are still addressable by index
  EXPECT_EQ(cli::FindProgram(list, L"0"), 0);
  EXPECT_EQ(cli::FindProgram(list, L"Hidden"), -1);
  EXPECT_EQ(cli::FindProgram(list, L"9"), -1);
  EXPECT_EQ(cli::FindProgram(list, L"99999999999"), -1);
}

}  // namespace
}  // namespace varnel
