#include "core/registry_location.h"
#include "base/text.h"
#include "leftovers/scan_steps.h"
#include "leftovers/value_text.h"

namespace varnel::scan {

namespace {

bool ValueNamesFolder(const ScanContext& scan, std::wstring text) {
  if (text.empty()) return false;
  if (text.back() != L'\\') text += L'\\';
  return scan.TextHasInstallFolder(text);
}

void ReportFolderValues(const ScanContext& scan, ScanSink& out, RegRoot root,
                        const std::wstring& path, const IRegistryKey& key) {
  for (const auto& name : key.ValueNames()) {
    auto data = ReadValueText(key, name);
    if (ValueNamesFolder(scan, data)) out.AddValue(nullptr, root, path, name, data);
  }
}

void WalkValues(const ScanContext& scan, ScanSink& out, RegRoot root, const std::wstring& path) {
  if (!scan.Step()) return;
  auto key = scan.Open(root, path);
  if (!key) return;
  ReportFolderValues(scan, out, root, path, *key);
  for (const auto& sub : key->SubKeyNames()) {
    if (!scan.Running()) return;
    WalkValues(scan, out, root, path + L"\\" + sub);
  }
}

// A product key named exactly like the program, directly below a vendor key,
// that points into its folder is the program's own: it goes whole, settings
// and all. Anything shared stays and only the values naming the folder go.
bool ReportProductKey(const ScanContext& scan, ScanSink& out, RegRoot root,
                      const std::wstring& vendorPath, const std::wstring& sub) {
  const auto& name = scan.Record().Name;
  if (name.empty() || !text::SameText(sub, text::Trim(name))) return false;
  const auto path = vendorPath + L"\\" + sub;
  if (!scan.KeyRefersToInstallFolder(root, path)) return false;
  out.AddKey(ScanCategory::VendorKeys, root, true, RootKeyName(root) + path, path);
  return true;
}

void ScanSoftwareKey(const ScanContext& scan, ScanSink& out, RegRoot root,
                     const wchar_t* software) {
  auto key = scan.Open(root, software);
  if (!key) return;
  for (const auto& vendor : key->SubKeyNames()) {
    if (!scan.Step()) return;
    if (IsProtectedVendorName(vendor)) continue;
    const auto vendorPath = std::wstring(software) + L"\\" + vendor;
    auto vendorKey = scan.Open(root, vendorPath);
    if (!vendorKey) continue;
    ReportFolderValues(scan, out, root, vendorPath, *vendorKey);
    for (const auto& sub : vendorKey->SubKeyNames()) {
      if (!scan.Running()) return;
      if (!ReportProductKey(scan, out, root, vendorPath, sub))
        WalkValues(scan, out, root, vendorPath + L"\\" + sub);
    }
  }
}

}  // namespace

void VendorKeys(const ScanContext& scan, ScanSink& out) {
  ScanSoftwareKey(scan, out, RegRoot::LocalMachine, L"\\SOFTWARE");
  if (scan.Running()) ScanSoftwareKey(scan, out, RegRoot::CurrentUser, L"\\Software");
}

}  // namespace varnel::scan
