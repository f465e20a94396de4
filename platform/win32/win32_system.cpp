#include "platform/win32/win32_system.h"

#include <windows.h>

#include <shlobj.h>

#include <algorithm>
#include <climits>
#include <vector>

#include "platform/md5.h"
#include "platform/win32/unique_handle.h"
#include "platform/win32/win32_strings.h"

namespace varnel::win32 {

namespace {

// The folder routines built on this were written for a fixed buffer of
// this size; a longer folder counts as no answer.
constexpr UINT kDirectoryBuffer = 255;

template <typename Call>
std::wstring FixedBufferFolder(Call call) {
  wchar_t buffer[kDirectoryBuffer] = {};
  UINT length = call(buffer, kDirectoryBuffer);
  if (length == 0 || length >= kDirectoryBuffer) return {};
  return std::wstring(buffer, length);
}

std::wstring LocaleText(LCTYPE type) {
  int need = GetLocaleInfoW(LOCALE_USER_DEFAULT, type, nullptr, 0);
  if (need <= 0) return {};
  std::wstring text(static_cast<std::size_t>(need), L'\0');
  int got = GetLocaleInfoW(LOCALE_USER_DEFAULT, type, text.data(), need);
  if (got <= 0) return {};
  text.resize(static_cast<std::size_t>(got) - 1);
  return text;
}

wchar_t LocaleChar(LCTYPE type, wchar_t fallback) {
  std::wstring text = LocaleText(type);
  return text.empty() ? fallback : text.front();
}

// Per thread, as the switch itself is.
struct RedirectionState {
  bool disabled = false;
  void* oldValue = nullptr;
};
thread_local RedirectionState redirection;

bool IsStringTable(std::wstring_view subBlock) {
  constexpr std::wstring_view table = L"\\StringFileInfo\\";
  if (subBlock.size() < table.size()) return false;
  return CompareStringOrdinal(subBlock.data(), static_cast<int>(table.size()), table.data(),
                              static_cast<int>(table.size()), TRUE) == CSTR_EQUAL;
}

class Win32VersionInfo final : public IVersionInfo {
 public:
  explicit Win32VersionInfo(std::vector<std::uint8_t> block) : block_(std::move(block)) {}

  std::optional<std::pair<std::uint16_t, std::uint16_t>> FirstTranslation() const override {
    auto [data, bytes] = Query(L"\\VarFileInfo\\Translation");
    if (!data || bytes < 2 * sizeof(WORD)) return std::nullopt;
    const auto* words = static_cast<const WORD*>(data);
    return std::pair<std::uint16_t, std::uint16_t>{words[0], words[1]};
  }

  std::optional<std::wstring> QueryString(std::wstring_view subBlock) const override {
    auto name = ApiString(subBlock);
    if (!name) return std::nullopt;
    auto [data, length] = Query(name->c_str());
    if (!data) return std::nullopt;
    // The length counts characters for the string table but bytes for any
    // other block; and never reach past the block whichever it is.
    std::size_t limit = IsStringTable(subBlock) ? length : length / sizeof(wchar_t);
    const auto* text = static_cast<const wchar_t*>(data);
    const auto* end = reinterpret_cast<const wchar_t*>(block_.data() + block_.size());
    limit = std::min<std::size_t>(limit, end > text ? end - text : 0);
    std::size_t count = 0;
    while (count < limit && text[count] != L'\0') ++count;
    return std::wstring(text, count);
  }

 private:
  std::pair<const void*, UINT> Query(const wchar_t* subBlock) const {
    void* data = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(block_.data(), subBlock, &data, &length)) return {nullptr, 0};
    const auto* at = static_cast<const std::uint8_t*>(data);
    if (at < block_.data() || at >= block_.data() + block_.size()) return {nullptr, 0};
    return {data, length};
  }

  std::vector<std::uint8_t> block_;
};

}  // namespace

std::wstring Win32System::SpecialFolder(int csidl) {
  // The routines on top ask for exactly this call and buffer.
  wchar_t buffer[MAX_PATH + 1] = {};
  if (!SHGetSpecialFolderPathW(nullptr, buffer, csidl, FALSE)) return {};
  buffer[MAX_PATH] = L'\0';
  return buffer;
}

std::wstring Win32System::SystemDirectory() {
  return FixedBufferFolder([](wchar_t* b, UINT n) { return GetSystemDirectoryW(b, n); });
}

std::wstring Win32System::WindowsDirectory() {
  return FixedBufferFolder([](wchar_t* b, UINT n) { return GetWindowsDirectoryW(b, n); });
}

std::wstring Win32System::TempDirectory() {
  return FixedBufferFolder(
      [](wchar_t* b, UINT n) { return static_cast<UINT>(GetTempPathW(n, b)); });
}

std::optional<std::wstring> Win32System::EnvironmentVariable(std::wstring_view name) {
  auto apiName = ApiString(name);
  if (!apiName || apiName->empty() || apiName->find(L'=') != std::wstring::npos) {
    return std::nullopt;
  }
  std::wstring value(256, L'\0');
  for (int attempt = 0; attempt < 4; ++attempt) {
    SetLastError(ERROR_SUCCESS);
    DWORD length =
        GetEnvironmentVariableW(apiName->c_str(), value.data(), static_cast<DWORD>(value.size()));
    if (length == 0) {
      if (GetLastError() == ERROR_ENVVAR_NOT_FOUND) return std::nullopt;
      return std::wstring();
    }
    if (length < value.size()) {
      value.resize(length);
      return value;
    }
    value.resize(length);  // includes room for the terminator
  }
  return std::nullopt;
}

std::optional<std::wstring> Win32System::ExpandEnvironment(std::wstring_view text) {
  auto source = ApiString(text);
  if (!source) return std::nullopt;
  std::wstring expanded(source->size() + 256, L'\0');
  for (int attempt = 0; attempt < 4; ++attempt) {
    if (expanded.size() > MAXDWORD) return std::nullopt;
    DWORD length = ExpandEnvironmentStringsW(source->c_str(), expanded.data(),
                                             static_cast<DWORD>(expanded.size()));
    if (length == 0) return std::nullopt;
    if (length <= expanded.size()) {
      expanded.resize(length - 1);  // the count includes the terminator
      return expanded;
    }
    expanded.resize(length);
  }
  return std::nullopt;
}

std::wstring Win32System::ModulePath() {
  std::wstring path(MAX_PATH, L'\0');
  while (path.size() <= 32768) {
    DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0) return {};
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(path.size() * 2);  // truncated
  }
  return {};
}

OsVersion Win32System::GetOsVersion() {
  OsVersion version;
  // GetVersionExW lies to executables without a compatibility manifest;
  // RtlGetVersion does not.
  using RtlGetVersionFn = LONG(WINAPI*)(OSVERSIONINFOEXW*);
  auto rtlGetVersion = GetProc<RtlGetVersionFn>(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion");
  OSVERSIONINFOEXW info{};
  info.dwOSVersionInfoSize = sizeof info;
  bool known = rtlGetVersion && rtlGetVersion(&info) == 0;
  if (!known) {
    info = OSVERSIONINFOEXW{};
    info.dwOSVersionInfoSize = sizeof info;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    known = GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info)) != FALSE;
#pragma GCC diagnostic pop
  }
  if (known) {
    version.major = info.dwMajorVersion;
    version.minor = info.dwMinorVersion;
    version.build = info.dwBuildNumber;
    version.platformId = info.dwPlatformId;
    version.productType = info.wProductType;
  }
  SYSTEM_INFO system{};
  GetNativeSystemInfo(&system);
  version.processorArchitecture = system.wProcessorArchitecture;
  return version;
}

bool Win32System::IsWow64() {
#if defined(_WIN64)
  return true;  // a 64-bit process runs only where both views exist
#else
  using IsWow64ProcessFn = BOOL(WINAPI*)(HANDLE, BOOL*);
  auto isWow64Process =
      GetProc<IsWow64ProcessFn>(GetModuleHandleW(L"kernel32.dll"), "IsWow64Process");
  BOOL wow64 = FALSE;
  return isWow64Process && isWow64Process(GetCurrentProcess(), &wow64) && wow64;
#endif
}

bool Win32System::SetFsRedirection(bool disable) {
  using DisableFn = BOOL(WINAPI*)(PVOID*);
  using RevertFn = BOOL(WINAPI*)(PVOID);
  HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
  auto disableRedirection = GetProc<DisableFn>(kernel, "Wow64DisableWow64FsRedirection");
  auto revertRedirection = GetProc<RevertFn>(kernel, "Wow64RevertWow64FsRedirection");
  if (!disableRedirection || !revertRedirection) return false;
  if (disable) {
    if (redirection.disabled) return true;
    void* old = nullptr;
    if (!disableRedirection(&old)) return false;
    redirection = {true, old};
    return true;
  }
  if (!redirection.disabled) return true;
  if (!revertRedirection(redirection.oldValue)) return false;
  redirection = {};
  return true;
}

std::uint32_t Win32System::AnsiCodePage() { return GetACP(); }

std::string Win32System::ToAnsi(std::wstring_view text) {
  if (text.empty() || text.size() > INT_MAX) return {};
  int length = static_cast<int>(text.size());
  int need = WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  if (need <= 0) return {};
  std::string bytes(static_cast<std::size_t>(need), '\0');
  int got =
      WideCharToMultiByte(CP_ACP, 0, text.data(), length, bytes.data(), need, nullptr, nullptr);
  if (got <= 0) return {};
  bytes.resize(static_cast<std::size_t>(got));
  return bytes;
}

std::wstring Win32System::FromAnsi(std::string_view bytes) {
  if (bytes.empty() || bytes.size() > INT_MAX) return {};
  int length = static_cast<int>(bytes.size());
  int need = MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, nullptr, 0);
  if (need <= 0) return {};
  std::wstring text(static_cast<std::size_t>(need), L'\0');
  int got = MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, text.data(), need);
  if (got <= 0) return {};
  text.resize(static_cast<std::size_t>(got));
  return text;
}

FileTime Win32System::Now() {
  FILETIME now{};
  GetSystemTimeAsFileTime(&now);
  return ToFileTime(now);
}

// FileTimeToLocalFileTime applies today's bias, not the one in force at the
// date converted; the dates shown elsewhere were computed that way, so keep it.
std::optional<LocalDateTime> Win32System::ToLocalTime(FileTime utc) {
  FILETIME source = ToFiletime(utc);
  FILETIME local{};
  SYSTEMTIME parts{};
  if (!FileTimeToLocalFileTime(&source, &local) || !FileTimeToSystemTime(&local, &parts)) {
    return std::nullopt;
  }
  return LocalDateTime{parts.wYear,   parts.wMonth,  parts.wDay,         parts.wHour,
                       parts.wMinute, parts.wSecond, parts.wMilliseconds};
}

std::optional<FileTime> Win32System::FromLocalTime(const LocalDateTime& local) {
  auto fits = [](int v, int low, int high) { return v >= low && v <= high; };
  if (!fits(local.year, 1601, 30827) || !fits(local.month, 1, 12) || !fits(local.day, 1, 31) ||
      !fits(local.hour, 0, 23) || !fits(local.minute, 0, 59) || !fits(local.second, 0, 59) ||
      !fits(local.millisecond, 0, 999)) {
    return std::nullopt;
  }
  SYSTEMTIME parts{};
  parts.wYear = static_cast<WORD>(local.year);
  parts.wMonth = static_cast<WORD>(local.month);
  parts.wDay = static_cast<WORD>(local.day);
  parts.wHour = static_cast<WORD>(local.hour);
  parts.wMinute = static_cast<WORD>(local.minute);
  parts.wSecond = static_cast<WORD>(local.second);
  parts.wMilliseconds = static_cast<WORD>(local.millisecond);
  FILETIME localTime{};
  FILETIME utc{};
  if (!SystemTimeToFileTime(&parts, &localTime) || !LocalFileTimeToFileTime(&localTime, &utc)) {
    return std::nullopt;
  }
  return ToFileTime(utc);
}

std::wstring Win32System::ShortDateFormat() { return LocaleText(LOCALE_SSHORTDATE); }
std::wstring Win32System::LongTimeFormat() { return LocaleText(LOCALE_STIMEFORMAT); }
wchar_t Win32System::DateSeparator() { return LocaleChar(LOCALE_SDATE, L'/'); }
wchar_t Win32System::DecimalSeparator() { return LocaleChar(LOCALE_SDECIMAL, L'.'); }

std::array<std::uint8_t, 16> Win32System::Md5(std::span<const std::uint8_t> bytes) {
  return Md5Digest(bytes);
}

std::unique_ptr<IVersionInfo> Win32System::OpenVersionInfo(std::wstring_view path) {
  auto apiPath = ApiPath(path);
  if (!apiPath || apiPath->empty()) return nullptr;
  DWORD handle = 0;
  DWORD size = GetFileVersionInfoSizeW(apiPath->c_str(), &handle);
  if (size == 0) return nullptr;
  std::vector<std::uint8_t> block(size);
  if (!GetFileVersionInfoW(apiPath->c_str(), 0, size, block.data())) return nullptr;
  return std::make_unique<Win32VersionInfo>(std::move(block));
}

std::uint32_t Win32System::LastErrorCode() { return GetLastError(); }
void Win32System::SetLastErrorCode(std::uint32_t code) { SetLastError(code); }
void Win32System::SleepMs(std::uint32_t ms) { Sleep(ms); }

}  // namespace varnel::win32
