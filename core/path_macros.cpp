#include "core/path_macros.h"

#include <array>

#include "base/text.h"

namespace varnel {

namespace {

template <int Index>
std::wstring User(const TAppFrame& f) {
  std::wstring s;
  f.GetUserFolder(Index, s);
  return s;
}

template <int Index>
std::wstring Common(const TAppFrame& f) {
  std::wstring s;
  f.GetCommonFolder(Index, s);
  return s;
}

std::wstring SystemDir(const TAppFrame& f) { return f.GetSystemDir(); }
std::wstring WindowsDir(const TAppFrame& f) { return f.GetWindowsDir(); }
std::wstring ProfilesRoot(const TAppFrame& f) { return f.GetProfilesRoot(); }
std::wstring SystemDrive(const TAppFrame& f) { return f.GetSystemDir().substr(0, 2); }
std::wstring WindowsTemp(const TAppFrame& f) { return f.GetWindowsDir() + L"\\temp"; }
std::wstring DownloadedProgramFiles(const TAppFrame& f) {
  return f.GetWindowsDir() + L"\\Downloaded Program Files";
}
std::wstring QuickLaunch(const TAppFrame& f) {
  return User<12>(f) + L"\\Microsoft\\Internet Explorer\\Quick Launch";
}
std::wstring UserProfile(const TAppFrame& f) {
  return f.Machine().system.EnvironmentVariable(L"USERPROFILE").value_or(std::wstring());
}
std::wstring RecycleBin(const TAppFrame& f) {
  const std::wstring root = f.GetSystemDir().substr(0, 3);
  return f.Machine().files.DirectoryExists(root + L"Recycled") ? root + L"Recycled" : root + L"Recycler";
}

// Several rows map to folders other than their names suggest (%TEMP%,
// %SYSTEMDRIVE%, %START_PROGRAMS%, ...). That is deliberate: these exact
// expansions are what the rest of the program compares against, so they are
// not to be tidied.
constexpr std::array<PathMacro, 43> kMacros = {{
    {L"%SYSDIR%", L"%sysdir%", SystemDir, nullptr},
    {L"%WINDIR%", L"%windir%", WindowsDir, nullptr},
    {L"%DESKTOP%", L"%desktop%", User<7>, Common<1>},
    {L"%TEMP%", L"%temp%", WindowsTemp, nullptr},
    {L"%ROOTDRIVE%", L"%rootdrive%", SystemDrive, nullptr},
    {L"%APPDATA%", L"%appdata%", User<12>, Common<0>},
    {L"%PROGRAMFILES%", L"%programfiles%", User<15>, nullptr},
    {L"%USERROOT%", L"%userroot%", UserProfile, nullptr},
    {L"%PROGRAMS%", L"%programs%", User<8>, Common<5>},
    {L"%STARTMENU%", L"%startmenu%", User<17>, Common<3>},
    {L"%STARTUP%", L"%startup%", User<10>, Common<6>},
    {L"%QUICKLAUNCH%", L"%quicklaunch%", QuickLaunch, nullptr},
    {L"%COMMONFILES%", L"%commonfiles%", User<16>, nullptr},
    {L"%FAVORITES%", L"%favorites%", User<9>, Common<4>},
    {L"%DAS%", L"%das%", ProfilesRoot, nullptr},
    {L"%RECYCLE%", L"%recycle%", RecycleBin, nullptr},
    {L"%WINDOWS%", L"%windows%", WindowsDir, nullptr},
    {L"%SYSTEM%", L"%system%", SystemDir, nullptr},
    {L"%COMMON_PROGRAMS%", L"%common_programs%", User<16>, nullptr},
    {L"%COMMON_STARTMENU%", L"%common_startmenu%", Common<5>, nullptr},
    {L"%COMMON_DESKTOP%", L"%common_desktop%", Common<1>, nullptr},
    {L"%COMMON_FAVORITES%", L"%common_favorites%", Common<4>, nullptr},
    {L"%COMMON_DATAPATH%", L"%common_datapath%", Common<0>, nullptr},
    {L"%DATAPATH%", L"%datapath%", User<12>, nullptr},
    {L"%PROGRAM_FILES%", L"%program_files%", User<15>, nullptr},
    {L"PROGRAMFILESDIR+", L"programfilesdir+", User<15>, nullptr},
    {L"%SYSTEMDRIVE%", L"%systemdrive%", SystemDir, nullptr},
    {L"SYSTEMROOT+", L"systemroot+", SystemDir, nullptr},
    {L"COMMONPROGRAMS+", L"commonprograms+", Common<2>, nullptr},
    {L"%DESKTOPDIRECTORY%", L"%desktopdirectory%", User<7>, nullptr},
    {L"DESKTOPDIR+", L"desktopdir+", User<7>, nullptr},
    {L"%COMMON_DESKTOPDIRECTORY%", L"%common_desktopdirectory%", Common<1>, nullptr},
    {L"STARTUPFOLDER+", L"startupfolder+", User<10>, nullptr},
    {L"%ALLUSERS_APPDATA%", L"%allusers_appdata%", Common<0>, nullptr},
    {L"%START_MENU%", L"%start_menu%", User<17>, nullptr},
    {L"%START_MENUALL%", L"%start_menuall%", User<17>, nullptr},
    {L"%START_PROGRAMSALL%", L"%start_programsall%", User<15>, nullptr},
    {L"%START_PROGRAMS%", L"%start_programs%", User<15>, nullptr},
    {L"%SYSTEMDISKROOT%", L"%systemdiskroot%", SystemDrive, nullptr},
    {L"%USERPROFILE%", L"%userprofile%", UserProfile, nullptr},
    {L"%DOWNLOADEDPROGRAMFILES%", L"%downloadedprogramfiles%", DownloadedProgramFiles, nullptr},
    {L"%USERDOCUMENTS%", L"%userdocuments%", ProfilesRoot, nullptr},
    {L"%%LOCALAPPDATA%%", L"%%localappdata%%", ProfilesRoot, nullptr},
}};

}  // namespace

std::span<const PathMacro> PathMacroTable() { return kMacros; }

void TAppFrame::ExpandPathMacros(std::wstring& path, std::wstring& allUsersPath) const {
  allUsersPath.clear();
  const std::wstring upper = text::Upper(path);
  for (const PathMacro& macro : kMacros) {
    if (upper.find(macro.upper) == std::wstring::npos) continue;
    // Only the first row that occurs is expanded; a second, different macro
    // in the same string stays as written.
    const std::wstring original = path;
    path = text::ReplaceAllText(original, macro.lower, macro.expand(*this));
    if (macro.expandAllUsers)
      allUsersPath = text::ReplaceAllText(original, macro.lower, macro.expandAllUsers(*this));
    return;
  }
}

}  // namespace varnel
