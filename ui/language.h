#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/platform.h"
#include "base/ext_ini_file.h"
#include "ui/translatable.h"

namespace varnel {

// "key=value" lines with a look-up by key that ignores case; the first line
// of a key answers.
class HashedLines {
 public:
  void Assign(std::vector<std::wstring> lines);
  void Clear();
  const std::vector<std::wstring>& Lines() const { return lines_; }
  bool Contains(std::wstring_view key) const;
  std::wstring Value(std::wstring_view key, std::wstring_view defaultValue) const;

 private:
  std::vector<std::wstring> lines_;
  std::unordered_map<std::wstring, std::size_t> first_;  // upper-cased key -> line
};

// The language files "*.lng" of a folder, the one loaded, and the translation
// of a window's texts with it. Every look-up falls back to its default, so a
// window without a language file keeps its built-in English.
class TLanguage {
 public:
  // Lists the folder's languages and loads each in turn; the last one found
  // stays loaded until SetLanguage.
  TLanguage(const Platform& platform, std::wstring_view prefix, std::wstring_view folder);
  TLanguage(const TLanguage&) = delete;
  TLanguage& operator=(const TLanguage&) = delete;

  std::wstring Prefix;
  std::wstring Folder;  // no trailing "\"
  int Index = -1;
  std::vector<std::wstring> Files;         // base names
  std::vector<std::wstring> DisplayNames;  // one per entry of Files
  TExtIniFile Ini;
  HashedLines Messages;  // section Prefix + "_M"

  // The user's choice as the sibling suite records it; "English" when none.
  std::wstring ReadLanguageChoice() const;
  // An unknown or vanished language falls back to "English"; when that is
  // missing too, nothing changes and the result is false.
  bool SetLanguage(std::wstring_view name);
  void Translate(ITranslatable& form) const;
  std::wstring ReadString(std::wstring_view section, std::wstring_view key,
                          std::wstring_view defaultValue) const;

 private:
  Platform platform_;

  int IndexOf(std::wstring_view name) const;
  std::wstring PathOf(std::wstring_view name) const;
  bool Available(std::wstring_view name) const;
};

// "Toolbox_Language" beside the executable, where the windows look.
std::wstring LanguageFolder(ISystem& system);

}  // namespace varnel
