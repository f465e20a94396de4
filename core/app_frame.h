#pragma once

#include <string>

#include "platform/platform.h"

namespace varnel {

// Folder lookups that ask the system afresh on every call. Each follows the
// buffer its Windows call is given (261 characters for special folders, 255
// for the directories): a longer answer counts as a failed lookup, which
// yields the empty string.
std::wstring QuerySpecialFolder(ISystem& system, int csidl);
std::wstring QuerySystemDir(ISystem& system);
std::wstring QueryWindowsDir(ISystem& system);
std::wstring QueryTempDir(ISystem& system);  // ends with "\"
// Folder of the running executable, with its trailing "\".
std::wstring QueryAppFolder(ISystem& system);

// The path service: special folders by table index and the path-macro
// expander. Holds nothing but the three folders captured at construction, so
// every thread makes its own.
class TAppFrame {
 public:
  explicit TAppFrame(const Platform& platform);

  std::wstring UserAppData;    // CSIDL_APPDATA, no trailing "\"
  std::wstring CommonAppData;  // CSIDL_COMMON_APPDATA, no trailing "\"
  std::wstring AppFolder;      // with trailing "\"

  // Index 0..35 (user) or 0..12 (all users); an index outside the table, and
  // user index 14, leave `path` as it was.
  void GetUserFolder(int index, std::wstring& path) const;
  void GetCommonFolder(int index, std::wstring& path) const;

  std::wstring GetSystemDir() const;
  std::wstring GetWindowsDir() const;
  std::wstring GetTempDir() const;
  // The folder holding all profiles, taken from the user's application-data
  // folder: C:\Users\bob\AppData\Roaming gives C:\Users.
  std::wstring GetProfilesRoot() const;

  // Expands the first macro of the table (in table order) that `path` holds,
  // every occurrence of it, ignoring case. `allUsersPath` receives the
  // all-users form for the macros that have one, else "".
  void ExpandPathMacros(std::wstring& path, std::wstring& allUsersPath) const;

  const Platform& Machine() const { return platform_; }

 private:
  Platform platform_;
};

}  // namespace varnel
