#include "core/app_frame.h"

#include <array>

#include "base/text.h"
#include "platform/csidl.h"

namespace varnel {

namespace {

constexpr std::size_t kFolderBuffer = 261;
constexpr std::size_t kDirBuffer = 255;

// What a fixed buffer of `buffer` characters would have received: the text up
// to its first zero, or nothing when it needs more room than the buffer has.
std::wstring Fitted(std::wstring s, std::size_t buffer) {
  if (const auto end = s.find(L'\0'); end != std::wstring::npos) s.resize(end);
  if (s.size() >= buffer) return {};
  return s;
}

// Indexes 0..2 are not shell folders; -1 marks the gap at 14.
constexpr int kWindowsDir = -2;
constexpr int kSystemDir = -3;
constexpr int kTempDir = -4;
constexpr int kNothing = -1;

constexpr std::array<int, 36> kUserFolders = {
    kWindowsDir,                  // 0
    kSystemDir,                   // 1
    kTempDir,                     // 2
    Csidl::InternetCache,         // 3
    Csidl::Cookies,               // 4
    Csidl::History,               // 5
    Csidl::Recent,                // 6
    Csidl::DesktopDirectory,      // 7
    Csidl::Programs,              // 8
    Csidl::Favorites,             // 9
    Csidl::Startup,               // 10
    Csidl::Profile,               // 11
    Csidl::AppData,               // 12
    Csidl::LocalAppData,          // 13
    kNothing,                     // 14
    Csidl::ProgramFiles,          // 15
    Csidl::ProgramFilesCommon,    // 16
    Csidl::StartMenu,             // 17
    Csidl::CommonAppData,         // 18
    Csidl::LocalAppData,          // 19
    Csidl::Fonts,                 // 20
    Csidl::Templates,             // 21
    Csidl::NetHood,               // 22
    Csidl::SendTo,                // 23
    Csidl::MyMusic,               // 24
    Csidl::MyVideo,               // 25
    Csidl::PrintHood,             // 26
    Csidl::MyPictures,            // 27
    Csidl::SystemX86,             // 28
    Csidl::ProgramFilesX86,       // 29
    Csidl::ProgramFilesCommon,    // 30
    Csidl::ProgramFilesCommonX86, // 31
    Csidl::AdminTools,            // 32
    Csidl::Resources,             // 33
    Csidl::CdBurnArea,            // 34
    Csidl::Personal,              // 35
};

constexpr std::array<int, 13> kCommonFolders = {
    Csidl::CommonAppData,           // 0
    Csidl::CommonDesktopDirectory,  // 1
    Csidl::CommonPrograms,          // 2
    Csidl::CommonStartMenu,         // 3
    Csidl::CommonFavorites,         // 4
    Csidl::CommonPrograms,          // 5
    Csidl::CommonStartup,           // 6
    Csidl::CommonTemplates,         // 7
    Csidl::CommonDocuments,         // 8
    Csidl::CommonAdminTools,        // 9
    Csidl::CommonMusic,             // 10
    Csidl::CommonPictures,          // 11
    Csidl::CommonVideo,             // 12
};

}  // namespace

std::wstring QuerySpecialFolder(ISystem& system, int csidl) {
  return Fitted(system.SpecialFolder(csidl), kFolderBuffer);
}
std::wstring QuerySystemDir(ISystem& system) {
  return Fitted(system.SystemDirectory(), kDirBuffer);
}
std::wstring QueryWindowsDir(ISystem& system) {
  return Fitted(system.WindowsDirectory(), kDirBuffer);
}
std::wstring QueryTempDir(ISystem& system) { return Fitted(system.TempDirectory(), kDirBuffer); }
std::wstring QueryAppFolder(ISystem& system) { return text::ExtractFilePath(system.ModulePath()); }

TAppFrame::TAppFrame(const Platform& platform)
    : UserAppData(QuerySpecialFolder(platform.system, Csidl::AppData)),
      CommonAppData(QuerySpecialFolder(platform.system, Csidl::CommonAppData)),
      AppFolder(QueryAppFolder(platform.system)),
      platform_(platform) {}

void TAppFrame::GetUserFolder(int index, std::wstring& path) const {
  if (index < 0 || index >= static_cast<int>(kUserFolders.size())) return;
  switch (const int id = kUserFolders[static_cast<std::size_t>(index)]) {
    case kNothing: return;
    case kWindowsDir: path = GetWindowsDir(); return;
    case kSystemDir: path = GetSystemDir(); return;
    case kTempDir: path = GetTempDir(); return;
    default: path = QuerySpecialFolder(platform_.system, id); return;
  }
}

void TAppFrame::GetCommonFolder(int index, std::wstring& path) const {
  if (index < 0 || index >= static_cast<int>(kCommonFolders.size())) return;
  path = QuerySpecialFolder(platform_.system, kCommonFolders[static_cast<std::size_t>(index)]);
}

std::wstring TAppFrame::GetSystemDir() const { return QuerySystemDir(platform_.system); }
std::wstring TAppFrame::GetWindowsDir() const { return QueryWindowsDir(platform_.system); }
std::wstring TAppFrame::GetTempDir() const { return QueryTempDir(platform_.system); }

std::wstring TAppFrame::GetProfilesRoot() const {
  std::wstring appData;
  GetUserFolder(12, appData);
  // The drive part up to and including the first "\", then the next name.
  const std::size_t p = appData.find(L'\\');
  const std::size_t restAt = (p == std::wstring::npos) ? 0 : p + 1;
  const std::wstring rest = appData.substr(restAt);
  return appData.substr(0, restAt) + rest.substr(0, rest.find(L'\\'));
}

}  // namespace varnel
