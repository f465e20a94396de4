// Waits until VarnelUninstaller.exe shows its main window with a painted,
// filled list, then prints the row count: tools/run.sh takes its screenshot
// after this. Exit 0 when ready, 1 after the time limit (seconds, default 90).
#include <windows.h>

#include <commctrl.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
  const DWORD limit = (argc > 1 ? static_cast<DWORD>(std::atoi(argv[1])) : 90) * 1000;
  const DWORD start = GetTickCount();
  int stable = 0;
  while (GetTickCount() - start < limit) {
    HWND main = FindWindowW(L"TUninstallForm_Main", nullptr);
    HWND list = main ? GetDlgItem(main, 1020) : nullptr;
    DWORD_PTR rows = 0;
    RECT dirty;
    if (list && IsWindowVisible(main) &&
        SendMessageTimeoutW(list, LVM_GETITEMCOUNT, 0, 0, SMTO_NORMAL, 5000, &rows) && rows > 0 &&
        !GetUpdateRect(list, &dirty, FALSE)) {
      // Painted twice in a row: the icons the analysis adds have landed too.
      if (++stable >= 20) {
        std::printf("%u\n", static_cast<unsigned>(rows));
        return 0;
      }
    } else {
      stable = 0;
    }
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT);
  }
  std::fprintf(stderr, "gui-wait: no painted list within the time limit\n");
  return 1;
}
