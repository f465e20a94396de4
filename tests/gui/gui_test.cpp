// The program's windows driven from outside under Wine. gui_test.sh writes
// five Uninstall entries into a fresh prefix and puts the program in
// C:\varnel-tests\app\; every case starts its own instance.
#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>
#include <shlobj.h>

#include <algorithm>
#include <cwchar>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "core/directory_tree.h"
#include "core/os_name.h"
#include "base/text.h"
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

std::wstring WithCount(std::wstring format, int count) {
  const std::size_t at = format.find(L"%d");
  if (at != std::wstring::npos) format.replace(at, 2, std::to_wstring(count));
  return format;
}

// The user's language choice, in the ini file the program reads it from;
// gone again when this goes.
class LanguageChoice {
 public:
  explicit LanguageChoice(const std::wstring& language) {
    wchar_t appData[MAX_PATH] = {};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, appData))) return;
    std::wstring folder = std::wstring(appData) + L"\\Varnel";
    CreateDirectoryW(folder.c_str(), nullptr);
    folder += L"\\Brightdeck V4";
    CreateDirectoryW(folder.c_str(), nullptr);
    file_ = folder + L"\\Main.ini";
    std::ofstream(text::ToUtf8(file_).c_str(), std::ios::binary)
        << "[Main]\r\nLanguage=" << text::ToUtf8(language) << "\r\n";
  }
  ~LanguageChoice() { Remove(); }
  bool Written() const { return !file_.empty() && FileExists(file_); }
  bool Remove() { return file_.empty() || DeleteFileW(file_.c_str()) || !FileExists(file_); }

 private:
  std::wstring file_;
};

// A per-user Uninstall entry written while the program runs; deleted on leaving.
class AddedEntry {
 public:
  AddedEntry(const std::wstring& key, const std::wstring& name)
      : path_(L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\" + key) {
    HKEY handle = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, path_.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr,
                        &handle, nullptr) != ERROR_SUCCESS)
      return;
    const std::wstring command = L"C:\\Apps\\" + key + L"\\unins.exe";
    written_ = Set(handle, L"DisplayName", name) && Set(handle, L"UninstallString", command);
    RegCloseKey(handle);
  }
  ~AddedEntry() { Remove(); }
  bool Written() const { return written_; }
  bool Remove() {
    const LONG result = RegDeleteKeyW(HKEY_CURRENT_USER, path_.c_str());
    return result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND;
  }

 private:
  static bool Set(HKEY handle, const wchar_t* name, const std::wstring& value) {
    return RegSetValueExW(handle, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
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
    states.push_back(static_cast<int>(SendMessageW(tree, TVM_GETITEMSTATE,
                                                   reinterpret_cast<WPARAM>(item),
                                                   TVIS_STATEIMAGEMASK) >> 12));
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

bool EntryExists(const Sample& sample) {
  HKEY key = nullptr;
  const std::wstring path =
      L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\" + std::wstring(sample.key);
  if (RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
    return false;
  RegCloseKey(key);
  return true;
}

std::wstring AppDataFolder() {
  wchar_t folder[MAX_PATH] = {};
  if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, folder))) return {};
  return folder;
}

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
// ("Uninstall") and end by themselves. Counts the clicks and the most
// uninstaller windows seen at once.
struct UninstallerClicks {
  int clicks = 0;
  int mostAtOnce = 0;
  int openAtEnd = 0;  // uninstaller windows still there when `done` held
};
UninstallerClicks ClickThroughUninstallers(DWORD program, const std::function<bool()>& done) {
  struct Found {
    DWORD program;
    std::vector<HWND> windows;
  };
  UninstallerClicks result;
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
        result.mostAtOnce = std::max(result.mostAtOnce, static_cast<int>(found.windows.size()));
        if (done()) {
          result.openAtEnd = static_cast<int>(found.windows.size());
          return true;
        }
        for (HWND window : found.windows) {
          HWND button = GetDlgItem(window, IDOK);
          if (button && IsWindowVisible(button) && IsWindowEnabled(button)) {
            PostMessageW(button, BM_CLICK, 0, 0);
            ++result.clicks;
            // The page changes before the button is asked again.
            Sleep(700);
          }
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
  void Settle() {
    SendMessageTimeoutW(app.Main(), WM_NULL, 0, 0, SMTO_NORMAL, 30000, nullptr);
  }
  void Answer(int button, HWND owner = nullptr) {
    HWND box = app.WaitForDialog(owner);
    ASSERT_NE(box, nullptr);
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
    HWND question = app.WaitForDialog();
    EXPECT_NE(question, nullptr);
    if (!question) return nullptr;
    PostMessageW(question, WM_COMMAND, IDYES, 0);
    HWND uninstalling = app.FindOwnWindow(L"TUninstalling_Form");
    EXPECT_TRUE(WaitUntil([&] { return uninstalling && IsWindowVisible(uninstalling); }));
    EXPECT_EQ(GetWindow(uninstalling, GW_OWNER), app.Main());
    EXPECT_FALSE(IsWindowEnabled(app.Main()));
    return uninstalling;
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

TEST(GuiLanguage, GermanChoiceTranslatesTheMainWindowAndEnglishReturnsWithoutIt) {
  const std::wstring folder = kAppDir + L"Toolbox_Language\\";
  const std::wstring german = ReadUtf8(folder + L"German.lng");
  const std::wstring english = ReadUtf8(folder + L"English.lng");
  ASSERT_FALSE(german.empty());
  ASSERT_FALSE(english.empty());
  // What the window shows against what a language file says it should.
  auto shown = [](Program& app) {
    return std::vector<std::wstring>{WindowText(app.Control(Id::CategoryFirst)),
                                     WindowText(app.Control(Id::CategoryFirst + 5)),
                                     WindowText(app.Control(Id::Uninstall)),
                                     WindowText(app.Control(Id::ForceUninstall)),
                                     WindowText(app.Control(Id::DetailsIdle)),
                                     app.ColumnText(0),
                                     app.ColumnText(1),
                                     app.ColumnText(2),
                                     WindowText(app.Control(Id::BottomInfo)),
                                     WindowText(app.Control(Id::SearchEdit))};
  };
  auto expected = [](const std::wstring& lng) {
    const std::wstring form = L"Uninstaller_UninstallForm_Main", messages = form + L"_M";
    auto caption = [&](const wchar_t* name) { return LngValue(lng, form, name); };
    return std::vector<std::wstring>{
        caption(L"Label_AllProgrames.Caption"),
        caption(L"Label_WindowsUpdates.Caption"),
        caption(L"Label_Uninstall.Caption"),
        caption(L"Label_ForcedUninstalled.Caption"),
        caption(L"Label_Details_Idle.Caption"),
        WithCount(LngValue(lng, messages, L"M_SoftwareFormat"), kVisible),
        caption(L"ListView_SoftwareList.Columns[1].Caption"),
        caption(L"ListView_SoftwareList.Columns[2].Caption"),
        WithCount(LngValue(lng, messages, L"M_Items"), kVisible),
        LngValue(lng, messages, L"M_SearchSoftware")};
  };
  const std::vector<std::wstring> de = expected(german), en = expected(english);
  // Every text compared is one the two languages spell differently.
  for (std::size_t i = 0; i < de.size(); ++i) {
    EXPECT_FALSE(de[i].empty()) << i;
    EXPECT_NE(de[i], en[i]) << i;
  }
  EXPECT_EQ(de[6], L"Gr\u00f6\u00dfe");

  LanguageChoice choice(L"German");
  ASSERT_TRUE(choice.Written());
  {
    Program app;
    ASSERT_TRUE(app.Start(kApp));
    ASSERT_TRUE(app.WaitForList(kVisible));
    EXPECT_EQ(shown(app), de);
    EXPECT_EQ(app.Close(), 0);
  }
  ASSERT_TRUE(choice.Remove());
  Program app;
  ASSERT_TRUE(app.Start(kApp));
  ASSERT_TRUE(app.WaitForList(kVisible));
  EXPECT_EQ(shown(app), en);
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

// Toolbars of every source while the program runs, gone again when this
// goes: one registered for the platform's browser (its class in the 64-bit
// view), a legacy and a packed Firefox add-on, a Chrome extension whose name
// is localised.
class BrowserToolbars {
 public:
  BrowserToolbars() {
    wchar_t roaming[MAX_PATH] = {}, local[MAX_PATH] = {};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, roaming)) ||
        FAILED(SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, 0, local)))
      return;
    mozilla_ = std::wstring(roaming) + L"\\Mozilla";
    google_ = std::wstring(local) + L"\\Google";
    const std::wstring profile = mozilla_ + L"\\Firefox\\Profiles\\gui.default";
    const std::wstring chrome = google_ + L"\\Chrome\\User Data\\Default";
    const std::wstring extension = chrome + L"\\Extensions\\" + kChromeId + L"\\1.0_0";
    const std::string xpi = text::ToUtf8(text::ReplaceAll(profile, L"\\", L"\\\\")) +
                            "\\\\extensions\\\\xpi@gui.invalid.xpi";
    written_ =
        Write(mozilla_ + L"\\Firefox\\profiles.ini",
              "[Profile0]\r\nIsRelative=1\r\nPath=Profiles/gui.default\r\n") &&
        Write(profile + L"\\extensions\\rdf@gui.invalid\\install.rdf",
              "<RDF xmlns=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\" "
              "xmlns:em=\"http://www.mozilla.org/2004/em-rdf#\"><Description>"
              "<em:name>Gui Rdf Toolbar</em:name></Description></RDF>") &&
        Write(profile + L"\\extensions\\xpi@gui.invalid.xpi",
              std::string("PK\5\6", 4) + std::string(18, '\0')) &&
        Write(profile + L"\\extensions.json",
              "{\"addons\":[{\"id\":\"xpi@gui.invalid\",\"type\":\"extension\",\"location\":"
              "\"app-profile\",\"version\":\"1.0\",\"active\":true,\"defaultLocale\":{\"name\":"
              "\"Gui Xpi Toolbar\"},\"path\":\"" + xpi + "\"}]}") &&
        Write(extension + L"\\manifest.json",
              "{\"name\":\"__MSG_extName__\",\"version\":\"1.0\",\"default_locale\":\"en\"}") &&
        Write(extension + L"\\_locales\\en\\messages.json",
              "{\"extName\":{\"message\":\"Gui Chrome Toolbar\"}}") &&
        Write(chrome + L"\\Preferences",
              "{\"extensions\":{\"settings\":{\"" + text::ToUtf8(kChromeId) +
                  "\":{\"location\":1,\"path\":\"" + text::ToUtf8(kChromeId) + "\\\\1.0_0\"}}}}") &&
        Set(HKEY_LOCAL_MACHINE, kFirefoxKey, L"DisplayName", L"Mozilla Firefox") &&
        Set(HKEY_CURRENT_USER, kToolbarKey, kClsid, L"") &&
        Set(HKEY_LOCAL_MACHINE, kClassKey, L"", L"Gui Registered Toolbar") &&
        Set(HKEY_LOCAL_MACHINE, kClassKey + std::wstring(L"\\InprocServer32"), L"",
            L"C:\\varnel-tests\\toolbar\\guitb.dll");
  }
  ~BrowserToolbars() {
    DeleteDirectoryTree(files(), mozilla_);
    DeleteDirectoryTree(files(), google_);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kFirefoxKey);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kClassKey);
    RegDeleteKeyValueW(HKEY_CURRENT_USER, kToolbarKey, kClsid);
  }
  bool Written() const { return written_; }

 private:
  static constexpr wchar_t kChromeId[] = L"abcdefghijklmnopabcdefghijklmnop";
  static constexpr wchar_t kClsid[] = L"{5B4C3D2E-1F0A-4B9C-8D7E-6F5A4B3C2D1E}";
  static constexpr wchar_t kFirefoxKey[] =
      L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Mozilla Firefox 115.0 (x64 en-US)";
  static constexpr wchar_t kToolbarKey[] = L"Software\\Microsoft\\Internet Explorer\\Toolbar";
  static constexpr wchar_t kClassKey[] =
      L"SOFTWARE\\Classes\\CLSID\\{5B4C3D2E-1F0A-4B9C-8D7E-6F5A4B3C2D1E}";

  IFileSystem& files() { return machine_.Get().files; }
  bool Write(const std::wstring& path, const std::string& bytes) {
    const std::wstring folder = text::ExcludeTrailingBackslash(text::ExtractFilePath(path));
    return MakeDirectoryTree(files(), folder) &&
           files().WriteWholeFile(path, {reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                         bytes.size()});
  }
  static bool Set(HKEY root, const std::wstring& key, const wchar_t* name,
                  const std::wstring& value) {
    return RegSetKeyValueW(root, key.c_str(), name, REG_SZ, value.c_str(),
                           static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))) ==
           ERROR_SUCCESS;
  }

  win32::Win32Platform machine_;
  std::wstring mozilla_, google_;
  bool written_ = false;
};

TEST(GuiToolbars, ToolbarsCategoryShowsOneToolbarOfEachSource) {
  BrowserToolbars toolbars;
  ASSERT_TRUE(toolbars.Written());
  Program app;
  ASSERT_TRUE(app.Start(kApp));
  ASSERT_TRUE(app.WaitForList(kVisible + 4)) << "rows: " << app.RowCount();
  SendMessageW(app.Control(Id::CategoryFirst + 1), BM_CLICK, 0, 0);
  SendMessageTimeoutW(app.Main(), WM_NULL, 0, 0, SMTO_NORMAL, 30000, nullptr);
  std::vector<std::wstring> shown = app.Captions();
  std::sort(shown.begin(), shown.end());
  EXPECT_EQ(shown, (std::vector<std::wstring>{
                       L"Gui Chrome Toolbar (Chrome)", L"Gui Rdf Toolbar (Firefox)",
                       L"Gui Registered Toolbar(x64)", L"Gui Xpi Toolbar (Firefox)"}));
  EXPECT_EQ(app.Close(), 0);
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
  PostMessageW(app.Main(), forms::WM_ACTIVATE_INSTANCE, forms::kActivateWParam, 0x1234);
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

TEST_F(Gui, KeysRefreshWithF5AndSearchWithCtrlFThenEscapeClears) {
  auto listed = [&](const std::wstring& name) {
    const auto captions = app.Captions();
    return std::find(captions.begin(), captions.end(), name) != captions.end();
  };
  ASSERT_TRUE(app.Activate());
  AddedEntry added(L"K_Kappa", L"Kappa Tool");
  ASSERT_TRUE(added.Written());
  EXPECT_FALSE(listed(L"Kappa Tool"));
  PressKey(VK_F5);
  EXPECT_TRUE(WaitUntil([&] { return app.RowCount() == kVisible + 1 && listed(L"Kappa Tool"); }));
  EXPECT_EQ(app.ColumnText(0), L"Software Name (Total:5)");

  HWND edit = app.Control(Id::SearchEdit);
  HWND clear = app.Control(Id::SearchClear);
  EXPECT_NE(app.Focus(), edit);
  PressKey('F', {VK_CONTROL});
  ASSERT_TRUE(WaitUntil([&] { return app.Focus() == edit; }));
  EXPECT_EQ(WindowText(edit), L"");  // the placeholder leaves with the focus coming in
  TypeLetters(L"office");
  EXPECT_TRUE(WaitUntil([&] {
    return WindowText(edit) == L"office" && app.ColumnText(0) == L"Software Name (Total:1)";
  }));
  EXPECT_EQ(app.Captions(), std::vector<std::wstring>{L"Delta Office Suite(x64)"});
  EXPECT_TRUE(IsWindowVisible(clear));
  PressKey(VK_ESCAPE);
  EXPECT_TRUE(WaitUntil([&] { return app.RowCount() == kVisible + 1; }));
  EXPECT_EQ(WindowText(edit), L"");
  EXPECT_FALSE(IsWindowVisible(clear));
  EXPECT_EQ(app.Focus(), edit);

  // F5 with the keys still in the box: the list comes back whole, the box stays
  // empty and takes what is typed next as a search.
  ASSERT_TRUE(added.Remove());
  PressKey(VK_F5);
  EXPECT_TRUE(WaitUntil([&] { return app.RowCount() == kVisible && WindowText(edit).empty(); }))
      << app.RowCount() << " rows, box \"" << text::ToUtf8(WindowText(edit)) << "\"";
  TypeLetters(L"kappa");
  EXPECT_TRUE(WaitUntil([&] { return WindowText(edit) == L"kappa"; }))
      << "box \"" << text::ToUtf8(WindowText(edit)) << "\"";
  EXPECT_TRUE(WaitUntil([&] { return app.ColumnText(0) == L"Software Name (Total:0)"; }));
  PressKey(VK_ESCAPE);
  EXPECT_TRUE(WaitUntil([&] { return app.RowCount() == kVisible; }));
  EXPECT_FALSE(listed(L"Kappa Tool"));
}

TEST_F(Gui, KeysTabWalksTheControlsDeleteAndEnterAskToUninstallTheSelectedRow) {
  ASSERT_TRUE(app.Activate());
  // Only the checked category button is a tab stop; the hidden clear button is skipped.
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
  PressKey(VK_TAB, {VK_SHIFT});
  EXPECT_TRUE(WaitUntil([&] { return app.Focus() == app.Control(Id::More); }));

  // Back into the list, where Home selects the first row.
  for (int i = 0; i < 4; ++i) PressKey(VK_TAB, {VK_SHIFT});
  ASSERT_TRUE(WaitUntil([&] { return app.Focus() == app.List(); }));
  EXPECT_EQ(app.SelectedRow(), -1);
  PressKey(VK_HOME);
  ASSERT_TRUE(WaitUntil([&] { return app.SelectedRow() == 0; }));
  const std::wstring prompt = L"Are you sure you want to uninstall the selected programs?";
  HWND uninstalling = app.FindOwnWindow(L"TUninstalling_Form");
  ASSERT_NE(uninstalling, nullptr);

  PressKey(VK_DELETE);
  HWND box = app.WaitForDialog();
  ASSERT_NE(box, nullptr);
  EXPECT_TRUE(ShowsText(box, prompt));
  EXPECT_EQ(WindowText(box), L"Varnel Uninstaller");
  Answer(IDNO);
  EXPECT_FALSE(IsWindowVisible(uninstalling));
  EXPECT_EQ(app.SelectedRow(), 0);
  // The answer given, the keys go on where they were.
  EXPECT_TRUE(WaitUntil([&] { return app.Focus() == app.List(); }, std::chrono::seconds(5)))
      << "focus on control " << GetDlgCtrlID(app.Focus());

  // Enter in the list is the default button's: the same question. Answered
  // No as well: Yes runs the row's uninstaller, which the uninstall cases do
  // with real ones.
  PressKey(VK_RETURN);
  box = app.WaitForDialog();
  ASSERT_NE(box, nullptr);
  EXPECT_TRUE(ShowsText(box, prompt));
  Answer(IDNO);
  EXPECT_FALSE(IsWindowVisible(uninstalling));
  EXPECT_TRUE(WaitUntil([&] { return app.Focus() == app.List(); }, std::chrono::seconds(5)));
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
  EXPECT_TRUE(WaitUntil([&] { return !IsWindowVisible(uninstalling); }));
  EXPECT_TRUE(WaitUntil([&] { return IsWindowEnabled(app.Main()) != FALSE; }));
  EXPECT_FALSE(EntryExists(kSketchpad));
  EXPECT_FALSE(EntryExists(kSyncTray));
  EXPECT_TRUE(WaitUntil([&] { return app.RowCount() == kVisible; }));
  const std::wstring added = ReadUtf8(TodaysLog()).substr(before.size());
  auto block = [&](const Sample& s) {
    return added.find(L"[" + std::wstring(s.name) + L"]\r\nOperation:Standard Uninstall\r\nDate:");
  };
  const std::size_t first = block(a < b ? kSketchpad : kSyncTray);
  const std::size_t second = block(a < b ? kSyncTray : kSketchpad);
  EXPECT_NE(second, std::wstring::npos) << text::ToUtf8(added);
  EXPECT_LT(first, second) << text::ToUtf8(added);
  std::size_t blocks = 0;
  for (auto at = added.find(L"Operation:"); at != std::wstring::npos;
       at = added.find(L"Operation:", at + 1))
    ++blocks;
  EXPECT_EQ(blocks, 2u);
}

// The saved choice preselects Advanced: no notice; Powerful Scan shows the
// program's leftovers with unchecked boxes; Select All and Delete remove
// them (the desktop shortcut and the settings key the uninstaller forgets)
// and the day's log gets their block.
TEST_F(Gui, AdvancedModeScansAndDeletesTheLeftoversTheUserChecks) {
  const std::wstring choice = AppDataFolder() + L"\\Varnel\\Varnel Uninstaller\\Select.ini";
  std::ofstream(text::ToUtf8(choice).c_str()) << "[Main]\r\nAdvanced=1\r\n";
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
  EXPECT_TRUE(IsWindowVisible(scan));
  const UninstallerClicks run =
      ClickThroughUninstallers(app.Pid(), [&] { return IsWindowEnabled(scan) != FALSE; });
  EXPECT_EQ(run.clicks, 1);
  EXPECT_EQ(app.DialogOwnedBy(uninstalling), nullptr);  // no completion notice
  EXPECT_FALSE(EntryExists(kSketchpad));
  wchar_t desktop[MAX_PATH] = {};
  ASSERT_TRUE(SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_DESKTOPDIRECTORY, nullptr, 0, desktop)));
  const std::wstring shortcut = std::wstring(desktop) + L"\\Oakhollow Sketchpad.lnk";
  const wchar_t* settings = L"Software\\Oakhollow Studio\\Oakhollow Sketchpad";
  auto keyExists = [&] {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, settings, 0, KEY_READ, &key) != ERROR_SUCCESS)
      return false;
    RegCloseKey(key);
    return true;
  };
  ASSERT_TRUE(FileExists(shortcut));
  ASSERT_TRUE(keyExists());

  PostMessageW(uninstalling, WM_COMMAND, U::Scan, 0);
  HWND results = nullptr;
  ASSERT_TRUE(WaitUntil([&] {
    results = app.FindOwnWindow(L"TPowerScan_Form");
    return results && IsWindowVisible(results);
  }));
  EXPECT_TRUE(WaitUntil([&] { return !IsWindowVisible(uninstalling); }));
  EXPECT_EQ(WindowText(results), L"Powerful Scan");
  namespace P = forms::PowerScanId;
  HWND tree = GetDlgItem(results, P::Tree);
  HWND remove = GetDlgItem(results, P::Delete), all = GetDlgItem(results, P::SelectAll);
  EXPECT_NE(SendMessageW(tree, TVM_GETIMAGELIST, TVSIL_STATE, 0), 0);
  const std::vector<int> shown = TreeStates(tree);
  ASSERT_GE(shown.size(), 3u);  // the program, a group, an item at least
  EXPECT_EQ(std::count(shown.begin(), shown.end(), 1), static_cast<long>(shown.size()));
  EXPECT_FALSE(IsWindowEnabled(remove));

  SendMessageW(results, WM_COMMAND, P::SelectAll, 0);
  const std::vector<int> checked = TreeStates(tree);
  EXPECT_EQ(std::count(checked.begin(), checked.end(), 2), static_cast<long>(shown.size()));
  EXPECT_EQ(WindowText(all), L"Deselect All");
  EXPECT_TRUE(IsWindowEnabled(remove));

  const std::wstring before = ReadUtf8(TodaysLog());
  HWND finished = AnswerYesForNotice(results, P::Delete,
                                     L"Are you sure you want to delete the selected items?",
                                     L"Delete finished.");
  ASSERT_NE(finished, nullptr);
  PostMessageW(finished, WM_COMMAND, IDOK, 0);
  EXPECT_TRUE(WaitUntil([&] { return !IsWindowVisible(results) && IsWindowEnabled(app.Main()); }));
  EXPECT_FALSE(FileExists(shortcut));
  EXPECT_FALSE(keyExists());
  const std::wstring added = ReadUtf8(TodaysLog()).substr(before.size());
  EXPECT_NE(added.find(L"[Oakhollow Sketchpad]\r\nOperation:Powerful Scan\r\nDate:"),
            std::wstring::npos)
      << text::ToUtf8(added);
  // The scan spells paths its own way; the case is not the point.
  EXPECT_NE(text::Lower(added).find(text::Lower(L"\r\nDeleted File " + shortcut + L"\r\n")),
            std::wstring::npos)
      << text::ToUtf8(added);
  DeleteFileW(choice.c_str());
}

// Delete All removes every listed log, and only those.
TEST_F(Gui, LogManagerDeleteAllEmptiesTheLogFolder) {
  const std::wstring folder = LogFolder();
  SHCreateDirectoryExW(nullptr, folder.c_str(), nullptr);
  const std::vector<std::wstring> files = {folder + L"2001-01-01.log", folder + L"notes.LOG.txt"};
  for (const auto& file : files) std::ofstream(text::ToUtf8(file).c_str()) << "x";
  CreateDirectoryW((folder + L"x.log").c_str(), nullptr);
  app.Command(Id::MenuLogManagement, true);
  HWND logs = nullptr;
  ASSERT_TRUE(WaitUntil([&] {
    logs = app.FindOwnWindow(L"TLogManager_Form");
    return logs && IsWindowVisible(logs);
  }));
  namespace L = forms::LogManagerId;
  HWND list = GetDlgItem(logs, L::List);
  std::vector<std::wstring> names;
  for (int i = 0, n = app.RowCountOf(list); i < n; ++i) names.push_back(app.CellOf(list, i, 0));
  for (const wchar_t* name : {L"2001-01-01.log", L"notes.LOG.txt"})
    EXPECT_NE(std::find(names.begin(), names.end(), name), names.end()) << text::ToUtf8(name);
  EXPECT_TRUE(IsWindowEnabled(GetDlgItem(logs, L::DeleteAll)));

  PostMessageW(logs, WM_COMMAND, L::DeleteAll, 0);
  HWND box = app.WaitForDialog(logs);
  ASSERT_NE(box, nullptr);
  // Delete All asks under Delete's key, which the shipped language file has.
  const std::wstring english = ReadUtf8(kAppDir + L"Toolbox_Language\\English.lng");
  EXPECT_TRUE(ShowsText(box, LngValue(english, L"Uninstaller_LogManager_Form_M", L"M_SureDelSelect")));
  Answer(IDYES, logs);
  EXPECT_TRUE(WaitUntil([&] { return app.RowCountOf(list) == 0; }));
  for (const auto& file : files) EXPECT_FALSE(FileExists(file)) << text::ToUtf8(file);
  EXPECT_FALSE(FileExists(TodaysLog()));
  EXPECT_TRUE(FileExists(folder + L"x.log"));
  EXPECT_FALSE(IsWindowEnabled(GetDlgItem(logs, L::DeleteAll)));
  PostMessageW(logs, WM_COMMAND, IDCANCEL, 0);
  EXPECT_TRUE(WaitUntil([&] { return !IsWindowVisible(logs) && IsWindowEnabled(app.Main()); }));
  RemoveDirectoryW((folder + L"x.log").c_str());
}

// A folder the guard deleted comes back through the log manager's Restore,
// and Delete then removes its backup.
TEST_F(Gui, LogManagerRestoresABackupAndDeletesIt) {
  const std::wstring folder = L"C:\\varnel-tests\\backed-up";
  const std::wstring file = folder + L"\\notes.txt";
  CreateDirectoryW(folder.c_str(), nullptr);
  std::ofstream(text::ToUtf8(file).c_str()) << "keep me";
  win32::Win32Platform machine;
  std::wstring id;
  {
    auto backup = Backup::Begin(machine.Get());
    ASSERT_TRUE(backup);
    DeletionGuard guard(machine.Get(), ProtectedPlaces(machine.Get(), {}), backup.get());
    ASSERT_TRUE(guard.DeleteFolderTree(folder).deleted);
    id = backup->Id();
  }
  ASSERT_FALSE(FileExists(file));

  app.Command(Id::MenuLogManagement, true);
  HWND logs = nullptr;
  ASSERT_TRUE(WaitUntil([&] {
    logs = app.FindOwnWindow(L"TLogManager_Form");
    return logs && IsWindowVisible(logs);
  }));
  namespace L = forms::LogManagerId;
  HWND list = GetDlgItem(logs, L::Backups), room = GetDlgItem(logs, L::Room);
  HWND restore = GetDlgItem(logs, L::Restore), remove = GetDlgItem(logs, L::DeleteBackup);
  auto rowOf = [&] {
    for (int i = 0, n = app.RowCountOf(list); i < n; ++i)
      if (app.CellOf(list, i, 0) == id) return i;
    return -1;
  };
  int row = rowOf();
  ASSERT_GE(row, 0);
  EXPECT_EQ(app.CellOf(list, row, 2), L"1");
  EXPECT_EQ(WindowText(room).rfind(L"All backups together take ", 0), 0u)
      << text::ToUtf8(WindowText(room));
  EXPECT_FALSE(IsWindowEnabled(restore));
  app.SelectRowOf(list, row);
  Settle();
  EXPECT_TRUE(IsWindowEnabled(restore));
  EXPECT_TRUE(IsWindowEnabled(remove));

  const std::wstring english = ReadUtf8(kAppDir + L"Toolbox_Language\\English.lng");
  auto asked = [&](HWND box, const wchar_t* key) {
    return ShowsText(box, LngValue(english, L"Uninstaller_LogManager_Form_M", key));
  };
  HWND notice =
      AnswerYesForNotice(logs, L::Restore,
                         LngValue(english, L"Uninstaller_LogManager_Form_M", L"M_SureRestore"),
                         L"1 item was restored.");
  ASSERT_NE(notice, nullptr);
  PostMessageW(notice, WM_COMMAND, IDOK, 0);
  ASSERT_TRUE(WaitUntil([&] { return !IsWindow(notice); }));
  EXPECT_EQ(ReadUtf8(file), L"keep me");

  row = rowOf();
  ASSERT_GE(row, 0);  // a restore keeps the backup
  app.SelectRowOf(list, row);
  Settle();
  PostMessageW(logs, WM_COMMAND, L::DeleteBackup, 0);
  HWND question = app.WaitForDialog(logs);
  ASSERT_NE(question, nullptr);
  EXPECT_TRUE(asked(question, L"M_SureDelBackup"));
  Answer(IDYES, logs);
  EXPECT_TRUE(WaitUntil([&] { return rowOf() < 0; }));
  for (const BackupSummary& b : ListBackups(machine.Get())) EXPECT_NE(b.id, id);
  EXPECT_FALSE(IsWindowEnabled(restore));
  PostMessageW(logs, WM_COMMAND, IDCANCEL, 0);
  EXPECT_TRUE(WaitUntil([&] { return !IsWindowVisible(logs) && IsWindowEnabled(app.Main()); }));
  DeleteFileW(file.c_str());
  RemoveDirectoryW(folder.c_str());
}

// Last: it removes an entry for good.
// The forced-uninstall window over its logic: a search by name fills the
// list (never with the first record), Cancel hides the window.
TEST_F(Gui, ForcedUninstallSearchListsMatchesButNeverTheFirstRecord) {
  const int first = app.RowWithSubItem(8, L"0");
  ASSERT_GE(first, 0);
  const std::wstring firstName = app.Cell(first, 0);
  app.Command(Id::ForceUninstall);
  HWND force = nullptr;
  ASSERT_TRUE(WaitUntil([&] {
    force = app.FindOwnWindow(L"TForceUninstall_Form");
    return force && IsWindowVisible(force);
  }));
  namespace F = forms::ForceUninstallId;
  HWND list = GetDlgItem(force, F::List);
  EXPECT_FALSE(IsWindowVisible(list));
  EXPECT_TRUE(IsWindowVisible(GetDlgItem(force, F::DragInfo)));
  EXPECT_EQ(WindowText(GetDlgItem(force, F::Next)), L"Next>");
  // The first record's own name finds everything else holding it, never itself.
  SendMessageW(GetDlgItem(force, F::Name), WM_SETTEXT, 0,
               reinterpret_cast<LPARAM>(firstName.substr(0, 1).c_str()));
  SendMessageW(force, WM_COMMAND, MAKEWPARAM(F::Search, BN_CLICKED),
               reinterpret_cast<LPARAM>(GetDlgItem(force, F::Search)));
  EXPECT_TRUE(IsWindowVisible(list));
  EXPECT_FALSE(IsWindowVisible(GetDlgItem(force, F::DragInfo)));
  std::vector<std::wstring> shown;
  for (int r = 0, n = app.RowCountOf(list); r < n; ++r) shown.push_back(app.CellOf(list, r, 0));
  EXPECT_FALSE(shown.empty());
  EXPECT_EQ(std::count(shown.begin(), shown.end(), firstName), 0) << firstName;
  SendMessageW(force, WM_COMMAND, MAKEWPARAM(F::Cancel, BN_CLICKED),
               reinterpret_cast<LPARAM>(GetDlgItem(force, F::Cancel)));
  EXPECT_FALSE(IsWindowVisible(force));
}

// Takes a sample's entry for good, so its suite is registered after every
// other one and runs last.
class GuiEntryRemoval : public Gui {};

TEST_F(GuiEntryRemoval, KeepsRecordZeroAndRemovesAnotherThenRefreshAgrees) {
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
