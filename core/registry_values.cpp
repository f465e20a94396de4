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
  auto value = key.ReadValue(valueName);
  if (!value) return 0;
  std::size_t width = value->type == RegType::DWord ? 4 : value->type == RegType::QWord ? 8 : 0;
  if (width == 0 || value->data.size() < width) return 0;
  std::uint64_t raw = 0;
  for (std::size_t i = width; i-- > 0;) raw = (raw << 8) | value->data[i];
  return static_cast<std::int64_t>(raw);
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
