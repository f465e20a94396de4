#include "inventory/chromium_manifest.h"

#include "inventory/json_fields.h"

namespace varnel {
namespace {

// Chromium accepts manifests and messages files with a byte-order mark.
std::string_view WithoutMark(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  return text;
}

}  // namespace

std::optional<ChromiumManifest> ParseChromiumManifest(std::string_view text) {
  const auto parsed = nlohmann::json::parse(WithoutMark(text), nullptr, false);
  if (!parsed.is_object()) return std::nullopt;
  ChromiumManifest manifest;
  manifest.name = text::Trim(json::String(parsed, "name"));
  manifest.version = json::String(parsed, "version");
  manifest.defaultLocale = json::String(parsed, "default_locale");
  manifest.theme = parsed.contains("theme");
  return manifest;
}

std::wstring MessageKey(std::wstring_view name) {
  constexpr std::wstring_view kOpen = L"__MSG_";
  constexpr std::wstring_view kClose = L"__";
  if (name.size() <= kOpen.size() + kClose.size() || !name.starts_with(kOpen) ||
      !name.ends_with(kClose))
    return {};
  return std::wstring(name.substr(kOpen.size(), name.size() - kOpen.size() - kClose.size()));
}

std::wstring LookUpMessage(std::string_view messagesJson, std::wstring_view key) {
  if (key.empty()) return {};
  const auto parsed = nlohmann::json::parse(WithoutMark(messagesJson), nullptr, false);
  if (!parsed.is_object()) return {};
  for (const auto& [name, entry] : parsed.items()) {
    if (text::SameText(text::FromUtf8(name), key)) return text::Trim(json::String(entry, "message"));
  }
  return {};
}

}  // namespace varnel
