#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/app_frame.h"
#include "inventory/soft_list.h"

namespace varnel {

inline constexpr std::wstring_view kUninstallKeyPath =
    L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall";

// Visits a key and every key below it, breadth first, in the order the
// registry lists subkeys. `key` is null for a key that does not open; the
// walk goes on. An unknown root name visits only the start path.
void WalkKeyTree(IRegistry& registry, std::wstring_view rootName, std::wstring_view path,
                 bool use64, const std::function<void(const std::wstring& path,
                                                      const IRegistryKey* key)>& visit);
// The start key followed by all its descendants, breadth first.
void EnumerateKeyTree(IRegistry& registry, std::wstring_view rootName, std::wstring_view path,
                      std::vector<std::wstring>& keys, bool use64);

// The folder joined with the first "*.msi" file in it, or empty.
std::wstring FindMsiInFolder(IFileSystem& files, std::wstring_view folder);

// Appends the Uninstall entries of both roots in one view, then hides
// same-name duplicates over the whole list. Returns the list's count, or -1
// without a list. `registry` replaces the frame's for the keys (a copy read
// ahead); the files are always the frame's.
int EnumerateUninstallKeys(const TAppFrame& frame, SoftList* list, bool use64BitView,
                           IRegistry* registry = nullptr);

// What every record of one walk shares, asked of the system once: under Wine
// a clock or locale query costs more than a registry read.
struct EntryContext {
  explicit EntryContext(ISystem& system);
  TDateTime now;
  int currentYear;
  std::wstring shortDatePicture;
  wchar_t decimalSeparator;
};

// "20100315" -> 15 March 2010 and its short-date text; anything else clears
// both.
void ParseInstallDate(const EntryContext& context, TSoftInfo& info);

// Hides duplicates by name: a system component yields to its namesake, an
// ordinary record absorbs the fields its later namesakes have and it lacks.
void FilterSameName(SoftList& list);

}  // namespace varnel
