#include "uninstall/uninstall_log.h"

#include "core/app_frame.h"
#include "core/data_folder.h"
#include "core/date_time.h"
#include "core/file_version.h"
#include "core/os_name.h"
#include "core/text.h"
#include "core/text_file.h"

namespace varnel {

namespace {

// Makes every missing folder of `folder` (no trailing "\"), outermost first.
bool MakeFolderPath(IFileSystem& files, const std::wstring& folder) {
  if (folder.empty()) return false;
  // A share's root ("\\server\share") is there or not; it cannot be made.
  std::size_t pos = folder.find(L'\\', folder.starts_with(L"\\\\") ? 2 : 0);
  if (folder.starts_with(L"\\\\") && pos != std::wstring::npos) pos = folder.find(L'\\', pos + 1);
  for (; pos != std::wstring::npos; pos = folder.find(L'\\', pos + 1)) {
    const std::wstring part = folder.substr(0, pos);
    if (!part.empty() && part.back() != L':' && !files.DirectoryExists(part)) {
      files.MakeDirectory(part);
    }
  }
  if (!files.DirectoryExists(folder)) files.MakeDirectory(folder);
  return files.DirectoryExists(folder);
}

}  // namespace

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
  if (!MakeFolderPath(platform.files, text::ExcludeTrailingBackslash(folder))) return {};
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
