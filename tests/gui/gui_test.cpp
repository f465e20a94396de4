// The program's windows driven from outside under Wine. gui_test.sh writes
// five Uninstall entries into a fresh prefix and puts the program in
// C:\varnel-tests\app\; every case starts its own instance.
#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>

#include <fstream>
#include <iterator>
#include <string>

#include "core/os_name.h"
#include "core/text.h"
#include "platform/win32/win32_platform.h"
#include "tests/gui/gui_driver.h"
#include "ui/forms/main_form_ids.h"

namespace varnel::guitest {
namespace {

namespace Id = forms::MainId;
const std::wstring kApp = L"C:\\varnel-tests\\app\\VarnelUninstaller.exe";
const std::wstring kAppDir = L"C:\\varnel-tests\\app\\";
constexpr int kVisible = 4;  // the update is only under "Windows Updates"
constexpr int kSizeColumn = 1, kDateColumn = 2;
int Sub(int subItem) { return subItem + 1; }

bool FileExists(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring ReadUtf8(const std::wstring& path) {
  HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                            OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return {};
  std::string bytes(1 << 20, '\0');
  DWORD got = 0;
  ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &got, nullptr);
  CloseHandle(file);
  bytes.resize(got);
  if (bytes.rfind("\xEF\xBB\xBF", 0) == 0) bytes.erase(0, 3);
  return text::FromUtf8(bytes);
}

class Gui : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(app.Start(kApp));
    ASSERT_TRUE(app.WaitForList(kVisible)) << "rows: " << app.RowCount();
  }
  // Every message sent before has been handled once this returns.
  void Settle() {
    SendMessageTimeoutW(app.Main(), WM_NULL, 0, 0, SMTO_NORMAL, 30000, nullptr);
  }
  void Answer(int button) {
    HWND box = app.WaitForDialog();
    ASSERT_NE(box, nullptr);
    PostMessageW(box, WM_COMMAND, button, 0);
    ASSERT_TRUE(WaitUntil([&] { return !IsWindow(box) || !IsWindowVisible(box); }));
    Settle();
  }
  void ExportTo(const std::wstring& file) {
    app.Command(Id::MenuExportList, true);
    HWND dialog = app.WaitForDialog();
    ASSERT_NE(dialog, nullptr);
    // The file-name field: a combo box (explorer style) or a plain edit.
    HWND name = GetDlgItem(dialog, 0x47C);
    if (!name) name = GetDlgItem(dialog, 0x480);
    ASSERT_NE(name, nullptr);
    SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(file.c_str()));
    PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    ASSERT_TRUE(WaitUntil([&] { return !IsWindow(dialog); }));
    Settle();
  }
  void TearDown() override {
    // The export opens its file in the editor; close it again.
    while (HWND editor = FindWindowW(L"Notepad", nullptr)) {
      DWORD pid = 0;
      GetWindowThreadProcessId(editor, &pid);
      PostMessageW(editor, WM_CLOSE, 0, 0);
      HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, pid);
      if (!process) break;
      WaitForSingleObject(process, 10000);
      CloseHandle(process);
    }
    if (app.Main()) {
      EXPECT_EQ(app.Close(), 0);
    }
  }
  Program app;
};

TEST(GuiStart, RightMenuDeletesTheNamedFileAndOpensForcedUninstallWhenItStays) {
  const std::wstring handOver = L"C:\\varnel-tests\\handover.txt";
  const std::wstring victim = L"C:\\varnel-tests\\victim.dat";
  auto write = [](const std::wstring& path, const std::string& content) {
    std::ofstream(text::ToUtf8(path).c_str(), std::ios::binary) << content;
  };
  write(victim, "x");
  write(handOver, text::ToUtf8(victim) + "\r\n");
  {
    Program app;
    ASSERT_TRUE(app.Start(kApp, L"/RIGHTMENU " + handOver));
    ASSERT_TRUE(app.WaitForList(kVisible));
    EXPECT_FALSE(FileExists(victim));
    EXPECT_TRUE(FileExists(handOver));
    HWND force = app.FindOwnWindow(L"TForceUninstall_Form");
    EXPECT_TRUE(force && !IsWindowVisible(force));
    EXPECT_EQ(app.Close(), 0);
  }
  write(victim, "x");
  HANDLE busy = CreateFileW(victim.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                            0, nullptr);
  ASSERT_NE(busy, INVALID_HANDLE_VALUE);
  Program app;
  ASSERT_TRUE(app.Start(kApp, L"/rightmenu " + handOver));
  ASSERT_TRUE(app.WaitForList(kVisible));
  HWND force = nullptr;
  EXPECT_TRUE(WaitUntil([&] {
    force = app.FindOwnWindow(L"TForceUninstall_Form");
    return force && IsWindowVisible(force);
  }));
  if (force) {
    EXPECT_EQ(WindowText(GetDlgItem(force, 102)), victim);
  }
  CloseHandle(busy);
  EXPECT_EQ(app.Close(), 0);
}

TEST_F(Gui, ListShowsTheEntriesWithTheirSubItemsInOrder) {
  const int alpha = app.RowWithSubItem(7, L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\A_Alpha");
  ASSERT_GE(alpha, 0);
  EXPECT_EQ(app.Cell(alpha, 0), L"Alpha Editor(x64)");
  const std::vector<std::wstring> expected = {
      L"58.59 MB", L"", L"2.0", L"Alpha Soft", L"https://example.org/alpha", L"",
      L"HKEY_LOCAL_MACHINE", L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\A_Alpha",
      L"", L"-1"};
  for (int s = 0; s < 10; ++s) {
    if (s == 1 || s == 5 || s == 8) continue;  // date, folder, index checked below
    EXPECT_EQ(app.Cell(alpha, Sub(s)), expected[s]) << "sub-item " << s;
  }
  EXPECT_FALSE(app.Cell(alpha, Sub(1)).empty());
  EXPECT_GT(std::stoi(app.Cell(alpha, Sub(8))), 0);

  const int beta = app.RowWithSubItem(3, L"Beta Ltd");
  ASSERT_GE(beta, 0);
  EXPECT_EQ(app.Cell(beta, 0), L"Beta Viewer");
  EXPECT_EQ(app.Cell(beta, Sub(0)), L"900.00 KB");
  EXPECT_NE(app.Cell(beta, Sub(1)).find(L"2020"), std::wstring::npos);
  EXPECT_EQ(app.Cell(beta, Sub(9)), L"0");
  const int gamma = app.RowWithSubItem(6, L"HKEY_CURRENT_USER");
  ASSERT_GE(gamma, 0);
  EXPECT_EQ(app.Cell(gamma, 0), L"Gamma Notes");
  EXPECT_EQ(app.Cell(gamma, Sub(3)), L"-");
  EXPECT_EQ(app.Cell(gamma, Sub(1)), L"");
  for (int row = 0; row < app.RowCount(); ++row) EXPECT_EQ(app.GroupOf(row), 1);
  EXPECT_EQ(app.ColumnText(0), L"Software Name (Total:4)");
  EXPECT_EQ(WindowText(app.Control(Id::BottomInfo)), L"4 Items");
}

TEST_F(Gui, EachCategoryShowsItsRecords) {
  auto show = [&](int button) {
    SendMessageW(app.Control(Id::CategoryFirst + button), BM_CLICK, 0, 0);
    Settle();
    return app.Captions();
  };
  using V = std::vector<std::wstring>;
  EXPECT_EQ(show(5), V{L"Security Update for Thing (KB123456)(x64)"});
  EXPECT_EQ(app.GroupOf(0), 3);
  EXPECT_EQ(show(1), V{});
  EXPECT_EQ(show(2), V{L"Alpha Editor(x64)"});
  EXPECT_EQ(show(3), (V{L"Delta Office Suite(x64)", L"Alpha Editor(x64)"}));
  for (const auto& name : show(4)) EXPECT_EQ(name.find(L"KB123456"), std::wstring::npos);
  EXPECT_EQ(show(0).size(), 4u);
  EXPECT_EQ(app.ColumnText(0), L"Software Name (Total:4)");
}

TEST_F(Gui, SearchFiltersByNameAndEscapeClearsIt) {
  HWND edit = app.Control(Id::SearchEdit);
  EXPECT_EQ(WindowText(edit), L"Search Software");
  SendMessageW(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"OFFice"));
  SendMessageW(edit, WM_KEYUP, 'E', 0);
  EXPECT_EQ(app.Captions(), std::vector<std::wstring>{L"Delta Office Suite(x64)"});
  EXPECT_EQ(app.ColumnText(0), L"Software Name (Total:1)");
  EXPECT_TRUE(IsWindowVisible(app.Control(Id::SearchClear)));
  SendMessageW(edit, WM_KEYUP, VK_ESCAPE, 0);
  EXPECT_EQ(WindowText(edit), L"");
  EXPECT_FALSE(IsWindowVisible(app.Control(Id::SearchClear)));
  EXPECT_EQ(app.RowCount(), kVisible);
}

TEST_F(Gui, EveryColumnSortsBothWays) {
  using V = std::vector<std::wstring>;
  const V byName = {L"Alpha Editor(x64)", L"Beta Viewer", L"Delta Office Suite(x64)",
                    L"Gamma Notes"};
  // At start the name column's flag is set: descending.
  EXPECT_EQ(app.Captions(), V(byName.rbegin(), byName.rend()));
  EXPECT_EQ(app.SortArrow(0), HDF_SORTDOWN);
  app.ClickColumn(0);
  EXPECT_EQ(app.Captions(), byName);
  EXPECT_EQ(app.SortArrow(0), HDF_SORTUP);

  const V bySize = {L"Gamma Notes", L"Beta Viewer", L"Alpha Editor(x64)",
                    L"Delta Office Suite(x64)"};
  app.ClickColumn(kSizeColumn);
  EXPECT_EQ(app.Captions(), bySize);
  EXPECT_EQ(app.SortArrow(kSizeColumn), HDF_SORTUP);
  EXPECT_EQ(app.SortArrow(0), 0);
  app.ClickColumn(kSizeColumn);
  EXPECT_EQ(app.Captions(), V(bySize.rbegin(), bySize.rend()));
  EXPECT_EQ(app.SortArrow(kSizeColumn), HDF_SORTDOWN);

  // The undated entry is lowest; Alpha was installed today.
  const V byDate = {L"Gamma Notes", L"Delta Office Suite(x64)", L"Beta Viewer",
                    L"Alpha Editor(x64)"};
  app.ClickColumn(kDateColumn);
  EXPECT_EQ(app.Captions(), byDate);
  app.ClickColumn(kDateColumn);
  EXPECT_EQ(app.Captions(), V(byDate.rbegin(), byDate.rend()));
}

TEST_F(Gui, DetailsPanelFollowsTheSelection) {
  EXPECT_TRUE(IsWindowVisible(app.Control(Id::DetailsIdle)));
  EXPECT_FALSE(IsWindowVisible(app.Control(Id::DetailsName)));
  const int alpha = app.RowWithSubItem(3, L"Alpha Soft");
  app.SelectRow(alpha);
  Settle();
  EXPECT_FALSE(IsWindowVisible(app.Control(Id::DetailsIdle)));
  EXPECT_EQ(WindowText(app.Control(Id::DetailsName)), L"Alpha Editor(x64)");
  EXPECT_EQ(WindowText(app.Control(Id::DetailsVersion)), L"2.0");
  EXPECT_EQ(WindowText(app.Control(Id::DetailsPublisher)), L"Alpha Soft");
  EXPECT_EQ(WindowText(app.Control(Id::DetailsHelp)), L"https://example.org/alpha");
  EXPECT_TRUE(IsWindowVisible(app.Control(Id::DetailsHelpTitle)));
  EXPECT_EQ(WindowText(app.Control(Id::DetailsVersionTitle)), L"Version:");
}

TEST_F(Gui, SecondStartActivatesTheFirstAndExitsWithZero) {
  ShowWindow(app.Main(), SW_HIDE);
  // The activation message with the right wParam but a wrong lParam is ignored.
  PostMessageW(app.Main(), 0x049F, 0x9B8B, 0x1234);
  Settle();
  EXPECT_FALSE(IsWindowVisible(app.Main()));
  Program second;
  ASSERT_TRUE(second.Start(kApp, L"/rightmenu C:\\nowhere.txt"));
  ASSERT_EQ(WaitForSingleObject(second.Process(), 30000), WAIT_OBJECT_0);
  DWORD code = 99;
  GetExitCodeProcess(second.Process(), &code);
  EXPECT_EQ(code, 0u);
  EXPECT_TRUE(IsWindowVisible(app.Main()));
  EXPECT_EQ(app.FindOwnWindow(L"TForceUninstall_Form") &&
                IsWindowVisible(app.FindOwnWindow(L"TForceUninstall_Form")),
            false);
}

TEST_F(Gui, AnExceptionInAHandlerIsLoggedAndTheWindowLivesOn) {
  const std::wstring log = kAppDir + L"Error_Log.txt";
  DeleteFileW(log.c_str());
  const std::wstring target = L"C:\\varnel-tests\\locked.txt";
  HANDLE lock = CreateFileW(target.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  ASSERT_NE(lock, INVALID_HANDLE_VALUE);
  ExportTo(target);
  CloseHandle(lock);
  ASSERT_TRUE(WaitUntil([&] { return FileExists(log); }));
  const std::wstring report = ReadUtf8(log);
  EXPECT_NE(report.find(L"Application=" + kApp), std::wstring::npos) << text::ToUtf8(report);
  EXPECT_NE(report.find(L"Version=0.5.0.0"), std::wstring::npos);
  EXPECT_NE(report.find(L"Exception Type="), std::wstring::npos);
  EXPECT_NE(report.find(L"Error Message=Cannot create file"), std::wstring::npos);
  EXPECT_EQ(app.RowCount(), kVisible);
  DeleteFileW(target.c_str());
}

TEST_F(Gui, ExportWritesHeaderAndEveryVisibleRecordInListOrder) {
  const std::wstring file = L"C:\\varnel-tests\\programs";
  DeleteFileW((file + L".txt").c_str());
  ExportTo(file);
  ASSERT_TRUE(WaitUntil([&] { return FileExists(file + L".txt"); }));
  const std::wstring text = ReadUtf8(file + L".txt");
  win32::Win32Platform machine;
  const std::wstring header =
      L"====================================\r\nSoftware List\r\nApplication Version:0.5.0.0\r\n" +
      GetOSName(machine.Get().system) + L"\r\nExported Time:";
  ASSERT_EQ(text.substr(0, header.size()), header) << text::ToUtf8(text);
  const std::size_t stamp = header.size();
  EXPECT_EQ(text.substr(stamp + 19, 42), L"\r\n====================================\r\n\r\n");
  // Beta (32-bit view) and Gamma (the user's) come first, then the 64-bit
  // view; Gamma's second sighting is a hidden duplicate and stays out.
  auto block = [&](const std::wstring& key, const std::wstring& name, const std::wstring& root) {
    const int row = app.RowWithSubItem(7, L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\" + key);
    std::wstring b = L"Software Name: " + name + L"\r\n";
    if (row < 0) return b;  // the update is not in this category
    b += L"Version: " + app.Cell(row, Sub(2)) + L"\r\nPublisher: " + app.Cell(row, Sub(3)) +
         L"\r\nInstall Time: " + app.Cell(row, Sub(1)) + L"\r\nSize: " + app.Cell(row, Sub(0)) +
         L"\r\nHelp info: " + app.Cell(row, Sub(4)) + L"\r\nRegistry Key: " + root +
         L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\" + key +
         L"\r\nUninstall Command: C:\\Apps\\" + key + L"\\unins.exe\r\n" + std::wstring(46, L'-') +
         L"\r\n\r\n";
    return b;
  };
  std::wstring records = text.substr(stamp + 19 + 42);
  EXPECT_EQ(records.substr(0, block(L"B_Beta", L"Beta Viewer", L"HKEY_LOCAL_MACHINE").size()),
            block(L"B_Beta", L"Beta Viewer", L"HKEY_LOCAL_MACHINE"));
  std::wstring expected = block(L"B_Beta", L"Beta Viewer", L"HKEY_LOCAL_MACHINE") +
                          block(L"C_Gamma", L"Gamma Notes", L"HKEY_CURRENT_USER") +
                          block(L"A_Alpha", L"Alpha Editor", L"HKEY_LOCAL_MACHINE") +
                          block(L"D_Delta", L"Delta Office Suite", L"HKEY_LOCAL_MACHINE");
  EXPECT_EQ(records.substr(0, expected.size()), expected) << text::ToUtf8(records);
  EXPECT_NE(records.find(L"Software Name: Security Update for Thing (KB123456)\r\n",
                         expected.size()),
            std::wstring::npos);
  EXPECT_EQ(records.find(L"Software Name: Gamma Notes", records.find(L"Gamma Notes") + 1),
            std::wstring::npos);
}

// Last: it removes an entry for good.
TEST_F(Gui, RemoveEntryKeepsRecordZeroAndRemovesAnotherThenRefreshAgrees) {
  const int first = app.RowWithSubItem(8, L"0");
  ASSERT_GE(first, 0);
  const std::wstring firstName = app.Cell(first, 0);
  app.SelectRow(first);
  Settle();
  app.Command(Id::MenuRemoveEntry, true);
  Answer(IDYES);
  EXPECT_EQ(app.RowCount(), kVisible);
  EXPECT_GE(app.RowWithSubItem(8, L"0"), 0);

  const int gamma = app.RowWithSubItem(6, L"HKEY_CURRENT_USER");
  ASSERT_GE(gamma, 0);
  ASSERT_NE(app.Cell(gamma, Sub(8)), L"0");
  app.SelectRow(gamma);
  Settle();
  app.Command(Id::MenuRemoveEntry, true);
  Answer(IDYES);
  EXPECT_EQ(app.RowCount(), kVisible - 1);
  EXPECT_LT(app.RowWithSubItem(6, L"HKEY_CURRENT_USER"), 0);
  HKEY key = nullptr;
  const LONG opened = RegOpenKeyExW(
      HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\C_Gamma", 0,
      KEY_READ, &key);
  EXPECT_NE(opened, ERROR_SUCCESS);
  if (opened == ERROR_SUCCESS) RegCloseKey(key);
  app.Command(Id::MenuRefresh);
  EXPECT_EQ(app.RowCount(), kVisible - 1);
  EXPECT_EQ(app.ColumnText(0), L"Software Name (Total:3)");
}

}  // namespace
}  // namespace varnel::guitest
