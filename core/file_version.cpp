#include "core/file_version.h"

#include <array>
#include <cstdio>
#include <memory>

namespace varnel {

namespace {

// Indexed by the selector callers pass; 0 is Comments so that 1..9 follow the
// record's order.
constexpr std::array<const wchar_t*, 11> kFieldNames = {
    L"Comments",        L"CompanyName",      L"FileDescription", L"FileVersion",
    L"InternalName",    L"LegalCopyright",   L"LegalTrademarks", L"OriginalFileName",
    L"ProductName",     L"ProductVersion",   L"WOW Version",
};

std::wstring StringTablePrefix(std::uint16_t language, std::uint16_t codePage) {
  wchar_t hex[16];
  std::swprintf(hex, 16, L"%04X%04X", static_cast<unsigned>(language),
                static_cast<unsigned>(codePage));
  return std::wstring(L"\\StringFileInfo\\") + hex + L"\\";
}

struct OpenedTable {
  std::unique_ptr<IVersionInfo> info;
  std::wstring prefix;
};

std::optional<OpenedTable> OpenTable(ISystem& system, std::wstring_view fileName) {
  auto info = system.OpenVersionInfo(fileName);
  if (!info) return std::nullopt;
  // Without a translation there is no string table to address, which callers
  // treat like a file without version data.
  const auto translation = info->FirstTranslation();
  if (!translation) return std::nullopt;
  auto prefix = StringTablePrefix(translation->first, translation->second);
  return OpenedTable{std::move(info), std::move(prefix)};
}

std::wstring Query(const OpenedTable& table, const wchar_t* name) {
  auto text = table.info->QueryString(table.prefix + name).value_or(std::wstring());
  // Resource strings are zero-terminated; anything after the terminator is
  // padding, not text.
  if (const auto end = text.find(L'\0'); end != std::wstring::npos) text.resize(end);
  return text;
}

}  // namespace

std::optional<TFileVersionText> ReadFileVersionText(ISystem& system, std::wstring_view fileName) {
  const auto table = OpenTable(system, fileName);
  if (!table) return std::nullopt;
  TFileVersionText r;
  r.CompanyName = Query(*table, kFieldNames[1]);
  r.FileDescription = Query(*table, kFieldNames[2]);
  r.FileVersion = Query(*table, kFieldNames[3]);
  r.InternalName = Query(*table, kFieldNames[4]);
  r.LegalCopyright = Query(*table, kFieldNames[5]);
  r.LegalTrademarks = Query(*table, kFieldNames[6]);
  r.OriginalFileName = Query(*table, kFieldNames[7]);
  r.ProductName = Query(*table, kFieldNames[8]);
  r.ProductVersion = Query(*table, kFieldNames[9]);
  r.Comments = Query(*table, kFieldNames[0]);
  return r;
}

std::wstring GetFileVersionText(ISystem& system, std::wstring_view fileName, int field) {
  const auto table = OpenTable(system, fileName);
  if (!table) return L"Unknown";
  if (field < 0 || field >= static_cast<int>(kFieldNames.size())) return {};
  return Query(*table, kFieldNames[static_cast<std::size_t>(field)]);
}

}  // namespace varnel
