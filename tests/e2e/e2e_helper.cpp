// Chores of the end-to-end scripts that Wine's own tools do slowly or not at all:
//
//   e2e_helper registry FILE      writes HKLM (64-bit view, so Wow6432Node is a plain
//                                 subkey) and HKCU to FILE, one key or value a line
//   e2e_helper wait-run EXE ARG.. runs EXE in a job object and returns its exit code once
//                                 every process it started has ended (an NSIS uninstaller
//                                 hands over to a copy of itself and exits at once)
//   e2e_helper processes          prints every running process: id, parent id and
//                                 executable name, tab-separated, one a line
//
// Lines of FILE, UTF-8, fields split by tabs; '%', tab, CR, LF and NUL inside a field are
// written %25, %09, %0D, %0A and %00:
//   K <key>                           a key, written as HKLM\... or HKCU\...
//   L <key> <target>                  a symbolic link key; not followed
//   V <key> <name> <type> <data>      a value: strings as stored (without the final NUL),
//                                     DWORD and QWORD in decimal, anything else in hex
// `reg export` takes seconds for HKLM under Wine; this takes a fraction of that.
#include <windows.h>
#include <tlhelp32.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace {

template <auto Close>
struct Closer {
  void operator()(auto handle) const { Close(handle); }
};
using Key = std::unique_ptr<std::remove_pointer_t<HKEY>, Closer<RegCloseKey>>;
using Handle = std::unique_ptr<void, Closer<CloseHandle>>;

Key OpenKey(HKEY parent, const wchar_t* name, DWORD options, REGSAM access) {
  HKEY h = nullptr;
  if (RegOpenKeyExW(parent, name, options, access | KEY_WOW64_64KEY, &h) != ERROR_SUCCESS)
    return nullptr;
  return Key(h);
}

std::string Utf8(const std::wstring& text) {
  if (text.empty()) return {};
  const int n = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                    nullptr, 0, nullptr, nullptr);
  std::string out(static_cast<std::size_t>(n), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), out.data(), n,
                      nullptr, nullptr);
  return out;
}

std::string Field(const std::wstring& text) {
  std::string out;
  for (char c : Utf8(text)) {
    switch (c) {
      case '%': out += "%25"; break;
      case '\t': out += "%09"; break;
      case '\r': out += "%0D"; break;
      case '\n': out += "%0A"; break;
      case '\0': out += "%00"; break;
      default: out += c;
    }
  }
  return out;
}

std::wstring StringData(const std::vector<BYTE>& data) {
  std::wstring text(reinterpret_cast<const wchar_t*>(data.data()), data.size() / sizeof(wchar_t));
  if (!text.empty() && text.back() == L'\0') text.pop_back();
  return text;
}

std::string DataText(DWORD type, const std::vector<BYTE>& data) {
  if (type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ || type == REG_LINK)
    return Field(StringData(data));
  if ((type == REG_DWORD && data.size() == 4) || (type == REG_QWORD && data.size() == 8)) {
    unsigned long long v = 0;  // little-endian: the low bytes first
    memcpy(&v, data.data(), data.size());
    return std::to_string(v);
  }
  static const char kHex[] = "0123456789abcdef";
  std::string hex;
  for (BYTE b : data) {
    hex += kHex[b >> 4];
    hex += kHex[b & 15];
  }
  return hex;
}

class Dumper {
 public:
  explicit Dumper(FILE* out) : out_(out) {}

  void Walk(HKEY key, const std::wstring& path) {
    std::fprintf(out_, "K\t%s\n", Field(path).c_str());
    DWORD subkeys = 0, maxSubkey = 0, values = 0, maxName = 0, maxData = 0;
    if (RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &subkeys, &maxSubkey, nullptr, &values,
                         &maxName, &maxData, nullptr, nullptr) != ERROR_SUCCESS)
      return;
    std::vector<wchar_t> name(maxName + 2);
    std::vector<BYTE> data(maxData + 2);
    for (DWORD i = 0; i < values; ++i) {
      DWORD nameLen = static_cast<DWORD>(name.size()), dataLen = static_cast<DWORD>(data.size());
      DWORD type = 0;
      if (RegEnumValueW(key, i, name.data(), &nameLen, nullptr, &type, data.data(), &dataLen) !=
          ERROR_SUCCESS)
        continue;
      std::vector<BYTE> bytes(data.begin(), data.begin() + dataLen);
      std::fprintf(out_, "V\t%s\t%s\t%lu\t%s\n", Field(path).c_str(),
                   Field(std::wstring(name.data(), nameLen)).c_str(), type,
                   DataText(type, bytes).c_str());
    }
    std::vector<std::wstring> names;
    std::vector<wchar_t> sub(maxSubkey + 2);
    for (DWORD i = 0; i < subkeys; ++i) {
      DWORD len = static_cast<DWORD>(sub.size());
      if (RegEnumKeyExW(key, i, sub.data(), &len, nullptr, nullptr, nullptr, nullptr) ==
          ERROR_SUCCESS)
        names.emplace_back(sub.data(), len);
    }
    for (const std::wstring& child : names) {
      const std::wstring childPath = path + L"\\" + child;
      std::wstring target;
      if (LinkTarget(key, child, &target)) {
        std::fprintf(out_, "L\t%s\t%s\n", Field(childPath).c_str(), Field(target).c_str());
        continue;
      }
      if (Key sub = OpenKey(key, child.c_str(), 0, KEY_READ)) Walk(sub.get(), childPath);
    }
  }

 private:
  static bool LinkTarget(HKEY parent, const std::wstring& child, std::wstring* target) {
    Key h = OpenKey(parent, child.c_str(), REG_OPTION_OPEN_LINK, KEY_QUERY_VALUE);
    if (!h) return false;
    DWORD type = 0, size = 0;
    bool link = RegQueryValueExW(h.get(), L"SymbolicLinkValue", nullptr, &type, nullptr, &size) ==
                    ERROR_SUCCESS &&
                type == REG_LINK;
    if (link) {
      std::vector<BYTE> data(size + 2);
      if (RegQueryValueExW(h.get(), L"SymbolicLinkValue", nullptr, &type, data.data(), &size) ==
          ERROR_SUCCESS)
        *target = StringData(std::vector<BYTE>(data.begin(), data.begin() + size));
    }
    return link;
  }

  FILE* out_;
};

int DumpRegistry(const wchar_t* file) {
  std::unique_ptr<FILE, int (*)(FILE*)> out(_wfopen(file, L"wb"), &std::fclose);
  if (!out) {
    std::fprintf(stderr, "e2e_helper: cannot write %ls\n", file);
    return 1;
  }
  Dumper dumper(out.get());
  if (Key machine = OpenKey(HKEY_LOCAL_MACHINE, nullptr, 0, KEY_READ))
    dumper.Walk(machine.get(), L"HKLM");
  dumper.Walk(HKEY_CURRENT_USER, L"HKCU");
  return std::fclose(out.release()) == 0 ? 0 : 1;
}

int WaitRun(std::wstring line) {
  Handle job(CreateJobObjectW(nullptr, nullptr));
  if (!job) {
    std::fprintf(stderr, "e2e_helper: no job object (error %lu)\n", GetLastError());
    return 1;
  }
  STARTUPINFOW si{};
  si.cb = sizeof si;
  PROCESS_INFORMATION pi{};
  if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, CREATE_SUSPENDED, nullptr,
                      nullptr, &si, &pi)) {
    std::fprintf(stderr, "e2e_helper: cannot start %ls (error %lu)\n", line.c_str(),
                 GetLastError());
    return 1;
  }
  Handle process(pi.hProcess), thread(pi.hThread);
  if (!AssignProcessToJobObject(job.get(), process.get())) {
    std::fprintf(stderr, "e2e_helper: cannot assign the job (error %lu)\n", GetLastError());
    TerminateProcess(process.get(), 1);
    return 1;
  }
  ResumeThread(thread.get());
  WaitForSingleObject(process.get(), INFINITE);
  DWORD code = 1;
  GetExitCodeProcess(process.get(), &code);
  // The caller's time limit bounds this loop.
  for (;;) {
    JOBOBJECT_BASIC_ACCOUNTING_INFORMATION info{};
    if (!QueryInformationJobObject(job.get(), JobObjectBasicAccountingInformation, &info,
                                   sizeof info, nullptr)) {
      std::fprintf(stderr, "e2e_helper: cannot query the job (error %lu)\n", GetLastError());
      return 1;
    }
    if (info.ActiveProcesses == 0) break;
    Sleep(50);
  }
  return static_cast<int>(code);
}

int ListProcesses() {
  Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  if (snapshot.get() == INVALID_HANDLE_VALUE) {
    snapshot.release();
    std::fprintf(stderr, "e2e_helper: no process snapshot (error %lu)\n", GetLastError());
    return 1;
  }
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = Process32FirstW(snapshot.get(), &entry); more;
       more = Process32NextW(snapshot.get(), &entry)) {
    std::printf("%lu\t%lu\t%s\n", entry.th32ProcessID, entry.th32ParentProcessID,
                Field(entry.szExeFile).c_str());
  }
  return 0;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc == 3 && wcscmp(argv[1], L"registry") == 0) return DumpRegistry(argv[2]);
  if (argc == 2 && wcscmp(argv[1], L"processes") == 0) return ListProcesses();
  if (argc >= 3 && wcscmp(argv[1], L"wait-run") == 0) {
    std::wstring line;
    for (int i = 2; i < argc; ++i) {
      const std::wstring arg = argv[i];
      const bool quote = arg.empty() || arg.find_first_of(L" \t") != std::wstring::npos;
      if (!line.empty()) line += L' ';
      line += quote ? L"\"" + arg + L"\"" : arg;
    }
    return WaitRun(line);
  }
  std::fprintf(stderr, "usage: e2e_helper registry FILE | wait-run EXE [ARG...] | processes\n");
  return 2;
}
