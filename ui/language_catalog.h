#pragma once

#include <span>
#include <string>
#include <string_view>

#include "ui/language.h"

namespace varnel {

// Every text of the windows: its language-file key, the built-in English
// default and the German translation. The windows take their defaults from
// here and the shipped ".lng" files are generated from it, so neither can
// drift from the other.
struct CatalogText {
  std::wstring_view key;
  std::wstring_view english;
  std::wstring_view german;
};

struct CatalogSection {
  std::wstring_view name;  // without the "Uninstaller_" prefix
  std::span<const CatalogText> texts;
};

std::span<const CatalogSection> LanguageCatalog();

enum class CatalogLanguage { English, German };

// The whole ".lng" file for `language`, lines joined by CRLF.
std::wstring LanguageFileText(CatalogLanguage language);

// The built-in English text of `key` in `section` (prefix included); empty
// when the catalog has none.
std::wstring DefaultText(std::wstring_view section, std::wstring_view key);

// A message of a window's "_M" section through the language table, with the
// built-in English text as default.
std::wstring CatalogMessage(const TLanguage& language, std::wstring_view form,
                            std::wstring_view key);

}  // namespace varnel
