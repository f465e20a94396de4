#include "inventory/chromium_profiles.h"

#include "inventory/json_fields.h"

namespace varnel {
namespace {

// The browser's own numbering of where an extension came from.
namespace Location {
constexpr int ExternalPref = 2;
constexpr int ExternalRegistry = 3;
constexpr int Component = 5;
constexpr int ExternalPrefDownload = 6;
constexpr int ExternalComponent = 10;
}  // namespace Location

const nlohmann::json* Member(const nlohmann::json& object, const char* name) {
  if (!object.is_object()) return nullptr;
  const auto it = object.find(name);
  return it == object.end() ? nullptr : &*it;
}

// Newer profiles keep "disable_reasons" (a number or a list) instead of "state".
bool Enabled(const nlohmann::json& setting) {
  if (const auto* reasons = Member(setting, "disable_reasons")) {
    if (reasons->is_number_integer()) return reasons->get<long long>() == 0;
    if (reasons->is_array()) return reasons->empty();
  }
  return json::Integer(setting, "state", 1) == 1;
}

}  // namespace

std::vector<std::wstring> ParseLocalStateProfiles(std::string_view localState) {
  std::vector<std::wstring> names;
  const auto parsed = nlohmann::json::parse(localState, nullptr, false);
  const auto* profile = Member(parsed, "profile");
  const auto* cache = profile ? Member(*profile, "info_cache") : nullptr;
  if (!cache || !cache->is_object()) return names;
  for (const auto& [name, info] : cache->items()) names.push_back(text::FromUtf8(name));
  return names;
}

std::vector<ChromiumSetting> ParseChromiumSettings(std::string_view preferences) {
  std::vector<ChromiumSetting> found;
  const auto parsed = nlohmann::json::parse(preferences, nullptr, false);
  const auto* extensions = Member(parsed, "extensions");
  const auto* settings = extensions ? Member(*extensions, "settings") : nullptr;
  if (!settings || !settings->is_object()) return found;
  for (const auto& [id, setting] : settings->items()) {
    if (!setting.is_object()) continue;
    ChromiumSetting entry;
    entry.id = text::FromUtf8(id);
    entry.location = static_cast<int>(json::Integer(setting, "location", 0));
    entry.enabled = Enabled(setting);
    entry.path = json::String(setting, "path");
    found.push_back(std::move(entry));
  }
  return found;
}

bool IsExternalLocation(int location) {
  return location == Location::ExternalPref || location == Location::ExternalRegistry ||
         location == Location::ExternalPrefDownload;
}

bool IsComponentLocation(int location) {
  return location == Location::Component || location == Location::ExternalComponent;
}

}  // namespace varnel
