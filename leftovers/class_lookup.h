#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "leftovers/scan_context.h"
#include "leftovers/scan_sink.h"

// What the COM and shell scanners share.
namespace varnel::scan {

inline constexpr std::wstring_view kMachineClasses = L"\\SOFTWARE\\Classes";

// A key path one level down: path + "\" + name.
inline std::wstring Join(std::wstring_view path, std::wstring_view name) {
  std::wstring r(path);
  r += L'\\';
  r += name;
  return r;
}

// "\SOFTWARE\Classes\X" as HKEY_CLASSES_ROOT shows it: "\X".
std::wstring ClassesRootMirror(std::wstring_view machinePath);

// Whether `id` is one of the program's COM classes found so far.
bool IsProgramClassId(const ScanSink& found, std::wstring_view id);

// Keys of "\SOFTWARE\Classes" that are registries of their own, not file
// classes (CLSID, Interface, ...): never walked as classes, never reported whole.
bool IsStructuralClassesKey(std::wstring_view name);
// File classes every program may add verbs and handlers to ("*", Directory,
// txtfile, ...): only the program's own entries in them are reported.
bool IsSharedFileClass(std::wstring_view name);

// The name as `names` spells it, compared without regard to case; empty when absent.
std::wstring FindName(const std::vector<std::wstring>& names, std::wstring_view name);

}  // namespace varnel::scan
