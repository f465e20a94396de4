// Inventory speed against a raw registry walk of the same keys, and the
// analysis pass with a cold and a warm software cache as the console tool
// runs it (no image lists); tools/bench-gui.sh has the window's.
//
//   varnel_inventory_bench [--entries N] [--rounds R] [--keep] [--reuse]
//
// Writes N synthetic Uninstall entries (HKLM 64-bit view, HKLM 32-bit view,
// HKCU) and N program folders, measures, and removes them again; --keep
// leaves them for a later run with --reuse. Run it in a throwaway prefix.
#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "core/directory_tree.h"
#include "base/text.h"
#include "inventory/software_info.h"
#include "inventory/uninstall_keys.h"
#include "platform/win32/unique_handle.h"
#include "platform/win32/win32_platform.h"

namespace {

using varnel::RegRoot;
using Clock = std::chrono::steady_clock;

constexpr const wchar_t* kUninstall = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
constexpr const wchar_t* kFolders = L"C:\\VarnelBench";
constexpr const wchar_t* kValues[] = {
    L"DisplayName",  L"UninstallString", L"Publisher",     L"SystemComponent",
    L"HelpLink",     L"DisplayVersion",  L"URLInfoAbout",  L"URLUpdateInfo",
    L"InstallDate",  L"InstallLocation", L"DisplayIcon",   L"Readme",
    L"EstimatedSize"};

struct Place {
  RegRoot root;
  HKEY hkey;
  bool use64;
};
const Place kPlaces[] = {{RegRoot::LocalMachine, HKEY_LOCAL_MACHINE, true},
                         {RegRoot::LocalMachine, HKEY_LOCAL_MACHINE, false},
                         {RegRoot::CurrentUser, HKEY_CURRENT_USER, false}};

std::wstring Num(int i) {
  wchar_t buffer[16];
  swprintf(buffer, 16, L"%04d", i);
  return buffer;
}

void SetString(varnel::IRegistryKey& key, const wchar_t* name, const std::wstring& value) {
  key.WriteValue(name, {varnel::RegType::String, varnel::text::ToUtf16Bytes(value)});
}

// Entry i goes to place i % 3; every second one has no size, so the analysis
// must walk its folder.
bool Populate(varnel::Platform platform, int entries) {
  platform.files.MakeDirectory(kFolders);
  for (int i = 0; i < entries; ++i) {
    const Place& place = kPlaces[i % 3];
    // Vendor folders of fifty programs each: Wine looks names up by listing
    // their folder, so one folder of a thousand would measure Wine, not us.
    std::wstring vendor = std::wstring(kFolders) + L"\\Vendor" + std::to_wstring(i / 50);
    if (i % 50 == 0) platform.files.MakeDirectory(vendor);
    std::wstring folder = vendor + L"\\App" + Num(i);
    platform.files.MakeDirectory(folder);
    std::vector<std::uint8_t> bytes(1024 + 37 * i, 0x5A);
    platform.files.WriteWholeFile(folder + L"\\app.exe", bytes);
    platform.files.WriteWholeFile(folder + L"\\uninst.exe", bytes);
    // A small program's tree: a few folders of a few files each.
    for (const wchar_t* sub : {L"\\data", L"\\lib", L"\\lib\\plugins", L"\\locale"}) {
      platform.files.MakeDirectory(folder + sub);
      for (int f = 0; f < 4; ++f) {
        platform.files.WriteWholeFile(folder + sub + L"\\file" + std::to_wstring(f) + L".dat",
                                      bytes);
      }
    }

    auto key = platform.registry.CreateKey(place.root, std::wstring(kUninstall) +
                                                           L"\\VarnelBench" + Num(i), place.use64);
    if (!key) return false;
    SetString(*key, L"DisplayName", L"Bench Program " + Num(i));
    SetString(*key, L"DisplayVersion", L"1." + std::to_wstring(i));
    SetString(*key, L"Publisher", L"Bench Publisher " + std::to_wstring(i % 17));
    SetString(*key, L"UninstallString", L"\"" + folder + L"\\uninst.exe\" /S");
    SetString(*key, L"DisplayIcon", folder + L"\\app.exe,0");
    SetString(*key, L"InstallLocation", folder);
    SetString(*key, L"InstallDate", L"2024" + Num(100 + i % 12 + 1).substr(2) + L"15");
    SetString(*key, L"URLInfoAbout", L"https://bench.example/" + Num(i));
    if (i % 2 == 0) {
      DWORD kb = 3 + i;
      key->WriteValue(L"EstimatedSize",
                      {varnel::RegType::DWord,
                       {static_cast<std::uint8_t>(kb), static_cast<std::uint8_t>(kb >> 8), 0, 0}});
    }
  }
  return true;
}

void Depopulate(varnel::Platform platform, int entries) {
  for (int i = 0; i < entries; ++i) {
    const Place& place = kPlaces[i % 3];
    platform.registry.DeleteKey(place.root,
                                std::wstring(kUninstall) + L"\\VarnelBench" + Num(i), place.use64);
  }
  varnel::DeleteDirectoryTree(platform.files, kFolders);
}

// What the inventory does, written against the API directly: the same keys,
// breadth first, the same values, each read once.
int RawWalk() {
  int records = 0;
  std::vector<BYTE> data(4096);
  std::vector<wchar_t> name(256);
  auto walk = [&](HKEY root, REGSAM view) {
    std::vector<std::wstring> pending{kUninstall};
    for (std::size_t i = 0; i < pending.size(); ++i) {
      HKEY raw = nullptr;
      if (RegOpenKeyExW(root, pending[i].c_str(), 0, KEY_READ | view, &raw) != ERROR_SUCCESS) {
        continue;
      }
      varnel::win32::UniqueHkey key(raw);
      for (DWORD index = 0;; ++index) {
        DWORD length = static_cast<DWORD>(name.size());
        if (RegEnumKeyExW(key.get(), index, name.data(), &length, nullptr, nullptr, nullptr,
                          nullptr) != ERROR_SUCCESS) {
          break;
        }
        pending.push_back(pending[i] + L"\\" + std::wstring(name.data(), length));
      }
      bool named = false;
      for (const wchar_t* value : kValues) {
        DWORD type = 0;
        DWORD size = static_cast<DWORD>(data.size());
        if (RegQueryValueExW(key.get(), value, nullptr, &type, data.data(), &size) ==
                ERROR_SUCCESS &&
            value == kValues[0]) {
          named = size > 2;
        }
      }
      records += named;
    }
  };
  for (REGSAM view : {KEY_WOW64_32KEY, KEY_WOW64_64KEY}) {
    walk(HKEY_LOCAL_MACHINE, view);
    walk(HKEY_CURRENT_USER, view);
  }
  return records;
}

double Ms(Clock::duration d) { return std::chrono::duration<double, std::milli>(d).count(); }

template <typename Body>
double Fastest(int rounds, Body body) {
  double best = 1e300;
  for (int r = 0; r < rounds; ++r) {
    auto start = Clock::now();
    body();
    best = std::min(best, Ms(Clock::now() - start));
  }
  return best;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  int entries = 1000;
  int rounds = 5;
  bool setup = true;
  bool teardown = true;
  for (int i = 1; i < argc; ++i) {
    std::wstring option = argv[i];
    if (option == L"--keep") teardown = false;
    else if (option == L"--reuse") setup = false;
    else if (option == L"--entries" && i + 1 < argc) entries = std::max(3, _wtoi(argv[++i]));
    else if (option == L"--rounds" && i + 1 < argc) rounds = std::max(1, _wtoi(argv[++i]));
  }
  varnel::win32::Win32Platform machine;
  varnel::Platform platform = machine.Get();
  auto setupStart = Clock::now();
  if (setup && !Populate(platform, entries)) {
    std::fprintf(stderr, "could not write the Uninstall entries\n");
    return 1;
  }
  std::printf("setup: %d entries and folders in %.0f ms\n", entries, Ms(Clock::now() - setupStart));

  int rawRecords = 0;
  std::size_t listed = 0;
  // Interleaved so that a slow moment of the machine hits both.
  double raw = 1e300, inventory = 1e300;
  for (int r = 0; r < rounds; ++r) {
    raw = std::min(raw, Fastest(1, [&] { rawRecords = RawWalk(); }));
    inventory = std::min(inventory, Fastest(1, [&] {
                           varnel::SoftList list;
                           varnel::CollectInstalledSoftware(varnel::TAppFrame(platform), list);
                           listed = list.size();
                         }));
  }
  std::printf("inventory: %zu records (raw walk saw %d named keys)\n", listed, rawRecords);
  std::printf("inventory: raw walk %.1f ms, inventory %.1f ms, ratio %.2f\n", raw, inventory,
              inventory / raw);

  std::wstring cache = platform.system.TempDirectory() + L"VarnelBenchCache.ini";
  platform.files.RemoveFile(cache);
  auto pass = [&] {
    varnel::GuiDispatcher dispatcher;
    varnel::TSoftwareInfo::Options options;
    options.cacheFile = cache;
    varnel::TSoftwareInfo info(platform, dispatcher, std::move(options));
    info.Analysis().WaitForPass();
  };
  double cold = Fastest(1, pass);
  double warm = Fastest(std::max(1, rounds / 2), pass);
  std::printf("analysis in the console tool: cold cache %.0f ms, warm cache %.0f ms, "
              "warm/cold %.2f\n",
              cold, warm, warm / cold);

  platform.files.RemoveFile(cache);
  if (teardown) Depopulate(platform, entries);
  bool ok = listed >= static_cast<std::size_t>(entries) && rawRecords >= entries;
  if (!ok) std::fprintf(stderr, "the inventory missed entries\n");
  return ok ? 0 : 1;
}
