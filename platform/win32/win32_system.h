#pragma once

#include "platform/system.h"

namespace varnel::win32 {

class Win32System final : public ISystem {
 public:
  std::wstring SpecialFolder(int csidl) override;
  std::wstring SystemDirectory() override;
  std::wstring WindowsDirectory() override;
  std::wstring TempDirectory() override;
  std::optional<std::wstring> EnvironmentVariable(std::wstring_view name) override;
  std::optional<std::wstring> ExpandEnvironment(std::wstring_view text) override;
  std::wstring ModulePath() override;

  OsVersion GetOsVersion() override;
  bool IsWow64() override;
  bool SetFsRedirection(bool disable) override;

  std::uint32_t AnsiCodePage() override;
  std::string ToAnsi(std::wstring_view text) override;
  std::wstring FromAnsi(std::string_view bytes) override;

  FileTime Now() override;
  std::optional<LocalDateTime> ToLocalTime(FileTime utc) override;
  std::optional<FileTime> FromLocalTime(const LocalDateTime& local) override;
  std::wstring ShortDateFormat() override;
  std::wstring LongTimeFormat() override;
  wchar_t DateSeparator() override;
  wchar_t DecimalSeparator() override;

  std::array<std::uint8_t, 16> Md5(std::span<const std::uint8_t> bytes) override;
  std::unique_ptr<IVersionInfo> OpenVersionInfo(std::wstring_view path) override;

  std::uint32_t LastErrorCode() override;
  void SetLastErrorCode(std::uint32_t code) override;
  void SleepMs(std::uint32_t ms) override;
};

}  // namespace varnel::win32
