#include "ui/right_menu.h"

#include "core/reboot_file_ops.h"
#include "core/shortcut.h"
#include "base/text.h"
#include "base/text_file.h"

namespace varnel {

bool IsRightMenuCall(const std::vector<std::wstring>& args) {
  return !args.empty() && text::SameText(args[0], L"/rightmenu");
}

std::optional<std::wstring> ServeRightMenu(const Platform& platform,
                                           const std::vector<std::wstring>& args) {
  if (!IsRightMenuCall(args) || args.size() < 2) return std::nullopt;
  std::wstring name = args[1];
  if (name.empty() || !platform.files.FileExists(name)) return std::nullopt;
  std::wstring content;
  if (ReadTextFile(platform, name, content)) {
    const auto lines = SplitLines(content);
    if (!lines.empty()) name = std::wstring(lines.front());
  }
  // The deletion takes the replaced name: the file named on the first line
  // goes, the hand-over file stays. Kept as the shell extension expects it.
  if (!platform.files.RemoveFile(name))
    ScheduleFileOnReboot(platform, name, L"", RebootMode::Delete);
  if (name.empty() || !platform.files.FileExists(name)) return std::nullopt;
  return name;
}

std::optional<std::wstring> ForcedUninstallTarget(const Platform& platform, std::wstring file) {
  if (text::EndsWithText(file, L".lnk") || text::EndsWithText(file, L".ink"))
    file = GetShortcutTarget(platform.files, platform.system, file);
  if (file.empty() || !platform.files.FileExists(file)) return std::nullopt;
  return file;
}

}  // namespace varnel
