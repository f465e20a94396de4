// Tries to leave marks everywhere a test program could reach, and reports
// what it managed. tests/sandbox/check_sandbox.sh decides what may succeed.
//
//   sandbox_probe TOKEN OUTSIDE   OUTSIDE is a Unix folder the sandbox must protect
#include <windows.h>
#include <shlobj.h>
#include <knownfolders.h>

#include <cstdio>
#include <string>

namespace {

bool WriteMark(const std::wstring& path) {
  HANDLE h = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE) return false;
  DWORD written = 0;
  const bool ok = WriteFile(h, "probe\n", 6, &written, nullptr) && written == 6;
  CloseHandle(h);
  return ok;
}

void Report(const char* kind, const wchar_t* name, bool ok) {
  std::printf("%s %ls %s %lu\n", kind, name, ok ? "ok" : "failed", ok ? 0ul : GetLastError());
}

struct ShellFolder {
  const wchar_t* name;
  int csidl;  // -1: only known through its FOLDERID
};

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: sandbox_probe TOKEN OUTSIDE\n");
    return 2;
  }
  const std::wstring token = argv[1];
  std::wstring outside = argv[2];  // a Unix path, e.g. /tmp/x
  std::wstring outside_back = outside;
  for (auto& c : outside_back) if (c == L'/') c = L'\\';

  // Writes that must work and must land inside the prefix.
  const ShellFolder folders[] = {
      {L"desktop", CSIDL_DESKTOPDIRECTORY}, {L"documents", CSIDL_PERSONAL},
      {L"music", CSIDL_MYMUSIC},            {L"pictures", CSIDL_MYPICTURES},
      {L"videos", CSIDL_MYVIDEO},           {L"templates", CSIDL_TEMPLATES},
      {L"appdata", CSIDL_APPDATA},          {L"localappdata", CSIDL_LOCAL_APPDATA},
      {L"commondesktop", CSIDL_COMMON_DESKTOPDIRECTORY},
      {L"downloads", -1},
  };
  for (const ShellFolder& f : folders) {
    std::wstring dir;
    if (f.csidl >= 0) {
      wchar_t buf[MAX_PATH];
      if (SUCCEEDED(SHGetFolderPathW(nullptr, f.csidl | CSIDL_FLAG_CREATE, nullptr,
                                     SHGFP_TYPE_CURRENT, buf)))
        dir = buf;
    } else {
      PWSTR p = nullptr;
      if (SUCCEEDED(SHGetKnownFolderPath(FOLDERID_Downloads, KF_FLAG_CREATE, nullptr, &p)))
        dir = p;
      CoTaskMemFree(p);
    }
    const bool ok = !dir.empty() && WriteMark(dir + L"\\" + token + L"-" + f.name + L".txt");
    Report("folder", f.name, ok);
  }
  wchar_t temp[MAX_PATH];
  const DWORD n = GetTempPathW(MAX_PATH, temp);
  Report("folder", L"temp", n > 0 && WriteMark(std::wstring(temp) + token + L"-temp.txt"));

  // Ways out that must all be closed.
  const std::wstring z = L"Z:" + outside_back + L"\\" + token;
  const std::wstring unix_dos = L"\\\\?\\unix" + outside_back + L"\\" + token;
  const std::wstring unix_nt = L"\\??\\unix" + outside_back + L"\\" + token;
  const std::wstring unix_slash = L"\\\\?\\unix" + outside + L"/" + token;
  Report("escape", L"z-drive", WriteMark(z + L"-z.txt"));
  Report("escape", L"unix-dos", WriteMark(unix_dos + L"-unix-dos.txt"));
  Report("escape", L"unix-nt", WriteMark(unix_nt + L"-unix-nt.txt"));
  Report("escape", L"unix-slash", WriteMark(unix_slash + L"-unix-slash.txt"));
  Report("escape", L"unix-mkdir", CreateDirectoryW((unix_dos + L"-dir").c_str(), nullptr) != 0);
  // Only for the log: Wine reports a delete as done even when the kernel refused it.
  Report("escape", L"unix-delete",
         DeleteFileW((L"\\\\?\\unix" + outside_back + L"\\victim.txt").c_str()) != 0);
  Report("escape", L"z-delete", DeleteFileW((L"Z:" + outside_back + L"\\victim.txt").c_str()) != 0);
  return 0;
}
