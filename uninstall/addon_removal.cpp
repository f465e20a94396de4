#include "uninstall/addon_removal.h"

#include "core/directory_tree.h"
#include "core/reboot_file_ops.h"
#include "core/text.h"
#include "inventory/chromium_extensions.h"

namespace varnel {
namespace {

// No "." or ".." component: a path from a browser's files stays where it says.
bool HasNoWayUp(std::wstring_view path) {
  const std::wstring normal = L"\\" + text::ReplaceAll(path, L"/", L"\\") + L"\\";
  return normal.find(L"\\..\\") == std::wstring::npos && normal.find(L"\\.\\") == std::wstring::npos;
}

// The package lies directly in the profile's own extensions folder; add-ons
// elsewhere belong to the browser's installation or another program.
bool InProfileExtensions(const TSoftInfo& record) {
  if (record.Extra3.empty() || !HasNoWayUp(record.ToolbarFile) || !HasNoWayUp(record.Extra3))
    return false;
  const std::wstring folder = text::IncludeTrailingBackslash(record.Extra3) + L"extensions\\";
  const std::wstring package = text::ExcludeTrailingBackslash(record.ToolbarFile);
  return text::SameText(text::ExtractFilePath(package), folder) &&
         package.size() > folder.size();
}

bool DeleteFileOrAtRestart(const Platform& platform, const std::wstring& path) {
  if (platform.files.RemoveFile(path)) return true;
  return ScheduleFileOnReboot(platform, path, L"", RebootMode::Delete);
}

bool RemoveFirefoxPackage(const Platform& platform, const TSoftInfo& record) {
  const std::wstring package = text::ExcludeTrailingBackslash(record.ToolbarFile);
  if (platform.files.DirectoryExists(package)) return DeleteDirectoryTree(platform.files, package);
  return DeleteFileOrAtRestart(platform, package);
}

bool RemoveExternalChromium(const Platform& platform, const ChromiumBrowser& browser,
                            const TSoftInfo& record) {
  bool removed = true;
  const ExternalRegistration registration = FindExternalRegistration(platform, browser, record.Extra2);
  for (const auto& key : registration.keys)
    removed = platform.registry.DeleteKey(key.root, key.path, key.use64) && removed;
  for (const auto& file : registration.files)
    removed = DeleteFileOrAtRestart(platform, file) && removed;
  const std::wstring folder =
      text::IncludeTrailingBackslash(record.Extra3) + L"Extensions\\" + record.Extra2;
  if (platform.files.DirectoryExists(folder))
    removed = DeleteDirectoryTree(platform.files, folder) && removed;
  return removed;
}

}  // namespace

bool RemoveFirefoxAddon(const Platform& platform, const TSoftInfo& record) {
  if (!record.IsToolbar || !text::ContainsText(record.ToolbarFile, L"install.rdf")) return false;
  if (!platform.files.RemoveFile(record.ToolbarFile))
    ScheduleFileOnReboot(platform, record.ToolbarFile, L"", RebootMode::Delete);
  return true;
}

AddonRemoval RemoveBrowserAddon(const Platform& platform, const TSoftInfo& record) {
  AddonRemoval result;
  if (!IsBrowserAddon(record)) return result;
  result.handled = true;
  if (RemoveFirefoxAddon(platform, record)) {
    result.removed = true;
    return result;
  }
  if (text::SameText(record.Extra1, L"Firefox")) {
    if (InProfileExtensions(record))
      result.removed = RemoveFirefoxPackage(platform, record);
    else
      result.inBrowser = record.Extra1;
    return result;
  }
  const ChromiumBrowser* browser = FindChromiumBrowser(record.Extra1);
  const bool external = browser && IsChromiumExtensionId(record.Extra2) && HasNoWayUp(record.Extra3) &&
                        !record.Extra3.empty() &&
                        (!FindExternalRegistration(platform, *browser, record.Extra2).Empty());
  if (external)
    result.removed = RemoveExternalChromium(platform, *browser, record);
  else
    result.inBrowser = record.Extra1;
  return result;
}

}  // namespace varnel
