#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace varnel {

// The trimmed text of the first "em:name" element of an add-on manifest
// (install.rdf), in document order; empty for a manifest without one or one
// that does not parse. Parsed without the network and without entity
// substitution, so a manifest can neither reach out nor swell.
std::wstring ReadAddonName(std::span<const std::uint8_t> manifest);
std::wstring ReadAddonName(IFileSystem& files, std::wstring_view manifestPath);

}  // namespace varnel
