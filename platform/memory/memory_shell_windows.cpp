#include "base/text.h"
#include "platform/memory/memory_platform.h"

namespace varnel::mem {

std::intptr_t MemoryShell::Execute(std::wstring_view verb, std::wstring_view file,
                                   std::wstring_view parameters, std::wstring_view directory,
                                   int show) {
  calls.push_back(Call{std::wstring(verb), std::wstring(file), std::wstring(parameters),
                       std::wstring(directory), show, false});
  return result;
}

bool MemoryShell::ExecuteAndWaitIdle(std::wstring_view verb, std::wstring_view file, int show) {
  calls.push_back(Call{std::wstring(verb), std::wstring(file), L"", L"", show, true});
  if (result <= 32) return false;
  if (onStart) onStart(calls.back());
  return true;
}

bool MemoryShell::ExtractIcons(std::wstring_view file, int index, IconHandle& small,
                               IconHandle& large) {
  small.reset();
  large.reset();
  auto it = iconFiles.find(text::Upper(file));
  if (it == iconFiles.end() || index >= it->second || -index > it->second) return false;
  ++iconsExtracted;
  // Distinct tokens stand in for the two icons.
  small = std::make_shared<int>(2 * iconsExtracted);
  large = std::make_shared<int>(2 * iconsExtracted + 1);
  return true;
}

std::vector<std::uint8_t> MemoryShell::IconBits(const IconHandle& icon) {
  if (!icon) return {};
  const auto token = static_cast<std::uint32_t>(*static_cast<const int*>(icon.get()));
  return {static_cast<std::uint8_t>(token), static_cast<std::uint8_t>(token >> 8),
          static_cast<std::uint8_t>(token >> 16), static_cast<std::uint8_t>(token >> 24)};
}

IconHandle MemoryShell::IconFromBits(std::span<const std::uint8_t> bits) {
  if (bits.size() != 4) return nullptr;
  return std::make_shared<int>(static_cast<int>(bits[0] | bits[1] << 8 | bits[2] << 16 |
                                                static_cast<std::uint32_t>(bits[3]) << 24));
}

IconHandle MemoryShell::SmallFileIcon(std::wstring_view path, int& systemIndex) {
  systemIndex = -1;
  if (path.empty()) return nullptr;
  auto name = path.substr(path.find_last_of(L'\\') + 1);
  auto dot = name.rfind(L'.');
  auto extension = text::Upper(dot == std::wstring_view::npos ? L"" : name.substr(dot));
  auto [it, added] = fileIconIndex.emplace(extension, static_cast<int>(fileIconIndex.size()));
  systemIndex = it->second;
  return std::make_shared<int>(++fileIconsHanded);
}

WindowId MemoryWindows::FindTopWindow(std::wstring_view className) {
  for (const auto& w : windows_)
    if (w.parent == 0 && w.className == className) return w.id;
  return 0;
}

WindowId MemoryWindows::FindChild(WindowId parent, std::wstring_view className) {
  for (const auto& w : windows_)
    if (w.parent == parent && parent != 0 && w.className == className) return w.id;
  return 0;
}

void MemoryWindows::Show(WindowId window, int showCmd) {
  messages.push_back({window, Message::Show, static_cast<std::uint32_t>(showCmd)});
}

void MemoryWindows::BringToFront(WindowId window) {
  messages.push_back({window, Message::Front, 0});
}

void MemoryWindows::Focus(WindowId window) { messages.push_back({window, Message::Focus, 0}); }

void MemoryWindows::SendKeyDown(WindowId window, std::uint32_t virtualKey) {
  messages.push_back({window, Message::KeyDown, virtualKey});
}

void MemoryWindows::SendChar(WindowId window, wchar_t ch) {
  messages.push_back({window, Message::Char, static_cast<std::uint32_t>(ch)});
}

WindowId MemoryWindows::AddWindow(std::wstring_view className, WindowId parent) {
  const WindowId id = 0x1000 + windows_.size() * 4;
  windows_.push_back(Window{id, parent, std::wstring(className)});
  return id;
}

}  // namespace varnel::mem
