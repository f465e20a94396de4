#include "core/os_name.h"

namespace varnel {

namespace {
constexpr std::uint32_t kPlatformNt = 2;
constexpr std::uint8_t kWorkstation = 1;
constexpr std::uint16_t kArchitectureX64 = 9;
}  // namespace

std::wstring GetOSName(ISystem& system) {
  const OsVersion v = system.GetOsVersion();
  if (v.platformId != kPlatformNt) return {};

  std::wstring name;
  // NT 3/4 is named first but then falls through the chain below into the
  // final branch, as does everything newer than 6.1. Callers (the restore
  // launcher, the error log) depend on reading exactly these names.
  if (v.major == 3 || v.major == 4) name = L"Windows NT";
  if (v.major == 5 && v.minor == 0)
    name = L"Windows 2000";
  else if (v.major == 5 && v.minor == 1)
    name = L"Windows XP";
  else if (v.major == 5 && v.minor == 2)
    name = (v.productType == kWorkstation && v.processorArchitecture == kArchitectureX64)
               ? L"Windows XP"
               : L"Windows 2003 Server";
  else if (v.major == 6 && v.minor == 0)
    name = L"Windows Vista";
  else if (v.major == 6 && v.minor == 1)
    name = L"Windows 7";
  else
    name = L"Windows 8";
  return name;
}

}  // namespace varnel
