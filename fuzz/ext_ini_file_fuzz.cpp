// Feeds arbitrary bytes to the cache readers: the ini reader (as a file)
// and the icon cache.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "inventory/icon_cache.h"
#include "platform/memory/memory_platform.h"
#include "base/ext_ini_file.h"

namespace {

constexpr const wchar_t* kIni = L"C:\\fuzz\\input.ini";
constexpr const wchar_t* kSaved = L"C:\\fuzz\\saved.ini";

void Check(varnel::mem::MemoryPlatform& m) {
  varnel::TExtIniFile ini;
  if (!ini.LoadFromFile(m.Get(), kIni)) __builtin_trap();
  const std::vector<std::wstring> sections = ini.ReadSections();
  for (const std::wstring& section : sections) {
    if (!ini.SectionExists(section)) __builtin_trap();
    const auto keys = ini.ReadSection(section);
    if (keys.size() > ini.ReadSectionValues(section).size()) __builtin_trap();
    for (const std::wstring& key : keys) {
      if (!ini.ValueExists(section, key)) __builtin_trap();
      ini.ReadString(section, key, L"");
      ini.ReadInt64(section, key, 0);
      ini.ReadFloat(section, key, 0);
    }
  }

  // What was kept must read back the same from its own text and from the
  // file it is saved to.
  const std::wstring text = ini.ToText();
  varnel::TExtIniFile again;
  again.LoadFromText(text);
  if (again.ReadSections() != sections || again.ToText() != text) __builtin_trap();
  if (!ini.SaveToFile(m.Get(), kSaved)) __builtin_trap();
  varnel::TExtIniFile saved;
  if (!saved.LoadFromFile(m.Get(), kSaved) || saved.ToText() != text) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static varnel::mem::MemoryPlatform* machine = [] {
    auto* m = new varnel::mem::MemoryPlatform();
    m->files.AddFolder(L"C:\\fuzz");
    return m;
  }();
  machine->files.AddFile(kIni, std::string_view(reinterpret_cast<const char*>(data), size));
  // Both kinds of ANSI code page: single-byte and UTF-8.
  machine->system.ansiCodePage = 1252;
  Check(*machine);
  machine->system.ansiCodePage = 65001;
  Check(*machine);

  // What the icon cache accepts it writes back in a form it reads the same.
  varnel::IconCache icons;
  if (icons.Decode({data, size})) {
    const std::vector<std::uint8_t> again = icons.Encode();
    varnel::IconCache copy;
    if (!copy.Decode(again) || copy.Encode() != again) __builtin_trap();
  }
  return 0;
}
