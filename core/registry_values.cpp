#include "core/registry_values.h"

#include "core/registry_location.h"
#include "base/text.h"

namespace varnel {

std::wstring ReadKeyString(const IRegistryKey& key, std::wstring_view valueName) {
  auto value = key.ReadValue(valueName);
  if (!value || (value->type != RegType::String && value->type != RegType::ExpandString)) {
    return {};
  }
  return text::FromUtf16Bytes(value->data);
}

std::int64_t ReadKeyInteger(const IRegistryKey& key, std::wstring_view valueName) {
  const auto value = key.ReadValue(valueName);
  if (!value || value->type != RegType::DWord || value->data.size() < 4) return 0;
  const std::uint32_t raw = static_cast<std::uint32_t>(value->data[0]) |
                            (static_cast<std::uint32_t>(value->data[1]) << 8) |
                            (static_cast<std::uint32_t>(value->data[2]) << 16) |
                            (static_cast<std::uint32_t>(value->data[3]) << 24);
  return static_cast<std::int32_t>(raw);
}

std::wstring ReadRegistryString(IRegistry& registry, std::wstring_view rootName,
                                std::wstring_view key, std::wstring_view valueName, bool use64) {
  RegRoot root = RootKeyFromName(rootName);
  if (root == RegRoot::Invalid) return {};
  auto k = registry.OpenKey(root, key, RegAccess::Read, use64);
  return k ? ReadKeyString(*k, valueName) : std::wstring();
}

std::int64_t ReadRegistryInt64(IRegistry& registry, std::wstring_view rootName,
                               std::wstring_view key, std::wstring_view valueName, bool use64) {
  RegRoot root = RootKeyFromName(rootName);
  if (root == RegRoot::Invalid) return 0;
  auto k = registry.OpenKey(root, key, RegAccess::Read, use64);
  return k ? ReadKeyInteger(*k, valueName) : 0;
}

}  // namespace varnel
