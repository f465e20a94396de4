#include "base/text_file.h"

#include <algorithm>
#include <string>

#include "base/text.h"

namespace varnel {

namespace {

constexpr wchar_t kReplacement = 0xFFFD;

std::wstring DecodeUtf16(std::span<const std::uint8_t> bytes, bool bigEndian) {
  std::wstring out;
  out.reserve(bytes.size() / 2 + 1);
  std::size_t i = 0;
  for (; i + 1 < bytes.size(); i += 2) {
    const unsigned hi = bigEndian ? bytes[i] : bytes[i + 1];
    const unsigned lo = bigEndian ? bytes[i + 1] : bytes[i];
    // Unpaired surrogates stay: Windows text may hold them and they survive
    // the UTF-8 round trip.
    out.push_back(static_cast<wchar_t>((hi << 8) | lo));
  }
  if (i < bytes.size()) out.push_back(kReplacement);
  return out;
}

}  // namespace

std::wstring DecodeText(ISystem& system, std::span<const std::uint8_t> bytes,
                        TextEncoding* encoding) {
  TextEncoding found = TextEncoding::Ansi;
  std::wstring out;
  if (bytes.size() >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF) {
    found = TextEncoding::Utf8;
    const auto rest = bytes.subspan(3);
    out = text::FromUtf8(std::string_view(reinterpret_cast<const char*>(rest.data()), rest.size()));
  } else if (bytes.size() >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE) {
    found = TextEncoding::Utf16LE;
    out = DecodeUtf16(bytes.subspan(2), false);
  } else if (bytes.size() >= 2 && bytes[0] == 0xFE && bytes[1] == 0xFF) {
    found = TextEncoding::Utf16BE;
    out = DecodeUtf16(bytes.subspan(2), true);
  } else if (!bytes.empty()) {
    out = system.FromAnsi(std::string_view(reinterpret_cast<const char*>(bytes.data()),
                                           bytes.size()));
  }
  if (encoding) *encoding = found;
  return out;
}

std::vector<std::uint8_t> EncodeUtf8WithBom(std::wstring_view text) {
  const std::string utf8 = text::ToUtf8(text);
  std::vector<std::uint8_t> out(utf8.size() + 3);
  out[0] = 0xEF;
  out[1] = 0xBB;
  out[2] = 0xBF;
  std::copy(utf8.begin(), utf8.end(), out.begin() + 3);
  return out;
}

std::vector<std::wstring_view> SplitLines(std::wstring_view text) {
  std::vector<std::wstring_view> lines;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t end = text.find_first_of(L"\r\n", start);
    if (end == std::wstring_view::npos) {
      lines.push_back(text.substr(start));
      break;
    }
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
    if (text[end] == L'\r' && start < text.size() && text[start] == L'\n') ++start;
  }
  return lines;
}

bool ReadTextFile(const Platform& platform, std::wstring_view path, std::wstring& text) {
  text.clear();
  std::vector<std::uint8_t> bytes;
  if (!platform.files.ReadWholeFile(path, bytes)) return false;
  text = DecodeText(platform.system, bytes);
  return true;
}

bool WriteTextFile(IFileSystem& files, std::wstring_view path, std::wstring_view text) {
  const std::wstring temporary = std::wstring(path) + L".tmp";
  if (files.WriteWholeFile(temporary, EncodeUtf8WithBom(text)) &&
      files.ReplaceEntry(temporary, path))
    return true;
  files.RemoveFile(temporary);
  return false;
}

bool UpdateTextFile(const Platform& platform, std::wstring_view path,
                    const std::function<void(std::wstring&)>& change) {
  std::wstring text;
  if (!ReadTextFile(platform, path, text) && platform.files.FileExists(path)) return false;
  change(text);
  return WriteTextFile(platform.files, path, text);
}

}  // namespace varnel
