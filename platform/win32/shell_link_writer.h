#pragma once

#include <string_view>

// Test support: a shortcut made by the shell's own link object, so readers
// of the link format can be checked against the real thing.
namespace varnel::win32 {

struct ShellLinkSpec {
  std::wstring_view target = {};
  std::wstring_view arguments = {};
  std::wstring_view workingDirectory = {};
  std::wstring_view description = {};
};

// Creates or replaces linkPath; false when the shell refused any step.
bool WriteShellLink(std::wstring_view linkPath, const ShellLinkSpec& link);

}  // namespace varnel::win32
