#pragma once

#include <cstdint>
#include <string>

// Shell link files as bytes, for the tests that read shortcuts.
namespace varnel::test {

inline void Put32(std::string& b, std::size_t at, std::uint32_t v) {
  if (b.size() < at + 4) b.resize(at + 4, '\0');
  for (int i = 0; i < 4; ++i) b[at + i] = static_cast<char>((v >> (8 * i)) & 0xFF);
}

struct LinkLayout {
  std::uint32_t infoFlags = 1;
  std::string basePath;      // bytes as stored, without terminator
  int idListSize = -1;       // -1: no item-id list
  bool withNetwork = false;  // a network block after the base path
};

// A shell link laid out as writers produce it: header, optional item ids,
// then the link-information block with volume id, base path, network block
// and common path suffix.
inline std::string MakeLink(const LinkLayout& layout) {
  std::string b(76, '\0');
  Put32(b, 0, 76);
  Put32(b, 20, layout.idListSize >= 0 ? 0x1u : 0x0u);
  if (layout.idListSize >= 0) {
    b.push_back(static_cast<char>(layout.idListSize & 0xFF));
    b.push_back(static_cast<char>(layout.idListSize >> 8));
    b.append(static_cast<std::size_t>(layout.idListSize), '\x7A');
  }
  const std::size_t info = b.size();
  std::string block(28, '\0');
  Put32(block, 4, 28);
  Put32(block, 8, layout.infoFlags);
  Put32(block, 12, 28);
  block.append("\x11\0\0\0\x03\0\0\0\x78\x56\x34\x12\x10\0\0\0\0", 17);  // volume id
  const std::size_t base = block.size();
  block += layout.basePath;
  block.push_back('\0');
  std::size_t network = 0;
  if (layout.withNetwork) {
    network = block.size();
    block.append("\x18\0\0\0\x02\0\0\0\x14\0\0\0\0\0\0\0\0\0\0\0\\\\srv\\share\0", 33);
  }
  const std::size_t suffix = block.size();
  block.push_back('\0');
  Put32(block, 16, static_cast<std::uint32_t>(base));
  Put32(block, 20, static_cast<std::uint32_t>(network));
  Put32(block, 24, static_cast<std::uint32_t>(suffix));
  Put32(block, 0, static_cast<std::uint32_t>(block.size()));
  b.resize(info);
  return b + block;
}

}  // namespace varnel::test
