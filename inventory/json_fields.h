#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "base/text.h"

// Typed reads of a parsed JSON object that never throw: a missing member or
// one of another type gives the fallback.
namespace varnel::json {

inline std::wstring String(const nlohmann::json& object, const char* name) {
  if (!object.is_object()) return {};
  const auto it = object.find(name);
  if (it == object.end() || !it->is_string()) return {};
  return text::FromUtf8(it->get_ref<const std::string&>());
}

inline bool Bool(const nlohmann::json& object, const char* name, bool fallback) {
  if (!object.is_object()) return fallback;
  const auto it = object.find(name);
  return it != object.end() && it->is_boolean() ? it->get<bool>() : fallback;
}

inline long long Integer(const nlohmann::json& object, const char* name, long long fallback) {
  if (!object.is_object()) return fallback;
  const auto it = object.find(name);
  return it != object.end() && it->is_number_integer() ? it->get<long long>() : fallback;
}

}  // namespace varnel::json
