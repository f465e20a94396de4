#include "core/data_folder.h"

namespace varnel {

std::wstring UserDataFolder(const TAppFrame& frame, bool create) {
  if (frame.UserAppData.empty()) return {};
  std::wstring folder = frame.UserAppData;
  IFileSystem& files = frame.Machine().files;
  for (const wchar_t* level : {L"Varnel", L"Varnel Uninstaller"}) {
    folder += L"\\";
    folder += level;
    if (create && !files.DirectoryExists(folder)) files.MakeDirectory(folder);
  }
  return folder;
}

std::wstring SoftwareCacheFileName(const TAppFrame& frame, bool createFolder) {
  std::wstring folder = UserDataFolder(frame, createFolder);
  return folder.empty() ? std::wstring() : folder + L"\\SoftwareCache.ini";
}

}  // namespace varnel
