// Feeds arbitrary bytes to the shortcut reader as a link file.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/shortcut.h"
#include "platform/memory/memory_platform.h"

namespace {

constexpr const wchar_t* kLink = L"C:\\Users\\test\\Desktop\\fuzz.lnk";

void Check(varnel::mem::MemoryPlatform& m) {
  const int kind = varnel::GetShortcutLinkKind(m.files, kLink);
  const std::wstring target = varnel::GetShortcutTarget(m.files, m.system, kLink);
  // The reader's promises: a known kind, and a target only for local links,
  // never longer than the path buffer it is read from.
  if (kind < varnel::LinkKind::LocalPath || kind > varnel::LinkKind::NoFile) __builtin_trap();
  if (kind != varnel::LinkKind::LocalPath && !target.empty()) __builtin_trap();
  if (target.size() > 260) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static varnel::mem::MemoryPlatform* machine = [] {
    auto* m = new varnel::mem::MemoryPlatform();
    m->files.AddFile(L"C:\\Program Files\\App\\app.exe", "MZ");
    return m;
  }();
  machine->files.AddFile(kLink, std::string_view(reinterpret_cast<const char*>(data), size));
  // Both kinds of ANSI code page: single-byte and UTF-8.
  machine->system.ansiCodePage = 1252;
  Check(*machine);
  machine->system.ansiCodePage = 65001;
  Check(*machine);
  return 0;
}
