#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/registry.h"

namespace varnel {

// One "[...]" section of a .reg file: the key written with its root's name
// ("HKEY_LOCAL_MACHINE\SOFTWARE\X") and its values in order.
struct RegFileKey {
  std::wstring name;
  std::vector<std::pair<std::wstring, RegValue>> values;
};

// The text "reg import" and the registry editor read: the version line, then
// each key with its values. A string that round-trips as text is written in
// quotes, a four-byte double word as dword:, everything else as hex(N) bytes,
// so no value changes on the way back.
std::wstring RegFileText(const std::vector<RegFileKey>& keys);
// RegFileText as UTF-16LE with a byte-order mark, CR LF line ends.
std::vector<std::uint8_t> EncodeRegFile(const std::vector<RegFileKey>& keys);

// Reads what EncodeRegFile wrote (UTF-16LE with BOM, or UTF-8/ASCII text).
// nullopt when the version line is missing or a line cannot be read;
// removal lines ("[-...]", "=-") are not part of a backup and are refused.
std::optional<std::vector<RegFileKey>> ParseRegFile(std::span<const std::uint8_t> bytes);

}  // namespace varnel
