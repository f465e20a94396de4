#include <gtest/gtest.h>

#include <set>

#include "base/text.h"
#include "base/text_file.h"
#include "platform/memory/memory_platform.h"
#include "ui/error_log.h"
#include "ui/language_catalog.h"
#include "ui/list_export.h"
#include "ui/restore_launcher.h"
#include "ui/right_menu.h"

namespace varnel {
namespace {

std::wstring ReadAll(mem::MemoryPlatform& m, std::wstring_view path) {
  std::wstring text;
  ReadTextFile(m.Get(), path, text);
  return text;
}

TEST(ListExport, HeaderAndBlocksInListOrderWithoutHiddenRecords) {
  SoftList list;
  auto add = [&](std::wstring name, bool hidden) {
    auto info = std::make_unique<TSoftInfo>();
    info->Name = std::move(name);
    info->Version = L"1.0";
    info->Publisher = L"-";
    info->InstallDateText = L"1/2/2024";
    info->SizeText = L"3.00 MB";
    info->HelpLink = L"-";
    info->RootKey = L"HKEY_CURRENT_USER";
    info->KeyPath = L"\\Software\\X";
    info->UninstallString = L"C:\\u.exe /S";
    info->Hidden = hidden;
    list.push_back(std::move(info));
  };
  add(L"Zed", false);
  add(L"Twin", true);
  add(L"Alpha", false);
  mem::MemoryPlatform m;
  TLanguage none(m.Get(), L"Uninstaller", L"C:\\Nowhere");
  const ExportLabels labels = LoadExportLabels(none);
  LocalDateTime t{2024, 3, 7, 9, 5, 4, 0};
  const std::wstring text = ExportListText(list, labels, L"1.2.3.4", L"Windows 8", t);
  const std::wstring block =
      L"Version: 1.0\r\nPublisher: -\r\nInstall Time: 1/2/2024\r\nSize: 3.00 MB\r\n"
      L"Help info: -\r\nRegistry Key: HKEY_CURRENT_USER\\Software\\X\r\n"
      L"Uninstall Command: C:\\u.exe /S\r\n----------------------------------------------\r\n\r\n";
  EXPECT_EQ(text, L"====================================\r\nSoftware List\r\n"
                  L"Application Version:1.2.3.4\r\nWindows 8\r\nExported Time:03-07-2024 09:05:04\r\n"
                  L"====================================\r\n\r\n"
                  L"Software Name: Zed\r\n" + block + L"Software Name: Alpha\r\n" + block);

  EXPECT_EQ(ExportFileName(L"C:\\out\\list"), L"C:\\out\\list.txt");
  EXPECT_EQ(ExportFileName(L"C:\\out\\LIST.TXT"), L"C:\\out\\LIST.TXT");
  EXPECT_EQ(ExportFileName(L"C:\\out\\my.txt.bak"), L"C:\\out\\my.txt.bak");
}

TEST(ErrorLog, TwoReportsAppendEightLinesEachAndFileErrorsAreSwallowed) {
  mem::MemoryPlatform m;
  m.system.versionResources[text::Upper(m.system.modulePath)] = {
      std::make_pair(std::uint16_t{0x409}, std::uint16_t{1200}),
      {{L"\\StringFileInfo\\040904B0\\FileVersion", L"0.5.0.0"}}};
  m.files.AddFolder(L"C:\\Program Files\\Varnel");
  ASSERT_TRUE(AppendErrorReport(m.Get(), L"std::runtime_error", L"first"));
  ASSERT_TRUE(AppendErrorReport(m.Get(), L"varnel::EFileSave", L"second"));
  const auto text = ReadAll(m, L"C:\\Program Files\\Varnel\\Error_Log.txt");
  const auto lines = SplitLines(text);
  ASSERT_EQ(lines.size(), 16u);
  EXPECT_EQ(lines[2], L"Version=0.5.0.0");
  EXPECT_EQ(lines[6], L"Error Message=first");
  EXPECT_EQ(lines[14], L"Error Message=second");

  m.faults.Set(mem::Fault::FileWrite);
  EXPECT_FALSE(AppendErrorReport(m.Get(), L"x", L"y"));
}

TEST(RestoreLauncher, KnownSystemsStartTheToolOthersWarn) {
  mem::MemoryPlatform m;
  EXPECT_FALSE(LaunchRestoreTool(m.Get()));  // Windows 10 is named "Windows 8"
  EXPECT_TRUE(m.shell.calls.empty());
  EXPECT_EQ(m.system.redirectionDisabledDepth, 0);
  m.system.osVersion = OsVersion{6, 1, 7601, 2, 1, 9};
  EXPECT_TRUE(LaunchRestoreTool(m.Get()));
  ASSERT_EQ(m.shell.calls.size(), 1u);
  EXPECT_TRUE(text::EndsWithText(m.shell.calls[0].file, L"\\rstrui.exe"));
  EXPECT_EQ(m.system.redirectionDisabledDepth, 0);
}

class RightMenuTest : public testing::Test {
 protected:
  std::optional<std::wstring> Serve(std::vector<std::wstring> args) {
    return ServeRightMenu(m.Get(), args);
  }
  mem::MemoryPlatform m;
  const std::wstring handOver = L"C:\\Temp\\handover.txt";
};

TEST_F(RightMenuTest, TheFileOnTheFirstLineIsDeletedAndTheHandOverFileStays) {
  m.files.AddFile(L"C:\\Apps\\tool.exe", "MZ");
  m.files.AddFile(handOver, "C:\\Apps\\tool.exe\r\nignored\r\n");
  EXPECT_FALSE(Serve({L"/RIGHTMENU", handOver}));
  EXPECT_FALSE(m.files.FileExists(L"C:\\Apps\\tool.exe"));
  EXPECT_TRUE(m.files.FileExists(handOver));

  EXPECT_FALSE(Serve({L"/rightmenu"}));
  EXPECT_FALSE(Serve({L"/rightmenu", L"C:\\Temp\\missing.txt"}));
  EXPECT_FALSE(Serve({L"/other", handOver}));
}

TEST_F(RightMenuTest, AnUndeletableFileIsQueuedForRestartAndOpened) {
  m.files.AddFile(L"C:\\Apps\\busy.exe", "MZ");
  m.files.AddFile(handOver, "C:\\Apps\\busy.exe");
  m.faults.Set(mem::Fault::FileDelete);
  auto opened = Serve({L"/rightmenu", handOver});
  ASSERT_TRUE(opened);
  EXPECT_EQ(*opened, L"C:\\Apps\\busy.exe");
  ASSERT_EQ(m.files.PendingRenames().size(), 1u);
  EXPECT_TRUE(text::SameText(m.files.PendingRenames()[0].first, L"C:\\Apps\\busy.exe"));
  EXPECT_EQ(m.files.PendingRenames()[0].second, L"");
}

TEST_F(RightMenuTest, AnEmptyHandOverFileDeletesItself) {
  m.files.AddFile(handOver, "");
  EXPECT_FALSE(Serve({L"/rightmenu", handOver}));
  EXPECT_FALSE(m.files.FileExists(handOver));
  EXPECT_FALSE(ForcedUninstallTarget(m.Get(), L"C:\\Apps\\gone.lnk"));
  m.files.AddFile(L"C:\\Apps\\here.exe", "MZ");
  EXPECT_EQ(ForcedUninstallTarget(m.Get(), L"C:\\Apps\\here.exe"), L"C:\\Apps\\here.exe");
}

TEST(LanguageCatalog, FilesCoverEveryKeyOnceAndGermanTranslatesAll) {
  mem::MemoryPlatform m;
  const std::wstring folder = L"C:\\Program Files\\Varnel\\Toolbox_Language";
  m.files.AddFolder(folder);
  WriteTextFile(m.files, folder + L"\\English.lng", LanguageFileText(CatalogLanguage::English));
  WriteTextFile(m.files, folder + L"\\German.lng", LanguageFileText(CatalogLanguage::German));
  TLanguage language(m.Get(), L"Uninstaller", folder);
  ASSERT_EQ(language.Files.size(), 2u);
  std::set<std::wstring> names(language.DisplayNames.begin(), language.DisplayNames.end());
  EXPECT_EQ(names, (std::set<std::wstring>{L"Deutsch", L"English"}));

  int texts = 0;
  for (const bool german : {false, true}) {
    ASSERT_TRUE(language.SetLanguage(german ? L"German" : L"English"));
    for (const CatalogSection& section : LanguageCatalog()) {
      const std::wstring name = L"Uninstaller_" + std::wstring(section.name);
      std::set<std::wstring> keys;
      for (const CatalogText& entry : section.texts) {
        EXPECT_TRUE(keys.insert(text::Upper(entry.key)).second) << text::ToUtf8(name + L" " + std::wstring(entry.key));
        EXPECT_FALSE(entry.german.empty()) << text::ToUtf8(entry.key);
        EXPECT_EQ(language.ReadString(name, entry.key, L"?"),
                  text::Trim(german ? entry.german : entry.english));
        EXPECT_EQ(DefaultText(name, entry.key), entry.english);
        ++texts;
      }
    }
  }
  EXPECT_GT(texts, 100);
  EXPECT_EQ(DefaultText(L"UninstallForm_Main_M", L"M_Items"), L"");
}

}  // namespace
}  // namespace varnel
