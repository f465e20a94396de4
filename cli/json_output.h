#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "base/text.h"

namespace varnel::cli {

// The console speaks UTF-8, in text and in JSON.
inline std::string Utf8(const std::wstring& s) { return text::ToUtf8(s); }

// Indented, one trailing newline. Registry text may hold lone surrogates;
// they are replaced rather than aborting the output.
inline std::string DumpJson(const nlohmann::ordered_json& json) {
  return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace varnel::cli
