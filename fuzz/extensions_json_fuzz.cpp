// Feeds arbitrary bytes to the reader of a Firefox profile's extensions.json.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "inventory/firefox_addons.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view json(reinterpret_cast<const char*>(data), size);
  for (const auto& addon : varnel::ParseExtensionsJson(json, L"C:\\profile")) {
    if (addon.name.empty() || addon.path.empty() || addon.path.find(L'/') != std::wstring::npos)
      __builtin_trap();
  }
  return 0;
}
