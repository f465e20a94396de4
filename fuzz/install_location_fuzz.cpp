// Feeds arbitrary install locations to the path resolution and the
// protected-place tests, with promises that must hold for every input.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/path_resolution.h"
#include "core/protected_places.h"
#include "base/text.h"
#include "platform/memory/memory_platform.h"

namespace {

// A machine with a program folder, an 8.3 alias, another program and a
// junction into the Windows folder.
struct World {
  varnel::mem::MemoryPlatform m;
  varnel::ProtectedPlaces* places = nullptr;
};

World& Machine() {
  static World* world = [] {
    auto* w = new World();
    w->m.files.AddFile(L"C:\\Program Files\\App\\app.exe", "MZ");
    w->m.files.AddFolder(L"C:\\Program Files\\Other App\\plugins");
    w->m.files.SetShortName(L"C:\\Program Files", L"PROGRA~1");
    w->m.files.AddLink(L"C:\\Users\\test\\Links\\Evil", L"C:\\Windows");
    w->m.files.AddLink(L"C:\\Loop\\Self", L"C:\\Loop");
    w->places = new varnel::ProtectedPlaces(w->m.Get(), {L"C:\\Program Files\\Other App"});
    return w;
  }();
  return *world;
}

void Check(bool promise) {
  if (!promise) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const bool expand = (data[0] & 1) != 0;
  std::wstring text;
  for (std::size_t i = 1; i + 1 < size; i += 2)
    text.push_back(static_cast<wchar_t>(data[i] | (data[i + 1] << 8)));
  auto& w = Machine();
  const auto platform = w.m.Get();

  const auto resolved = varnel::ResolvePath(platform, text, expand);
  if (resolved.empty()) {
    Check(w.places->CheckInstallFolder(resolved) != varnel::Refusal::None);
    Check(w.places->CheckDeletion(resolved) != varnel::Refusal::None);
    return 0;
  }
  // One spelling: resolving again changes nothing, and it holds none of the
  // parts a second look could read differently.
  Check(varnel::ResolvePath(platform, resolved) == resolved);
  Check(resolved.find(L'/') == std::wstring::npos);
  Check(resolved.find(L"\\\\", 1) == std::wstring::npos);
  Check(resolved.find(L"\\..\\") == std::wstring::npos && !resolved.ends_with(L"\\.."));
  Check(varnel::PathIsOrIsBelow(resolved, resolved));

  const auto refusal = w.places->CheckInstallFolder(resolved);
  if (refusal == varnel::Refusal::None) {
    // A folder a program may own is never a drive root, never in the Windows
    // folder, never holds a protected folder and is never another program's.
    Check(resolved.size() > 3);
    for (const auto& windows : w.places->WindowsFolders())
      Check(!varnel::PathIsOrIsBelow(resolved, windows) &&
            !varnel::PathIsOrIsBelow(windows, resolved));
    for (const auto& folder : w.places->Folders())
      Check(!varnel::PathIsOrIsBelow(folder, resolved));
    for (const auto& other : w.places->OtherPrograms())
      Check(!varnel::PathIsOrIsBelow(resolved, other) && !varnel::PathIsOrIsBelow(other, resolved));
  }
  (void)w.places->CheckDeletion(resolved, text);
  (void)varnel::ProtectedPlaces::CheckRegistryKey(
      static_cast<varnel::RegRoot>(0x80000000u + (data[0] >> 1) % 6), text, (data[0] & 2) != 0);
  return 0;
}
