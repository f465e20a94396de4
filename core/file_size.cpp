#include "core/file_size.h"

namespace varnel {

namespace {

// bytes / unit to two decimals, halves rounded up. Done in integers because
// bytes / 2^k is exact, so this is the value the floating form stands for.
std::wstring Hundredths(std::int64_t bytes, std::int64_t unit, wchar_t separator) {
  const std::int64_t whole = bytes / unit;
  const std::int64_t rest = bytes % unit;
  const std::int64_t cents = whole * 100 + (rest * 100 + unit / 2) / unit;
  std::wstring digits = std::to_wstring(cents % 100);
  if (digits.size() < 2) digits.insert(0, 1, L'0');
  return std::to_wstring(cents / 100) + separator + digits;
}

}  // namespace

std::int64_t PlausibleSize(std::int64_t bytes) {
  return bytes >= 0 && bytes <= kLargestProgramSize ? bytes : 0;
}

std::wstring FormatFileSize(std::int64_t bytes, wchar_t decimalSeparator) {
  constexpr std::int64_t kKilo = 1024;
  constexpr std::int64_t kMega = kKilo * 1024;
  constexpr std::int64_t kGiga = kMega * 1024;
  if (bytes < kKilo) return std::to_wstring(bytes) + L" Byte";
  if (bytes < kMega) return Hundredths(bytes, kKilo, decimalSeparator) + L" KB";
  if (bytes < kGiga) return Hundredths(bytes, kMega, decimalSeparator) + L" MB";
  return Hundredths(bytes, kGiga, decimalSeparator) + L" GB";
}

std::wstring FormatFileSize(ISystem& system, std::int64_t bytes) {
  return FormatFileSize(bytes, system.DecimalSeparator());
}

}  // namespace varnel
