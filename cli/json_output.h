#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace varnel::cli {

// Indented, one trailing newline. Registry text may hold lone surrogates;
// they are replaced rather than aborting the output.
inline std::string DumpJson(const nlohmann::ordered_json& json) {
  return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace varnel::cli
