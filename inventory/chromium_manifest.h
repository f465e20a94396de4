#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace varnel {

// What the inventory needs of an extension's manifest.json.
struct ChromiumManifest {
  std::wstring name;           // possibly "__MSG_<key>__"
  std::wstring version;
  std::wstring defaultLocale;
  bool theme = false;
};

// nullopt when the text is not a JSON object.
std::optional<ChromiumManifest> ParseChromiumManifest(std::string_view json);

// The key of a "__MSG_<key>__" name, or empty for a plain name.
std::wstring MessageKey(std::wstring_view name);

// The "message" of `key` in a messages.json, keys compared ignoring case;
// empty when there is none.
std::wstring LookUpMessage(std::string_view messagesJson, std::wstring_view key);

}  // namespace varnel
