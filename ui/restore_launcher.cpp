#include "ui/restore_launcher.h"

#include "core/app_frame.h"
#include "core/os_name.h"
#include "core/shell_command.h"
#include "core/wow64.h"

namespace varnel {

std::wstring RestoreToolCommand(std::wstring_view osName, std::wstring_view systemDir) {
  if (osName == L"Windows XP") return std::wstring(systemDir) + L"\\restore\\rstrui.exe";
  if (osName == L"Windows Vista" || osName == L"Windows 7")
    return std::wstring(systemDir) + L"\\rstrui.exe";
  return {};
}

bool LaunchRestoreTool(const Platform& platform) {
  ISystem& system = platform.system;
  SetFsRedirection(system, true);
  const std::wstring command = RestoreToolCommand(GetOSName(system), QuerySystemDir(system));
  if (!command.empty()) RunShellCommand(platform, command);
  SetFsRedirection(system, false);
  return !command.empty();
}

}  // namespace varnel
