#include "uninstall/reg_file.h"

#include <cwchar>

#include "base/text.h"

namespace varnel {

namespace {

constexpr std::wstring_view kVersionLine = L"Windows Registry Editor Version 5.00";

std::wstring Quoted(std::wstring_view s) {
  std::wstring out = L"\"";
  for (wchar_t c : s) {
    if (c == L'\\' || c == L'"') out += L'\\';
    out += c;
  }
  return out + L"\"";
}

// A REG_SZ survives being written as quoted text only when it is exactly
// one terminated string without line breaks; anything else goes as bytes.
bool IsPlainString(const RegValue& value, std::wstring& text) {
  if (value.type != RegType::String) return false;
  const auto& d = value.data;
  if (d.size() < 2 || d.size() % 2 != 0 || d[d.size() - 1] != 0 || d[d.size() - 2] != 0)
    return false;
  text = text::FromUtf16Bytes(std::span(d).first(d.size() - 2));
  if (text.size() * 2 != d.size() - 2) return false;
  for (wchar_t c : text)
    if (c == 0 || c == L'\r' || c == L'\n') return false;
  return true;
}

std::wstring HexData(std::wstring prefix, const std::vector<std::uint8_t>& data) {
  // Wrapped as the registry editor does, so long values stay readable.
  std::wstring out = std::move(prefix);
  std::size_t column = out.size();
  wchar_t byte[4];
  for (std::size_t i = 0; i < data.size(); ++i) {
    std::swprintf(byte, 4, L"%02x", data[i]);
    out += byte;
    column += 2;
    if (i + 1 == data.size()) break;
    out += L',';
    ++column;
    if (column > 76) {
      out += L"\\\r\n  ";
      column = 2;
    }
  }
  return out;
}

std::wstring ValueLine(const std::wstring& name, const RegValue& value) {
  std::wstring line = name.empty() ? L"@=" : Quoted(name) + L"=";
  std::wstring text;
  if (IsPlainString(value, text)) return line + Quoted(text);
  if (value.type == RegType::DWord && value.data.size() == 4) {
    const std::uint32_t v = value.data[0] | value.data[1] << 8 | value.data[2] << 16 |
                            static_cast<std::uint32_t>(value.data[3]) << 24;
    wchar_t digits[16];
    std::swprintf(digits, 16, L"dword:%08x", v);
    return line + digits;
  }
  if (value.type == RegType::Binary) return HexData(line + L"hex:", value.data);
  wchar_t kind[24];
  std::swprintf(kind, 24, L"hex(%x):", value.type);
  return HexData(line + kind, value.data);
}

int HexDigit(wchar_t c) {
  if (c >= L'0' && c <= L'9') return c - L'0';
  if (c >= L'a' && c <= L'f') return c - L'a' + 10;
  if (c >= L'A' && c <= L'F') return c - L'A' + 10;
  return -1;
}

// A quoted string starting at s[pos]; pos ends after the closing quote.
std::optional<std::wstring> ReadQuoted(std::wstring_view s, std::size_t& pos) {
  if (pos >= s.size() || s[pos] != L'"') return std::nullopt;
  std::wstring out;
  for (++pos; pos < s.size(); ++pos) {
    if (s[pos] == L'"') {
      ++pos;
      return out;
    }
    if (s[pos] == L'\\' && pos + 1 < s.size()) ++pos;
    out += s[pos];
  }
  return std::nullopt;
}

std::optional<std::vector<std::uint8_t>> ReadHexBytes(std::wstring_view s) {
  std::vector<std::uint8_t> out;
  std::size_t i = 0;
  auto skipBlanks = [&] {
    while (i < s.size() && (s[i] == L' ' || s[i] == L'\t')) ++i;
  };
  skipBlanks();
  while (i < s.size()) {
    if (i + 1 >= s.size()) return std::nullopt;
    const int hi = HexDigit(s[i]), lo = HexDigit(s[i + 1]);
    if (hi < 0 || lo < 0) return std::nullopt;
    out.push_back(static_cast<std::uint8_t>(hi * 16 + lo));
    i += 2;
    skipBlanks();
    if (i == s.size()) break;
    if (s[i] != L',') return std::nullopt;
    ++i;
    skipBlanks();
  }
  return out;
}

std::optional<RegValue> ReadData(std::wstring_view s) {
  RegValue value;
  if (s.starts_with(L"\"")) {
    std::size_t pos = 0;
    auto text = ReadQuoted(s, pos);
    if (!text || !text::Trim(s.substr(pos)).empty()) return std::nullopt;
    value.type = RegType::String;
    value.data = text::ToUtf16Bytes(*text, true);
    return value;
  }
  if (s.starts_with(L"dword:")) {
    const std::wstring_view digits = s.substr(6);
    if (digits.empty() || digits.size() > 8) return std::nullopt;
    std::uint32_t v = 0;
    for (wchar_t c : digits) {
      const int d = HexDigit(c);
      if (d < 0) return std::nullopt;
      v = v * 16 + static_cast<std::uint32_t>(d);
    }
    value.type = RegType::DWord;
    for (int i = 0; i < 4; ++i) value.data.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
    return value;
  }
  std::size_t colon;
  if (s.starts_with(L"hex:")) {
    value.type = RegType::Binary;
    colon = 3;
  } else if (s.starts_with(L"hex(")) {
    const std::size_t close = s.find(L')');
    if (close == std::wstring_view::npos || close == 4 || close > 12 ||
        close + 1 >= s.size() || s[close + 1] != L':')
      return std::nullopt;
    std::uint32_t type = 0;
    for (wchar_t c : s.substr(4, close - 4)) {
      const int d = HexDigit(c);
      if (d < 0) return std::nullopt;
      type = type * 16 + static_cast<std::uint32_t>(d);
    }
    value.type = type;
    colon = close + 1;
  } else {
    return std::nullopt;
  }
  auto bytes = ReadHexBytes(s.substr(colon + 1));
  if (!bytes) return std::nullopt;
  value.data = std::move(*bytes);
  return value;
}

std::wstring DecodeBytes(std::span<const std::uint8_t> bytes) {
  if (bytes.size() >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE) {
    // Every unit, NULs too: a name the writer put in must come back whole,
    // not cut short with the rest of the file.
    std::wstring out;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2)
      out.push_back(static_cast<wchar_t>(bytes[i] | bytes[i + 1] << 8));
    return out;
  }
  if (bytes.size() >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF)
    bytes = bytes.subspan(3);
  return text::FromUtf8(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

}  // namespace

std::wstring RegFileText(const std::vector<RegFileKey>& keys) {
  std::wstring out = std::wstring(kVersionLine) + L"\r\n\r\n";
  for (const RegFileKey& key : keys) {
    out += L"[" + key.name + L"]\r\n";
    for (const auto& [name, value] : key.values) out += ValueLine(name, value) + L"\r\n";
    out += L"\r\n";
  }
  return out;
}

std::vector<std::uint8_t> EncodeRegFile(const std::vector<RegFileKey>& keys) {
  std::vector<std::uint8_t> bytes = {0xFF, 0xFE};
  const std::vector<std::uint8_t> body = text::ToUtf16Bytes(RegFileText(keys), false);
  bytes.insert(bytes.end(), body.begin(), body.end());
  return bytes;
}

std::optional<std::vector<RegFileKey>> ParseRegFile(std::span<const std::uint8_t> bytes) {
  const std::wstring textAll = DecodeBytes(bytes);
  std::vector<RegFileKey> keys;
  bool sawVersion = false;
  std::wstring line;
  std::size_t start = 0;
  while (start <= textAll.size()) {
    std::size_t end = textAll.find(L'\n', start);
    if (end == std::wstring::npos) end = textAll.size();
    std::wstring_view part(textAll.data() + start, end - start);
    start = end + 1;
    if (part.ends_with(L'\r')) part.remove_suffix(1);
    line += line.empty() ? std::wstring(part) : text::TrimLeft(part);
    // Only wrapped byte lists end in a backslash; quoted text never does.
    if (line.ends_with(L'\\') && start <= textAll.size()) {
      line.pop_back();
      continue;
    }
    const std::wstring current = text::TrimRight(line);
    line.clear();
    if (current.empty() || current.starts_with(L';')) continue;
    if (!sawVersion) {
      if (current != kVersionLine) return std::nullopt;
      sawVersion = true;
      continue;
    }
    if (current.starts_with(L'[')) {
      if (!current.ends_with(L']') || current.size() < 3 || current[1] == L'-') return std::nullopt;
      keys.push_back({current.substr(1, current.size() - 2), {}});
      continue;
    }
    if (keys.empty()) return std::nullopt;
    std::wstring name;
    std::size_t pos = 0;
    if (current.starts_with(L'@')) {
      pos = 1;
    } else {
      auto quoted = ReadQuoted(current, pos);
      if (!quoted) return std::nullopt;
      name = std::move(*quoted);
    }
    if (pos >= current.size() || current[pos] != L'=') return std::nullopt;
    auto value = ReadData(std::wstring_view(current).substr(pos + 1));
    if (!value) return std::nullopt;
    keys.back().values.emplace_back(std::move(name), std::move(*value));
  }
  if (!sawVersion) return std::nullopt;
  return keys;
}

}  // namespace varnel
