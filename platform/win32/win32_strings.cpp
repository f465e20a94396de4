#include "platform/win32/win32_strings.h"

namespace varnel::win32 {

namespace {

// CreateDirectoryW stops at MAX_PATH - 12; below that every API takes the
// plain form.
constexpr std::size_t kPlainPathLimit = MAX_PATH - 12;

constexpr std::wstring_view kExtended = L"\\\\?\\";
constexpr std::wstring_view kExtendedUnc = L"\\\\?\\UNC\\";
constexpr std::wstring_view kDevice = L"\\\\.\\";

std::wstring FullPath(const std::wstring& path) {
  DWORD need = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  if (need == 0) return {};
  std::wstring full(need, L'\0');
  DWORD got = GetFullPathNameW(path.c_str(), need, full.data(), nullptr);
  if (got == 0 || got >= need) return {};
  full.resize(got);
  return full;
}

}  // namespace

std::optional<std::wstring> ApiString(std::wstring_view text) {
  if (text.find(L'\0') != std::wstring_view::npos) return std::nullopt;
  return std::wstring(text);
}

std::optional<std::wstring> ApiPath(std::wstring_view path) {
  auto plain = ApiString(path);
  if (!plain) return std::nullopt;
  if (path.size() < kPlainPathLimit || path.starts_with(kExtended) || path.starts_with(kDevice)) {
    return plain;
  }
  std::wstring full = FullPath(*plain);
  if (full.starts_with(L"\\\\") && !full.starts_with(kExtended) && !full.starts_with(kDevice)) {
    return std::wstring(kExtendedUnc) + full.substr(2);
  }
  if (full.size() >= 3 && full[1] == L':' && full[2] == L'\\') {
    return std::wstring(kExtended) + full;
  }
  // Handing a long plain path on is worse than failing: some builds of the
  // path APIs copy it into a fixed stack buffer.
  return std::nullopt;
}

std::wstring PlainPath(std::wstring path, std::wstring_view original) {
  if (original.starts_with(kExtended)) return path;
  if (path.starts_with(kExtendedUnc)) return L"\\\\" + path.substr(kExtendedUnc.size());
  if (path.starts_with(kExtended)) return path.substr(kExtended.size());
  return path;
}

}  // namespace varnel::win32
