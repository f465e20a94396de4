#include "core/registry_routines.h"

#include <array>
#include <utility>

#include "core/registry_location.h"
#include "core/registry_values.h"

namespace varnel {

namespace {

// Unlike RootKeyFromName this compares exactly and falls back to the current
// user, the root a fresh registry object starts with; callers of the integer
// read rely on that.
RegRoot ExactRoot(std::wstring_view name) {
  constexpr std::array<std::pair<std::wstring_view, RegRoot>, 5> kRoots = {{
      {L"HKEY_CLASSES_ROOT", RegRoot::ClassesRoot},
      {L"HKEY_CURRENT_USER", RegRoot::CurrentUser},
      {L"HKEY_LOCAL_MACHINE", RegRoot::LocalMachine},
      {L"HKEY_USERS", RegRoot::Users},
      {L"HKEY_CURRENT_CONFIG", RegRoot::CurrentConfig},
  }};
  for (const auto& [rootName, root] : kRoots)
    if (name == rootName) return root;
  return RegRoot::CurrentUser;
}

}  // namespace

std::int64_t ReadRegistryInteger(IRegistry& registry, std::wstring_view rootName,
                                 std::wstring_view key, std::wstring_view valueName, bool use64) {
  const auto k = registry.OpenKey(ExactRoot(rootName), key, RegAccess::Read, use64);
  if (!k) return 0;
  return ReadKeyInteger(*k, valueName);
}

bool DeleteRegistryKeyByName(IRegistry& registry, std::wstring_view rootName,
                             std::wstring_view key, bool use64) {
  const RegRoot root = RootKeyFromName(rootName);
  if (root == RegRoot::Invalid) return false;
  return DeleteRegistryKey(registry, root, key, use64);
}

bool DeleteRegistryKey(IRegistry& registry, RegRoot root, std::wstring_view key, bool use64) {
  // The outcome is not reported: the deletion window records its own line
  // for every item whatever happened.
  if (registry.KeyExists(root, key, use64)) (void)registry.DeleteKey(root, key, use64);
  return true;
}

bool DeleteRegistryValue(IRegistry& registry, RegRoot root, std::wstring_view key,
                         std::wstring_view valueName, bool use64) {
  const auto k = registry.OpenKey(root, key, RegAccess::Write, use64);
  if (!k || !k->ValueExists(valueName)) return true;
  return k->DeleteValue(valueName);
}

}  // namespace varnel
