#include "core/reboot_file_ops.h"

#include <vector>

#include "base/text.h"

namespace varnel {

namespace {

constexpr std::uint32_t kPlatformWindows9x = 1;
constexpr std::uint32_t kPlatformNt = 2;
constexpr std::uint32_t kErrorNotSupported = 50;

std::vector<std::wstring> SplitLines(std::wstring_view s) {
  std::vector<std::wstring> lines;
  std::size_t start = 0;
  for (std::size_t i = 0; i < s.size(); ++i) {
    if (s[i] != L'\r' && s[i] != L'\n') continue;
    lines.emplace_back(s.substr(start, i - start));
    if (s[i] == L'\r' && i + 1 < s.size() && s[i + 1] == L'\n') ++i;
    start = i + 1;
  }
  if (start < s.size()) lines.emplace_back(s.substr(start));
  return lines;
}

// The old platform keeps its pending operations in wininit.ini. The list is
// assembled but deliberately not written back; on that platform the routine
// only validates, and that behaviour is kept as it is. Only the validation
// outcome is observable.
bool ScheduleInWininit(const Platform& platform, std::wstring_view fileName,
                       std::wstring_view newName, int mode, std::wstring* error) {
  if (mode != RebootMode::Delete && mode != RebootMode::Rename) return false;

  const std::wstring iniPath = platform.system.WindowsDirectory() + L"\\wininit.ini";
  std::vector<std::wstring> lines;
  std::vector<std::uint8_t> bytes;
  if (platform.files.FileExists(iniPath) && platform.files.ReadWholeFile(iniPath, bytes)) {
    lines = SplitLines(platform.system.FromAnsi(
        std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size())));
  }
  std::size_t section = lines.size();
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (text::SameText(lines[i], L"[rename]")) {
      section = i;
      break;
    }
  }
  if (section == lines.size()) lines.emplace_back(L"[rename]");

  const std::wstring shortFile = platform.files.ShortPathName(fileName);
  std::wstring entry;
  if (mode == RebootMode::Delete) {
    entry = L"NUL=" + shortFile;
  } else {
    std::wstring target = platform.files.ShortPathName(newName);
    if (target.empty()) {
      if (!IsShortFileName(text::ExtractFileName(newName))) {
        if (error) *error = L"Invalid File!";
        return false;
      }
      target = std::wstring(newName);
    }
    entry = target + L"=" + shortFile;
  }
  lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(section) + 1, entry);
  return true;
}

}  // namespace

bool IsShortFileName(std::wstring_view name) {
  const std::size_t dot = name.find(L'.');
  if (dot == std::wstring_view::npos) return name.size() <= 8;
  return dot <= 8 && name.size() - dot - 1 <= 3;
}

bool ScheduleFileOnReboot(const Platform& platform, std::wstring_view fileName,
                          std::wstring_view newName, int mode, std::wstring* error) {
  const std::uint32_t platformId = platform.system.GetOsVersion().platformId;
  if (platformId == kPlatformWindows9x)
    return ScheduleInWininit(platform, fileName, newName, mode, error);
  if (platformId != kPlatformNt) {  // Win32s, or nothing known
    platform.system.SetLastErrorCode(kErrorNotSupported);
    return false;
  }
  if (fileName.empty()) return false;
  if (mode == RebootMode::Delete) return platform.files.MoveOnReboot(fileName, L"");
  // An empty target would turn the rename into a deletion.
  if (mode == RebootMode::Rename && !newName.empty())
    return platform.files.MoveOnReboot(fileName, newName);
  return false;
}

}  // namespace varnel
