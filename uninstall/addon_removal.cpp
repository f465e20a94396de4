#include "uninstall/addon_removal.h"

#include <memory>

#include "core/path_resolution.h"
#include "core/protected_places.h"
#include "base/text.h"
#include "inventory/chromium_extensions.h"
#include "uninstall/backup.h"

namespace varnel {
namespace {

// No "." or ".." component: a path from a browser's files stays where it says.
bool HasNoWayUp(std::wstring_view path) {
  const std::wstring normal = L"\\" + text::ReplaceAll(path, L"/", L"\\") + L"\\";
  return normal.find(L"\\..\\") == std::wstring::npos && normal.find(L"\\.\\") == std::wstring::npos;
}

bool Gone(const DeletionOutcome& outcome) { return outcome.deleted || outcome.atRestart; }

// The package lies directly in the profile's own extensions folder, however
// either is spelled; add-ons elsewhere belong to the browser's installation
// or another program.
bool InProfileExtensions(const Platform& platform, const TSoftInfo& record) {
  if (record.Extra3.empty() || !HasNoWayUp(record.ToolbarFile) || !HasNoWayUp(record.Extra3))
    return false;
  const std::wstring folder =
      ResolvePath(platform, text::IncludeTrailingBackslash(record.Extra3) + L"extensions");
  const std::wstring package = ResolvePath(platform, record.ToolbarFile);
  return !folder.empty() && !package.empty() &&
         text::SameText(text::ExcludeTrailingBackslash(text::ExtractFilePath(package)), folder);
}

// An external extension counts only with a registration the browser would
// act on, found for a well-formed id and profile.
ExternalRegistration ExternalOf(const Platform& platform, const ChromiumBrowser* browser,
                                const TSoftInfo& record) {
  if (!browser || !IsChromiumExtensionId(record.Extra2) || record.Extra3.empty() ||
      !HasNoWayUp(record.Extra3))
    return {};
  return FindExternalRegistration(platform, *browser, record.Extra2);
}

// The "<id>.json" registrations lie in the browser's own folder, which is
// listed as a program itself: that folder gives up those files, nothing else.
std::vector<std::wstring> WithoutFoldersHolding(const Platform& platform,
                                                const std::vector<std::wstring>& folders,
                                                const std::vector<std::wstring>& files) {
  std::vector<std::wstring> kept;
  for (const auto& folder : folders) {
    const std::wstring resolved = ResolvePath(platform, folder, true);
    bool holds = false;
    for (const auto& file : files)
      holds = holds ||
              (!resolved.empty() && PathIsOrIsBelow(ResolvePath(platform, file), resolved));
    if (!holds) kept.push_back(folder);
  }
  return kept;
}

bool RemoveFirefoxPackage(const Platform& platform, const TSoftInfo& record, DeletionGuard& guard) {
  const std::wstring package = text::ExcludeTrailingBackslash(record.ToolbarFile);
  return Gone(platform.files.DirectoryExists(package) ? guard.DeleteFolderTree(package)
                                                      : guard.DeleteSingleFile(package));
}

bool RemoveExternalChromium(const Platform& platform, const ExternalRegistration& registration,
                            const TSoftInfo& record, DeletionGuard& guard,
                            DeletionGuard& registrationGuard) {
  bool removed = true;
  for (const auto& key : registration.keys)
    removed = Gone(guard.DeleteKey(key.root, key.path, key.use64)) && removed;
  for (const auto& file : registration.files)
    removed = Gone(registrationGuard.DeleteSingleFile(file)) && removed;
  const std::wstring folder =
      text::IncludeTrailingBackslash(record.Extra3) + L"Extensions\\" + record.Extra2;
  if (platform.files.DirectoryExists(folder))
    removed = Gone(guard.DeleteFolderTree(folder)) && removed;
  return removed;
}

}  // namespace

bool IsFirefoxManifestRecord(const TSoftInfo& record) {
  return record.IsToolbar && text::ContainsText(record.ToolbarFile, L"install.rdf");
}

bool RemoveFirefoxAddon(const TSoftInfo& record, DeletionGuard& guard) {
  return IsFirefoxManifestRecord(record) && Gone(guard.DeleteSingleFile(record.ToolbarFile));
}

AddonRemoval RemoveBrowserAddon(const Platform& platform, const TSoftInfo& record,
                                const std::vector<std::wstring>& otherProgramFolders) {
  AddonRemoval result;
  if (!IsBrowserAddon(record)) return result;
  result.handled = true;

  const bool manifest = IsFirefoxManifestRecord(record);
  const bool firefox = !manifest && text::SameText(record.Extra1, L"Firefox");
  ExternalRegistration registration;
  if (firefox && !InProfileExtensions(platform, record)) {
    result.inBrowser = record.Extra1;
    return result;
  }
  if (!manifest && !firefox) {
    registration = ExternalOf(platform, FindChromiumBrowser(record.Extra1), record);
    if (registration.Empty()) {
      result.inBrowser = record.Extra1;
      return result;
    }
  }
  // The guard would take a folder named install.rdf with all it holds.
  if (manifest && platform.files.DirectoryExists(record.ToolbarFile)) {
    result.kept.push_back({.item = record.ToolbarFile, .reason = L"not a file"});
    return result;
  }

  const std::unique_ptr<Backup> backup = Backup::Begin(platform);
  if (!backup) {
    result.kept.push_back({.item = record.ToolbarFile, .reason = L"no backup could be made"});
    return result;
  }
  DeletionGuard guard(platform, ProtectedPlaces(platform, otherProgramFolders), backup.get());
  if (manifest) {
    result.removed = RemoveFirefoxAddon(record, guard);
  } else if (firefox) {
    result.removed = RemoveFirefoxPackage(platform, record, guard);
  } else {
    const auto beside = WithoutFoldersHolding(platform, otherProgramFolders, registration.files);
    DeletionGuard registrationGuard(platform, ProtectedPlaces(platform, beside), backup.get());
    result.removed =
        RemoveExternalChromium(platform, registration, record, guard, registrationGuard);
    result.kept = registrationGuard.Skipped();
  }
  result.kept.insert(result.kept.end(), guard.Skipped().begin(), guard.Skipped().end());
  if (!backup->Items().empty()) result.backupId = backup->Id();
  return result;
}

}  // namespace varnel
