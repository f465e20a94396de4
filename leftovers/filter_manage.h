#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/app_frame.h"
#include "inventory/soft_info.h"

namespace varnel {

// One of the maker's own programs, whose shared folders and keys a scan must
// leave alone. Lists are comma-separated.
struct TFilterData {
  std::wstring Name;    // publisher + " " + display name, lower case
  std::wstring Reg;     // "HKEY_LOCAL_MACHINE\SOFTWARE\Varnel\..." entries
  std::wstring Path;    // entries starting with a path macro
  std::wstring Filter;  // paths inside the program's folder that must be kept
};

// The protection filter. Its owner (the application, a console command, a
// test) builds one and hands it to every scan it runs.
class TFilterManage {
 public:
  // Filled with the built-in rows.
  TFilterManage();

  // The first row (in table order) whose name occurs in `searchKey`;
  // `perRow` runs before each row, so a long table never freezes the window.
  bool Find(std::wstring_view searchKey, std::wstring* foundName = nullptr,
            const std::function<void()>& perRow = {}) const;
  // "reg", "path" or "filter" (any case) of the row named `entryName`;
  // `fallback` when there is no such row or field.
  std::wstring GetField(std::wstring_view entryName, std::wstring_view field,
                        std::wstring_view fallback = L"") const;
  void Add(std::wstring name, std::wstring reg, std::wstring path, std::wstring filter);
  int Count() const { return static_cast<int>(items_.size()); }
  const TFilterData& Item(int index) const { return *items_[index]; }
  void Clear() { items_.clear(); }

 private:
  std::vector<std::unique_ptr<TFilterData>> items_;
};

// Publisher, a blank and the display name, trimmed and lower-cased.
std::wstring FilterSearchKey(const TSoftInfo& record);

// A filter path with its leading macro ("CSIDL_APPDATA\...", "CSIDL_LOCAPTION\...")
// replaced by its folder; `installFolder` stands for "CSIDL_LOCAPTION". An entry
// without a known macro is returned as it stands.
std::wstring ExpandFilterPath(ISystem& system, std::wstring_view entry,
                              std::wstring_view installFolder);

// Splits a comma-separated field, dropping empty parts.
std::vector<std::wstring> SplitFilterField(std::wstring_view field);

// Subkeys of "\SOFTWARE" that the vendor-key scan never walks.
extern const std::array<std::wstring_view, 8> kProtectedVendorNames;
bool IsProtectedVendorName(std::wstring_view name);

}  // namespace varnel
