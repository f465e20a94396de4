#include "ui/error_log.h"

#include "core/app_frame.h"
#include "base/date_time.h"
#include "core/file_version.h"
#include "core/os_name.h"
#include "base/text.h"
#include "base/text_file.h"
#include "core/wow64.h"

namespace varnel {

std::wstring ErrorLogFileName(ISystem& system) {
  return QueryAppFolder(system) + L"Error_Log.txt";
}

std::vector<std::wstring> ErrorReportLines(const Platform& platform,
                                           std::wstring_view exceptionType,
                                           std::wstring_view message) {
  ISystem& system = platform.system;
  const TDateTime now = NowLocal(system);
  const std::wstring module = system.ModulePath();
  std::wstring when = FormatShortDate(system, now);
  // The long time picture in the system's notation: h/hh hours, m/mm, s/ss, tt.
  const LocalDateTime local = DecodeDateTime(now);
  std::wstring time = system.LongTimeFormat();
  auto two = [](int v) { return (v < 10 ? L"0" : L"") + std::to_wstring(v); };
  const bool twelve = time.find(L't') != std::wstring::npos;
  const int hour12 = local.hour % 12 == 0 ? 12 : local.hour % 12;
  const int hour = twelve ? hour12 : local.hour;
  time = text::ReplaceAll(time, L"HH", two(hour));
  time = text::ReplaceAll(time, L"hh", two(hour));
  time = text::ReplaceAll(time, L"H", std::to_wstring(hour));
  time = text::ReplaceAll(time, L"h", std::to_wstring(hour));
  time = text::ReplaceAll(time, L"mm", two(local.minute));
  time = text::ReplaceAll(time, L"ss", two(local.second));
  time = text::ReplaceAll(time, L"tt", local.hour < 12 ? L"AM" : L"PM");
  return {
      when + L" " + time,
      L"Application=" + module,
      L"Version=" + GetFileVersionText(system, module, 3),
      L"OS Info=" + GetOSName(system),
      std::wstring(L"64bit=") + (IsWow64(system) ? L"Yes" : L"No"),
      L"Exception Type=" + std::wstring(exceptionType),
      L"Error Message=" + std::wstring(message),
      L"",
  };
}

bool AppendErrorReport(const Platform& platform, std::wstring_view exceptionType,
                       std::wstring_view message) noexcept {
  try {
    const auto lines = ErrorReportLines(platform, exceptionType, message);
    return UpdateTextFile(platform, ErrorLogFileName(platform.system),
                          [&lines](std::wstring& content) {
                            if (!content.empty() && content.back() != L'\n') content += L"\r\n";
                            for (const std::wstring& line : lines) {
                              content += line;
                              content += L"\r\n";
                            }
                          });
  } catch (...) {
    return false;
  }
}

}  // namespace varnel
