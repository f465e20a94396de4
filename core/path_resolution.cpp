#include "core/path_resolution.h"

#include <array>
#include <optional>
#include <vector>

#include "base/text.h"

namespace varnel {

namespace {

constexpr std::size_t kLongestPath = 32767;

constexpr std::wstring_view kExtendedUnc = L"\\\\?\\UNC\\";
constexpr std::wstring_view kExtended = L"\\\\?\\";
constexpr std::wstring_view kDevice = L"\\\\.\\";
constexpr std::wstring_view kNtObjects = L"\\??\\";

bool IsBadNameChar(wchar_t c) {
  if (static_cast<std::uint32_t>(c) < 0x20) return true;
  switch (c) {
    case L'<': case L'>': case L':': case L'"': case L'|': case L'*': case L'?':
      return true;
    default:
      return false;
  }
}

// "NUL", "CON.txt", "COM1" name a device in every folder.
bool IsDeviceName(std::wstring_view part) {
  auto base = text::Upper(part.substr(0, part.find(L'.')));
  while (!base.empty() && base.back() == L' ') base.pop_back();
  static constexpr std::array<std::wstring_view, 6> kPlain = {L"CON", L"PRN", L"AUX", L"NUL",
                                                              L"CONIN$", L"CONOUT$"};
  for (auto name : kPlain)
    if (base == name) return true;
  return base.size() == 4 && (base.starts_with(L"COM") || base.starts_with(L"LPT")) &&
         base[3] >= L'0' && base[3] <= L'9';
}

struct Parsed {
  std::wstring head;  // "C:" or "\\server\share"
  std::vector<std::wstring> parts;
};

// The parts after `head`, with ".", "..", empty parts and trailing dots and
// blanks applied as Windows applies them. False when a part cannot be a name.
bool SplitParts(std::wstring_view rest, std::vector<std::wstring>& parts) {
  std::size_t start = 0;
  while (start <= rest.size()) {
    std::size_t end = rest.find(L'\\', start);
    if (end == std::wstring_view::npos) end = rest.size();
    std::wstring part(rest.substr(start, end - start));
    start = end + 1;
    if (part == L"..") {
      if (!parts.empty()) parts.pop_back();
      continue;
    }
    while (!part.empty() && (part.back() == L'.' || part.back() == L' ')) part.pop_back();
    if (part.empty()) continue;
    for (wchar_t c : part)
      if (IsBadNameChar(c)) return false;
    if (IsDeviceName(part)) return false;
    parts.push_back(std::move(part));
  }
  return true;
}

std::optional<Parsed> Parse(std::wstring path) {
  for (auto& c : path)
    if (c == L'/') c = L'\\';
  std::wstring_view view = path;
  bool unc = false;
  if (text::StartsWithText(view, kExtendedUnc)) {
    view.remove_prefix(kExtendedUnc.size());
    unc = true;
  } else if (view.starts_with(kExtended) || view.starts_with(kDevice) ||
             view.starts_with(kNtObjects)) {
    view.remove_prefix(4);
  } else if (view.starts_with(L"\\\\")) {
    view.remove_prefix(2);
    unc = true;
  }
  Parsed parsed;
  if (unc) {
    // "\\server\share" is the root of a share, as "C:\" is of a drive.
    std::vector<std::wstring> parts;
    while (view.starts_with(L'\\')) view.remove_prefix(1);
    auto server = view.substr(0, view.find(L'\\'));
    if (server.empty() || server == L"." || server == L"?") return std::nullopt;
    view.remove_prefix(server.size());
    while (view.starts_with(L'\\')) view.remove_prefix(1);
    auto share = view.substr(0, view.find(L'\\'));
    if (share.empty() || share.back() == L'.' || share.back() == L' ' || server.back() == L'.' ||
        server.back() == L' ')
      return std::nullopt;
    view.remove_prefix(share.size());
    for (wchar_t c : std::wstring(server) + std::wstring(share))
      if (IsBadNameChar(c)) return std::nullopt;
    parsed.head = L"\\\\" + std::wstring(server) + L"\\" + std::wstring(share);
  } else {
    if (view.size() < 3 || view[1] != L':' || view[2] != L'\\') return std::nullopt;
    const wchar_t drive = text::ToUpper(view[0]);
    if (drive < L'A' || drive > L'Z') return std::nullopt;
    parsed.head = std::wstring{drive, L':'};
    view.remove_prefix(2);
  }
  if (!SplitParts(view, parsed.parts)) return std::nullopt;
  return parsed;
}

}  // namespace

std::wstring ResolvePath(const Platform& platform, std::wstring_view path,
                         bool expandEnvironment) {
  std::wstring text = text::Trim(path);
  if (text.empty() || text.size() > kLongestPath || text.find(L'\0') != std::wstring::npos)
    return {};
  if (expandEnvironment && text.find(L'%') != std::wstring::npos) {
    auto expanded = platform.system.ExpandEnvironment(text);
    if (!expanded) return {};
    text = text::Trim(*expanded);
  }
  // An unexpanded reference names some other folder than it seems to.
  if (text.find(L'%') != std::wstring::npos || text.size() > kLongestPath) return {};
  auto parsed = Parse(std::move(text));
  if (!parsed) return {};

  // The stored spelling of every part that exists: long names for 8.3
  // aliases, and the case on disk. Below the first missing part the rest
  // stays as written.
  std::wstring result = parsed->head;
  bool exists = true;
  std::vector<FindEntry> found;
  for (const auto& part : parsed->parts) {
    std::wstring next = result + L"\\" + part;
    if (exists && platform.files.FindEntries(next, found) && found.size() == 1 &&
        !found[0].name.empty() && found[0].name != L"." && found[0].name != L"..") {
      next = result + L"\\" + found[0].name;
    } else {
      exists = false;
    }
    result = std::move(next);
    if (result.size() > kLongestPath) return {};
  }
  if (parsed->parts.empty()) result += L'\\';
  return result;
}

bool PathIsOrIsBelow(std::wstring_view path, std::wstring_view folder) {
  if (path.empty() || folder.empty()) return false;
  while (folder.size() > 1 && folder.back() == L'\\') folder.remove_suffix(1);
  while (path.size() > 1 && path.back() == L'\\') path.remove_suffix(1);
  if (path.size() < folder.size() || !text::StartsWithText(path, folder)) return false;
  return path.size() == folder.size() || path[folder.size()] == L'\\' ||
         folder.back() == L'\\';
}

bool PathCrossesLink(const Platform& platform, std::wstring_view resolved, bool includingLast) {
  auto parsed = Parse(std::wstring(resolved));
  if (!parsed) return false;
  std::wstring walked = parsed->head;
  for (std::size_t i = 0; i < parsed->parts.size(); ++i) {
    walked += L"\\" + parsed->parts[i];
    if (i + 1 == parsed->parts.size() && !includingLast) break;
    const auto attributes = platform.files.GetAttributes(walked);
    if (!attributes) break;
    if (*attributes & FileAttr::ReparsePoint) return true;
  }
  return false;
}

}  // namespace varnel
