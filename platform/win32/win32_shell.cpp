#include "platform/win32/win32_shell.h"

#include <windows.h>

#include <shellapi.h>

#include "platform/win32/unique_handle.h"
#include "platform/win32/win32_strings.h"

namespace varnel::win32 {

namespace {

const wchar_t* OrNull(const std::optional<std::wstring>& text) {
  return text->empty() ? nullptr : text->c_str();
}

}  // namespace

std::intptr_t Win32Shell::Execute(std::wstring_view verb, std::wstring_view file,
                                  std::wstring_view parameters, std::wstring_view directory,
                                  int show) {
  auto apiVerb = ApiString(verb);
  auto apiFile = ApiString(file);
  auto apiParameters = ApiString(parameters);
  auto apiDirectory = ApiString(directory);
  if (!apiVerb || !apiFile || !apiParameters || !apiDirectory || apiFile->empty()) {
    return SE_ERR_FNF;
  }
  ComScope com;  // the shell may hand the verb to a COM handler
  HINSTANCE result = ShellExecuteW(nullptr, OrNull(apiVerb), apiFile->c_str(),
                                   OrNull(apiParameters), OrNull(apiDirectory), show);
  return reinterpret_cast<std::intptr_t>(result);
}

bool Win32Shell::ExecuteAndWaitIdle(std::wstring_view verb, std::wstring_view file, int show) {
  auto apiVerb = ApiString(verb);
  auto apiFile = ApiString(file);
  if (!apiVerb || !apiFile || apiFile->empty()) return false;
  ComScope com;
  SHELLEXECUTEINFOW info{};
  info.cbSize = sizeof info;
  // No error dialogs: nobody may be there to close them, and the wait below
  // has no time-out.
  info.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;
  info.lpVerb = OrNull(apiVerb);
  info.lpFile = apiFile->c_str();
  info.nShow = show;
  if (!ShellExecuteExW(&info)) return false;
  // No process when the shell handed the request to one already running.
  UniqueHandle process(info.hProcess);
  if (process) WaitForInputIdle(process.get(), INFINITE);
  return true;
}

bool Win32Shell::ExtractIcons(std::wstring_view file, int index, IconHandle& small,
                              IconHandle& large) {
  small.reset();
  large.reset();
  auto apiFile = ApiString(file);
  if (!apiFile || apiFile->empty()) return false;
  HICON bigIcon = nullptr;
  HICON smallIcon = nullptr;
  if (ExtractIconExW(apiFile->c_str(), index, &bigIcon, &smallIcon, 1) == UINT_MAX) return false;
  auto own = [](HICON icon) {
    return icon ? IconHandle(icon, [](void* h) { DestroyIcon(static_cast<HICON>(h)); }) : nullptr;
  };
  small = own(smallIcon);
  large = own(bigIcon);
  if (small && large) return true;
  small.reset();
  large.reset();
  return false;
}

IconHandle Win32Shell::SmallFileIcon(std::wstring_view path, int& systemIndex) {
  systemIndex = -1;
  auto apiPath = ApiString(path);
  if (!apiPath || apiPath->empty()) return nullptr;
  SHFILEINFOW info{};
  if (!SHGetFileInfoW(apiPath->c_str(), 0, &info, sizeof(info),
                      SHGFI_ICON | SHGFI_SMALLICON | SHGFI_SYSICONINDEX) ||
      !info.hIcon)
    return nullptr;
  systemIndex = info.iIcon;
  return IconHandle(info.hIcon, [](void* h) { DestroyIcon(static_cast<HICON>(h)); });
}

}  // namespace varnel::win32
