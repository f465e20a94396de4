#include "core/registry_location.h"

#include <array>
#include <utility>

#include "base/text.h"

namespace varnel {

namespace {

constexpr std::array<std::pair<const wchar_t*, RegRoot>, 5> kRoots = {{
    {L"HKEY_CLASSES_ROOT", RegRoot::ClassesRoot},
    {L"HKEY_CURRENT_USER", RegRoot::CurrentUser},
    {L"HKEY_LOCAL_MACHINE", RegRoot::LocalMachine},
    {L"HKEY_USERS", RegRoot::Users},
    {L"HKEY_CURRENT_CONFIG", RegRoot::CurrentConfig},
}};

}  // namespace

RegRoot RootKeyFromName(std::wstring_view name) {
  for (const auto& [rootName, root] : kRoots)
    if (text::SameText(name, rootName)) return root;
  return RegRoot::Invalid;
}

std::wstring RootKeyName(RegRoot root) {
  for (const auto& [rootName, value] : kRoots)
    if (value == root) return rootName;
  return {};
}

std::wstring FormatRegistryLocation(RegRoot root, std::wstring_view key,
                                    std::wstring_view valueName, std::wstring_view data) {
  std::wstring s = RootKeyName(root);
  s += L'\\';
  s += key;
  if (!valueName.empty() || !data.empty()) {
    s += L" | ";
    s += valueName.empty() ? std::wstring_view(L"Default") : valueName;
    s += L" - ";
    s += data;
  }
  return s;
}

}  // namespace varnel
