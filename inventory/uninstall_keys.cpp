#include "inventory/uninstall_keys.h"

#include <algorithm>
#include <unordered_map>

#include "core/file_size.h"
#include "core/registry_location.h"
#include "core/registry_values.h"
#include "base/text.h"
#include "core/uninstall_command.h"

namespace varnel {

void WalkKeyTree(IRegistry& registry, std::wstring_view rootName, std::wstring_view path,
                 bool use64, const std::function<void(const std::wstring& path,
                                                      const IRegistryKey* key)>& visit) {
  RegRoot root = RootKeyFromName(rootName);
  std::vector<std::wstring> pending{std::wstring(path)};
  for (std::size_t i = 0; i < pending.size(); ++i) {
    std::unique_ptr<IRegistryKey> key;
    if (root != RegRoot::Invalid) key = registry.OpenKey(root, pending[i], RegAccess::Read, use64);
    if (key) {
      for (const auto& name : key->SubKeyNames()) pending.push_back(pending[i] + L"\\" + name);
    }
    visit(pending[i], key.get());
  }
}

void EnumerateKeyTree(IRegistry& registry, std::wstring_view rootName, std::wstring_view path,
                      std::vector<std::wstring>& keys, bool use64) {
  WalkKeyTree(registry, rootName, path, use64,
              [&keys](const std::wstring& key, const IRegistryKey*) { keys.push_back(key); });
}

std::wstring FindMsiInFolder(IFileSystem& files, std::wstring_view folder) {
  if (folder.empty()) return {};
  std::wstring base = text::IncludeTrailingBackslash(folder);
  std::vector<FindEntry> found;
  if (!files.FindEntries(base + L"*.msi", found)) return {};
  for (const auto& entry : found) {
    if (entry.name != L"." && entry.name != L"..") return base + entry.name;
  }
  return {};
}

EntryContext::EntryContext(ISystem& system)
    : now(NowLocal(system)),
      currentYear(DecodeDateTime(now).year > 0 ? DecodeDateTime(now).year : 2000),
      shortDatePicture(system.ShortDateFormat()),
      decimalSeparator(system.DecimalSeparator()) {
  if (shortDatePicture.empty()) shortDatePicture = L"M/d/yyyy";
}

void ParseInstallDate(const EntryContext& context, TSoftInfo& info) {
  if (info.InstallDateText.empty()) {
    info.InstallDate = 0;
    return;
  }
  std::wstring s = info.InstallDateText;
  // "-" before the 7th, then before the 5th character; past the end it is
  // appended, so short text fails to parse.
  s.insert(std::min<std::size_t>(6, s.size()), 1, L'-');
  s.insert(std::min<std::size_t>(4, s.size()), 1, L'-');
  auto date = ParseDate(s, DateOrder::YMD, L'-', context.currentYear);
  if (!date) {
    info.InstallDate = 0;
    info.InstallDateText.clear();
    return;
  }
  info.InstallDate = *date;
  info.InstallDateText = FormatDate(context.shortDatePicture, *date);
}

namespace {

bool IsProductCodeTail(std::wstring_view key) {
  if (key.size() <= 37) return false;
  std::wstring_view tail = key.substr(key.size() - 38);
  return tail.find(L'{') != std::wstring_view::npos && tail.find(L'}') != std::wstring_view::npos;
}

std::unique_ptr<TSoftInfo> ReadEntry(const TAppFrame& frame, const std::wstring& rootName,
                                     const std::wstring& path, const IRegistryKey& key,
                                     bool use64, const EntryContext& context) {
  std::wstring name = text::Trim(ReadKeyString(key, L"DisplayName"));
  std::wstring uninstall = ReadKeyString(key, L"UninstallString");
  std::wstring publisher = ReadKeyString(key, L"Publisher");
  std::int64_t systemComponent = ReadKeyInteger(key, L"SystemComponent");
  if (uninstall.empty() && systemComponent == 0 && IsProductCodeTail(path)) {
    uninstall = FindMsiInFolder(frame.Machine().files, ReadKeyString(key, L"InstallSource"));
  }
  if (name.empty() || uninstall.empty()) return nullptr;
  if (uninstall.starts_with(L"regsvr32") && text::ContainsText(publisher, L"microsoft")) {
    return nullptr;
  }

  auto info = std::make_unique<TSoftInfo>();
  info->Name = name;
  info->HelpLink = text::Trim(ReadKeyString(key, L"HelpLink"));
  info->Publisher = text::Trim(publisher);
  info->Version = text::Trim(ReadKeyString(key, L"DisplayVersion"));
  info->URLInfoAbout = ReadKeyString(key, L"URLInfoAbout");
  info->URLUpdateInfo = ReadKeyString(key, L"URLUpdateInfo");
  info->InstallDateText = ReadKeyString(key, L"InstallDate");
  info->InstallLocation = ReadKeyString(key, L"InstallLocation");
  info->RootKey = rootName;
  info->KeyPath = path;
  info->UninstallString = uninstall;
  info->DisplayIcon = ReadKeyString(key, L"DisplayIcon");
  info->Readme = ReadKeyString(key, L"Readme");
  info->Size = PlausibleSize(ReadKeyInteger(key, L"EstimatedSize") * 1024);
  info->SizeText = FormatFileSize(info->Size, context.decimalSeparator);

  std::wstring upperName = text::Upper(info->Name);
  info->IsWindowsUpdate =
      upperName.find(L"(KB") != std::wstring::npos ||
      (upperName.find(L"SERVICE PACK") != std::wstring::npos &&
       text::Upper(info->Publisher).find(L"MICROSOFT") != std::wstring::npos);
  info->Is64BitView = use64;
  info->IsSystemComponent = systemComponent == 1;
  info->LastAccessDate = context.now;

  for (auto* field : {&info->HelpLink, &info->Publisher, &info->Version}) {
    if (field->empty()) *field = L"-";
  }
  if (!info->InstallLocation.empty() && !frame.Machine().files.DirectoryExists(info->InstallLocation)) {
    info->InstallLocation = CleanFolderPath(frame, info->InstallLocation);
  }
  ParseInstallDate(context, *info);
  return info;
}

}  // namespace

void FilterSameName(SoftList& list) {
  // Only records of equal names ever meet in the pairwise rule, so each
  // record is compared with its namesakes alone, in list order.
  std::unordered_map<std::wstring, std::vector<std::size_t>> namesakes;
  std::vector<const std::vector<std::size_t>*> groupOf(list.size());
  for (std::size_t i = 0; i < list.size(); ++i) {
    namesakes[text::Upper(list[i]->Name)].push_back(i);
  }
  for (const auto& [name, members] : namesakes) {
    for (std::size_t i : members) groupOf[i] = &members;
  }
  for (std::size_t i = 0; i < list.size(); ++i) {
    TSoftInfo& a = *list[i];
    if (a.Hidden) continue;
    if (a.IsSystemComponent && text::Upper(a.UninstallString).find(L"MSIEXEC.EXE /") !=
                                   std::wstring::npos) {
      a.Hidden = true;
      continue;
    }
    const auto& group = *groupOf[i];
    for (auto it = std::upper_bound(group.begin(), group.end(), i); it != group.end(); ++it) {
      TSoftInfo& b = *list[*it];
      if (b.Hidden) continue;
      if (a.IsSystemComponent) {
        a.Hidden = true;
        MergeSoftInfo(b, a);
        break;
      }
      b.Hidden = true;
      MergeSoftInfo(a, b);
    }
  }
}

int EnumerateUninstallKeys(const TAppFrame& frame, SoftList* list, bool use64BitView,
                           IRegistry* keys) {
  if (!list) return -1;
  IRegistry& registry = keys ? *keys : frame.Machine().registry;
  EntryContext context(frame.Machine().system);
  for (const std::wstring rootName : {L"HKEY_LOCAL_MACHINE", L"HKEY_CURRENT_USER"}) {
    WalkKeyTree(registry, rootName, kUninstallKeyPath, use64BitView,
                [&](const std::wstring& path, const IRegistryKey* key) {
                  if (!key) return;
                  if (auto info = ReadEntry(frame, rootName, path, *key, use64BitView, context)) {
                    list->push_back(std::move(info));
                  }
                });
  }
  FilterSameName(*list);
  return static_cast<int>(list->size());
}

}  // namespace varnel
