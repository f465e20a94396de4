#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace varnel {

struct OsVersion {
  std::uint32_t major = 0;
  std::uint32_t minor = 0;
  std::uint32_t build = 0;
  std::uint32_t platformId = 2;        // 0 Win32s, 1 Windows 9x, 2 NT
  std::uint8_t productType = 1;        // 1 workstation, 2 domain controller, 3 server
  std::uint16_t processorArchitecture = 9;  // 0 x86, 9 x64, 12 ARM64
};

struct LocalDateTime {
  int year = 0, month = 0, day = 0;
  int hour = 0, minute = 0, second = 0, millisecond = 0;
};

// A file's version resource, opened once and queried by sub-block.
class IVersionInfo {
 public:
  virtual ~IVersionInfo() = default;
  // First entry of "\VarFileInfo\Translation": language, code page.
  virtual std::optional<std::pair<std::uint16_t, std::uint16_t>> FirstTranslation() const = 0;
  // sub-block such as "\StringFileInfo\040904b0\CompanyName".
  virtual std::optional<std::wstring> QueryString(std::wstring_view subBlock) const = 0;
};

class ISystem {
 public:
  virtual ~ISystem() = default;

  // Without trailing "\" (as the shell gives them); empty when unknown.
  virtual std::wstring SpecialFolder(int csidl) = 0;
  virtual std::wstring SystemDirectory() = 0;
  virtual std::wstring WindowsDirectory() = 0;
  // Ends with "\".
  virtual std::wstring TempDirectory() = 0;
  virtual std::optional<std::wstring> EnvironmentVariable(std::wstring_view name) = 0;
  // %NAME% references expanded; unknown ones stay. nullopt when the call fails.
  virtual std::optional<std::wstring> ExpandEnvironment(std::wstring_view text) = 0;
  // The running executable's full path.
  virtual std::wstring ModulePath() = 0;

  virtual OsVersion GetOsVersion() = 0;
  // True when a 64-bit registry view exists beside the default one.
  virtual bool IsWow64() = 0;
  // Per thread; false when the system has no such switch.
  virtual bool SetFsRedirection(bool disable) = 0;

  virtual std::uint32_t AnsiCodePage() = 0;
  virtual std::string ToAnsi(std::wstring_view text) = 0;
  virtual std::wstring FromAnsi(std::string_view bytes) = 0;

  virtual FileTime Now() = 0;
  virtual std::optional<LocalDateTime> ToLocalTime(FileTime utc) = 0;
  virtual std::optional<FileTime> FromLocalTime(const LocalDateTime& local) = 0;
  // Picture strings in the system's own notation, e.g. "M/d/yyyy", "h:mm:ss tt".
  virtual std::wstring ShortDateFormat() = 0;
  virtual std::wstring LongTimeFormat() = 0;
  virtual wchar_t DateSeparator() = 0;
  virtual wchar_t DecimalSeparator() = 0;

  virtual std::array<std::uint8_t, 16> Md5(std::span<const std::uint8_t> bytes) = 0;
  virtual std::unique_ptr<IVersionInfo> OpenVersionInfo(std::wstring_view path) = 0;

  virtual std::uint32_t LastErrorCode() = 0;
  virtual void SetLastErrorCode(std::uint32_t code) = 0;
  virtual void SleepMs(std::uint32_t ms) = 0;
};

}  // namespace varnel
