#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"

namespace varnel {

// An ini file held in memory: sections in brackets, key=value lines. Section
// and key look-ups ignore case; a repeated section header opens a second
// section that look-ups reach only once the first one is erased.
class TExtIniFile {
 public:
  TExtIniFile();
  ~TExtIniFile();
  TExtIniFile(const TExtIniFile&) = delete;
  TExtIniFile& operator=(const TExtIniFile&) = delete;
  // The moved-from file is left empty and usable.
  TExtIniFile(TExtIniFile&& other);
  TExtIniFile& operator=(TExtIniFile&& other);

  // Replaces the content. A byte-order mark selects UTF-8 or UTF-16; without
  // one the bytes are in the system's ANSI code page. False, content empty,
  // when the file cannot be read.
  bool LoadFromFile(const Platform& platform, std::wstring_view fileName);
  void LoadFromText(std::wstring_view text);
  // UTF-8 with a byte-order mark, so any name survives the round trip.
  bool SaveToFile(const Platform& platform, std::wstring_view fileName) const;
  std::wstring ToText() const;

  std::wstring ReadString(std::wstring_view section, std::wstring_view key,
                          std::wstring_view defaultValue) const;
  // Decimal or "0x" hex; the default for anything else.
  std::int64_t ReadInt64(std::wstring_view section, std::wstring_view key,
                         std::int64_t defaultValue) const;
  std::int32_t ReadInteger(std::wstring_view section, std::wstring_view key,
                           std::int32_t defaultValue) const;
  // "0" is false, any other integer is true; the default for anything else.
  bool ReadBool(std::wstring_view section, std::wstring_view key, bool defaultValue) const;
  // "." or "," as decimal point; the default for anything else.
  double ReadFloat(std::wstring_view section, std::wstring_view key, double defaultValue) const;

  void WriteString(std::wstring_view section, std::wstring_view key, std::wstring_view value);
  void WriteInt64(std::wstring_view section, std::wstring_view key, std::int64_t value);
  void WriteInteger(std::wstring_view section, std::wstring_view key, std::int32_t value);
  void WriteBool(std::wstring_view section, std::wstring_view key, bool value);
  // Shortest text that reads back to the same double, "." as decimal point.
  void WriteFloat(std::wstring_view section, std::wstring_view key, double value);

  bool SectionExists(std::wstring_view section) const;
  bool ValueExists(std::wstring_view section, std::wstring_view key) const;
  std::vector<std::wstring> ReadSections() const;
  // The key names of a section, in file order.
  std::vector<std::wstring> ReadSection(std::wstring_view section) const;
  // The stored lines of a section: "key=value", or a bare line as it stands.
  std::vector<std::wstring> ReadSectionValues(std::wstring_view section) const;
  void EraseSection(std::wstring_view section);
  void DeleteKey(std::wstring_view section, std::wstring_view key);
  void Clear();

 private:
  struct Sections;
  std::unique_ptr<Sections> sections_;
};

// Loads the file, lets `change` edit it and saves it, under the rules of
// UpdateTextFile: a file that exists but cannot be read is not saved over.
bool UpdateIniFile(const Platform& platform, std::wstring_view fileName,
                   const std::function<void(TExtIniFile&)>& change);

}  // namespace varnel
