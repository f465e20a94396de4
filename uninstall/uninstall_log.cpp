#include "uninstall/uninstall_log.h"

#include "core/app_frame.h"
#include "core/data_folder.h"
#include "base/date_time.h"
#include "core/directory_tree.h"
#include "core/file_version.h"
#include "core/os_name.h"
#include "base/text.h"
#include "base/text_file.h"

namespace varnel {

std::wstring UninstallLogFolder(const Platform& platform) {
  const std::wstring data = UserDataFolder(TAppFrame(platform), false);
  return data.empty() ? std::wstring() : data + L"\\Log\\";
}

std::wstring UninstallLogFileName(const Platform& platform) {
  return FormatDate(L"yyyy-MM-dd", NowLocal(platform.system)) + L".log";
}

std::wstring WriteUninstallLog(const Platform& platform, const std::vector<std::wstring>& lines) {
  const std::wstring folder = UninstallLogFolder(platform);
  if (folder.empty()) return {};
  if (!MakeDirectoryTree(platform.files, text::ExcludeTrailingBackslash(folder))) return {};
  const std::wstring path = folder + UninstallLogFileName(platform);

  const std::wstring rule(36, L'=');
  std::wstring content;
  if (platform.files.FileExists(path)) {
    std::wstring old;
    if (!ReadTextFile(platform, path, old)) return {};
    for (std::wstring_view line : SplitLines(old)) {
      content += line;
      content += L"\r\n";
    }
  } else {
    const std::wstring header[] = {
        rule,
        L"Varnel Uninstaller Log",
        L"Application Version:" +
            GetFileVersionText(platform.system, platform.system.ModulePath(), 3),
        GetOSName(platform.system),
        L"Time:" + FormatDate(L"yyyy-MM-dd HH:mm:ss", NowLocal(platform.system)),
        rule,
        L"",
    };
    for (const std::wstring& line : header) content += line + L"\r\n";
  }
  for (const std::wstring& line : lines) content += line + L"\r\n";
  return WriteTextFile(platform.files, path, content) ? path : std::wstring();
}

}  // namespace varnel
