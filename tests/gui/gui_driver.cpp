#include "tests/gui/gui_driver.h"

#include <commctrl.h>

#include <iterator>
#include <utility>
#include <vector>

#include "ui/forms/private_messages.h"

namespace varnel::guitest {

namespace {
constexpr std::size_t kTextChars = 1024;
}

bool WaitUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!done()) {
    if (std::chrono::steady_clock::now() > end) return false;
    // Wakes on any message to this thread, else re-asks after a short beat.
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
  }
  return true;
}

void PressKey(WORD key, std::initializer_list<WORD> modifiers) {
  std::vector<INPUT> strokes;
  auto add = [&](WORD vk, bool up) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = vk;
    input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(vk, MAPVK_VK_TO_VSC));
    input.ki.dwFlags = up ? KEYEVENTF_KEYUP : 0;
    strokes.push_back(input);
  };
  for (WORD modifier : modifiers) add(modifier, false);
  add(key, false);
  add(key, true);
  for (auto it = std::rbegin(modifiers); it != std::rend(modifiers); ++it) add(*it, true);
  SendInput(static_cast<UINT>(strokes.size()), strokes.data(), sizeof(INPUT));
}

void TypeLetters(std::wstring_view letters) {
  for (wchar_t c : letters) {
    // The virtual-key codes of letters are their capitals; unshifted they type lower case.
    const bool letter = c >= L'a' && c <= L'z';
    PressKey(static_cast<WORD>(letter ? c - L'a' + L'A' : c));
  }
}

std::wstring WindowText(HWND window) {
  wchar_t buffer[2048] = {};
  SendMessageTimeoutW(window, WM_GETTEXT, 2048, reinterpret_cast<LPARAM>(buffer), SMTO_NORMAL,
                      10000, nullptr);
  return buffer;
}

Program::~Program() {
  if (process_) {
    if (WaitForSingleObject(process_, 0) == WAIT_TIMEOUT) {
      Close();
      if (WaitForSingleObject(process_, 0) == WAIT_TIMEOUT) TerminateProcess(process_, 1);
    }
    CloseHandle(process_);
  }
}

bool Program::Start(const std::wstring& exe, const std::wstring& args) {
  std::wstring command = L"\"" + exe + L"\" " + args;
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info{};
  if (!CreateProcessW(exe.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &startup, &info))
    return false;
  CloseHandle(info.hThread);
  process_ = info.hProcess;
  pid_ = info.dwProcessId;
  return true;
}

bool Program::Activate() {
  if (!main_) return false;
  SetForegroundWindow(main_);
  return WaitUntil([&] { return GetForegroundWindow() == main_; });
}

HWND Program::Focus() const {
  GUITHREADINFO info{};
  info.cbSize = sizeof info;
  if (!main_ || !GetGUIThreadInfo(GetWindowThreadProcessId(main_, nullptr), &info)) return nullptr;
  return info.hwndFocus;
}

HWND Program::FindOwnWindow(const wchar_t* className) const {
  struct Search {
    DWORD pid;
    const wchar_t* cls;
    HWND found;
  } search{pid_, className, nullptr};
  EnumWindows(
      [](HWND hwnd, LPARAM param) -> BOOL {
        auto* s = reinterpret_cast<Search*>(param);
        DWORD pid = 0;
        GetWindowThreadProcessId(hwnd, &pid);
        wchar_t cls[256] = {};
        GetClassNameW(hwnd, cls, 256);
        if (pid == s->pid && lstrcmpW(cls, s->cls) == 0) {
          s->found = hwnd;
          return FALSE;
        }
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&search));
  return search.found;
}

bool Program::WaitForList(int rows) {
  const bool shown = WaitUntil([&] {
    main_ = FindOwnWindow(L"TUninstallForm_Main");
    return main_ && IsWindowVisible(main_);
  });
  if (!shown) return false;
  return WaitUntil([&] {
    RECT dirty;
    return RowCount() == rows && !GetUpdateRect(List(), &dirty, FALSE);
  });
}

int Program::Close() {
  if (main_) PostMessageW(main_, WM_CLOSE, 0, 0);
  if (WaitForSingleObject(process_, 30000) != WAIT_OBJECT_0) return -1;
  DWORD code = 1;
  GetExitCodeProcess(process_, &code);
  return static_cast<int>(code);
}

bool Program::Remote(void* local, std::size_t size, const std::function<void(void*)>& send,
                     LPWSTR* textField, std::wstring* text) const {
  // Room for the structure and a text buffer behind it.
  const std::size_t total = size + kTextChars * sizeof(wchar_t);
  void* remote = VirtualAllocEx(process_, nullptr, total, MEM_COMMIT, PAGE_READWRITE);
  if (!remote) return false;
  auto* buffer = reinterpret_cast<wchar_t*>(static_cast<char*>(remote) + size);
  if (textField) *textField = buffer;
  bool ok = WriteProcessMemory(process_, remote, local, size, nullptr) != FALSE;
  if (ok) {
    send(remote);
    ok = ReadProcessMemory(process_, remote, local, size, nullptr) != FALSE;
  }
  if (ok && text) {
    std::vector<wchar_t> read(kTextChars, L'\0');
    ok = ReadProcessMemory(process_, buffer, read.data(), kTextChars * sizeof(wchar_t), nullptr) !=
         FALSE;
    read.back() = 0;
    if (ok) *text = read.data();
  }
  VirtualFreeEx(process_, remote, 0, MEM_RELEASE);
  return ok;
}

int Program::RowCountOf(HWND list) const {
  DWORD_PTR count = 0;
  if (!SendMessageTimeoutW(list, LVM_GETITEMCOUNT, 0, 0, SMTO_NORMAL, 10000, &count)) return -1;
  return static_cast<int>(count);
}

std::wstring Program::CellOf(HWND list, int row, int column) const {
  LVITEMW item{};
  item.iSubItem = column;
  item.cchTextMax = kTextChars;
  std::wstring result;
  Remote(
      &item, sizeof item,
      [&](void* remote) {
        SendMessageTimeoutW(list, LVM_GETITEMTEXTW, row, reinterpret_cast<LPARAM>(remote),
                            SMTO_NORMAL, 10000, nullptr);
      },
      &item.pszText, &result);
  return result;
}

void Program::SetRowChecked(int row, bool on) {
  LVITEMW item{};
  item.stateMask = LVIS_STATEIMAGEMASK;
  item.state = INDEXTOSTATEIMAGEMASK(on ? 2 : 1);
  Remote(&item, sizeof item, [&](void* remote) {
    SendMessageTimeoutW(List(), LVM_SETITEMSTATE, row, reinterpret_cast<LPARAM>(remote),
                        SMTO_NORMAL, 10000, nullptr);
  });
}

int Program::GroupOf(int row) const {
  DWORD_PTR group = 0;
  SendMessageTimeoutW(main_, forms::WM_ROW_GROUP, row, 0, SMTO_NORMAL, 10000, &group);
  return static_cast<int>(group);
}

std::wstring Program::ColumnText(int column) const {
  LVCOLUMNW header{};
  header.mask = LVCF_TEXT;
  header.cchTextMax = kTextChars;
  std::wstring result;
  Remote(
      &header, sizeof header,
      [&](void* remote) {
        SendMessageTimeoutW(List(), LVM_GETCOLUMNW, column, reinterpret_cast<LPARAM>(remote),
                            SMTO_NORMAL, 10000, nullptr);
      },
      &header.pszText, &result);
  return result;
}

int Program::SortArrow(int column) const {
  HWND header = reinterpret_cast<HWND>(SendMessageW(List(), LVM_GETHEADER, 0, 0));
  HDITEMW item{};
  item.mask = HDI_FORMAT;
  Remote(&item, sizeof item, [&](void* remote) {
    SendMessageTimeoutW(header, HDM_GETITEMW, column, reinterpret_cast<LPARAM>(remote),
                        SMTO_NORMAL, 10000, nullptr);
  });
  return item.fmt & (HDF_SORTUP | HDF_SORTDOWN);
}

void Program::SelectRowOf(HWND list, int row) {
  LVITEMW item{};
  item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
  item.state = LVIS_SELECTED | LVIS_FOCUSED;
  Remote(&item, sizeof item, [&](void* remote) {
    SendMessageTimeoutW(list, LVM_SETITEMSTATE, row, reinterpret_cast<LPARAM>(remote),
                        SMTO_NORMAL, 10000, nullptr);
  });
}

int Program::SelectedRow() const {
  DWORD_PTR row = static_cast<DWORD_PTR>(-1);
  SendMessageTimeoutW(List(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED,
                      SMTO_NORMAL, 10000, &row);
  return static_cast<int>(static_cast<LONG_PTR>(row));
}

void Program::ClickColumn(int column) {
  // A real click on the header item, in the header's own coordinates.
  HWND header = reinterpret_cast<HWND>(SendMessageW(List(), LVM_GETHEADER, 0, 0));
  RECT item{};
  Remote(&item, sizeof item, [&](void* remote) {
    SendMessageTimeoutW(header, HDM_GETITEMRECT, column, reinterpret_cast<LPARAM>(remote),
                        SMTO_NORMAL, 10000, nullptr);
  });
  const LPARAM at = MAKELPARAM((item.left + item.right) / 2, (item.top + item.bottom) / 2);
  SendMessageTimeoutW(header, WM_LBUTTONDOWN, MK_LBUTTON, at, SMTO_NORMAL, 10000, nullptr);
  SendMessageTimeoutW(header, WM_LBUTTONUP, 0, at, SMTO_NORMAL, 10000, nullptr);
  SendMessageTimeoutW(main_, WM_NULL, 0, 0, SMTO_NORMAL, 10000, nullptr);
}

std::vector<std::wstring> Program::Captions() const {
  std::vector<std::wstring> out;
  for (int i = 0, n = RowCount(); i < n; ++i) out.push_back(Cell(i, 0));
  return out;
}

int Program::RecordOf(int row) const {
  DWORD_PTR record = static_cast<DWORD_PTR>(-1);
  SendMessageTimeoutW(main_, forms::WM_ROW_RECORD, row, 0, SMTO_NORMAL, 10000, &record);
  return static_cast<int>(static_cast<LONG_PTR>(record));
}

int Program::RowOfRecord(int record) const {
  for (int i = 0, n = RowCount(); i < n; ++i)
    if (RecordOf(i) == record) return i;
  return -1;
}

void Program::ChangeDpi(UINT dpi) {
  // The window's rectangle, as the system suggests it when the window lands
  // on a monitor of another DPI.
  RECT suggested{};
  GetWindowRect(main_, &suggested);
  Remote(&suggested, sizeof suggested, [&](void* remote) {
    SendMessageTimeoutW(main_, WM_DPICHANGED, MAKEWPARAM(dpi, dpi),
                        reinterpret_cast<LPARAM>(remote), SMTO_NORMAL, 10000, nullptr);
  });
}

int Program::RowHeight() const {
  RECT bounds{LVIR_BOUNDS, 0, 0, 0};
  DWORD_PTR ok = 0;
  Remote(&bounds, sizeof bounds, [&](void* remote) {
    SendMessageTimeoutW(List(), LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(remote),
                        SMTO_NORMAL, 10000, &ok);
  });
  return ok ? bounds.bottom - bounds.top : 0;
}

void Program::Command(int id, bool post) {
  if (post) {
    PostMessageW(main_, WM_COMMAND, MAKEWPARAM(id, 0), 0);
  } else {
    SendMessageTimeoutW(main_, WM_COMMAND, MAKEWPARAM(id, 0), 0, SMTO_NORMAL, 30000, nullptr);
  }
}

HWND Program::DialogOwnedBy(HWND owner) const {
  struct Search {
    HWND owner;
    HWND found;
  } search{owner, nullptr};
  EnumWindows(
      [](HWND hwnd, LPARAM param) -> BOOL {
        auto* s = reinterpret_cast<Search*>(param);
        wchar_t cls[64] = {};
        GetClassNameW(hwnd, cls, 64);
        if (lstrcmpW(cls, L"#32770") == 0 && GetWindow(hwnd, GW_OWNER) == s->owner &&
            IsWindowVisible(hwnd)) {
          s->found = hwnd;
          return FALSE;
        }
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&search));
  return search.found;
}

HWND Program::WaitForDialog(HWND owner) {
  HWND found = nullptr;
  WaitUntil([&] {
    found = DialogOwnedBy(owner ? owner : main_);
    return found != nullptr;
  });
  return found;
}

}  // namespace varnel::guitest
