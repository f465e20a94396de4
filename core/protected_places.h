#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"

namespace varnel {

// Why a place may not be taken as a program's own or deleted; None when it may.
enum class Refusal {
  None,
  Unresolvable,      // not an absolute local path after resolution
  DriveRoot,
  WindowsFolder,     // the Windows folder or anything in it
  SystemRoot,        // Program Files (both), ProgramData, Users
  ProfileFolder,     // a profile root or one of its known folders
  HoldsProtected,    // an ancestor of any of the above
  OtherProgram,      // is, holds or lies in another listed program's folder
  RegistryRoot,      // a key Windows owns, or a key holding one
  Link,              // reached through a junction or symbolic link
};

// A short English reason for logs and the console tool ("drive root", ...).
std::wstring RefusalReason(Refusal refusal);

// The places no scan may offer and no deletion may touch, read once from the
// machine (special folders, environment, the profile list) and from the
// install folders of the programs that stay listed.
class ProtectedPlaces {
 public:
  // `otherProgramFolders`: install folders (as written) of every listed
  // program except the ones being scanned or cleaned; unusable ones (empty,
  // relative, themselves protected) are ignored, so that one hostile entry
  // naming "C:\" cannot make every folder someone else's.
  ProtectedPlaces(const Platform& platform, const std::vector<std::wstring>& otherProgramFolders);

  // For a folder offered as a program's install folder: refuses the
  // protected folders, their ancestors, and a folder that is, holds or lies
  // in another program's folder, and one that is or lies below a junction
  // or symbolic link (its real place is elsewhere). `resolved` comes from
  // ResolvePath; a share path ("\\server\share\...") is Unresolvable.
  Refusal CheckInstallFolder(std::wstring_view resolved) const;

  // For a file or folder about to be deleted: refuses the protected folders
  // and their ancestors (their contents pass, except inside the Windows
  // folder, where only Windows Installer cache entries of `productCode` pass),
  // and anything that is, holds or lies in another program's folder; a path
  // below a junction or symbolic link is Link (the entry itself may be one:
  // it is removed as a link).
  Refusal CheckDeletion(std::wstring_view resolved, std::wstring_view productCode = {}) const;

  // For a registry key (`wholeKey`) or one of its values about to be
  // deleted: refuses the keys Windows owns and every key that holds one;
  // a value below such a key, or a key a program added below it, passes.
  // HKEY_CLASSES_ROOT, the "Classes" of a user and of the machine, the
  // WOW6432Node views and the numbered control sets count as one place each.
  // Needs no machine: a static function.
  static Refusal CheckRegistryKey(RegRoot root, std::wstring_view keyPath, bool wholeKey);
  Refusal CheckRegistry(RegRoot root, std::wstring_view keyPath, bool wholeKey) const {
    return CheckRegistryKey(root, keyPath, wholeKey);
  }

  // Resolved, protected with their ancestors (contents pass).
  const std::vector<std::wstring>& Folders() const { return folders_; }
  // Resolved, protected with everything in them.
  const std::vector<std::wstring>& WindowsFolders() const { return windowsFolders_; }
  // The usable install folders of the other programs, resolved.
  const std::vector<std::wstring>& OtherPrograms() const { return otherPrograms_; }

 private:
  // Without the other programs, and without the look at links.
  Refusal CheckPlace(std::wstring_view resolved) const;
  Refusal CheckOthers(std::wstring_view resolved) const;
  void AddFolder(std::wstring_view path, Refusal kind, bool expand = false);

  Platform platform_;
  std::vector<std::wstring> folders_;
  std::vector<Refusal> kinds_;                // of folders_, one each
  std::vector<std::wstring> windowsFolders_;
  std::vector<std::wstring> otherPrograms_;
};

}  // namespace varnel
