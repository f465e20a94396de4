#include "inventory/icon_cache.h"

#include <array>
#include <cstring>
#include <optional>

#include "base/text.h"
#include "inventory/software_cache.h"

namespace varnel {

namespace {

// Layout: the magic, an entry count, then per entry the name, fingerprint
// and icon location (UTF-16LE) and the small and large icon bits, each as a
// 32-bit little-endian byte count followed by its bytes.
constexpr std::array<std::uint8_t, 8> kMagic{'V', 'a', 'r', 'I', 'c', 'o', 'n', '1'};
constexpr std::size_t kFieldsPerEntry = 5;
// Far above any real field; they only keep a hostile file from asking for
// gigabytes.
constexpr std::uint32_t kLongestText = 65536;
constexpr std::uint32_t kLargestBits = 4 + 256 * 256 * 4;

void PutU32(std::vector<std::uint8_t>& out, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8)
    out.push_back(static_cast<std::uint8_t>(value >> shift));
}

void PutBlock(std::vector<std::uint8_t>& out, std::span<const std::uint8_t> block) {
  PutU32(out, static_cast<std::uint32_t>(block.size()));
  out.insert(out.end(), block.begin(), block.end());
}

class Reader {
 public:
  explicit Reader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  std::optional<std::uint32_t> U32() {
    if (bytes_.size() - at_ < 4) return std::nullopt;
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) value = value << 8 | bytes_[at_ + static_cast<std::size_t>(i)];
    at_ += 4;
    return value;
  }
  std::optional<std::span<const std::uint8_t>> Block(std::uint32_t largest) {
    const auto length = U32();
    if (!length || *length > largest || bytes_.size() - at_ < *length) return std::nullopt;
    auto block = bytes_.subspan(at_, *length);
    at_ += *length;
    return block;
  }
  std::optional<std::wstring> Text() {
    const auto block = Block(kLongestText);
    if (!block || block->size() % 2 != 0) return std::nullopt;
    return text::FromUtf16Bytes(*block);
  }
  bool Skip(std::span<const std::uint8_t> expected) {
    if (bytes_.size() - at_ < expected.size() ||
        std::memcmp(bytes_.data() + at_, expected.data(), expected.size()) != 0)
      return false;
    at_ += expected.size();
    return true;
  }
  std::size_t Left() const { return bytes_.size() - at_; }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t at_ = 0;
};

std::wstring IconLocation(const TSoftInfo& info) {
  return info.DisplayIcon + L"," + std::to_wstring(info.IconIndex);
}

}  // namespace

bool IconCache::Load(IFileSystem& files, std::wstring_view file) {
  entries_.clear();
  changed_ = false;
  std::vector<std::uint8_t> bytes;
  return files.ReadWholeFile(file, bytes) && Decode(bytes);
}

bool IconCache::Save(IFileSystem& files, std::wstring_view file) const {
  const std::wstring temporary = std::wstring(file) + L".tmp";
  if (!files.WriteWholeFile(temporary, Encode())) {
    files.RemoveFile(temporary);
    return false;
  }
  // Between these two steps there is no file, never a part of one: a start
  // then only extracts the icons again.
  files.RemoveFile(file);
  if (files.MoveEntry(temporary, file)) return true;
  files.RemoveFile(temporary);
  return false;
}

const IconCache::Entry* IconCache::Find(ISystem& system, const TSoftInfo& info) const {
  const auto it = entries_.find(text::Upper(info.Name));
  if (it == entries_.end() || it->second.iconLocation != IconLocation(info) ||
      !text::SameText(it->second.fingerprint,
                      CacheFingerprint(system, info.InstallDateText, info.UninstallString)))
    return nullptr;
  return &it->second;
}

void IconCache::Store(ISystem& system, const TSoftInfo& info, std::vector<std::uint8_t> small,
                      std::vector<std::uint8_t> large) {
  entries_[text::Upper(info.Name)] =
      Entry{CacheFingerprint(system, info.InstallDateText, info.UninstallString),
            IconLocation(info), std::move(small), std::move(large)};
  changed_ = true;
}

std::vector<std::uint8_t> IconCache::Encode() const {
  std::vector<std::uint8_t> out(kMagic.begin(), kMagic.end());
  PutU32(out, static_cast<std::uint32_t>(entries_.size()));
  for (const auto& [name, entry] : entries_) {
    PutBlock(out, text::ToUtf16Bytes(name, false));
    PutBlock(out, text::ToUtf16Bytes(entry.fingerprint, false));
    PutBlock(out, text::ToUtf16Bytes(entry.iconLocation, false));
    PutBlock(out, entry.small);
    PutBlock(out, entry.large);
  }
  return out;
}

bool IconCache::Decode(std::span<const std::uint8_t> bytes) {
  entries_.clear();
  Reader in(bytes);
  const auto count = in.Skip(kMagic) ? in.U32() : std::nullopt;
  // Every entry takes at least its five byte counts.
  if (!count || *count > in.Left() / (4 * kFieldsPerEntry)) return false;
  for (std::uint32_t i = 0; i < *count; ++i) {
    auto name = in.Text();
    auto fingerprint = in.Text();
    auto location = in.Text();
    const auto small = in.Block(kLargestBits);
    const auto large = in.Block(kLargestBits);
    if (!name || !fingerprint || !location || !small || !large) {
      entries_.clear();
      return false;
    }
    entries_[text::Upper(*name)] =
        Entry{std::move(*fingerprint), std::move(*location),
              std::vector<std::uint8_t>(small->begin(), small->end()),
              std::vector<std::uint8_t>(large->begin(), large->end())};
  }
  if (in.Left() == 0) return true;
  entries_.clear();
  return false;
}

std::wstring IconCacheFileFor(std::wstring_view softwareCacheFile) {
  if (softwareCacheFile.empty()) return L"";
  return text::ExtractFilePath(softwareCacheFile) + L"SoftwareIcons.dat";
}

}  // namespace varnel
