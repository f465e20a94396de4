// Leftover scan speed on a crowded registry, against a raw walk of the keys
// it visits, and a batch of ten programs' scans against one, all in one run.
//
//   varnel_scan_bench [--clsids N] [--rounds R] [--keep] [--reuse] [--show] [--readers]
//
// Writes N class keys (with a tenth as many ProgIDs, type libraries,
// interfaces, extensions and file classes) under HKLM\SOFTWARE\Classes in the
// 64-bit view, five of them belonging to the scanned program, measures, and
// removes them again; --keep leaves them for a later run with --reuse. The
// batch's other nine programs own a folder each and nothing else. Run it in a
// throwaway prefix. --readers times only the copy of the walked trees, by
// several numbers of readers, against the raw walk.
#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "core/directory_tree.h"
#include "base/text.h"
#include "leftovers/scan_driver.h"
#include "leftovers/scan_reads.h"
#include "platform/win32/unique_handle.h"
#include "platform/win32/win32_platform.h"

namespace {

using Clock = std::chrono::steady_clock;
using varnel::win32::UniqueHkey;

constexpr const wchar_t* kClasses = L"SOFTWARE\\Classes";
constexpr const wchar_t* kProgramFolder = L"C:\\Program Files\\Bench Target";
constexpr int kBatch = 10;
constexpr const wchar_t* kMarkerKey = L"SOFTWARE\\Classes\\VarnelScanBench";
constexpr REGSAM k64 = KEY_WOW64_64KEY;

std::wstring Guid(const wchar_t* kind, int i) {
  wchar_t buffer[64];
  swprintf(buffer, 64, L"{%08X-%ls-4000-8000-%012d}", 0x5CA00000 + i, kind, i);
  return buffer;
}

bool Write(const std::wstring& path, const wchar_t* name, const std::wstring& value) {
  HKEY raw = nullptr;
  if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_WRITE | k64, nullptr,
                      &raw, nullptr) != ERROR_SUCCESS)
    return false;
  UniqueHkey key(raw);
  return RegSetValueExW(key.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                        static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
}

bool Populate(varnel::Platform platform, int clsids) {
  platform.files.MakeDirectory(kProgramFolder);
  platform.files.WriteWholeFile(std::wstring(kProgramFolder) + L"\\target.dll",
                                std::vector<std::uint8_t>(4096, 0x4D));
  const std::wstring classes = kClasses;
  for (int i = 0; i < clsids; ++i) {
    // Every 20,000th class is the program's; the rest are other vendors'.
    bool own = i % (clsids / 5 > 0 ? clsids / 5 : 1) == 0;
    std::wstring server = own ? std::wstring(kProgramFolder) + L"\\target.dll"
                              : L"C:\\Program Files\\Vendor" + std::to_wstring(i / 100) +
                                    L"\\lib" + std::to_wstring(i) + L".dll";
    std::wstring clsid = classes + L"\\CLSID\\" + Guid(L"C001", i);
    if (!Write(clsid, L"", L"Bench class " + std::to_wstring(i)) ||
        !Write(clsid + L"\\InprocServer32", L"", server) ||
        !Write(clsid + L"\\InprocServer32", L"ThreadingModel", L"Apartment"))
      return false;
    if (i % 10 != 0) continue;
    std::wstring progId = L"Vendor" + std::to_wstring(i / 100) + L".Class" + std::to_wstring(i);
    std::wstring typeLib = Guid(L"7B00", i);
    std::wstring fileClass = L"Vendor" + std::to_wstring(i / 100) + L".File" + std::to_wstring(i);
    if (!Write(clsid + L"\\ProgID", L"", progId) || !Write(clsid + L"\\TypeLib", L"", typeLib) ||
        !Write(classes + L"\\" + progId + L"\\CLSID", L"", Guid(L"C001", i)) ||
        !Write(classes + L"\\TypeLib\\" + typeLib + L"\\1.0\\0\\win32", L"", server) ||
        !Write(classes + L"\\Interface\\" + Guid(L"1F00", i) + L"\\TypeLib", L"", typeLib) ||
        !Write(classes + L"\\.bench" + std::to_wstring(i), L"", fileClass) ||
        !Write(classes + L"\\" + fileClass + L"\\shell\\open\\command", L"",
               L"\"" + server + L"\" \"%1\""))
      return false;
  }
  return Write(kMarkerKey, L"Count", std::to_wstring(clsids));
}

// Deletes the subkeys of HKLM\`parent` whose names `doomed` picks.
template <typename Pick>
void DeleteSubkeys(const std::wstring& parent, Pick doomed) {
  HKEY raw = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, parent.c_str(), 0, KEY_READ | KEY_WRITE | k64, &raw) !=
      ERROR_SUCCESS)
    return;
  UniqueHkey key(raw);
  std::vector<std::wstring> names;
  wchar_t name[256];
  for (DWORD i = 0;; ++i) {
    DWORD length = 256;
    if (RegEnumKeyExW(key.get(), i, name, &length, nullptr, nullptr, nullptr, nullptr) !=
        ERROR_SUCCESS)
      break;
    if (doomed(std::wstring(name, length))) names.emplace_back(name, length);
  }
  for (const auto& n : names) RegDeleteTreeW(key.get(), n.c_str());
}

void Remove(varnel::Platform platform) {
  const std::wstring classes = kClasses;
  auto ours = [](const std::wstring& n) { return n.find(L"-4000-8000-") != std::wstring::npos; };
  for (const wchar_t* sub : {L"\\CLSID", L"\\TypeLib", L"\\Interface"})
    DeleteSubkeys(classes + sub, ours);
  DeleteSubkeys(classes, [](const std::wstring& n) {
    return n.starts_with(L".bench") || n.starts_with(L"Vendor") || n == L"VarnelScanBench";
  });
  varnel::DeleteDirectoryTree(platform.files, kProgramFolder);
}

// Every key below the trees the scan walks opened once, every value read
// once, on one thread: the least a one-thread scan of these keys can cost.
long RawWalk() {
  long keys = 0;
  std::vector<BYTE> data(8192);
  std::vector<wchar_t> name(16384);
  auto walk = [&](HKEY root, const std::wstring& start) {
    std::vector<std::wstring> pending{start};
    while (!pending.empty()) {
      std::wstring path = std::move(pending.back());
      pending.pop_back();
      HKEY raw = nullptr;
      if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | k64, &raw) != ERROR_SUCCESS) continue;
      UniqueHkey key(raw);
      ++keys;
      for (DWORD i = 0;; ++i) {
        DWORD length = static_cast<DWORD>(name.size());
        if (RegEnumKeyExW(key.get(), i, name.data(), &length, nullptr, nullptr, nullptr,
                          nullptr) != ERROR_SUCCESS)
          break;
        pending.push_back(path + L"\\" + std::wstring(name.data(), length));
      }
      for (DWORD i = 0;; ++i) {
        DWORD length = static_cast<DWORD>(name.size());
        DWORD size = static_cast<DWORD>(data.size());
        DWORD type = 0;
        if (RegEnumValueW(key.get(), i, name.data(), &length, nullptr, &type, data.data(),
                          &size) != ERROR_SUCCESS)
          break;
      }
    }
  };
  walk(HKEY_LOCAL_MACHINE, kClasses);
  walk(HKEY_CURRENT_USER, L"Software\\Classes");
  walk(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer");
  walk(HKEY_CURRENT_USER, L"Software\\Microsoft\\Installer");
  walk(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\services");
  return keys;
}

// The live registry with a chosen number of concurrent readers, to see
// where copying the walked trees stops paying.
class ReadersRegistry final : public varnel::IRegistry {
 public:
  ReadersRegistry(varnel::IRegistry& live, int readers) : live_(live), readers_(readers) {}
  std::unique_ptr<varnel::IRegistryKey> OpenKey(varnel::RegRoot root, std::wstring_view path,
                                                varnel::RegAccess access, bool use64) override {
    return live_.OpenKey(root, path, access, use64);
  }
  std::unique_ptr<varnel::IRegistryKey> CreateKey(varnel::RegRoot root, std::wstring_view path,
                                                  bool use64) override {
    return live_.CreateKey(root, path, use64);
  }
  bool KeyExists(varnel::RegRoot root, std::wstring_view path, bool use64) override {
    return live_.KeyExists(root, path, use64);
  }
  bool DeleteKey(varnel::RegRoot root, std::wstring_view path, bool use64) override {
    return live_.DeleteKey(root, path, use64);
  }
  int ConcurrentReaders() const override { return readers_; }

 private:
  varnel::IRegistry& live_;
  int readers_;
};

double Ms(Clock::duration d) { return std::chrono::duration<double, std::milli>(d).count(); }

}  // namespace

int wmain(int argc, wchar_t** argv) {
  int clsids = 100000;
  int rounds = 3;
  bool setup = true;
  bool teardown = true;
  bool show = false;
  bool readersOnly = false;
  for (int i = 1; i < argc; ++i) {
    std::wstring option = argv[i];
    if (option == L"--keep") teardown = false;
    else if (option == L"--reuse") setup = false;
    else if (option == L"--show") show = true;
    else if (option == L"--readers") readersOnly = true;
    else if (option == L"--clsids" && i + 1 < argc) clsids = std::max(10, _wtoi(argv[++i]));
    else if (option == L"--rounds" && i + 1 < argc) rounds = std::max(1, _wtoi(argv[++i]));
  }
  varnel::win32::Win32Platform machine;
  varnel::Platform platform = machine.Get();
  auto setupStart = Clock::now();
  if (setup && !Populate(platform, clsids)) {
    std::fprintf(stderr, "could not write the class keys\n");
    return 1;
  }
  std::printf("setup: %d class keys in %.0f ms\n", clsids, Ms(Clock::now() - setupStart));

  if (readersOnly) {
    // Only the copy of the walked trees, by 1, 2, 4, 6 and 12 readers.
    for (int readers : {1, 2, 4, 6, 12}) {
      ReadersRegistry registry(platform.registry, readers);
      varnel::Platform limited{registry,         platform.files,     platform.system,
                               platform.shell,   platform.windows,   platform.processes,
                               platform.restorePoints};
      auto start = Clock::now();
      varnel::ScanReads reads(limited, {});
      reads.Machine().registry.KeyExists(varnel::RegRoot::LocalMachine, kClasses, true);
      std::printf("copy of the walked trees by %d readers: %.0f ms\n", readers,
                  Ms(Clock::now() - start));
    }
    auto start = Clock::now();
    long keys = RawWalk();
    std::printf("raw walk, one thread: %ld keys in %.0f ms\n", keys, Ms(Clock::now() - start));
    if (teardown) Remove(platform);
    return 0;
  }

  varnel::SoftList list;
  for (int i = 0; i < kBatch; ++i) {
    auto record = std::make_unique<varnel::TSoftInfo>();
    record->Name = i == 0 ? L"Bench Target" : L"Bench Other " + std::to_wstring(i);
    record->Publisher = L"Bench";
    record->InstallLocation = i == 0 ? std::wstring(kProgramFolder)
                                     : L"C:\\Program Files\\Bench Other " + std::to_wstring(i);
    record->Is64BitView = true;
    if (i > 0) platform.files.MakeDirectory(record->InstallLocation);
    list.push_back(std::move(record));
  }

  long rawKeys = 0;
  int found = 0;
  double raw = 1e300, scan = 1e300, batch = 1e300, copy = 1e300, firstOfBatch = 1e300,
         restOfBatch = 1e300;
  const varnel::TFilterManage filter;
  // Interleaved so that a slow moment of the machine hits all.
  for (int r = 0; r < rounds; ++r) {
    auto start = Clock::now();
    rawKeys = RawWalk();
    raw = std::min(raw, Ms(Clock::now() - start));

    start = Clock::now();
    varnel::ScanDriver driver(platform, filter);
    found = driver.Collect(list, 0, L"", nullptr).Count();
    scan = std::min(scan, Ms(Clock::now() - start));

    // Where a batch's time goes: the copy of the walked trees, the rest.
    start = Clock::now();
    {
      varnel::ScanReads reads(platform, {});
      reads.Machine().registry.KeyExists(varnel::RegRoot::LocalMachine, kClasses, true);
      copy = std::min(copy, Ms(Clock::now() - start));
    }

    start = Clock::now();
    std::vector<int> together(kBatch);
    for (int i = 0; i < kBatch; ++i) together[i] = i;
    driver.SetScannedTogether(together);
    driver.BeginBatch();
    driver.Collect(list, 0, L"", nullptr);
    auto first = Clock::now();
    for (int i = 1; i < kBatch; ++i) driver.Collect(list, i, L"", nullptr);
    driver.EndBatch();
    auto end = Clock::now();
    batch = std::min(batch, Ms(end - start));
    firstOfBatch = std::min(firstOfBatch, Ms(first - start));
    restOfBatch = std::min(restOfBatch, Ms(end - first) / (kBatch - 1));
  }
  if (show) {
    varnel::ScanDriver driver(platform, filter);
    auto findings = driver.Collect(list, 0, L"", nullptr);
    for (const auto& item : findings.Registry)
      std::printf("%ls | %ls\n", item.KeyPath.c_str(), item.ValueName.c_str());
    for (const auto& item : findings.Files) std::printf("%ls\n", item.Path.c_str());
  }
  std::printf("raw walk of the keys the scan visits, one thread: %ld keys in %.0f ms\n", rawKeys,
              raw);
  std::printf("full scan: %d leftovers in %.0f ms\n", found, scan);
  std::printf("copying the walked trees: %.0f ms; a scan from the copy: %.0f ms\n", copy,
              restOfBatch);
  std::printf("batch of %d scans: %.0f ms (first %.0f ms, each further one %.0f ms)\n", kBatch,
              batch, firstOfBatch, restOfBatch);
  std::printf("ratio full scan / raw walk: %.2f\n", scan / raw);
  std::printf("ratio batch of %d / one scan: %.2f\n", kBatch, batch / scan);
  for (int i = 1; i < kBatch; ++i) platform.files.RemoveFolder(list[i]->InstallLocation);
  if (teardown) Remove(platform);
  // Five classes, each with its HKCR mirror, plus the folder and its file.
  return found >= 12 ? 0 : 1;
}
