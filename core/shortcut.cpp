#include "core/shortcut.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace varnel {

namespace {

constexpr std::uint32_t kHeaderSize = 76;
constexpr std::uint64_t kFlagsOffset = 20;
constexpr std::uint32_t kHasItemIdList = 0x1;
constexpr std::size_t kPathBuffer = 261;

class LinkBytes {
 public:
  explicit LinkBytes(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}

  std::uint8_t Byte(std::uint64_t at) const { return at < bytes_.size() ? bytes_[at] : 0; }
  std::uint32_t U16(std::uint64_t at) const { return Byte(at) | (Byte(at + 1) << 8); }
  std::uint32_t U32(std::uint64_t at) const {
    return static_cast<std::uint32_t>(Byte(at)) | (static_cast<std::uint32_t>(Byte(at + 1)) << 8) |
           (static_cast<std::uint32_t>(Byte(at + 2)) << 16) |
           (static_cast<std::uint32_t>(Byte(at + 3)) << 24);
  }

  // Start of the link-information block.
  std::uint64_t LinkInfoStart() const {
    std::uint64_t at = kHeaderSize;
    if (U32(kFlagsOffset) & kHasItemIdList) at += U16(kHeaderSize) + 2;
    return at;
  }

  int Kind() const {
    if (U32(0) != kHeaderSize) return LinkKind::BadHeader;
    switch (U32(LinkInfoStart() + 8)) {
      case 1: return LinkKind::LocalPath;
      case 2: return LinkKind::Network;
      case 3: return LinkKind::LocalAndNetwork;
      default: return LinkKind::Other;
    }
  }

 private:
  std::vector<std::uint8_t> bytes_;
};

std::optional<LinkBytes> Load(IFileSystem& files, std::wstring_view fileName) {
  std::vector<std::uint8_t> bytes;
  if (!files.FileExists(fileName) || !files.ReadWholeFile(fileName, bytes)) return std::nullopt;
  return LinkBytes(std::move(bytes));
}

// The zero-terminated run starting at `from`, never past the buffer.
std::string_view RunAt(const std::array<char, kPathBuffer>& buffer, std::size_t from) {
  if (from >= buffer.size()) return {};
  std::size_t end = from;
  while (end < buffer.size() && buffer[end] != 0) ++end;
  return std::string_view(buffer.data() + from, end - from);
}

// Each byte taken as the character with that number.
std::wstring Widened(std::string_view bytes) {
  std::wstring out;
  out.reserve(bytes.size());
  for (char c : bytes) out.push_back(static_cast<wchar_t>(static_cast<unsigned char>(c)));
  return out;
}

}  // namespace

int GetShortcutLinkKind(IFileSystem& files, std::wstring_view fileName) {
  const auto link = Load(files, fileName);
  return link ? link->Kind() : LinkKind::NoFile;
}

namespace {

// The base path's bytes of a local link; false for any other link or an
// implausible length.
bool ReadBasePath(IFileSystem& files, std::wstring_view fileName,
                  std::array<char, kPathBuffer>& buffer) {
  const auto link = Load(files, fileName);
  if (!link || link->Kind() != LinkKind::LocalPath) return false;

  const std::uint64_t info = link->LinkInfoStart();
  const std::uint32_t basePath = link->U32(info + 16);
  std::uint32_t next = link->U32(info + 20);
  if (next == 0) next = link->U32(info + 24);
  // The base path runs up to whatever block follows it. A following block
  // placed before the path is no length at all.
  const std::int64_t length = static_cast<std::int64_t>(next) - basePath;
  if (length <= 0 || length >= static_cast<std::int64_t>(kPathBuffer)) return false;

  buffer.fill(0);
  for (std::int64_t i = 0; i < length; ++i)
    buffer[static_cast<std::size_t>(i)] =
        static_cast<char>(link->Byte(info + basePath + static_cast<std::uint64_t>(i)));
  return true;
}

}  // namespace

std::wstring GetShortcutTarget(IFileSystem& files, ISystem& system, std::wstring_view fileName) {
  std::array<char, kPathBuffer> buffer{};
  if (!ReadBasePath(files, fileName, buffer)) return {};

  auto exists = [&files](const std::wstring& path) {
    return !path.empty() && files.GetAttributes(path).has_value();
  };
  // Later attempts recover paths that the ANSI decoding spoiled or that a
  // writer stored after stray terminators.
  const std::string_view first = RunAt(buffer, 0);
  std::wstring target = system.FromAnsi(first);
  if (exists(target)) return target;
  target = Widened(first);
  if (exists(target)) return target;
  const std::size_t secondAt = first.size() + 1;
  const std::string_view second = RunAt(buffer, secondAt);
  target = system.FromAnsi(second);
  if (exists(target)) return target;
  return system.FromAnsi(RunAt(buffer, secondAt + second.size() + 1));
}

std::wstring GetShortcutBasePath(IFileSystem& files, ISystem& system, std::wstring_view fileName) {
  std::array<char, kPathBuffer> buffer{};
  if (!ReadBasePath(files, fileName, buffer)) return {};
  return system.FromAnsi(RunAt(buffer, 0));
}

}  // namespace varnel
