#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/text.h"
#include "core/registry_location.h"
#include "leftovers/scan_classes.h"
#include "platform/memory/memory_platform.h"

namespace varnel::testing_scan {

// Captions as the results tree shows a key and a value.
inline std::wstring Key(RegRoot root, const std::wstring& path) {
  return FormatRegistryLocation(root, path, L"", L"");
}
inline std::wstring Value(RegRoot root, const std::wstring& path, const std::wstring& name,
                          const std::wstring& data) {
  return FormatRegistryLocation(root, path, name, data);
}

// A machine with one program installed in C:\Program Files\Acme\Writer and
// a scanner set up for it.
struct ScanWorld {
  ScanWorld() {
    record.Name = L"Acme Writer";
    record.Publisher = L"Acme";
    record.InstallLocation = L"C:\\Program Files\\Acme\\Writer";
    record.KeyPath = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\AcmeWriter";
    record.RootKey = L"HKEY_LOCAL_MACHINE";
    record.Is64BitView = true;
    m.files.AddFile(L"C:\\Program Files\\Acme\\Writer\\writer.exe", "MZ");
  }

  // A fresh scanner over `record`; `step` runs once per item.
  TRegeditScanClasses& SetUp(TRegeditScanClasses::MessageStep step = {}) {
    registry.clear();
    files.clear();
    scanner = std::make_unique<TRegeditScanClasses>(m.Get(), filter, std::move(step));
    scanner->SetUp(&registry, &files, 0, record, nullptr);
    return *scanner;
  }
  std::vector<std::wstring> Full() {
    SetUp().FullScan();
    return Captions();
  }
  // One step on its own over a fresh scanner; what it reported.
  std::vector<std::wstring> Run(const TRegeditScanClasses::Step& step) {
    SetUp().RunAlone(step);
    return Captions();
  }
  // Every registry item as the results tree captions it, then every file path.
  std::vector<std::wstring> Captions() const {
    std::vector<std::wstring> all;
    for (const auto& r : registry)
      all.push_back(FormatRegistryLocation(r.Root, r.KeyPath, r.ValueName, r.ValueData));
    for (const auto& f : files) all.push_back(f.Path);
    return all;
  }
  static bool Has(const std::vector<std::wstring>& all, const std::wstring& caption) {
    return std::find(all.begin(), all.end(), caption) != all.end();
  }
  static int CountOf(const std::vector<std::wstring>& all, const std::wstring& caption) {
    return static_cast<int>(std::count(all.begin(), all.end(), caption));
  }
  void Set(RegRoot root, const std::wstring& path, const std::wstring& name,
           const std::wstring& value) {
    m.registry.SetString(root, path, name, value, record.Is64BitView);
  }

  mem::MemoryPlatform m;
  TFilterManage filter;
  TSoftInfo record;
  std::vector<TShowRegInfo> registry;
  std::vector<TFileInfo> files;
  std::unique_ptr<TRegeditScanClasses> scanner;
};

// Each caption with whether the scan must have reported it.
inline void ExpectReported(const std::vector<std::wstring>& all,
                           const std::vector<std::pair<std::wstring, bool>>& expected) {
  for (const auto& [caption, reported] : expected)
    EXPECT_EQ(ScanWorld::Has(all, caption), reported) << text::ToUtf8(caption);
}

}  // namespace varnel::testing_scan
