#include <algorithm>
#include <cwchar>

#include "leftovers/scan_steps.h"
#include "leftovers/value_text.h"

namespace varnel::scan {

namespace {

constexpr RegRoot HKLM = RegRoot::LocalMachine;
constexpr wchar_t kServices[] = L"\\SYSTEM\\CurrentControlSet\\services";
constexpr wchar_t kDeviceEnum[] = L"\\SYSTEM\\CurrentControlSet\\Enum\\";

bool SomeValueHasFolder(const ScanContext& scan, const IRegistryKey& key) {
  for (const auto& name : key.ValueNames())
    if (scan.TextHasInstallFolder(ReadValueText(key, name))) return true;
  return false;
}

// A shared-host service names its DLL under "Parameters", not in ImagePath.
bool ServiceBelongs(const ScanContext& scan, const IRegistryKey& key, const std::wstring& path) {
  if (SomeValueHasFolder(scan, key)) return true;
  auto parameters = scan.Open(HKLM, path + L"\\Parameters");
  return parameters && SomeValueHasFolder(scan, *parameters);
}

// A device instance path is bus\\device[\\instance]; a lone part (a bus such
// as ROOT or PCI) or an empty, "." or ".." part would name the key that
// holds every device of the bus, or climb out of it.
bool IsDeviceInstance(std::wstring_view instance) {
  std::size_t parts = 0;
  std::size_t start = 0;
  while (start <= instance.size()) {
    auto end = instance.find(L'\\', start);
    if (end == std::wstring_view::npos) end = instance.size();
    const auto part = instance.substr(start, end - start);
    if (part.empty() || part == L"." || part == L"..") return false;
    ++parts;
    start = end + 1;
  }
  return parts >= 2;
}

void DeviceInstances(const ScanContext& scan, ScanSink& out, const std::wstring& servicePath) {
  auto key = scan.Open(HKLM, servicePath + L"\\Enum");
  if (!key) return;
  const auto countText = ReadValueText(*key, L"Count");
  if (countText.empty()) return;
  // The instances are values "0".."Count-1"; a Count beyond the values there
  // are would only spin.
  const unsigned long count =
      std::min<unsigned long>(std::wcstoul(countText.c_str(), nullptr, 10),
                              static_cast<unsigned long>(key->ValueNames().size()));
  for (unsigned long i = 0; i < count; ++i) {
    if (!scan.Step()) return;
    const auto instance = ReadValueText(*key, std::to_wstring(i));
    if (!IsDeviceInstance(instance)) continue;
    out.AddKey(ScanCategory::DeviceEnum, HKLM, true, instance, kDeviceEnum + instance);
  }
}

// Each source key of one event log whose values name the install folder.
void EventLogSources(const ScanContext& scan, ScanSink& out, const wchar_t* log) {
  auto& root = out.CategoryRoot(ScanCategory::EventLog, log);
  const std::wstring path = std::wstring(kServices) + L"\\eventlog\\" + log;
  auto list = scan.Open(HKLM, path);
  if (!list) return;
  for (const auto& source : list->SubKeyNames()) {
    if (!scan.Step()) return;
    const auto sourcePath = path + L"\\" + source;
    auto key = scan.Open(HKLM, sourcePath);
    if (key && SomeValueHasFolder(scan, *key)) out.AddKey(root, HKLM, true, source, sourcePath);
  }
}

}  // namespace

void Services(const ScanContext& scan, ScanSink& out) {
  auto list = scan.Open(HKLM, kServices);
  if (!list) return;
  for (const auto& service : list->SubKeyNames()) {
    if (!scan.Step()) return;
    const auto path = std::wstring(kServices) + L"\\" + service;
    auto key = scan.Open(HKLM, path);
    if (!key || !ServiceBelongs(scan, *key, path)) continue;
    out.AddKey(ScanCategory::Services, HKLM, true, service, path);
    DeviceInstances(scan, out, path);
  }
}

void EventLog(const ScanContext& scan, ScanSink& out) {
  EventLogSources(scan, out, L"Application");
  if (scan.Running()) EventLogSources(scan, out, L"System");
}

}  // namespace varnel::scan
