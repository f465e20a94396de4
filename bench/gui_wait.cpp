// Waits until VarnelUninstaller.exe shows its main window with a filled list
// and every row the analysis pass updated painted, then prints the row count:
// tools/run.sh takes its screenshot after this. Exit 0 when ready, 1 after the
// time limit (seconds, default 90).
#include <windows.h>

#include <commctrl.h>
#include <shlobj.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/win32/unique_handle.h"

namespace {

ULONGLONG Ticks(const FILETIME& time) {
  return (ULONGLONG{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

// Zero when the file is missing.
ULONGLONG WriteTime(const std::wstring& file) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (file.empty() || !GetFileAttributesExW(file.c_str(), GetFileExInfoStandard, &data)) return 0;
  return Ticks(data.ftLastWriteTime);
}

// Zero when the window's process cannot be asked.
ULONGLONG ProcessStart(HWND window) {
  DWORD pid = 0;
  GetWindowThreadProcessId(window, &pid);
  varnel::win32::UniqueHandle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid));
  FILETIME created, exited, kernel, user;
  if (!process || !GetProcessTimes(process.get(), &created, &exited, &kernel, &user)) return 0;
  return Ticks(created);
}

// The analysis pass saves this file when it ends, after its last row update.
std::wstring CacheFile() {
  wchar_t folder[MAX_PATH];
  if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder)))
    return L"";
  return std::wstring(folder) + L"\\Varnel\\Varnel Uninstaller\\SoftwareCache.ini";
}

}  // namespace

int main(int argc, char** argv) {
  const DWORD limit = (argc > 1 ? static_cast<DWORD>(std::atoi(argv[1])) : 90) * 1000;
  const DWORD start = GetTickCount();
  const std::wstring cache = CacheFile();
  while (GetTickCount() - start < limit) {
    HWND main = FindWindowW(L"TUninstallForm_Main", nullptr);
    HWND list = main ? GetDlgItem(main, 1020) : nullptr;
    DWORD_PTR rows = 0;
    RECT dirty;
    // A cache older than the process is the last run's: this pass is not done.
    if (list && IsWindowVisible(main) && WriteTime(cache) > ProcessStart(main) &&
        SendMessageTimeoutW(list, LVM_GETITEMCOUNT, 0, 0, SMTO_NORMAL, 5000, &rows) && rows > 0 &&
        !GetUpdateRect(list, &dirty, FALSE)) {
      std::printf("%u\n", static_cast<unsigned>(rows));
      return 0;
    }
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT);
  }
  std::fprintf(stderr, "gui-wait: no painted list within the time limit\n");
  return 1;
}
