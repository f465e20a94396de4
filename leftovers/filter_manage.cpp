#include "leftovers/filter_manage.h"

#include "base/text.h"
#include "platform/csidl.h"

namespace varnel {

namespace {

struct BuiltInRow {
  const wchar_t* name;
  const wchar_t* reg;
  const wchar_t* path;
  const wchar_t* filter;
};

// The maker's own programs share folders and keys with each other; these are
// the places a scan of one of them must not take from the others.
constexpr BuiltInRow kBuiltInRows[] = {
    {L"Varnel Brightdeck",
     L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Varnel\\Brightdeck V4",
     L"CSIDL_COMMON_PROGRAMS\\Varnel Brightdeck V4,CSIDL_APPDATA\\Varnel\\Brightdeck V4",
     L"CSIDL_LOCAPTION\\Toolbox_Language,CSIDL_LOCAPTION\\Main.ini"},
    {L"Varnel Toolbar",
     L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Varnel\\Toolbar",
     L"CSIDL_APPDATA\\Varnel\\Toolbar",
     L""},
    {L"Varnel Folder Guard",
     L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Varnel\\Folder Guard,"
     L"HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\services\\VarnelFolderGuard",
     L"CSIDL_COMMON_PROGRAMS\\Varnel Folder Guard,CSIDL_COMMON_APPDATA\\Varnel\\Folder Guard",
     L"CSIDL_LOCAPTION\\GuardData,CSIDL_COMMON_APPDATA\\Varnel\\Folder Guard\\Protected.dat"},
    {L"Varnel Game Booster",
     L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Varnel\\Game Booster",
     L"CSIDL_COMMON_PROGRAMS\\Varnel Game Booster,CSIDL_APPDATA\\Varnel\\Game Booster",
     L""},
    {L"Varnel Varnel Uninstaller",
     L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Varnel\\Varnel Uninstaller",
     L"CSIDL_COMMON_PROGRAMS\\Varnel Uninstaller,CSIDL_APPDATA\\Varnel\\Varnel Uninstaller",
     L"CSIDL_LOCAPTION\\Log"},
    {L"Varnel Disk Cleaner",
     L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Varnel\\Disk Cleaner",
     L"CSIDL_COMMON_PROGRAMS\\Varnel Disk Cleaner,CSIDL_APPDATA\\Varnel\\Disk Cleaner",
     L""},
    {L"Varnel Registry Compactor",
     L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Varnel\\Registry Compactor",
     L"CSIDL_COMMON_PROGRAMS\\Varnel Registry Compactor,"
     L"CSIDL_APPDATA\\Varnel\\Registry Compactor",
     L"CSIDL_LOCAPTION\\Backups"},
    {L"Varnel Driver Updater",
     L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Varnel\\Driver Updater,"
     L"HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\services\\VarnelDriverUpdater",
     L"CSIDL_COMMON_PROGRAMS\\Varnel Driver Updater,"
     L"CSIDL_COMMON_APPDATA\\Varnel\\Driver Updater",
     L"CSIDL_LOCAPTION\\DriverBackups"},
    {L"Varnel Startup Manager",
     L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Varnel\\Startup Manager",
     L"CSIDL_COMMON_PROGRAMS\\Varnel Startup Manager,CSIDL_APPDATA\\Varnel\\Startup Manager",
     L""},
    {L"Varnel File Shredder",
     L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Varnel\\File Shredder",
     L"CSIDL_COMMON_PROGRAMS\\Varnel File Shredder,CSIDL_APPDATA\\Varnel\\File Shredder",
     L""},
    {L"Varnel System Repair",
     L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Varnel\\System Repair,"
     L"HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\services\\VarnelRepairService",
     L"CSIDL_COMMON_PROGRAMS\\Varnel System Repair,CSIDL_COMMON_APPDATA\\Varnel\\System Repair",
     L"CSIDL_LOCAPTION\\RepairPoints"},
};
static_assert(std::size(kBuiltInRows) == 11);

struct Macro {
  std::wstring_view name;
  int csidl;  // -1: the scanned program's folder
};

constexpr Macro kMacros[] = {
    {L"CSIDL_COMMON_PROGRAMS", Csidl::CommonPrograms},
    {L"CSIDL_APPDATA", Csidl::AppData},
    {L"CSIDL_COMMON_APPDATA", Csidl::CommonAppData},
    {L"CSIDL_LOCAPTION", -1},
};

}  // namespace

const std::array<std::wstring_view, 8> kProtectedVendorNames = {
    L"classes", L"clients", L"intel", L"imgBurn", L"caphyou", L"cddb", L"Microsoft", L"Wow6432Node"};

bool IsProtectedVendorName(std::wstring_view name) {
  for (auto protectedName : kProtectedVendorNames)
    if (text::SameText(name, protectedName)) return true;
  return false;
}

TFilterManage::TFilterManage() {
  for (const auto& row : kBuiltInRows) Add(row.name, row.reg, row.path, row.filter);
}

void TFilterManage::Add(std::wstring name, std::wstring reg, std::wstring path,
                         std::wstring filter) {
  items_.push_back(std::make_unique<TFilterData>(
      TFilterData{text::Lower(name), std::move(reg), std::move(path), std::move(filter)}));
}

bool TFilterManage::Find(std::wstring_view searchKey, std::wstring* foundName,
                         const std::function<void()>& perRow) const {
  for (const auto& item : items_) {
    if (perRow) perRow();
    if (!item->Name.empty() && searchKey.find(item->Name) != std::wstring_view::npos) {
      if (foundName) *foundName = item->Name;
      return true;
    }
  }
  return false;
}

std::wstring TFilterManage::GetField(std::wstring_view entryName, std::wstring_view field,
                                      std::wstring_view fallback) const {
  const auto name = text::Lower(entryName);
  const auto which = text::Lower(field);
  for (const auto& item : items_) {
    if (item->Name != name) continue;
    if (which == L"reg") return item->Reg;
    if (which == L"path") return item->Path;
    if (which == L"filter") return item->Filter;
    break;
  }
  return std::wstring(fallback);
}

std::wstring FilterSearchKey(const TSoftInfo& record) {
  return text::Lower(text::Trim(record.Publisher + L" " + record.Name));
}

std::wstring ExpandFilterPath(ISystem& system, std::wstring_view entry,
                              std::wstring_view installFolder) {
  auto cut = entry.find(L'\\');
  auto head = entry.substr(0, cut);
  auto rest = cut == std::wstring_view::npos ? std::wstring_view() : entry.substr(cut);
  for (const auto& macro : kMacros) {
    if (head != macro.name) continue;
    std::wstring folder = macro.csidl < 0 ? text::ExcludeTrailingBackslash(installFolder)
                                          : QuerySpecialFolder(system, macro.csidl);
    return text::ExcludeTrailingBackslash(folder) + std::wstring(rest);
  }
  return std::wstring(entry);
}

std::vector<std::wstring> SplitFilterField(std::wstring_view field) {
  std::vector<std::wstring> parts;
  std::size_t start = 0;
  while (start <= field.size()) {
    auto end = field.find(L',', start);
    if (end == std::wstring_view::npos) end = field.size();
    auto part = text::Trim(field.substr(start, end - start));
    if (!part.empty()) parts.push_back(std::move(part));
    start = end + 1;
  }
  return parts;
}

}  // namespace varnel
