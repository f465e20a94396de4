#include "inventory/last_access.h"

#include <cstring>

#include "core/wow64.h"

namespace varnel {

namespace {

constexpr std::wstring_view kFileSystemKey = L"\\SYSTEM\\CurrentControlSet\\Control\\FileSystem\\";

}  // namespace

bool LastAccessTracking(const Platform& platform) {
  const auto key = platform.registry.OpenKey(RegRoot::LocalMachine, kFileSystemKey,
                                             RegAccess::Read, IsWow64(platform.system));
  if (!key) return false;
  const auto value = key->ReadValue(L"NtfsDisableLastAccessUpdate");
  if (!value || value->type != RegType::DWord || value->data.size() < 4) return false;
  std::uint32_t number = 0;
  std::memcpy(&number, value->data.data(), sizeof number);
  return number == 0;
}

TDateTime FileLastAccessDate(const Platform& platform, std::wstring_view file, bool tracking) {
  const TDateTime now = NowLocal(platform.system);
  if (!tracking || file.empty() || !platform.files.FileExists(file)) return now;
  const auto info = platform.files.GetFileInfo(file);
  if (!info) return now;
  const TDateTime accessed = FileTimeToLocalDateTime(platform.system, info->lastAccessTime);
  return accessed == 0 ? now : accessed;
}

}  // namespace varnel
