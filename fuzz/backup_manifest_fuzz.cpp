// Feeds arbitrary bytes to the two readers a restore trusts: the backup
// manifest and the .reg file. What either accepts must survive being
// written out and read again unchanged, since a restore reads what a
// deletion run wrote.
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "uninstall/backup.h"
#include "uninstall/reg_file.h"

namespace {

bool SameKeys(const std::vector<varnel::RegFileKey>& a, const std::vector<varnel::RegFileKey>& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i].name != b[i].name || a[i].values.size() != b[i].values.size()) return false;
    for (std::size_t v = 0; v < a[i].values.size(); ++v) {
      const auto& [nameA, valueA] = a[i].values[v];
      const auto& [nameB, valueB] = b[i].values[v];
      if (nameA != nameB || valueA.type != valueB.type || valueA.data != valueB.data) return false;
    }
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> bytes(data, size);

  std::wstring created;
  if (const auto items =
          varnel::ReadManifest(std::string_view(reinterpret_cast<const char*>(data), size), &created)) {
    // Fields a kind does not use are dropped on writing, so the second
    // writing is the fixed point.
    const std::string once = varnel::ManifestText(created, *items);
    std::wstring createdAgain;
    const auto again = varnel::ReadManifest(once, &createdAgain);
    if (!again || again->size() != items->size()) __builtin_trap();
    if (varnel::ManifestText(createdAgain, *again) != once) __builtin_trap();
  }

  if (const auto keys = varnel::ParseRegFile(bytes)) {
    const auto again = varnel::ParseRegFile(varnel::EncodeRegFile(*keys));
    if (!again || !SameKeys(*keys, *again)) __builtin_trap();
  }
  return 0;
}
