// Feeds arbitrary bytes to the add-on manifest reader.
#include <cstddef>
#include <cstdint>
#include <span>

#include "base/text.h"
#include "inventory/install_rdf.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::wstring name = varnel::ReadAddonName(std::span<const std::uint8_t>(data, size));
  if (name != varnel::text::Trim(name)) __builtin_trap();
  return 0;
}
