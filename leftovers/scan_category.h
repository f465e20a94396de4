#pragma once

#include <cstddef>

namespace varnel {

// One de-duplication list per kind of leftover: a name filed in a list is
// reported once however many scanners reach it.
enum class ScanCategory : std::size_t {
  ClsidMachine,  // the class identifiers other scanners look up
  ClsidClassesRoot,
  ClsidUser,
  AppIdMachine,
  AppIdClassesRoot,
  TypeLibMachine,
  TypeLibClassesRoot,
  ProgIdMachine,
  ProgIdClassesRoot,
  Toolbar,
  Extensions,
  WebBrowser,
  PreApproved,
  ExtSettingsMachine,
  ExtSettingsUser,
  ExtStats,
  BrowserHelper,
  InstallerProducts,
  InstallerFeatures,
  InstallerUpgradeCodes,
  InstallerUserData,
  FileClassMachine,
  FileClassClassesRoot,
  ExtensionUser,
  ExtensionMachine,
  InterfaceMachine,
  InterfaceClassesRoot,
  Services,
  DeviceEnum,
  Firewall,
  Run,
  AppPaths,
  ShellExtApproved,
  VendorKeys,
  AllFilesShell,
  AllFilesShellex,
  Cpls,
  Clients,
  EventLog,
  MUICache,
  VarnelProgram,
  Count
};

constexpr std::size_t kScanCategoryCount = static_cast<std::size_t>(ScanCategory::Count);
static_assert(kScanCategoryCount == 41);

}  // namespace varnel
