// Feeds arbitrary bytes to the quiet-command reader as an uninstaller file:
// its PE header, section table and the NSIS header search after the image.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/memory/memory_platform.h"
#include "uninstall/quiet_command.h"

namespace {

constexpr const wchar_t* kUninstaller = L"C:\\Program Files\\App\\unins000.exe";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static varnel::mem::MemoryPlatform* machine = new varnel::mem::MemoryPlatform();
  machine->files.AddFile(kUninstaller,
                         std::string_view(reinterpret_cast<const char*>(data), size));
  const varnel::UninstallerKind kind = varnel::ReadUninstallerKind(machine->files, kUninstaller);
  // The reader only ever tells the three kinds a file can show by itself.
  if (kind != varnel::UninstallerKind::Unknown && kind != varnel::UninstallerKind::Nsis &&
      kind != varnel::UninstallerKind::NsisInstaller &&
      kind != varnel::UninstallerKind::InnoSetup)
    __builtin_trap();
  return 0;
}
