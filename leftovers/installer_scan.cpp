#include "core/path_resolution.h"
#include "core/registry_location.h"
#include "base/text.h"
#include "core/uninstall_command.h"
#include "inventory/soft_info.h"
#include "leftovers/scan_steps.h"
#include "leftovers/value_text.h"

namespace varnel::scan {

namespace {

constexpr RegRoot HKLM = RegRoot::LocalMachine;
constexpr RegRoot HKCU = RegRoot::CurrentUser;
constexpr wchar_t kMachineClasses[] = L"\\SOFTWARE\\Classes\\Installer";
constexpr wchar_t kUserInstaller[] = L"\\Software\\Microsoft\\Installer";
constexpr wchar_t kInstaller[] = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer";

// The Installer keys of one product are named alike under several roots, so
// they are filed under their full location.
TRegeditItemGroup* AddWholeKey(ScanSink& out, ScanCategory category, RegRoot root,
                               const std::wstring& path) {
  return out.AddKey(category, root, true, RootKeyName(root) + path, path);
}

// A value that is its key's only value takes the key with it, so no empty
// key is left behind; otherwise only the value goes.
void AddValueOrKey(ScanSink& out, ScanCategory category, RegRoot root, const std::wstring& path,
                   const IRegistryKey& key, std::size_t valueCount, const std::wstring& name,
                   const std::wstring& data) {
  if (valueCount == 1 && key.SubKeyNames().empty())
    AddWholeKey(out, category, root, path);
  else
    out.AddValue(nullptr, root, path, name, data);
}

// Upgrade-code keys list the products of one upgrade family as value names.
void UpgradeCodes(const ScanContext& scan, ScanSink& out, RegRoot root, const std::wstring& path,
                  const std::wstring& packed) {
  auto list = scan.Open(root, path);
  if (!list) return;
  for (const auto& code : list->SubKeyNames()) {
    if (!scan.Step()) return;
    const auto codePath = path + L"\\" + code;
    auto key = scan.Open(root, codePath);
    if (!key || !key->ValueExists(packed)) continue;
    AddValueOrKey(out, ScanCategory::InstallerUpgradeCodes, root, codePath, *key,
                  key->ValueNames().size(), packed, ReadValueText(*key, packed));
  }
}

// Component keys name, per product, the key path of the component. One that
// names a file in the install folder is the program's; so is one that no
// other product shares, whatever it names (a registry component, say).
void Components(const ScanContext& scan, ScanSink& out, const std::wstring& path,
                const std::wstring& packed) {
  auto list = scan.Open(HKLM, path);
  if (!list) return;
  for (const auto& component : list->SubKeyNames()) {
    if (!scan.Step()) return;
    const auto componentPath = path + L"\\" + component;
    auto key = scan.Open(HKLM, componentPath);
    if (!key) continue;
    auto value = key->ReadValue(packed);
    if (!value) continue;
    const auto data = RegValueText(*value);
    const auto valueCount = key->ValueNames().size();
    if (valueCount != 1 && !scan.TextHasInstallFolder(data)) continue;
    AddValueOrKey(out, ScanCategory::InstallerUserData, HKLM, componentPath, *key, valueCount,
                  packed, data);
  }
}

void UserData(const ScanContext& scan, ScanSink& out, const std::wstring& packed) {
  const std::wstring userData = std::wstring(kInstaller) + L"\\UserData";
  auto sids = scan.Open(HKLM, userData);
  if (!sids) return;
  for (const auto& sid : sids->SubKeyNames()) {
    if (!scan.Step()) return;
    const auto sidPath = userData + L"\\" + sid;
    AddWholeKey(out, ScanCategory::InstallerUserData, HKLM, sidPath + L"\\Products\\" + packed);
    Components(scan, out, sidPath + L"\\Components", packed);
  }
}

// Folders the Installer made for the product: those in the install folder,
// and its own cache folder named by the product code. Compared resolved, so
// a spelling with ".." or "\\?\" cannot climb out of either.
bool IsProductFolder(const ScanContext& scan, const std::wstring& productCode,
                     const std::wstring& folder) {
  const auto resolved = ResolvePath(scan.Machine(), folder);
  if (resolved.empty()) return false;
  const auto& install = scan.InstallFolderAsWritten();
  if (!install.empty() && PathIsOrIsBelow(resolved, install)) return true;
  return !productCode.empty() && text::ContainsText(resolved, productCode);
}

// Only a folder a deletion could take is handed to the file scan.
void CollectFolder(const ScanContext& scan, InstallerFindings& found, const std::wstring& folder) {
  const auto resolved = ResolvePath(scan.Machine(), folder);
  if (resolved.empty() || !scan.Machine().files.DirectoryExists(resolved)) return;
  if (scan.Places().CheckDeletion(resolved, found.ProductCode) != Refusal::None) return;
  auto lower = text::Lower(text::IncludeTrailingBackslash(resolved));
  for (const auto& known : found.Folders)
    if (known == lower) return;
  found.Folders.push_back(std::move(lower));
}

void Folders(const ScanContext& scan, ScanSink& out, InstallerFindings& found) {
  const std::wstring path = std::wstring(kInstaller) + L"\\Folders";
  auto key = scan.Open(HKLM, path);
  if (!key) return;
  for (const auto& folder : key->ValueNames()) {
    if (!scan.Step()) return;
    if (!IsProductFolder(scan, found.ProductCode, folder)) continue;
    out.AddValue(nullptr, HKLM, path, folder, ReadValueText(*key, folder));
    CollectFolder(scan, found, folder);
  }
}

// The product's icons live in a cache folder named by the product code; it
// is recorded nowhere else when the Installer keeps no "Folders" list.
void IconFolder(const ScanContext& scan, InstallerFindings& found, RegRoot root,
                const std::wstring& productPath) {
  auto key = scan.Open(root, productPath);
  if (!key) return;
  auto folder = ResolvePath(scan.Machine(),
                            text::ExtractFilePath(text::Trim(ReadValueText(*key, L"ProductIcon"))));
  if (!folder.empty() && text::ContainsText(folder, found.ProductCode))
    CollectFolder(scan, found, folder);
}

}  // namespace

InstallerFindings Installer(const ScanContext& scan, ScanSink& out) {
  InstallerFindings found;
  const auto code = MsiProductCode(scan.Record());
  const auto packed = MsiProductCodeToPackedGuid(code);
  if (packed.empty()) return found;
  found.ProductCode = code;

  struct Place {
    RegRoot root;
    const wchar_t* base;
  };
  for (const Place place : {Place{HKLM, kMachineClasses}, Place{HKCU, kUserInstaller}}) {
    if (!scan.Step()) return found;
    const auto product = std::wstring(place.base) + L"\\Products\\" + packed;
    if (AddWholeKey(out, ScanCategory::InstallerProducts, place.root, product))
      IconFolder(scan, found, place.root, product);
    AddWholeKey(out, ScanCategory::InstallerFeatures, place.root,
                std::wstring(place.base) + L"\\Features\\" + packed);
    UpgradeCodes(scan, out, place.root, std::wstring(place.base) + L"\\UpgradeCodes", packed);
  }
  if (!scan.Running()) return found;
  UpgradeCodes(scan, out, HKLM, std::wstring(kInstaller) + L"\\UpgradeCodes", packed);
  if (scan.Running()) UserData(scan, out, packed);
  if (scan.Running()) Folders(scan, out, found);
  return found;
}

}  // namespace varnel::scan
