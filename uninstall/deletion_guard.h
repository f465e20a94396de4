#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/protected_places.h"
#include "leftovers/scan_results.h"
#include "platform/platform.h"

namespace varnel {

class Backup;

// What happened to one item handed to the guard.
struct DeletionOutcome {
  bool deleted = false;            // gone now (or moved into the backup)
  bool atRestart = false;          // queued for deletion at the next start
  Refusal refused = Refusal::None; // set when the guard would not touch it
  std::wstring item;               // the item as logged: path or registry description
  std::wstring reason;             // RefusalReason, or why the deletion failed
};

// The one way anything is deleted: every path and key is resolved and checked
// against the protected places first, links are removed as links and never
// followed, and everything is backed up before it goes. Refusals are
// collected so callers can log them as skipped.
class DeletionGuard {
 public:
  // Everything is backed up into `backup` before it goes, and what could not
  // be is not deleted; a null `backup` (none could be begun) deletes nothing.
  DeletionGuard(const Platform& platform, ProtectedPlaces places, Backup* backup);
  // Deletes without any backup: only when the user chose so.
  static DeletionGuard WithoutBackup(const Platform& platform, ProtectedPlaces places);

  DeletionOutcome DeleteKey(RegRoot root, const std::wstring& keyPath, bool use64);
  DeletionOutcome DeleteValue(RegRoot root, const std::wstring& keyPath,
                              const std::wstring& valueName, bool use64);
  // Falls back to deletion at the next start when the file is locked.
  DeletionOutcome DeleteSingleFile(const std::wstring& path);
  // The folder with everything in it; a link inside is removed as a link, and
  // so is the folder itself when it is one. Errors inside are swallowed
  // (the outcome says whether the folder is gone).
  DeletionOutcome DeleteFolderTree(const std::wstring& path);
  // Dispatches a results-tree leaf on its kind, value name and file kind.
  DeletionOutcome Delete(const TMyTreeData& item);

  // The Windows Installer product whose cache entries may go.
  void SetProductCode(std::wstring productCode) { productCode_ = std::move(productCode); }

  const std::vector<DeletionOutcome>& Skipped() const { return skipped_; }

 private:
  DeletionOutcome DeleteRegistry(RegRoot root, const std::wstring& keyPath,
                                 const std::wstring& valueName, bool use64, bool wholeKey,
                                 const std::wstring& data);
  DeletionOutcome DeletePath(const std::wstring& path);
  std::wstring Admit(DeletionOutcome& outcome, const std::wstring& path);
  void RemoveTree(const std::wstring& folder, bool& queued);
  DeletionOutcome Refuse(DeletionOutcome outcome, Refusal refusal);
  DeletionOutcome Skip(DeletionOutcome outcome, std::wstring reason);
  bool Unbacked() const { return !backup_ && !withoutBackup_; }

  Platform platform_;
  ProtectedPlaces places_;
  Backup* backup_;
  bool withoutBackup_ = false;
  std::wstring productCode_;
  std::vector<DeletionOutcome> skipped_;
};

}  // namespace varnel
