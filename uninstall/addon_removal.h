#pragma once

#include <string>
#include <vector>

#include "inventory/soft_info.h"
#include "platform/platform.h"
#include "uninstall/deletion_guard.h"

namespace varnel {

// What removing a browser add-on record did.
struct AddonRemoval {
  bool handled = false;   // the record is an add-on: its uninstaller is not run
  bool removed = false;   // its files (and registration) are gone or queued for restart
  std::wstring inBrowser; // the browser it must be removed in, when it was left alone
  std::wstring backupId;  // the backup holding what was deleted; empty when nothing was
  // What the guard kept, with its reasons (or that no backup could be made).
  std::vector<DeletionOutcome> kept;
};

// Whether the record stands for a legacy add-on: its manifest is all that
// goes.
bool IsFirefoxManifestRecord(const TSoftInfo& record);

// A legacy add-on's install.rdf is deleted through `guard`, or queued for
// deletion at the next restart when it is locked; the browser drops the
// add-on at its next start. A manifest that is not a file stays.
bool RemoveFirefoxAddon(const TSoftInfo& record, DeletionGuard& guard);

// Any add-on record: the legacy manifest as above; a Firefox package in the
// profile's extensions folder deleted; a Chromium-family extension put there
// from outside the browser loses its registration and folder. What the
// browser installed itself is left for the browser to remove. Every
// deletion goes through the guard, over `otherProgramFolders` (the install
// folders of the listed programs but this record), and into a backup begun
// for it: a path from a browser's files never deletes outside the add-on.
AddonRemoval RemoveBrowserAddon(const Platform& platform, const TSoftInfo& record,
                                const std::vector<std::wstring>& otherProgramFolders);

}  // namespace varnel
