#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "base/date_time.h"
#include "inventory/software_info.h"
#include "platform/memory/memory_platform.h"
#include "ui/key_hints.h"
#include "ui/main_window_state.h"
#include "ui/row_compare.h"
#include "ui/row_details.h"
#include "ui/soft_commands.h"
#include "ui/software_rows.h"

namespace varnel {
namespace {

constexpr TDateTime kNow = 45500.5;  // midday

std::unique_ptr<TSoftInfo> Record(std::wstring name) {
  auto info = std::make_unique<TSoftInfo>();
  info->Name = std::move(name);
  info->InstallDate = kNow - 400;
  info->LastAccessDate = kNow - 1;
  return info;
}

std::vector<std::wstring> Names(const std::vector<SoftRow>& rows) {
  std::vector<std::wstring> names;
  for (const auto& row : rows) names.push_back(row.caption);
  return names;
}

TEST(SoftwareRows, CategoriesMapToFiltersAndFiltersKeepTheirThresholds) {
  std::vector<int> filters;
  for (int b = -1; b <= 6; ++b) filters.push_back(CategoryFilter(b));
  EXPECT_EQ(filters, (std::vector<int>{-1, 1, 2, 4, 5, 6, 3, -1}));

  SoftList list;
  list.push_back(Record(L"Plain"));
  list.push_back(Record(L"Bar"));
  list.back()->IsToolbar = true;
  list.back()->InstallDate = kNow;  // recent, but not ordinary
  list.push_back(Record(L"KB1"));
  list.back()->IsWindowsUpdate = true;
  list.push_back(Record(L"Ten days"));
  list.back()->InstallDate = kNow - 10;
  list.push_back(Record(L"Eleven days"));
  list.back()->InstallDate = kNow - 11;
  list.push_back(Record(L"Big"));
  list.back()->Size = 52428800;
  list.push_back(Record(L"Almost big"));
  list.back()->Size = 52428799;
  list.push_back(Record(L"Thirty"));
  list.back()->LastAccessDate = kNow - 30;
  list.push_back(Record(L"Thirty-one"));
  list.back()->LastAccessDate = kNow - 31;
  list.push_back(Record(L"Hidden twin"));
  list.back()->Hidden = true;
  list.back()->Size = 1LL << 40;

  using V = std::vector<std::wstring>;
  EXPECT_EQ(Names(SelectRows(list, ListFilter::Toolbars, L"", kNow)), V{L"Bar"});
  EXPECT_EQ(Names(SelectRows(list, ListFilter::WindowsUpdates, L"", kNow)), V{L"KB1"});
  EXPECT_EQ(Names(SelectRows(list, ListFilter::Recent, L"", kNow)), V{L"Ten days"});
  EXPECT_EQ(Names(SelectRows(list, ListFilter::Large, L"", kNow)), V{L"Big"});
  EXPECT_EQ(Names(SelectRows(list, ListFilter::RarelyUsed, L"", kNow)), V{L"Thirty-one"});
  EXPECT_EQ(SelectRows(list, ListFilter::Programs, L"", kNow).size(), 8u);
  EXPECT_EQ(SelectRows(list, ListFilter::All, L"", kNow).size(), 9u);
  EXPECT_TRUE(SelectRows(list, 7, L"", kNow).empty());
}

TEST(SoftwareRows, SearchIgnoresCaseAndRowsCarryTheSubItemsInOrder) {
  SoftList list;
  list.push_back(Record(L"LibreWriter Office"));
  list.push_back(Record(L"Notes"));
  list.push_back(Record(L"office tools"));
  auto& wide = *list.back();
  wide.Is64BitView = true;
  wide.SizeText = L"1.50 MB";
  wide.InstallDateText = L"3/4/2024";
  wide.Version = L"2.1";
  wide.Publisher = L"Acme";
  wide.HelpLink = L"-";
  wide.InstallLocation = L"C:\\Tools\\";
  wide.RootKey = L"HKEY_LOCAL_MACHINE";
  wide.KeyPath = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Tools";
  wide.ImageIndex = 7;

  auto rows = SelectRows(list, ListFilter::Programs, L"OFFICE", kNow);
  ASSERT_EQ(Names(rows), (std::vector<std::wstring>{L"LibreWriter Office", L"office tools(x64)"}));
  const SoftRow& row = rows[1];
  EXPECT_EQ(row.index, 2);
  EXPECT_EQ(row.image, 7);
  EXPECT_EQ(std::vector<std::wstring>(row.sub.begin(), row.sub.end()),
            (std::vector<std::wstring>{L"1.50 MB", L"3/4/2024", L"2.1", L"Acme", L"-",
                                       L"C:\\Tools\\", L"HKEY_LOCAL_MACHINE", wide.KeyPath, L"2",
                                       L"-1"}));
  EXPECT_EQ(rows[0].sub[SubItem::Is64BitView], L"0");
  EXPECT_EQ(SelectRows(list, ListFilter::Programs, L"", kNow).size(), 3u);
}

TEST(MainWindowState, SameCategoryDoesNotRefillUntilAResetAndColumnsFlipTheirOwnFlag) {
  MainWindowState state;
  EXPECT_TRUE(state.ChooseCategory(0));
  EXPECT_FALSE(state.ChooseCategory(0));
  EXPECT_TRUE(state.ChooseCategory(5));
  EXPECT_EQ(state.Filter(), ListFilter::WindowsUpdates);
  state.ResetFilter();
  EXPECT_TRUE(state.ChooseCategory(5));
  EXPECT_FALSE(state.ChooseCategory(9));
  EXPECT_EQ(state.Category(), 5);

  EXPECT_TRUE(state.Direction(1));
  EXPECT_TRUE(state.ClickColumn(1));
  EXPECT_FALSE(state.Direction(1));
  EXPECT_TRUE(state.Direction(0));
  state.ClickColumn(1);
  EXPECT_TRUE(state.Direction(1));
  EXPECT_EQ(state.SortColumn(), 1);
  EXPECT_FALSE(state.ClickColumn(3));

  EXPECT_TRUE(state.ToggleBatch());
  EXPECT_TRUE(state.BatchMode());
  EXPECT_FALSE(state.ToggleBatch());
}

TEST(SearchBox, PlaceholderComesAndGoesWithFocusAndEscapeEmpties) {
  auto enter = SearchBoxOnEnter(L"  Search software ", L"Search Software");
  EXPECT_FALSE(enter.keepText);
  EXPECT_TRUE(enter.text.empty());
  EXPECT_FALSE(enter.clearButton);
  EXPECT_EQ(enter.boxColour, 12368815u);
  EXPECT_TRUE(SearchBoxOnEnter(L"notes", L"Search Software").clearButton);

  auto exit = SearchBoxOnExit(L"   ", L"Search Software");
  EXPECT_EQ(exit.text, L"Search Software");
  EXPECT_FALSE(exit.keepText);
  EXPECT_EQ(exit.fontColour, 10987426u);
  EXPECT_TRUE(SearchBoxOnExit(L"notes", L"Search Software").keepText);

  EXPECT_FALSE(SearchBoxOnKeyUp(L"notes", 27).keepText);
  EXPECT_TRUE(SearchBoxOnKeyUp(L"n", 'N').clearButton);
  EXPECT_FALSE(SearchBoxOnKeyUp(L"", 8).clearButton);
  EXPECT_EQ(FormatCount(L"Software Name (Total:%d)", 12), L"Software Name (Total:12)");
}

TEST(KeyHints, EveryCaptionGetsItsOwnKeyAndMenuShortcutsOutliveTranslation) {
  using V = std::vector<std::wstring>;
  const struct {
    V captions, expected;
  } cases[] = {
      {{L"Uninstall", L"Batch Uninstall", L"Forced Uninstall", L"More"},
       {L"&Uninstall", L"&Batch Uninstall", L"&Forced Uninstall", L"&More"}},
      // Taken initials fall back to a later word's, then to any letter.
      {{L"Rarely Used", L"Recently Installed", L"Run"},
       {L"&Rarely Used", L"Recently &Installed", L"R&un"}},
      // A translator's own key is kept and reserved, whatever its place.
      {{L"Save", L"&Stop"}, {L"S&ave", L"&Stop"}},
      // A lone ampersand shows as itself; nothing free leaves it keyless.
      {{L"Tom & Jerry", L"T", L"?"}, {L"&Tom && Jerry", L"T", L"?"}},
  };
  for (const auto& c : cases) EXPECT_EQ(WithAccessKeys(c.captions), c.expected);

  EXPECT_EQ(KeepShortcut(L"Refresh\tF5", L"Aktualisieren"), L"Aktualisieren\tF5");
  EXPECT_EQ(KeepShortcut(L"Refresh\tF5", L"Neu laden\tStrg+R"), L"Neu laden\tStrg+R");
  EXPECT_EQ(KeepShortcut(L"Uninstall", L"Deinstallieren"), L"Deinstallieren");
}

TEST(RowCompare, SizesRankByUnitThenLengthThenText) {
  EXPECT_EQ(SizeUnitRank(L"900 Byte"), 1);
  EXPECT_EQ(SizeUnitRank(L"1.00 kb"), 10);
  EXPECT_EQ(SizeUnitRank(L"1.00 MB"), 100);
  EXPECT_EQ(SizeUnitRank(L"1.00 GB"), 1000);
  std::vector<std::wstring> sizes = {L"2.00 GB", L"10.00 MB", L"9.50 MB", L"999.00 KB",
                                     L"12 Byte", L"9.40 MB"};
  std::sort(sizes.begin(), sizes.end(),
            [](const auto& a, const auto& b) { return CompareSizeTexts(a, b) < 0; });
  EXPECT_EQ(sizes, (std::vector<std::wstring>{L"12 Byte", L"999.00 KB", L"9.40 MB", L"9.50 MB",
                                              L"10.00 MB", L"2.00 GB"}));
}

TEST(RowCompare, DatesParseInTheUserFormatAndEmptyIsSmallest) {
  mem::MemoryPlatform m;
  m.system.shortDateFormat = L"dd.MM.yyyy";
  m.system.dateSeparator = L'.';
  EXPECT_EQ(CompareDateTexts(m.system, L"02.01.2024", L"31.12.2023"), 1);
  EXPECT_EQ(CompareDateTexts(m.system, L" 02.01.2024 ", L"02.01.2024"), 0);
  EXPECT_EQ(CompareDateTexts(m.system, L"", L"01.01.2020"), -1);
  EXPECT_EQ(CompareDateTexts(m.system, L"01.01.2020", L" "), 1);
  EXPECT_EQ(CompareDateTexts(m.system, L"", L""), -1);

  SoftRow a, b;
  a.caption = L"alpha";
  b.caption = L"Beta";
  a.sub[SubItem::SizeText] = L"1.00 GB";
  b.sub[SubItem::SizeText] = L"5.00 MB";
  a.sub[SubItem::InstallDate] = L"01.01.2020";
  EXPECT_EQ(CompareRows(m.system, 0, a, b, false), -1);
  EXPECT_EQ(CompareRows(m.system, 0, a, b, true), 1);
  EXPECT_EQ(CompareRows(m.system, 1, a, b, false), 1);
  EXPECT_EQ(CompareRows(m.system, 2, a, b, false), 1);
  EXPECT_EQ(CompareRows(m.system, 2, b, a, true), 1);
}

TEST(RowDetails, LabelsShowOnlyWithTextAndDashIsNoLink) {
  EXPECT_TRUE(DetailsOf(nullptr).idlePicture);
  SoftRow row;
  row.caption = L"Notes";
  row.sub[SubItem::Version] = L"1.0";
  row.sub[SubItem::HelpLink] = L"-";
  auto d = DetailsOf(&row);
  EXPECT_FALSE(d.idlePicture);
  EXPECT_TRUE(d.showVersion);
  EXPECT_FALSE(d.showPublisher);
  EXPECT_TRUE(d.showHelpInfo);
  EXPECT_FALSE(d.helpIsLink);
  row.sub[SubItem::HelpLink] = L"https://example.org/help";
  EXPECT_TRUE(DetailsOf(&row).helpIsLink);
}

TEST(SoftCommands, MenuStateFollowsFolderAndRegistryOfTheRow) {
  mem::MemoryPlatform m;
  EXPECT_FALSE(MenuStateFor(m.Get(), nullptr).uninstall);
  SoftRow row;
  row.sub[SubItem::InstallLocation] = L"C:\\Apps\\Notes\\";
  row.sub[SubItem::RootKey] = L"HKEY_LOCAL_MACHINE";
  row.sub[SubItem::KeyPath] = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Notes";
  row.sub[SubItem::Is64BitView] = L"-1";
  auto state = MenuStateFor(m.Get(), &row);
  EXPECT_TRUE(state.uninstall);
  EXPECT_TRUE(state.searchOnline);
  EXPECT_FALSE(state.openFolder);
  EXPECT_FALSE(state.viewEntry);

  m.files.AddFolder(L"C:\\Apps\\Notes");
  // In the other view only: still no entry to view.
  m.registry.SetString(RegRoot::LocalMachine, row.sub[SubItem::KeyPath].substr(1), L"DisplayName",
                       L"Notes", false);
  state = MenuStateFor(m.Get(), &row);
  EXPECT_TRUE(state.openFolder);
  EXPECT_FALSE(state.viewEntry);
  row.sub[SubItem::Is64BitView] = L"0";
  EXPECT_TRUE(MenuStateFor(m.Get(), &row).viewEntry);
  EXPECT_EQ(RegistryKeyOf(row),
            L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Notes");
}

TEST(SoftCommands, RemoveEntryNeverTakesIndexZeroOrANonNumber) {
  EXPECT_EQ(RecordIndexOf(L"17"), 17);
  EXPECT_EQ(RecordIndexOf(L"-3"), -3);
  for (auto bad : {L"", L"x", L"1x", L"-", L"9999999999"}) EXPECT_EQ(RecordIndexOf(bad), -1) << bad;
  EXPECT_FALSE(MayRemoveEntry(0));
  EXPECT_FALSE(MayRemoveEntry(RecordIndexOf(L"abc")));
  EXPECT_TRUE(MayRemoveEntry(1));
}

TEST(SoftCommands, SearchOnlineEncodesEveryUtf8Byte) {
  EXPECT_EQ(EncodeSearchName(L"A b"), L"%41%20%62");
  EXPECT_EQ(EncodeSearchName(L"\u00c4"), L"%c3%84");
  const std::wstring p = SearchOnlineParameter(L"Ab");
  EXPECT_NE(p.find(L"search?source=hp&q=%41%62&meta=&aq=f&aqi=g10&aql=&oq=&gs_rfai="),
            std::wstring::npos);
}

TEST(SoftCommands, HelpLinkFallsBackToTheBrowserAndJobsFollowBatchMode) {
  mem::MemoryPlatform m;
  OpenHelpLink(m.Get(), L"-");
  EXPECT_TRUE(m.shell.calls.empty());
  m.shell.result = 2;
  OpenHelpLink(m.Get(), L"https://example.org");
  ASSERT_EQ(m.shell.calls.size(), 2u);
  EXPECT_EQ(m.shell.calls[1].file, L"iexplore.exe");
  EXPECT_EQ(m.shell.calls[1].parameters, L"https://example.org");

  SoftRow a, b;
  a.sub[SubItem::RecordIndex] = L"4";
  b.sub[SubItem::RecordIndex] = L"9";
  using Jobs = std::vector<std::wstring>;
  EXPECT_EQ(UninstallJobs(true, {&a, &b}, &a), (Jobs{L"4", L"9"}));
  EXPECT_EQ(UninstallJobs(false, {&a, &b}, &b), (Jobs{L"9"}));
  EXPECT_TRUE(UninstallJobs(false, {&a}, nullptr).empty());
  EXPECT_TRUE(UninstallJobs(true, {}, &a).empty());
}

class InventoryCommandsTest : public testing::Test {
 protected:
  void Entry(std::wstring_view key, std::wstring_view name) {
    const std::wstring path =
        L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\" + std::wstring(key);
    m.registry.SetString(RegRoot::LocalMachine, path, L"DisplayName", name, false);
    m.registry.SetString(RegRoot::LocalMachine, path, L"UninstallString", L"C:\\u.exe", false);
  }
  mem::MemoryPlatform m;
  GuiDispatcher dispatcher;
};

TEST_F(InventoryCommandsTest, RemoveEntryDeletesTheKeyAndRefreshRebuildsTheList) {
  Entry(L"A", L"Alpha");
  Entry(L"B", L"Beta");
  TSoftwareInfo inventory(m.Get(), dispatcher, {});
  ASSERT_EQ(inventory.Items().size(), 2u);
  EXPECT_FALSE(inventory.RemoveSoftwareEntry(2));
  EXPECT_FALSE(inventory.RemoveSoftwareEntry(-1));
  const int beta = inventory.Items()[0]->Name == L"Beta" ? 0 : 1;
  EXPECT_TRUE(inventory.RemoveSoftwareEntry(beta));
  inventory.RefreshInventory();
  ASSERT_EQ(inventory.Items().size(), 1u);
  EXPECT_EQ(inventory.Items()[0]->Name, L"Alpha");
  inventory.Analysis().WaitForPass();

  m.faults.Set(mem::Fault::RegDeleteKey);
  EXPECT_FALSE(inventory.RemoveSoftwareEntry(0));
}

}  // namespace
}  // namespace varnel
