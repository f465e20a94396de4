// Feeds arbitrary bytes to the reader of Firefox's profiles.ini.
#include <cstddef>
#include <cstdint>
#include <set>
#include <string_view>

#include "base/text.h"
#include "inventory/firefox_profiles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::wstring text =
      varnel::text::FromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
  std::set<std::wstring> seen;
  for (const auto& folder : varnel::ParseFirefoxProfiles(text, L"C:\\Firefox\\")) {
    if (folder.empty() || folder.find(L'/') != std::wstring::npos) __builtin_trap();
    if (!seen.insert(varnel::text::Lower(folder)).second) __builtin_trap();
  }
  return 0;
}
