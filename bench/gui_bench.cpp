// Times VarnelUninstaller.exe from process start to a painted list and the
// GUI thread's longest stall while the analysis runs:
//
//   varnel_gui_bench EXE ROWS CACHE_FILE
//
// Prints the rows listed, window ms (start to visible main window), painted
// ms (start to a list of at least ROWS rows with nothing left to paint), list
// ms (window to painted), the longest reply to a message until then (the list
// being filled), the longest reply after it while the analysis pass ran (until
// CACHE_FILE is written anew) with how many replies were timed, and the
// pass's end as seen from here, and the program's peak working set once the
// pass is done.
#include <windows.h>

#include <commctrl.h>
#include <psapi.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "platform/win32/unique_handle.h"

namespace {
using Clock = std::chrono::steady_clock;
double Ms(Clock::duration d) { return std::chrono::duration<double, std::milli>(d).count(); }

// Zero when the file is missing.
ULONGLONG WriteTime(const std::wstring& file) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExW(file.c_str(), GetFileExInfoStandard, &data)) return 0;
  const FILETIME& t = data.ftLastWriteTime;
  return (ULONGLONG{t.dwHighDateTime} << 32) | t.dwLowDateTime;
}
}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: varnel_gui_bench EXE ROWS CACHE_FILE\n");
    return 2;
  }
  const std::wstring exe = argv[1];
  const int rows = _wtoi(argv[2]);
  const std::wstring cache = argv[3];
  std::wstring command = L"\"" + exe + L"\"";
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info{};
  // Every pass saves the cache when it ends, a warm one too.
  const ULONGLONG cacheBefore = WriteTime(cache);
  const auto start = Clock::now();
  if (!CreateProcessW(exe.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &startup, &info))
    return 1;
  const varnel::win32::UniqueHandle process(info.hProcess), firstThread(info.hThread);
  HWND main = nullptr;
  while (!(main = FindWindowW(L"TUninstallForm_Main", nullptr)) || !IsWindowVisible(main)) {
    if (Clock::now() - start > std::chrono::seconds(60)) {
      std::fprintf(stderr, "no visible main window within 60 s\n");
      TerminateProcess(process.get(), 1);
      return 1;
    }
    Sleep(1);
  }
  const auto shown = Clock::now();

  std::atomic<bool> done{false};
  std::atomic<bool> filled{false};
  double worstFilling = 0, worst = 0;
  int samples = 0;
  std::thread meter([&] {
    while (!done) {
      // A reply that began before the list was painted counts to the filling.
      const bool during = filled;
      const auto t = Clock::now();
      DWORD_PTR r = 0;
      SendMessageTimeoutW(main, WM_NULL, 0, 0, SMTO_NORMAL, 10000, &r);
      const double ms = Ms(Clock::now() - t);
      if (!during) {
        worstFilling = std::max(worstFilling, ms);
      } else {
        worst = std::max(worst, ms);
        ++samples;
      }
      Sleep(2);
    }
  });

  HWND list = GetDlgItem(main, 1020);
  Clock::time_point painted{};
  DWORD_PTR listed = 0;
  while (Clock::now() - start < std::chrono::seconds(120)) {
    DWORD_PTR count = 0;
    RECT dirty;
    if (SendMessageTimeoutW(list, LVM_GETITEMCOUNT, 0, 0, SMTO_NORMAL, 5000, &count) &&
        static_cast<int>(count) >= rows && !GetUpdateRect(list, &dirty, FALSE)) {
      painted = Clock::now();
      filled = true;
      listed = count;
      break;
    }
    Sleep(1);
  }
  ULONGLONG cacheAfter = 0;
  while ((cacheAfter = WriteTime(cache)) == cacheBefore &&
         Clock::now() - start < std::chrono::seconds(300))
    Sleep(20);
  const auto passEnd = Clock::now();
  done = true;
  meter.join();
  PROCESS_MEMORY_COUNTERS memory{};
  memory.cb = sizeof memory;
  const bool measured = GetProcessMemoryInfo(process.get(), &memory, sizeof memory);
  if (painted == Clock::time_point{}) {
    std::fprintf(stderr, "the list never showed %d painted rows\n", rows);
  } else {
    std::printf(
        "%u rows: window %.0f ms, painted %.0f ms, list %.0f ms, longest stall filling %.1f ms, "
        "during analysis %.1f ms (%d replies)",
        static_cast<unsigned>(listed), Ms(shown - start), Ms(painted - start), Ms(painted - shown),
        worstFilling, worst, samples);
    if (cacheAfter == cacheBefore) std::printf(", analysis still running after 300 s");
    else std::printf(", analysis done %.0f ms after start (%.0f ms after the window)",
                     Ms(passEnd - start), Ms(passEnd - shown));
    if (measured)
      std::printf(", peak working set %.1f MB\n", memory.PeakWorkingSetSize / 1048576.0);
    else std::printf(", peak working set unknown\n");
  }
  PostMessageW(main, WM_CLOSE, 0, 0);
  WaitForSingleObject(process.get(), 30000);
  return painted == Clock::time_point{} ? 1 : 0;
}
