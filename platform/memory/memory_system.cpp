#include "base/text.h"
#include "platform/md5.h"
#include "platform/memory/memory_platform.h"

namespace varnel::mem {

namespace {

// Code page 1252 bytes 0x80-0x9F; 0 marks an unassigned byte.
constexpr wchar_t kCp1252High[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kSecondsPerDay = 86'400;
// Days from 1601-01-01 to 1970-01-01.
constexpr std::int64_t kEpochDays1601 = 134'774;

// Howard Hinnant's civil-date conversions, days relative to 1970-01-01.
std::int64_t DaysFromCivil(std::int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

void CivilFromDays(std::int64_t z, int& y, int& m, int& d) {
  z += 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  y = static_cast<int>(static_cast<std::int64_t>(yoe) + era * 400 + (m <= 2));
}

bool IsLeap(int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

int DaysInMonth(int y, int m) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return m == 2 && IsLeap(y) ? 29 : kDays[m - 1];
}

class MemoryVersionInfo final : public IVersionInfo {
 public:
  explicit MemoryVersionInfo(MemorySystem::VersionResource resource)
      : resource_(std::move(resource)) {}
  std::optional<std::pair<std::uint16_t, std::uint16_t>> FirstTranslation() const override {
    return resource_.translation;
  }
  std::optional<std::wstring> QueryString(std::wstring_view subBlock) const override {
    for (const auto& [key, value] : resource_.strings)
      if (text::SameText(key, subBlock)) return value;
    return std::nullopt;
  }

 private:
  MemorySystem::VersionResource resource_;
};

}  // namespace

MemorySystem::MemorySystem(FaultSwitches& faults, MemoryRegistry& registry)
    : faults_(faults), registry_(registry) {}

std::wstring MemorySystem::SpecialFolder(int csidl) {
  if (faults_.Fails(Fault::SpecialFolder)) return {};
  auto it = specialFolders.find(csidl);
  return it == specialFolders.end() ? std::wstring() : it->second;
}

std::optional<std::wstring> MemorySystem::EnvironmentVariable(std::wstring_view name) {
  auto it = environment.find(text::Upper(name));
  if (it == environment.end()) return std::nullopt;
  return it->second;
}

std::optional<std::wstring> MemorySystem::ExpandEnvironment(std::wstring_view input) {
  if (faults_.Fails(Fault::ExpandEnvironment)) return std::nullopt;
  std::wstring out;
  std::size_t i = 0;
  while (i < input.size()) {
    const std::size_t open = input.find(L'%', i);
    if (open == std::wstring_view::npos) {
      out.append(input.substr(i));
      break;
    }
    out.append(input.substr(i, open - i));
    const std::size_t close = input.find(L'%', open + 1);
    if (close == std::wstring_view::npos) {
      out.append(input.substr(open));
      break;
    }
    const auto value = EnvironmentVariable(input.substr(open + 1, close - open - 1));
    if (value && close > open + 1) {
      out.append(*value);
      i = close + 1;
    } else {
      // Unknown names stay as written; the closing "%" may open the next one.
      out.append(input.substr(open, close - open));
      i = close;
    }
  }
  return out;
}

bool MemorySystem::IsWow64() { return registry_.Is64BitSystem(); }

bool MemorySystem::SetFsRedirection(bool disable) {
  if (!registry_.Is64BitSystem()) return false;
  redirectionDisabledDepth += disable ? 1 : -1;
  return true;
}

std::string MemorySystem::ToAnsi(std::wstring_view s) {
  if (ansiCodePage == 65001) return text::ToUtf8(s);
  std::string out;
  out.reserve(s.size());
  for (wchar_t c : s) {
    const auto u = static_cast<std::uint32_t>(c);
    if (u < 0x80 || (u >= 0xA0 && u <= 0xFF)) {
      out.push_back(static_cast<char>(u));
      continue;
    }
    char mapped = '?';
    for (int k = 0; k < 32; ++k)
      if (kCp1252High[k] != 0 && kCp1252High[k] == c) mapped = static_cast<char>(0x80 + k);
    out.push_back(mapped);
  }
  return out;
}

std::wstring MemorySystem::FromAnsi(std::string_view bytes) {
  if (ansiCodePage == 65001) return text::FromUtf8(bytes);
  std::wstring out;
  out.reserve(bytes.size());
  for (char ch : bytes) {
    const auto b = static_cast<unsigned char>(ch);
    if (b >= 0x80 && b <= 0x9F) {
      // Unassigned bytes map to their own code point, as Windows does.
      const wchar_t w = kCp1252High[b - 0x80];
      out.push_back(w ? w : static_cast<wchar_t>(b));
    } else {
      out.push_back(static_cast<wchar_t>(b));
    }
  }
  return out;
}

std::optional<LocalDateTime> MemorySystem::ToLocalTime(FileTime utc) {
  const auto ticks = static_cast<std::int64_t>(utc) + utcOffsetMinutes * 60 * kTicksPerSecond;
  if (utc > 0x7FFF'FFFF'FFFF'FFFFULL || ticks < 0) return std::nullopt;
  const std::int64_t seconds = ticks / kTicksPerSecond;
  LocalDateTime t;
  CivilFromDays(seconds / kSecondsPerDay - kEpochDays1601, t.year, t.month, t.day);
  if (t.year > 30827) return std::nullopt;
  const std::int64_t rest = seconds % kSecondsPerDay;
  t.hour = static_cast<int>(rest / 3600);
  t.minute = static_cast<int>(rest / 60 % 60);
  t.second = static_cast<int>(rest % 60);
  t.millisecond = static_cast<int>(ticks % kTicksPerSecond / 10'000);
  return t;
}

std::optional<FileTime> MemorySystem::FromLocalTime(const LocalDateTime& t) {
  if (t.year < 1601 || t.year > 30827 || t.month < 1 || t.month > 12 || t.day < 1 ||
      t.day > DaysInMonth(t.year, t.month) || t.hour < 0 || t.hour > 23 || t.minute < 0 ||
      t.minute > 59 || t.second < 0 || t.second > 59 || t.millisecond < 0 ||
      t.millisecond > 999)
    return std::nullopt;
  const std::int64_t days = DaysFromCivil(t.year, static_cast<unsigned>(t.month),
                                          static_cast<unsigned>(t.day)) + kEpochDays1601;
  const std::int64_t seconds = days * kSecondsPerDay + t.hour * 3600 + t.minute * 60 + t.second;
  const std::int64_t ticks = seconds * kTicksPerSecond + t.millisecond * 10'000 -
                             utcOffsetMinutes * 60 * kTicksPerSecond;
  if (ticks < 0) return std::nullopt;
  return static_cast<FileTime>(ticks);
}

std::array<std::uint8_t, 16> MemorySystem::Md5(std::span<const std::uint8_t> bytes) {
  return Md5Digest(bytes);
}

std::unique_ptr<IVersionInfo> MemorySystem::OpenVersionInfo(std::wstring_view path) {
  if (faults_.Fails(Fault::VersionInfo)) return nullptr;
  auto it = versionResources.find(text::Upper(path));
  if (it == versionResources.end()) return nullptr;
  return std::make_unique<MemoryVersionInfo>(it->second);
}

}  // namespace varnel::mem
