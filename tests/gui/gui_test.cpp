// The program's windows driven from outside under Wine. gui_test.sh writes
// five Uninstall entries into a fresh prefix and puts the program in
// C:\varnel-tests\app\; every case starts its own instance and leaves the
// prefix as it found it, so the cases run in any order.
#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>
#include <shlobj.h>

#include <algorithm>
#include <cwchar>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "base/text.h"
#include "core/os_name.h"
#include "platform/win32/win32_platform.h"
#include "tests/gui/gui_driver.h"
#include "ui/forms/form_ids.h"
#include "ui/forms/main_form_ids.h"
#include "ui/forms/private_messages.h"
#include "uninstall/backup.h"
#include "uninstall/deletion_guard.h"

namespace varnel::guitest {
namespace {

namespace Id = forms::MainId;
const std::wstring kApp = L"C:\\varnel-tests\\app\\VarnelUninstaller.exe";
const std::wstring kAppDir = L"C:\\varnel-tests\\app\\";
const std::wstring kUninstallKey = L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
constexpr int kVisible = 4;  // the update is only under "Windows Updates"
constexpr int kSizeColumn = 1, kDateColumn = 2;
const std::wstring kSureUninstall = L"Are you sure you want to uninstall the selected programs?";

bool FileExists(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void WriteBytes(const std::wstring& path, const std::string& bytes) {
  std::ofstream(text::ToUtf8(path).c_str(), std::ios::binary) << bytes;
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

bool KeyExists(const std::wstring& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
    return false;
  RegCloseKey(key);
  return true;
}

// The value of `key` in `section` of a language file's text; empty when absent.
std::wstring LngValue(const std::wstring& file, const std::wstring& section,
                      const std::wstring& key) {
  const std::wstring head = L"[" + section + L"]\r\n";
  const std::size_t start = file.find(head);
  if (start == std::wstring::npos) return {};
  const std::size_t end = file.find(L"\r\n[", start + head.size());
  const std::wstring body = L"\r\n" + file.substr(start + head.size(), end - start - head.size());
  const std::size_t at = body.find(L"\r\n" + key + L"=");
  if (at == std::wstring::npos) return {};
  const std::size_t value = at + 2 + key.size() + 1;
  return body.substr(value, body.find(L"\r\n", value) - value);
}

std::wstring English(const std::wstring& section, const std::wstring& key) {
  return LngValue(ReadUtf8(kAppDir + L"Toolbox_Language\\English.lng"), section, key);
}

std::wstring AppDataFolder() {
  wchar_t folder[MAX_PATH] = {};
  if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, folder))) return {};
  return folder;
}

// The user's language choice, in the ini file the program reads it from;
// gone again when this goes.
class LanguageChoice {
 public:
  explicit LanguageChoice(const std::wstring& language) {
    std::wstring folder = AppDataFolder() + L"\\Varnel\\Brightdeck V4";
    SHCreateDirectoryExW(nullptr, folder.c_str(), nullptr);
    file_ = folder + L"\\Main.ini";
    WriteBytes(file_, "[Main]\r\nLanguage=" + text::ToUtf8(language) + "\r\n");
  }
  ~LanguageChoice() { DeleteFileW(file_.c_str()); }

 private:
  std::wstring file_;
};

// A per-user Uninstall entry written while the program runs; deleted on leaving.
class AddedEntry {
 public:
  AddedEntry(const std::wstring& key, const std::wstring& name) : path_(kUninstallKey + key) {
    const std::wstring command = L"C:\\Apps\\" + key + L"\\unins.exe";
    written_ = Set(L"DisplayName", name) && Set(L"UninstallString", command);
  }
  ~AddedEntry() { Remove(); }
  bool Written() const { return written_; }
  bool Remove() {
    const LONG result = RegDeleteKeyW(HKEY_CURRENT_USER, path_.c_str());
    return result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND;
  }
  const std::wstring& Path() const { return path_; }

 private:
  bool Set(const wchar_t* name, const std::wstring& value) {
    return RegSetKeyValueW(HKEY_CURRENT_USER, path_.c_str(), name, REG_SZ, value.c_str(),
                           static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))) ==
           ERROR_SUCCESS;
  }
  std::wstring path_;
  bool written_ = false;
};

// Whether a child of `window` shows exactly `text` (a message box's prompt).
bool ShowsText(HWND window, const std::wstring& text) {
  for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
    if (WindowText(child) == text) return true;
  return false;
}

// The check states of a tree's nodes, in tree order (state image indexes).
std::vector<int> TreeStates(HWND tree) {
  std::vector<int> states;
  auto next = [&](HTREEITEM item, UINT how) {
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(tree, TVM_GETNEXTITEM, how, reinterpret_cast<LPARAM>(item)));
  };
  std::vector<HTREEITEM> stack{next(nullptr, TVGN_ROOT)};
  while (!stack.empty()) {
    HTREEITEM item = stack.back();
    stack.pop_back();
    if (!item) continue;
    states.push_back(static_cast<int>(
        SendMessageW(tree, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item), TVIS_STATEIMAGEMASK) >>
        12));
    stack.push_back(next(item, TVGN_NEXT));
    stack.push_back(next(item, TVGN_CHILD));
  }
  return states;
}

// The sample installers gui_test.sh copied into the prefix.
struct Sample {
  const wchar_t* installer;
  const wchar_t* key;  // under the user's Uninstall key
  const wchar_t* name;
};
constexpr Sample kSketchpad = {L"oak-sketchpad-setup.exe", L"OakhollowSketchpad",
                               L"Oakhollow Sketchpad"};
constexpr Sample kSyncTray = {L"quill-sync-user-setup.exe", L"QuillfeatherSyncAgentUser",
                              L"Quillfeather Sync Agent"};

// Runs a sample's installer quietly, as its user would from a script.
bool Install(const Sample& sample) {
  std::wstring command = L"\"C:\\varnel-fixtures\\" + std::wstring(sample.installer) + L"\" /S";
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info{};
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &startup, &info))
    return false;
  CloseHandle(info.hThread);
  const bool ended = WaitForSingleObject(info.hProcess, 120000) == WAIT_OBJECT_0;
  DWORD code = 1;
  GetExitCodeProcess(info.hProcess, &code);
  CloseHandle(info.hProcess);
  return ended && code == 0;
}

bool EntryExists(const Sample& sample) { return KeyExists(kUninstallKey + sample.key); }

std::wstring LogFolder() { return AppDataFolder() + L"\\Varnel\\Varnel Uninstaller\\Log\\"; }

std::wstring TodaysLog() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  wchar_t name[32] = {};
  swprintf(name, 32, L"%04u-%02u-%02u.log", now.wYear, now.wMonth, now.wDay);
  return LogFolder() + name;
}

// Clicks the first button of every uninstaller window (a dialog of another
// process) until `done` holds: the samples' uninstallers ask once
// ("Uninstall") and end by themselves. Counts the clicks, the most
// uninstaller windows seen at once and those still there when `done` held.
struct UninstallerClicks {
  int clicks = 0, mostAtOnce = 0, openAtEnd = 0;
};
UninstallerClicks ClickThroughUninstallers(DWORD program, const std::function<bool()>& done) {
  UninstallerClicks result;
  struct Found {
    DWORD program;
    std::vector<HWND> windows;
  };
  WaitUntil(
      [&] {
        Found found{program, {}};
        EnumWindows(
            [](HWND hwnd, LPARAM param) -> BOOL {
              auto* f = reinterpret_cast<Found*>(param);
              DWORD pid = 0;
              GetWindowThreadProcessId(hwnd, &pid);
              wchar_t cls[64] = {};
              GetClassNameW(hwnd, cls, 64);
              if (pid != f->program && pid != GetCurrentProcessId() &&
                  lstrcmpW(cls, L"#32770") == 0 && IsWindowVisible(hwnd))
                f->windows.push_back(hwnd);
              return TRUE;
            },
            reinterpret_cast<LPARAM>(&found));
        const std::vector<HWND>& windows = found.windows;
        result.mostAtOnce = std::max(result.mostAtOnce, static_cast<int>(windows.size()));
        result.openAtEnd = static_cast<int>(windows.size());
        if (done()) return true;
        for (HWND window : windows) {
          HWND button = GetDlgItem(window, IDOK);
          if (!button || !IsWindowVisible(button) || !IsWindowEnabled(button)) continue;
          PostMessageW(button, BM_CLICK, 0, 0);
          ++result.clicks;
          Sleep(700);  // the page changes before the button is asked again
        }
        return false;
      },
      std::chrono::seconds(120));
  return result;
}

// The row whose caption is `name`, with or without "(x64)".
int RowNamed(Program& app, const std::wstring& name) {
  const auto captions = app.Captions();
  for (std::size_t i = 0; i < captions.size(); ++i)
    if (captions[i] == name || captions[i] == name + L"(x64)") return static_cast<int>(i);
  return -1;
}

class Gui : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(app.Start(kApp));
    ASSERT_TRUE(app.WaitForList(kVisible)) << "rows: " << app.RowCount();
  }
  // Every message sent before has been handled once this returns.
  void Settle() { SendMessageTimeoutW(app.Main(), WM_NULL, 0, 0, SMTO_NORMAL, 30000, nullptr); }
  // Waits for a message box of `owner` (the main window when null) that
  // shows `text`, and answers it with `button`.
  void Answer(int button, const std::wstring& text = L"", HWND owner = nullptr) {
    HWND box = app.WaitForDialog(owner);
    ASSERT_NE(box, nullptr) << "no question " << text::ToUtf8(text);
    EXPECT_TRUE(text.empty() || ShowsText(box, text)) << text::ToUtf8(text);
    PostMessageW(box, WM_COMMAND, button, 0);
    ASSERT_TRUE(WaitUntil([&] { return !IsWindow(box) || !IsWindowVisible(box); }));
    Settle();
  }
  // Sends `command` to `owner`, checks the question and answers Yes; returns
  // the notice that follows with `noticeText`, or null when none came.
  HWND AnswerYesForNotice(HWND owner, int command, const std::wstring& questionText,
                          const std::wstring& noticeText) {
    PostMessageW(owner, WM_COMMAND, command, 0);
    HWND question = app.WaitForDialog(owner);
    if (!question) return nullptr;
    EXPECT_TRUE(ShowsText(question, questionText));
    PostMessageW(question, WM_COMMAND, IDYES, 0);
    HWND notice = nullptr;
    const bool shown = WaitUntil([&] {
      notice = app.DialogOwnedBy(owner);
      return notice && notice != question && ShowsText(notice, noticeText);
    });
    return shown ? notice : nullptr;
  }
  // Uninstall on the selection or the checked rows, answered Yes; returns
  // the uninstalling window once it shows.
  HWND StartUninstall() {
    app.Command(Id::Uninstall, true);
    Answer(IDYES, kSureUninstall);
    HWND uninstalling = app.FindOwnWindow(L"TUninstalling_Form");
    EXPECT_TRUE(WaitUntil([&] { return uninstalling && IsWindowVisible(uninstalling); }));
    EXPECT_EQ(GetWindow(uninstalling, GW_OWNER), app.Main());
    EXPECT_FALSE(IsWindowEnabled(app.Main()));
    return uninstalling;
  }
  // A window of the program the main window opens with `command`.
  HWND Open(int command, const wchar_t* className) {
    app.Command(command, true);
    HWND window = nullptr;
    EXPECT_TRUE(WaitUntil([&] {
      window = app.FindOwnWindow(className);
      return window && IsWindowVisible(window);
    }));
    return window;
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
  // Version, publisher and help of a row, as the details panel shows them.
  std::vector<std::wstring> Details(int row) {
    app.SelectRow(row);
    Settle();
    return {WindowText(app.Control(Id::DetailsVersion)),
            WindowText(app.Control(Id::DetailsPublisher)),
            WindowText(app.Control(Id::DetailsHelp))};
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
    EXPECT_TRUE(!app.Main() || app.Close() == 0);
  }
  Program app;
};

// A second start hands over to the first and ends; "/rightmenu" deletes the
// file its hand-over file names and opens the forced uninstall only when
// that file stays.
TEST(GuiStart, SecondStartActivatesTheFirstAndRightMenuOpensForcedUninstallWhenTheFileStays) {
  const std::wstring handOver = L"C:\\varnel-tests\\handover.txt";
  const std::wstring victim = L"C:\\varnel-tests\\victim.dat";
  WriteBytes(victim, "x");
  WriteBytes(handOver, text::ToUtf8(victim) + "\r\n");
  auto forcedShown = [](Program& app) {
    HWND force = app.FindOwnWindow(L"TForceUninstall_Form");
    return force && IsWindowVisible(force);
  };
  {
    Program app;
    ASSERT_TRUE(app.Start(kApp, L"/RIGHTMENU " + handOver));
    ASSERT_TRUE(app.WaitForList(kVisible));
    EXPECT_FALSE(FileExists(victim));
    EXPECT_TRUE(FileExists(handOver));
    EXPECT_FALSE(forcedShown(app));

    ShowWindow(app.Main(), SW_HIDE);
    // The activation message with the right wParam but a wrong lParam is ignored.
    PostMessageW(app.Main(), forms::WM_ACTIVATE_INSTANCE, forms::kActivateWParam, 0x1234);
    SendMessageTimeoutW(app.Main(), WM_NULL, 0, 0, SMTO_NORMAL, 30000, nullptr);
    EXPECT_FALSE(IsWindowVisible(app.Main()));
    Program second;
    ASSERT_TRUE(second.Start(kApp, L"/rightmenu C:\\nowhere.txt"));
    ASSERT_EQ(WaitForSingleObject(second.Process(), 30000), WAIT_OBJECT_0);
    DWORD code = 99;
    GetExitCodeProcess(second.Process(), &code);
    EXPECT_EQ(code, 0u);
    EXPECT_TRUE(IsWindowVisible(app.Main()));
    EXPECT_FALSE(forcedShown(app));
    EXPECT_EQ(app.Close(), 0);
  }
  WriteBytes(victim, "x");
  HANDLE busy = CreateFileW(victim.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                            0, nullptr);
  ASSERT_NE(busy, INVALID_HANDLE_VALUE);
  Program app;
  ASSERT_TRUE(app.Start(kApp, L"/rightmenu " + handOver));
  ASSERT_TRUE(app.WaitForList(kVisible));
  EXPECT_TRUE(WaitUntil([&] { return forcedShown(app); }));
  EXPECT_EQ(WindowText(GetDlgItem(app.FindOwnWindow(L"TForceUninstall_Form"), 102)), victim);
  CloseHandle(busy);
  EXPECT_EQ(app.Close(), 0);
  DeleteFileW(victim.c_str());
  DeleteFileW(handOver.c_str());
}

TEST(GuiLanguage, GermanChoiceTranslatesTheMainWindowAndEnglishReturnsWithoutIt) {
  const std::wstring folder = kAppDir + L"Toolbox_Language\\";
  // What the window shows (access keys aside) against what a language file
  // says it should.
  auto shown = [](Program& app) {
    std::vector<std::wstring> texts;
    for (int id : {Id::CategoryFirst, Id::CategoryFirst + 5, Id::Uninstall, Id::ForceUninstall,
                   Id::DetailsIdle, Id::BottomInfo, Id::SearchEdit})
      texts.push_back(text::ReplaceAll(WindowText(app.Control(id)), L"&", L""));
    for (int column = 0; column < 3; ++column) texts.push_back(app.ColumnText(column));
    return texts;
  };
  auto expected = [&](const wchar_t* language) {
    const std::wstring lng = ReadUtf8(folder + language + L".lng");
    const std::wstring form = L"Uninstaller_UninstallForm_Main", messages = form + L"_M";
    auto caption = [&](const wchar_t* name) { return LngValue(lng, form, name); };
    auto counted = [&](const wchar_t* key) {
      return text::ReplaceAll(LngValue(lng, messages, key), L"%d", std::to_wstring(kVisible));
    };
    return std::vector<std::wstring>{
        caption(L"Label_AllProgrames.Caption"), caption(L"Label_WindowsUpdates.Caption"),
        caption(L"Label_Uninstall.Caption"),    caption(L"Label_ForcedUninstalled.Caption"),
        caption(L"Label_Details_Idle.Caption"), counted(L"M_Items"),
        LngValue(lng, messages, L"M_SearchSoftware"), counted(L"M_SoftwareFormat"),
        caption(L"ListView_SoftwareList.Columns[1].Caption"),
        caption(L"ListView_SoftwareList.Columns[2].Caption")};
  };
  const std::vector<std::wstring> de = expected(L"German"), en = expected(L"English");
  // Every text compared is one the two languages spell differently.
  for (std::size_t i = 0; i < de.size(); ++i) {
    EXPECT_FALSE(de[i].empty()) << i;
    EXPECT_NE(de[i], en[i]) << i;
  }
  for (const bool german : {true, false}) {
    std::unique_ptr<LanguageChoice> choice;
    if (german) choice = std::make_unique<LanguageChoice>(L"German");
    Program app;
    ASSERT_TRUE(app.Start(kApp));
    ASSERT_TRUE(app.WaitForList(kVisible));
    EXPECT_EQ(shown(app), german ? de : en);
    EXPECT_EQ(app.Close(), 0);
  }
}

// Each entry's row and details; rows 25 pixels tall at 100 %, taller at a
// higher DPI.
TEST_F(Gui, RowsAndDetailsShowEachEntryAtTheWindowsDpi) {
  EXPECT_TRUE(IsWindowVisible(app.Control(Id::DetailsIdle)));
  EXPECT_FALSE(IsWindowVisible(app.Control(Id::DetailsName)));
  const int alpha = RowNamed(app, L"Alpha Editor"), beta = RowNamed(app, L"Beta Viewer"),
            gamma = RowNamed(app, L"Gamma Notes");
  ASSERT_GE(alpha, 0);
  ASSERT_GE(beta, 0);
  ASSERT_GE(gamma, 0);
  EXPECT_EQ(app.Cell(alpha, 0), L"Alpha Editor(x64)");
  EXPECT_EQ(app.Cell(alpha, kSizeColumn), L"58.59 MB");
  EXPECT_FALSE(app.Cell(alpha, kDateColumn).empty());
  EXPECT_EQ(app.Cell(beta, kSizeColumn), L"900.00 KB");
  EXPECT_NE(app.Cell(beta, kDateColumn).find(L"2020"), std::wstring::npos);
  EXPECT_EQ(app.Cell(gamma, kDateColumn), L"");
  // The row's other data stays with it, out of the list's columns.
  EXPECT_EQ(app.Cell(alpha, 3), L"");
  for (int row = 0; row < app.RowCount(); ++row) EXPECT_EQ(app.GroupOf(row), 1);

  EXPECT_EQ(Details(alpha),
            (std::vector<std::wstring>{L"2.0", L"Alpha Soft", L"https://example.org/alpha"}));
  EXPECT_FALSE(IsWindowVisible(app.Control(Id::DetailsIdle)));
  EXPECT_EQ(WindowText(app.Control(Id::DetailsName)), L"Alpha Editor(x64)");
  EXPECT_TRUE(IsWindowVisible(app.Control(Id::DetailsHelpTitle)));
  EXPECT_EQ(Details(gamma)[1], L"-");
  EXPECT_EQ(app.ColumnText(0), L"Software Name (Total:4)");
  EXPECT_EQ(WindowText(app.Control(Id::BottomInfo)), L"4 Items");

  EXPECT_EQ(app.RowHeight(), 25);
  app.ChangeDpi(144);
  EXPECT_EQ(app.RowHeight(), MulDiv(25, 144, 96));
  app.ChangeDpi(96);
  EXPECT_EQ(app.RowHeight(), 25);
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

// At start the name column sorts descending; a click on a column sorts by
// it and turns its own direction, the arrow following. The undated entry
// is lowest by date; Alpha was installed today.
TEST_F(Gui, EveryColumnSortsBothWays) {
  using V = std::vector<std::wstring>;
  const V byName = {L"Alpha Editor(x64)", L"Beta Viewer", L"Delta Office Suite(x64)",
                    L"Gamma Notes"};
  const V bySize = {L"Gamma Notes", L"Beta Viewer", L"Alpha Editor(x64)",
                    L"Delta Office Suite(x64)"};
  const V byDate = {L"Gamma Notes", L"Delta Office Suite(x64)", L"Beta Viewer",
                    L"Alpha Editor(x64)"};
  EXPECT_EQ(app.Captions(), V(byName.rbegin(), byName.rend()));
  EXPECT_EQ(app.SortArrow(0), HDF_SORTDOWN);
  for (const auto& [column, ascending] :
       {std::pair{0, byName}, std::pair{kSizeColumn, bySize}, std::pair{kDateColumn, byDate}}) {
    app.ClickColumn(column);
    EXPECT_EQ(app.Captions(), ascending) << column;
    EXPECT_EQ(app.SortArrow(column), HDF_SORTUP);
    EXPECT_EQ(app.SortArrow(0), column == 0 ? HDF_SORTUP : 0);
    app.ClickColumn(column);
    EXPECT_EQ(app.Captions(), V(ascending.rbegin(), ascending.rend())) << column;
    EXPECT_EQ(app.SortArrow(column), HDF_SORTDOWN);
  }
}

// The export writes its header and every record of the inventory in list
// order; one it cannot write goes to the error log, and the window lives on.
TEST_F(Gui, ExportWritesEveryRecordAndAFailedOneIsLogged) {
  const std::wstring file = L"C:\\varnel-tests\\programs";
  DeleteFileW((file + L".txt").c_str());
  ExportTo(file);
  ASSERT_TRUE(WaitUntil([&] { return FileExists(file + L".txt"); }));
  const std::wstring text = ReadUtf8(file + L".txt");
  DeleteFileW((file + L".txt").c_str());
  win32::Win32Platform machine;
  const std::wstring header =
      L"====================================\r\nSoftware List\r\nApplication Version:0.5.0.0\r\n" +
      GetOSName(machine.Get().system) + L"\r\nExported Time:";
  ASSERT_EQ(text.substr(0, header.size()), header) << text::ToUtf8(text);
  // Beta (32-bit view) and Gamma (the user's) come first, then the 64-bit
  // view; Gamma's second sighting is a hidden duplicate and stays out. The
  // layout of a record is the export's own, checked without a window.
  std::vector<std::wstring> names;
  for (std::size_t at = text.find(L"Software Name: "); at != std::wstring::npos;
       at = text.find(L"Software Name: ", at + 1))
    names.push_back(text.substr(at + 15, text.find(L"\r\n", at) - at - 15));
  EXPECT_EQ(names, (std::vector<std::wstring>{L"Beta Viewer", L"Gamma Notes", L"Alpha Editor",
                                              L"Delta Office Suite",
                                              L"Security Update for Thing (KB123456)"}));
  EXPECT_NE(text.find(L"Size: 58.59 MB\r\nHelp info: https://example.org/alpha\r\nRegistry Key: "
                      L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\"
                      L"A_Alpha\r\nUninstall Command: C:\\Apps\\A_Alpha\\unins.exe\r\n"),
            std::wstring::npos)
      << text::ToUtf8(text);

  const std::wstring log = kAppDir + L"Error_Log.txt";
  DeleteFileW(log.c_str());
  const std::wstring target = L"C:\\varnel-tests\\locked.txt";
  HANDLE lock = CreateFileW(target.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  ASSERT_NE(lock, INVALID_HANDLE_VALUE);
  ExportTo(target);
  CloseHandle(lock);
  DeleteFileW(target.c_str());
  ASSERT_TRUE(WaitUntil([&] { return FileExists(log); }));
  const std::wstring report = ReadUtf8(log);
  DeleteFileW(log.c_str());
  EXPECT_NE(report.find(L"Application=" + kApp), std::wstring::npos) << text::ToUtf8(report);
  EXPECT_NE(report.find(L"Version=0.5.0.0"), std::wstring::npos);
  EXPECT_NE(report.find(L"Exception Type="), std::wstring::npos);
  EXPECT_NE(report.find(L"Error Message=Cannot create file"), std::wstring::npos);
  EXPECT_EQ(app.RowCount(), kVisible);
}

// Real keys: F5 refreshes, Ctrl+F goes to the search box, typing searches in
// any case, the clear button and Escape empty the box and leave the caret in it.
TEST_F(Gui, KeysRefreshAndSearchAndClearingLeavesTheCaretInTheBox) {
  auto listed = [&](const std::wstring& name) { return RowNamed(app, name) >= 0; };
  HWND edit = app.Control(Id::SearchEdit), clear = app.Control(Id::SearchClear);
  EXPECT_EQ(WindowText(edit), L"Search Software");
  ASSERT_TRUE(app.Activate());
  AddedEntry added(L"K_Kappa", L"Kappa Tool");
  ASSERT_TRUE(added.Written());
  EXPECT_FALSE(listed(L"Kappa Tool"));
  PressKey(VK_F5);
  EXPECT_TRUE(WaitUntil([&] { return app.RowCount() == kVisible + 1 && listed(L"Kappa Tool"); }));
  EXPECT_EQ(app.ColumnText(0), L"Software Name (Total:5)");

  PressKey('F', {VK_CONTROL});
  ASSERT_TRUE(WaitUntil([&] { return app.Focus() == edit; }));
  EXPECT_EQ(WindowText(edit), L"");  // the placeholder leaves with the focus coming in
  auto search = [&](std::wstring_view letters) {
    TypeLetters(letters);
    EXPECT_TRUE(WaitUntil([&] {
      return WindowText(edit) == letters && app.ColumnText(0) == L"Software Name (Total:1)";
    }));
    EXPECT_EQ(app.Captions(), std::vector<std::wstring>{L"Delta Office Suite(x64)"});
    EXPECT_TRUE(IsWindowVisible(clear));
  };
  auto cleared = [&] {
    EXPECT_TRUE(WaitUntil([&] { return app.RowCount() == kVisible + 1; }));
    EXPECT_EQ(WindowText(edit), L"");
    EXPECT_FALSE(IsWindowVisible(clear));
    EXPECT_EQ(app.Focus(), edit);
  };
  search(L"office");
  PressKey(VK_ESCAPE);
  cleared();
  search(L"offi");
  PostMessageW(clear, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(2, 2));
  PostMessageW(clear, WM_LBUTTONUP, 0, MAKELPARAM(2, 2));
  cleared();

  // F5 with the keys still in the box: the list comes back whole, the box stays
  // empty and takes what is typed next as a search.
  ASSERT_TRUE(added.Remove());
  PressKey(VK_F5);
  EXPECT_TRUE(WaitUntil([&] { return app.RowCount() == kVisible && WindowText(edit).empty(); }));
  TypeLetters(L"kappa");
  EXPECT_TRUE(WaitUntil([&] {
    return WindowText(edit) == L"kappa" && app.ColumnText(0) == L"Software Name (Total:0)";
  }));
}

// Tab walks the controls; Delete, Enter and the Uninstall button's access
// key ask to uninstall the selected row.
TEST_F(Gui, KeysTabWalksTheControlsAndEveryUninstallKeyAsks) {
  ASSERT_TRUE(app.Activate());
  // Only the checked category button is a tab stop; the clear button is none.
  const std::vector<int> cycle = {Id::CategoryFirst,  Id::SearchEdit,     Id::List,
                                  Id::Uninstall,      Id::BatchUninstall, Id::ForceUninstall,
                                  Id::More,           Id::CategoryFirst};
  std::vector<int> order;
  HWND at = app.Focus();
  for (std::size_t i = 0; i < cycle.size(); ++i) {
    PressKey(VK_TAB);
    if (!WaitUntil([&] { return app.Focus() != at; }, std::chrono::seconds(5))) break;
    at = app.Focus();
    order.push_back(GetDlgCtrlID(at));
  }
  EXPECT_EQ(order, cycle);
  EXPECT_EQ(WindowText(app.Control(Id::SearchEdit)), L"Search Software");
  for (int i = 0; i < 5; ++i) PressKey(VK_TAB, {VK_SHIFT});
  ASSERT_TRUE(WaitUntil([&] { return app.Focus() == app.List(); }));
  EXPECT_EQ(app.SelectedRow(), -1);
  PressKey(VK_HOME);
  ASSERT_TRUE(WaitUntil([&] { return app.SelectedRow() == 0; }));
  HWND uninstalling = app.FindOwnWindow(L"TUninstalling_Form");
  ASSERT_NE(uninstalling, nullptr);
  // Answered No: Yes runs the row's uninstaller, which the uninstall cases
  // do with real ones.
  // The access key clicks the button, which keeps the keys then.
  const struct {
    WORD key, modifier;  // 0: none
    int focus;
  } keys[] = {{VK_DELETE, 0, Id::List}, {VK_RETURN, 0, Id::List}, {'U', VK_MENU, Id::Uninstall}};
  for (const auto& k : keys) {
    if (k.modifier) {
      PressKey(k.key, {k.modifier});
    } else {
      PressKey(k.key);
    }
    HWND box = app.WaitForDialog();
    ASSERT_NE(box, nullptr) << k.key;
    EXPECT_EQ(WindowText(box), L"Varnel Uninstaller");
    Answer(IDNO, kSureUninstall);
    EXPECT_FALSE(IsWindowVisible(uninstalling));
    EXPECT_EQ(app.SelectedRow(), 0);
    EXPECT_TRUE(WaitUntil([&] { return GetDlgCtrlID(app.Focus()) == k.focus; },
                          std::chrono::seconds(5)))
        << k.key << ": focus on control " << GetDlgCtrlID(app.Focus());
  }
}

// A double click beside the rows acts as Uninstall: with nothing selected it
// asks for a program; in batch mode it takes the checked rows.
TEST_F(Gui, DoubleClickBesideTheRowsAsksForAProgramOrTakesTheCheckedOnes) {
  const RECT list = [&] {
    RECT r{};
    GetClientRect(app.List(), &r);
    return r;
  }();
  auto doubleClickBelowTheRows = [&] {
    PostMessageW(app.List(), WM_LBUTTONDBLCLK, MK_LBUTTON, MAKELPARAM(40, list.bottom - 10));
  };
  ASSERT_EQ(app.SelectedRow(), -1);
  doubleClickBelowTheRows();
  Answer(IDOK, L"Please select a program at first.");
  app.Command(Id::BatchUninstall);
  doubleClickBelowTheRows();
  Answer(IDOK, L"Please select at least one program.");
  app.SetRowChecked(0, true);
  Settle();
  doubleClickBelowTheRows();
  Answer(IDNO, kSureUninstall);
  EXPECT_FALSE(IsWindowVisible(app.FindOwnWindow(L"TUninstalling_Form")));
}

// The sequence driven by the window: the checked rows of a batch, their
// uninstallers strictly one after another, the notice once both ended, one
// log block each in list order with the window's texts.
TEST_F(Gui, BatchUninstallRunsTheCheckedProgramsOneAfterAnotherInOneSequence) {
  ASSERT_TRUE(Install(kSketchpad));
  ASSERT_TRUE(Install(kSyncTray));
  app.Command(Id::MenuRefresh);
  app.Command(Id::BatchUninstall);
  const int a = RowNamed(app, kSketchpad.name), b = RowNamed(app, kSyncTray.name);
  ASSERT_GE(a, 0);
  ASSERT_GE(b, 0);
  app.SetRowChecked(a, true);
  app.SetRowChecked(b, true);
  Settle();
  const std::wstring before = ReadUtf8(TodaysLog());
  HWND uninstalling = StartUninstall();
  ASSERT_NE(uninstalling, nullptr);
  HWND finished = nullptr;
  const UninstallerClicks run = ClickThroughUninstallers(app.Pid(), [&] {
    finished = app.DialogOwnedBy(uninstalling);
    return finished != nullptr;
  });
  ASSERT_NE(finished, nullptr) << "no completion notice";
  EXPECT_TRUE(ShowsText(finished, L"Uninstall Finished."));
  EXPECT_EQ(run.clicks, 2);
  EXPECT_EQ(run.mostAtOnce, 1);  // never two uninstallers at a time
  EXPECT_EQ(run.openAtEnd, 0);   // the notice waited for the last one
  PostMessageW(finished, WM_COMMAND, IDOK, 0);
  EXPECT_TRUE(WaitUntil([&] { return !IsWindowVisible(uninstalling) && IsWindowEnabled(app.Main()); }));
  EXPECT_FALSE(EntryExists(kSketchpad));
  EXPECT_FALSE(EntryExists(kSyncTray));
  EXPECT_TRUE(WaitUntil([&] { return app.RowCount() == kVisible; }));
  const std::wstring added = ReadUtf8(TodaysLog()).substr(before.size());
  auto blockOf = [&](const Sample& s) {
    return added.find(L"[" + std::wstring(s.name) + L"]\r\nOperation:Standard Uninstall\r\nDate:");
  };
  const std::size_t first = blockOf(a < b ? kSketchpad : kSyncTray);
  const std::size_t second = blockOf(a < b ? kSyncTray : kSketchpad);
  EXPECT_NE(second, std::wstring::npos) << text::ToUtf8(added);
  EXPECT_LT(first, second) << text::ToUtf8(added);
  EXPECT_EQ(added.find(L"Operation:", added.find(L"Operation:", second) + 1), std::wstring::npos);
}

// The saved choice preselects Advanced: no notice; Powerful Scan shows the
// program's leftovers unchecked; Select All and Delete remove them (the
// desktop shortcut and the settings key the uninstaller forgets) and the
// day's log gets their block.
TEST_F(Gui, AdvancedModeScansAndDeletesTheLeftoversTheUserChecks) {
  const std::wstring choice = AppDataFolder() + L"\\Varnel\\Varnel Uninstaller\\Select.ini";
  WriteBytes(choice, "[Main]\r\nAdvanced=1\r\n");
  const std::unique_ptr<const std::wstring, void (*)(const std::wstring*)> forget(
      &choice, [](const std::wstring* file) { DeleteFileW(file->c_str()); });
  ASSERT_TRUE(Install(kSketchpad));
  app.Command(Id::MenuRefresh);
  const int row = RowNamed(app, kSketchpad.name);
  ASSERT_GE(row, 0);
  app.SelectRow(row);
  Settle();
  HWND uninstalling = StartUninstall();
  ASSERT_NE(uninstalling, nullptr);
  namespace U = forms::UninstallingId;
  HWND scan = GetDlgItem(uninstalling, U::Scan);
  EXPECT_EQ(SendMessageW(GetDlgItem(uninstalling, U::Advanced), BM_GETCHECK, 0, 0), BST_CHECKED);
  const UninstallerClicks run =
      ClickThroughUninstallers(app.Pid(), [&] { return IsWindowEnabled(scan) != FALSE; });
  EXPECT_EQ(run.clicks, 1);
  EXPECT_EQ(app.DialogOwnedBy(uninstalling), nullptr);  // no completion notice
  EXPECT_FALSE(EntryExists(kSketchpad));
  wchar_t desktop[MAX_PATH] = {};
  ASSERT_TRUE(SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_DESKTOPDIRECTORY, nullptr, 0, desktop)));
  const std::wstring shortcut = std::wstring(desktop) + L"\\Oakhollow Sketchpad.lnk";
  const std::wstring settings = L"Software\\Oakhollow Studio\\Oakhollow Sketchpad";
  ASSERT_TRUE(FileExists(shortcut));
  ASSERT_TRUE(KeyExists(settings));

  PostMessageW(uninstalling, WM_COMMAND, U::Scan, 0);
  HWND results = nullptr;
  ASSERT_TRUE(WaitUntil([&] {
    results = app.FindOwnWindow(L"TPowerScan_Form");
    return results && IsWindowVisible(results);
  }));
  EXPECT_TRUE(WaitUntil([&] { return !IsWindowVisible(uninstalling); }));
  EXPECT_EQ(WindowText(results), L"Powerful Scan");
  namespace P = forms::PowerScanId;
  HWND tree = GetDlgItem(results, P::Tree), remove = GetDlgItem(results, P::Delete);
  const std::vector<int> shown = TreeStates(tree);
  ASSERT_GE(shown.size(), 3u);  // the program, a group, an item at least
  EXPECT_EQ(std::count(shown.begin(), shown.end(), 1), static_cast<long>(shown.size()));
  EXPECT_FALSE(IsWindowEnabled(remove));
  SendMessageW(results, WM_COMMAND, P::SelectAll, 0);
  const std::vector<int> checked = TreeStates(tree);
  EXPECT_EQ(std::count(checked.begin(), checked.end(), 2), static_cast<long>(shown.size()));
  EXPECT_TRUE(IsWindowEnabled(remove));

  const std::wstring before = ReadUtf8(TodaysLog());
  HWND finished = AnswerYesForNotice(results, P::Delete,
                                     L"Are you sure you want to delete the selected items?",
                                     L"Delete finished.");
  ASSERT_NE(finished, nullptr);
  PostMessageW(finished, WM_COMMAND, IDOK, 0);
  EXPECT_TRUE(WaitUntil([&] { return !IsWindowVisible(results) && IsWindowEnabled(app.Main()); }));
  EXPECT_FALSE(FileExists(shortcut));
  EXPECT_FALSE(KeyExists(settings));
  const std::wstring added = ReadUtf8(TodaysLog()).substr(before.size());
  EXPECT_NE(added.find(L"[Oakhollow Sketchpad]\r\nOperation:Powerful Scan\r\nDate:"),
            std::wstring::npos)
      << text::ToUtf8(added);
  // The scan spells paths its own way; the case is not the point.
  EXPECT_NE(text::Lower(added).find(text::Lower(L"\r\nDeleted File " + shortcut + L"\r\n")),
            std::wstring::npos)
      << text::ToUtf8(added);
}

// The log manager under its caption: Delete All removes every listed log and
// only those (asking under Delete's key, which the shipped file has), and a
// folder the guard deleted comes back through Restore before Delete removes
// its backup. The day's log is put back as it was.
TEST_F(Gui, LogManagerDeletesEveryLogAndRestoresABackup) {
  const std::wstring folder = LogFolder(), today = ReadUtf8(TodaysLog());
  SHCreateDirectoryExW(nullptr, folder.c_str(), nullptr);
  const std::vector<std::wstring> files = {folder + L"2001-01-01.log", folder + L"notes.LOG.txt"};
  for (const auto& file : files) WriteBytes(file, "x");
  CreateDirectoryW((folder + L"x.log").c_str(), nullptr);
  const std::wstring kept = L"C:\\varnel-tests\\backed-up", keptFile = kept + L"\\notes.txt";
  CreateDirectoryW(kept.c_str(), nullptr);
  WriteBytes(keptFile, "keep me");
  win32::Win32Platform machine;
  std::wstring id;
  {
    auto backup = Backup::Begin(machine.Get());
    ASSERT_TRUE(backup);
    DeletionGuard guard(machine.Get(), ProtectedPlaces(machine.Get(), {}), backup.get());
    ASSERT_TRUE(guard.DeleteFolderTree(kept).deleted);
    id = backup->Id();
  }
  ASSERT_FALSE(FileExists(keptFile));

  HWND logs = Open(Id::MenuLogManagement, L"TLogManager_Form");
  ASSERT_NE(logs, nullptr);
  EXPECT_EQ(WindowText(logs), L"Uninstall Log Manager");
  namespace L = forms::LogManagerId;
  HWND list = GetDlgItem(logs, L::List);
  std::vector<std::wstring> names;
  for (int i = 0, n = app.RowCountOf(list); i < n; ++i) names.push_back(app.CellOf(list, i, 0));
  for (const wchar_t* name : {L"2001-01-01.log", L"notes.LOG.txt"})
    EXPECT_NE(std::find(names.begin(), names.end(), name), names.end()) << text::ToUtf8(name);
  const std::wstring section = L"Uninstaller_LogManager_Form_M";
  PostMessageW(logs, WM_COMMAND, L::DeleteAll, 0);
  Answer(IDYES, English(section, L"M_SureDelSelect"), logs);
  EXPECT_TRUE(WaitUntil([&] { return app.RowCountOf(list) == 0; }));
  for (const auto& file : files) EXPECT_FALSE(FileExists(file)) << text::ToUtf8(file);
  EXPECT_TRUE(FileExists(folder + L"x.log"));
  EXPECT_FALSE(IsWindowEnabled(GetDlgItem(logs, L::DeleteAll)));
  RemoveDirectoryW((folder + L"x.log").c_str());
  if (!today.empty()) WriteBytes(TodaysLog(), text::ToUtf8(today));

  HWND backups = GetDlgItem(logs, L::Backups), restore = GetDlgItem(logs, L::Restore);
  auto rowOf = [&] {
    for (int i = 0, n = app.RowCountOf(backups); i < n; ++i)
      if (app.CellOf(backups, i, 0) == id) return i;
    return -1;
  };
  ASSERT_GE(rowOf(), 0);
  EXPECT_EQ(app.CellOf(backups, rowOf(), 2), L"1");
  EXPECT_FALSE(IsWindowEnabled(restore));
  app.SelectRowOf(backups, rowOf());
  Settle();
  HWND notice = AnswerYesForNotice(logs, L::Restore, English(section, L"M_SureRestore"),
                                   L"1 item was restored.");
  ASSERT_NE(notice, nullptr);
  PostMessageW(notice, WM_COMMAND, IDOK, 0);
  ASSERT_TRUE(WaitUntil([&] { return !IsWindow(notice); }));
  EXPECT_EQ(ReadUtf8(keptFile), L"keep me");
  ASSERT_GE(rowOf(), 0);  // a restore keeps the backup
  app.SelectRowOf(backups, rowOf());
  Settle();
  PostMessageW(logs, WM_COMMAND, L::DeleteBackup, 0);
  Answer(IDYES, English(section, L"M_SureDelBackup"), logs);
  EXPECT_TRUE(WaitUntil([&] { return rowOf() < 0; }));
  for (const BackupSummary& b : ListBackups(machine.Get())) EXPECT_NE(b.id, id);
  PostMessageW(logs, WM_COMMAND, IDCANCEL, 0);
  EXPECT_TRUE(WaitUntil([&] { return !IsWindowVisible(logs) && IsWindowEnabled(app.Main()); }));
  DeleteFileW(keptFile.c_str());
  RemoveDirectoryW(kept.c_str());
}

// The forced-uninstall window over its logic: a search by name fills the
// list (never with the first record), Cancel hides the window.
TEST_F(Gui, ForcedUninstallSearchListsMatchesButNeverTheFirstRecord) {
  const int first = app.RowOfRecord(0);
  ASSERT_GE(first, 0);
  const std::wstring firstName = app.Cell(first, 0);
  HWND force = Open(Id::ForceUninstall, L"TForceUninstall_Form");
  ASSERT_NE(force, nullptr);
  namespace F = forms::ForceUninstallId;
  HWND list = GetDlgItem(force, F::List);
  EXPECT_FALSE(IsWindowVisible(list));
  // The first record's own initial finds everything else holding it, never itself.
  SendMessageW(GetDlgItem(force, F::Name), WM_SETTEXT, 0,
               reinterpret_cast<LPARAM>(firstName.substr(0, 1).c_str()));
  SendMessageW(force, WM_COMMAND, MAKEWPARAM(F::Search, BN_CLICKED),
               reinterpret_cast<LPARAM>(GetDlgItem(force, F::Search)));
  EXPECT_TRUE(IsWindowVisible(list));
  EXPECT_FALSE(IsWindowVisible(GetDlgItem(force, F::DragInfo)));
  std::vector<std::wstring> shown;
  for (int r = 0, n = app.RowCountOf(list); r < n; ++r) shown.push_back(app.CellOf(list, r, 0));
  EXPECT_FALSE(shown.empty());
  EXPECT_EQ(std::count(shown.begin(), shown.end(), firstName), 0) << text::ToUtf8(firstName);
  SendMessageW(force, WM_COMMAND, MAKEWPARAM(F::Cancel, BN_CLICKED),
               reinterpret_cast<LPARAM>(GetDlgItem(force, F::Cancel)));
  EXPECT_FALSE(IsWindowVisible(force));
}

// Remove Entry asks and then keeps record 0; another record's key goes, with
// its row, and a refresh agrees. The entry removed is one this case writes.
TEST_F(Gui, RemoveEntryKeepsRecordZeroAndRemovesAnother) {
  AddedEntry added(L"R_Rho", L"Rho Remover");
  ASSERT_TRUE(added.Written());
  app.Command(Id::MenuRefresh);
  ASSERT_EQ(app.RowCount(), kVisible + 1);
  app.SelectRow(app.RowOfRecord(0));
  Settle();
  app.Command(Id::MenuRemoveEntry, true);
  Answer(IDYES, L"Are you sure to remove the selected program entry?");
  EXPECT_EQ(app.RowCount(), kVisible + 1);
  EXPECT_GE(app.RowOfRecord(0), 0);

  const int rho = RowNamed(app, L"Rho Remover");
  ASSERT_GE(rho, 0);
  ASSERT_GT(app.RecordOf(rho), 0);
  app.SelectRow(rho);
  Settle();
  app.Command(Id::MenuRemoveEntry, true);
  Answer(IDYES);
  EXPECT_EQ(app.RowCount(), kVisible);
  EXPECT_LT(RowNamed(app, L"Rho Remover"), 0);
  EXPECT_FALSE(KeyExists(added.Path()));
  app.Command(Id::MenuRefresh);
  EXPECT_EQ(app.RowCount(), kVisible);
  EXPECT_EQ(app.ColumnText(0), L"Software Name (Total:4)");
}

}  // namespace
}  // namespace varnel::guitest
