#include "core/shell_command.h"

#include <string>

#include "core/app_frame.h"
#include "base/text.h"

namespace varnel {

namespace {
constexpr std::size_t kLauncherLength = 12;      // "RUNDLL32.EXE"
constexpr std::size_t kMaxLauncherParams = 255;  // the parameter buffer
}  // namespace

void RunShellCommand(const Platform& platform, std::wstring_view command) {
  const std::wstring appFolder = QueryAppFolder(platform.system);
  std::wstring s(command);
  s = text::ReplaceAll(s, L"%WINDOWS%", QueryWindowsDir(platform.system));
  s = text::ReplaceAll(s, L"%SYSTEM%", QuerySystemDir(platform.system));
  s = text::ReplaceAll(s, L"%APP%\\", appFolder);
  s = text::ReplaceAll(s, L"%APP%/", appFolder);

  if (text::Upper(std::wstring_view(s).substr(0, kLauncherLength)) == L"RUNDLL32.EXE") {
    // Character 13 is the blank between launcher and entry point.
    const std::wstring params =
        s.size() > kLauncherLength + 1 ? s.substr(kLauncherLength + 1, kMaxLauncherParams) : L"";
    (void)platform.shell.Execute(L"open", L"RunDll32.exe", params, L"", ShowCmd::Normal);
    return;
  }
  (void)platform.shell.Execute(L"open", s, L"", L"", ShowCmd::Normal);
}

}  // namespace varnel
