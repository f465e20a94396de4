#include "inventory/program_icon.h"

#include <limits>

#include "core/registry_values.h"
#include "base/text.h"
#include "core/uninstall_command.h"
#include "core/wow64.h"

namespace varnel {

namespace {

constexpr std::wstring_view kInstallerProducts = L"\\Installer\\Products\\";

ProgramIcon FromLocation(const TAppFrame& frame, std::wstring_view location) {
  if (text::Trim(location).empty()) return {};
  std::wstring file = GetFileFromCommandLine(frame, location);
  if (file.empty() || !frame.Machine().files.FileExists(file)) return {};
  return ProgramIcon{std::move(file), IconIndexOf(location)};
}

}  // namespace

std::int32_t IconIndexOf(std::wstring_view location) {
  const std::size_t comma = location.rfind(L',');
  if (comma == std::wstring_view::npos) return 0;
  const std::wstring number = text::Trim(location.substr(comma + 1));
  std::size_t i = 0;
  const bool negative = !number.empty() && number[0] == L'-';
  if (negative || (!number.empty() && number[0] == L'+')) ++i;
  if (i == number.size()) return 0;
  std::int64_t value = 0;
  for (; i < number.size(); ++i) {
    if (number[i] < L'0' || number[i] > L'9') return 0;
    value = value * 10 + (number[i] - L'0');
    if (value > std::numeric_limits<std::int32_t>::max()) return 0;
  }
  return static_cast<std::int32_t>(negative ? -value : value);
}

ProgramIcon FindProgramIcon(const TAppFrame& frame, const TSoftInfo& info) {
  if (ProgramIcon icon = FromLocation(frame, info.DisplayIcon); !icon.file.empty()) return icon;

  const std::wstring packed = MsiProductCodeToPackedGuid(MsiProductCode(info));
  if (packed.empty()) return {};
  const Platform& platform = frame.Machine();
  const auto key = platform.registry.OpenKey(RegRoot::ClassesRoot,
                                             std::wstring(kInstallerProducts) + packed,
                                             RegAccess::Read, IsWow64(platform.system));
  if (!key) return {};
  return FromLocation(frame, ReadKeyString(*key, L"ProductIcon"));
}

}  // namespace varnel
