#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/list_command.h"
#include "base/text.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

constexpr std::wstring_view kUninstall = L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall";

class ListCommandTest : public testing::Test {
 protected:
  void Entry(RegRoot root, std::wstring_view key, std::wstring_view name, bool use64) {
    std::wstring path = std::wstring(kUninstall) + L"\\" + std::wstring(key);
    m.registry.SetString(root, path, L"DisplayName", name, use64);
    m.registry.SetString(root, path, L"UninstallString", L"C:\\Apps\\" + std::wstring(key) + L"\\u.exe", use64);
    m.registry.SetDWord(root, path, L"EstimatedSize", 3, use64);
    m.registry.SetString(root, path, L"InstallDate", L"20240101", use64);
  }
  int Run(std::vector<std::wstring> args) {
    out.clear();
    err.clear();
    return cli::RunCli(m.Get(), args, out, err);
  }
  mem::MemoryPlatform m;
  std::string out, err;
};

TEST_F(ListCommandTest, BadCommandLinesGetTheUsageAndCodeTwo) {
  for (auto args : std::vector<std::vector<std::wstring>>{
           {}, {L"lsit"}, {L"list", L"--jsn"}, {L"list", L"json"}, {L"LIST"}}) {
    EXPECT_EQ(Run(args), 2);
    EXPECT_TRUE(out.empty());
    EXPECT_NE(err.find("usage: varnel-cli list"), std::string::npos) << err;
  }
  EXPECT_NE((Run({L"list", L"--bogus"}), err.find("--bogus")), std::string::npos);
}

TEST_F(ListCommandTest, JsonListsVisibleRecordsWithEveryField) {
  Entry(RegRoot::LocalMachine, L"Wide", L"Wide Äpp", true);
  Entry(RegRoot::LocalMachine, L"Twin", L"Twin", false);
  Entry(RegRoot::CurrentUser, L"TwinUser", L"twin", false);

  ASSERT_EQ(Run({L"list", L"--json"}), 0) << err;
  auto rows = nlohmann::json::parse(out);
  ASSERT_TRUE(rows.is_array());
  ASSERT_EQ(rows.size(), 2u);
  const auto& twin = rows[0];
  EXPECT_EQ(twin["name"], "Twin");
  EXPECT_EQ(twin["rootKey"], "HKEY_LOCAL_MACHINE");
  EXPECT_EQ(twin["keyPath"], "\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Twin");
  EXPECT_EQ(twin["is64BitView"], false);
  EXPECT_EQ(twin["size"], 3072);
  EXPECT_EQ(twin["installDate"], "1/1/2024");
  EXPECT_EQ(twin["hidden"], false);
  EXPECT_EQ(rows[1]["name"], "Wide \xC3\x84pp");
  EXPECT_EQ(rows[1]["is64BitView"], true);

  // --all adds the user twin, met in each view, with their list indexes.
  ASSERT_EQ(Run({L"list", L"--json", L"--all"}), 0);
  auto all = nlohmann::json::parse(out);
  ASSERT_EQ(all.size(), 4u);
  int hidden = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    EXPECT_EQ(all[i]["index"], i);
    hidden += all[i]["hidden"].get<bool>();
  }
  EXPECT_EQ(hidden, 2);
}

TEST_F(ListCommandTest, TextListsOneLinePerVisibleRecord) {
  Entry(RegRoot::LocalMachine, L"One", L"One", true);
  Entry(RegRoot::CurrentUser, L"Two", L"Two", false);
  ASSERT_EQ(Run({L"list"}), 0) << err;
  EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 2);
  EXPECT_NE(out.find("Two"), std::string::npos);
  EXPECT_NE(out.find("3.00 KB"), std::string::npos);
  EXPECT_NE(out.find("1/1/2024"), std::string::npos);
  EXPECT_NE(out.find("64-bit"), std::string::npos);
  EXPECT_NE(out.find("32-bit user"), std::string::npos);
}

TEST_F(ListCommandTest, LoneSurrogatesInNamesDoNotBreakTheJson) {
  std::wstring name = L"Broken ";
  name += static_cast<wchar_t>(0xD800);
  Entry(RegRoot::LocalMachine, L"Broken", name, true);
  ASSERT_EQ(Run({L"list", L"--json"}), 0) << err;
  auto rows = nlohmann::json::parse(out);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0]["name"].get<std::string>().rfind("Broken ", 0), 0u);
}

}  // namespace
}  // namespace varnel
