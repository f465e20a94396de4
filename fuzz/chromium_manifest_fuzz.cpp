// Feeds arbitrary bytes to the Chromium-family readers: the text before the
// first NUL is a manifest.json, the rest its messages.json; the whole input
// is also read as preferences and as "Local State".
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "inventory/chromium_manifest.h"
#include "inventory/chromium_profiles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view all(reinterpret_cast<const char*>(data), size);
  const std::size_t split = all.find('\0');
  const std::string_view manifest = all.substr(0, split);
  const std::string_view messages = split == std::string_view::npos ? "" : all.substr(split + 1);
  if (const auto parsed = varnel::ParseChromiumManifest(manifest)) {
    const std::wstring key = varnel::MessageKey(parsed->name);
    if (!key.empty() && key.size() + 8 != parsed->name.size()) __builtin_trap();
    varnel::LookUpMessage(messages, key);
  }
  varnel::ParseChromiumSettings(all);
  varnel::ParseLocalStateProfiles(all);
  return 0;
}
