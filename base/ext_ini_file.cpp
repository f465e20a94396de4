#include "base/ext_ini_file.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <unordered_map>
#include <utility>

#include "base/date_time.h"
#include "base/text.h"
#include "base/text_file.h"

namespace varnel {

namespace {

struct Line {
  explicit Line(std::wstring t) : text(std::move(t)), keyLength(text.find(L'=')) {}
  std::wstring text;
  std::size_t keyLength;  // npos for a bare line

  bool HasKey(std::wstring_view key) const {
    return keyLength != std::wstring::npos &&
           text::SameText(std::wstring_view(text).substr(0, keyLength), key);
  }
  std::wstring Value() const { return text.substr(keyLength + 1); }
};

struct Section {
  std::wstring name;
  std::vector<Line> lines;

  const Line* Find(std::wstring_view key) const {
    for (const Line& line : lines)
      if (line.HasKey(key)) return &line;
    return nullptr;
  }
  Line* Find(std::wstring_view key) {
    return const_cast<Line*>(static_cast<const Section*>(this)->Find(key));
  }
};

// A written name or value must stay on its line, or the file reads back with
// its lines shifted into other sections.
std::wstring OneLine(std::wstring_view s) {
  std::wstring out(s);
  for (wchar_t& c : out)
    if (c == L'\r' || c == L'\n') c = L' ';
  return out;
}

int HexDigit(wchar_t c) {
  if (c >= L'0' && c <= L'9') return c - L'0';
  if (c >= L'a' && c <= L'f') return c - L'a' + 10;
  if (c >= L'A' && c <= L'F') return c - L'A' + 10;
  return -1;
}

// Decimal within [lowest, highest], or "0x" hex up to `maxHex`; the caller
// casts hex into its signed type, so it wraps as the runtime's conversion does.
std::optional<std::int64_t> ParseInteger(std::wstring_view raw, std::int64_t lowest,
                                         std::int64_t highest, std::uint64_t maxHex) {
  const std::wstring s = text::Trim(raw);
  if (s.size() > 2 && s[0] == L'0' && (s[1] == L'x' || s[1] == L'X')) {
    std::uint64_t value = 0;
    for (std::size_t i = 2; i < s.size(); ++i) {
      const int d = HexDigit(s[i]);
      if (d < 0 || value > (maxHex >> 4)) return std::nullopt;
      value = (value << 4) | static_cast<std::uint64_t>(d);
    }
    return static_cast<std::int64_t>(value);
  }
  std::size_t i = 0;
  const bool negative = !s.empty() && s[0] == L'-';
  if (!s.empty() && (s[0] == L'-' || s[0] == L'+')) ++i;
  if (i == s.size()) return std::nullopt;
  // Accumulated as a magnitude so that the lowest value itself fits.
  const std::uint64_t limit = negative ? static_cast<std::uint64_t>(-(lowest + 1)) + 1
                                       : static_cast<std::uint64_t>(highest);
  std::uint64_t magnitude = 0;
  for (; i < s.size(); ++i) {
    if (s[i] < L'0' || s[i] > L'9') return std::nullopt;
    const auto d = static_cast<std::uint64_t>(s[i] - L'0');
    if (magnitude > (limit - d) / 10) return std::nullopt;
    magnitude = magnitude * 10 + d;
  }
  if (!negative) return static_cast<std::int64_t>(magnitude);
  return magnitude == 0 ? 0 : -static_cast<std::int64_t>(magnitude - 1) - 1;
}

}  // namespace

// Sections in file order, and the first section of each name by its
// upper-cased name: the software cache holds one section per program.
struct TExtIniFile::Sections {
  std::vector<std::unique_ptr<Section>> list;
  std::unordered_map<std::wstring, Section*> first;

  const Section* Find(std::wstring_view name) const {
    const auto it = first.find(text::Upper(name));
    return it == first.end() ? nullptr : it->second;
  }
  Section* Find(std::wstring_view name) {
    return const_cast<Section*>(static_cast<const Sections*>(this)->Find(name));
  }
  Section& Add(std::wstring name) {
    list.push_back(std::make_unique<Section>());
    Section& added = *list.back();
    first.try_emplace(text::Upper(name), &added);
    added.name = std::move(name);
    return added;
  }
  Section& FindOrAdd(std::wstring_view name) {
    Section* found = Find(name);
    return found ? *found : Add(std::wstring(name));
  }
  void Erase(const Section* section) {
    const std::wstring upper = text::Upper(section->name);
    const auto it = first.find(upper);
    const bool wasFirst = it != first.end() && it->second == section;
    if (wasFirst) first.erase(it);
    std::erase_if(list, [section](const auto& s) { return s.get() == section; });
    if (!wasFirst) return;
    // A later section of the same name now answers.
    for (const auto& s : list)
      if (text::Upper(s->name) == upper) {
        first.emplace(upper, s.get());
        break;
      }
  }
};

TExtIniFile::TExtIniFile() : sections_(std::make_unique<Sections>()) {}
TExtIniFile::~TExtIniFile() = default;

TExtIniFile::TExtIniFile(TExtIniFile&& other) : sections_(std::make_unique<Sections>()) {
  sections_.swap(other.sections_);
}

TExtIniFile& TExtIniFile::operator=(TExtIniFile&& other) {
  if (this != &other) {
    sections_.swap(other.sections_);
    other.Clear();
  }
  return *this;
}

bool TExtIniFile::LoadFromFile(const Platform& platform, std::wstring_view fileName) {
  std::wstring content;
  const bool read = ReadTextFile(platform, fileName, content);
  LoadFromText(content);
  return read;
}

void TExtIniFile::LoadFromText(std::wstring_view content) {
  Clear();
  Section* current = nullptr;
  for (const std::wstring_view raw : SplitLines(content)) {
    const std::wstring line = text::Trim(raw);
    if (line.empty() || line.front() == L';') continue;
    if (line.front() == L'[' && line.back() == L']') {
      current = &sections_->Add(text::Trim(std::wstring_view(line).substr(1, line.size() - 2)));
      continue;
    }
    if (!current) continue;
    const std::size_t eq = line.find(L'=');
    if (eq == std::wstring::npos) {
      current->lines.emplace_back(line);
    } else {
      const std::wstring_view view(line);
      current->lines.emplace_back(text::Trim(view.substr(0, eq)) + L'=' +
                                  text::Trim(view.substr(eq + 1)));
    }
  }
}

bool TExtIniFile::SaveToFile(const Platform& platform, std::wstring_view fileName) const {
  return WriteTextFile(platform.files, fileName, ToText());
}

std::wstring TExtIniFile::ToText() const {
  std::wstring out;
  for (const auto& section : sections_->list) {
    out += L'[';
    out += OneLine(section->name);
    out += L"]\r\n";
    for (const Line& line : section->lines) {
      out += OneLine(line.text);
      out += L"\r\n";
    }
  }
  return out;
}

std::wstring TExtIniFile::ReadString(std::wstring_view section, std::wstring_view key,
                                     std::wstring_view defaultValue) const {
  if (const Section* s = sections_->Find(section))
    if (const Line* line = s->Find(key)) return line->Value();
  return std::wstring(defaultValue);
}

std::int64_t TExtIniFile::ReadInt64(std::wstring_view section, std::wstring_view key,
                                    std::int64_t defaultValue) const {
  constexpr auto kMin = std::numeric_limits<std::int64_t>::min();
  constexpr auto kMax = std::numeric_limits<std::int64_t>::max();
  return ParseInteger(ReadString(section, key, {}), kMin, kMax, ~std::uint64_t{0})
      .value_or(defaultValue);
}

std::int32_t TExtIniFile::ReadInteger(std::wstring_view section, std::wstring_view key,
                                      std::int32_t defaultValue) const {
  constexpr auto kMin = std::numeric_limits<std::int32_t>::min();
  constexpr auto kMax = std::numeric_limits<std::int32_t>::max();
  const auto value = ParseInteger(ReadString(section, key, {}), kMin, kMax, 0xFFFF'FFFFu);
  return value ? static_cast<std::int32_t>(*value) : defaultValue;
}

bool TExtIniFile::ReadBool(std::wstring_view section, std::wstring_view key,
                           bool defaultValue) const {
  return ReadInteger(section, key, defaultValue ? 1 : 0) != 0;
}

double TExtIniFile::ReadFloat(std::wstring_view section, std::wstring_view key,
                              double defaultValue) const {
  return TextToDateTime(ReadString(section, key, {})).value_or(defaultValue);
}

void TExtIniFile::WriteString(std::wstring_view section, std::wstring_view key,
                              std::wstring_view value) {
  Section& s = sections_->FindOrAdd(section);
  std::wstring text = std::wstring(key) + L'=' + std::wstring(value);
  if (Line* line = s.Find(key)) {
    *line = Line(std::move(text));
  } else {
    s.lines.emplace_back(std::move(text));
  }
}

void TExtIniFile::WriteInt64(std::wstring_view section, std::wstring_view key,
                             std::int64_t value) {
  WriteString(section, key, std::to_wstring(value));
}

void TExtIniFile::WriteInteger(std::wstring_view section, std::wstring_view key,
                               std::int32_t value) {
  WriteString(section, key, std::to_wstring(value));
}

void TExtIniFile::WriteBool(std::wstring_view section, std::wstring_view key, bool value) {
  WriteString(section, key, value ? L"1" : L"0");
}

void TExtIniFile::WriteFloat(std::wstring_view section, std::wstring_view key, double value) {
  WriteString(section, key, DateTimeToText(value));
}

bool TExtIniFile::SectionExists(std::wstring_view section) const {
  return sections_->Find(section) != nullptr;
}

bool TExtIniFile::ValueExists(std::wstring_view section, std::wstring_view key) const {
  const Section* s = sections_->Find(section);
  return s && s->Find(key);
}

std::vector<std::wstring> TExtIniFile::ReadSections() const {
  std::vector<std::wstring> names;
  names.reserve(sections_->list.size());
  for (const auto& s : sections_->list) names.push_back(s->name);
  return names;
}

std::vector<std::wstring> TExtIniFile::ReadSection(std::wstring_view section) const {
  std::vector<std::wstring> keys;
  if (const Section* s = sections_->Find(section))
    for (const Line& line : s->lines)
      if (line.keyLength != std::wstring::npos) keys.push_back(line.text.substr(0, line.keyLength));
  return keys;
}

std::vector<std::wstring> TExtIniFile::ReadSectionValues(std::wstring_view section) const {
  std::vector<std::wstring> lines;
  if (const Section* s = sections_->Find(section)) {
    lines.reserve(s->lines.size());
    for (const Line& line : s->lines) lines.push_back(line.text);
  }
  return lines;
}

void TExtIniFile::EraseSection(std::wstring_view section) {
  if (const Section* s = sections_->Find(section)) sections_->Erase(s);
}

void TExtIniFile::DeleteKey(std::wstring_view section, std::wstring_view key) {
  Section* s = sections_->Find(section);
  if (!s) return;
  const auto it = std::find_if(s->lines.begin(), s->lines.end(),
                               [key](const Line& line) { return line.HasKey(key); });
  if (it != s->lines.end()) s->lines.erase(it);
}

void TExtIniFile::Clear() {
  sections_->first.clear();
  sections_->list.clear();
}

bool UpdateIniFile(const Platform& platform, std::wstring_view fileName,
                   const std::function<void(TExtIniFile&)>& change) {
  return UpdateTextFile(platform, fileName, [&change](std::wstring& text) {
    TExtIniFile ini;
    ini.LoadFromText(text);
    change(ini);
    text = ini.ToText();
  });
}

}  // namespace varnel
