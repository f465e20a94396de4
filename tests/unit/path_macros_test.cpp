#include <gtest/gtest.h>

#include <string>

#include "core/path_macros.h"
#include "base/text.h"
#include "platform/csidl.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

class PathMacrosTest : public testing::Test {
 protected:
  void SetUp() override {
    // The memory machine shares one favourites folder; keep them apart.
    m.system.specialFolders[Csidl::CommonFavorites] = L"C:\\Users\\Public\\Favorites";
  }
  std::pair<std::wstring, std::wstring> Expand(std::wstring path) {
    std::wstring allUsers = L"stale";
    TAppFrame(m.Get()).ExpandPathMacros(path, allUsers);
    return {path, allUsers};
  }
  mem::MemoryPlatform m;
};

TEST_F(PathMacrosTest, EveryRowExpandsToItsFolder) {
  const std::wstring sm = L"C:\\Users\\test\\AppData\\Roaming\\Microsoft\\Windows\\Start Menu";
  const std::wstring csm = L"C:\\ProgramData\\Microsoft\\Windows\\Start Menu";
  const std::wstring roaming = L"C:\\Users\\test\\AppData\\Roaming";
  struct Row {
    const wchar_t* macro;
    std::wstring path;
    std::wstring allUsers;
  };
  const Row rows[] = {
      {L"%SYSDIR%", L"C:\\Windows\\system32", L""},
      {L"%WINDIR%", L"C:\\Windows", L""},
      {L"%DESKTOP%", L"C:\\Users\\test\\Desktop", L"C:\\Users\\Public\\Desktop"},
      {L"%TEMP%", L"C:\\Windows\\temp", L""},
      {L"%ROOTDRIVE%", L"C:", L""},
      {L"%APPDATA%", roaming, L"C:\\ProgramData"},
      {L"%PROGRAMFILES%", L"C:\\Program Files", L""},
      {L"%USERROOT%", L"C:\\Users\\test", L""},
      {L"%PROGRAMS%", sm + L"\\Programs", csm + L"\\Programs"},
      {L"%STARTMENU%", sm, csm},
      {L"%STARTUP%", sm + L"\\Programs\\Startup", csm + L"\\Programs\\Startup"},
      {L"%QUICKLAUNCH%", roaming + L"\\Microsoft\\Internet Explorer\\Quick Launch", L""},
      {L"%COMMONFILES%", L"C:\\Program Files\\Common Files", L""},
      {L"%FAVORITES%", L"C:\\Users\\test\\Favorites", L"C:\\Users\\Public\\Favorites"},
      {L"%DAS%", L"C:\\Users", L""},
      {L"%RECYCLE%", L"C:\\Recycler", L""},
      {L"%WINDOWS%", L"C:\\Windows", L""},
      {L"%SYSTEM%", L"C:\\Windows\\system32", L""},
      {L"%COMMON_PROGRAMS%", L"C:\\Program Files\\Common Files", L""},
      {L"%COMMON_STARTMENU%", csm + L"\\Programs", L""},
      {L"%COMMON_DESKTOP%", L"C:\\Users\\Public\\Desktop", L""},
      {L"%COMMON_FAVORITES%", L"C:\\Users\\Public\\Favorites", L""},
      {L"%COMMON_DATAPATH%", L"C:\\ProgramData", L""},
      {L"%DATAPATH%", roaming, L""},
      {L"%PROGRAM_FILES%", L"C:\\Program Files", L""},
      {L"PROGRAMFILESDIR+", L"C:\\Program Files", L""},
      {L"%SYSTEMDRIVE%", L"C:\\Windows\\system32", L""},
      {L"SYSTEMROOT+", L"C:\\Windows\\system32", L""},
      {L"COMMONPROGRAMS+", csm + L"\\Programs", L""},
      {L"%DESKTOPDIRECTORY%", L"C:\\Users\\test\\Desktop", L""},
      {L"DESKTOPDIR+", L"C:\\Users\\test\\Desktop", L""},
      {L"%COMMON_DESKTOPDIRECTORY%", L"C:\\Users\\Public\\Desktop", L""},
      {L"STARTUPFOLDER+", sm + L"\\Programs\\Startup", L""},
      {L"%ALLUSERS_APPDATA%", L"C:\\ProgramData", L""},
      {L"%START_MENU%", sm, L""},
      {L"%START_MENUALL%", sm, L""},
      {L"%START_PROGRAMSALL%", L"C:\\Program Files", L""},
      {L"%START_PROGRAMS%", L"C:\\Program Files", L""},
      {L"%SYSTEMDISKROOT%", L"C:", L""},
      {L"%USERPROFILE%", L"C:\\Users\\test", L""},
      {L"%DOWNLOADEDPROGRAMFILES%", L"C:\\Windows\\Downloaded Program Files", L""},
      {L"%USERDOCUMENTS%", L"C:\\Users", L""},
      {L"%%LOCALAPPDATA%%", L"C:\\Users", L""},
  };
  ASSERT_EQ(std::size(rows), PathMacroTable().size());
  for (const auto& row : rows) {
    const auto [path, allUsers] = Expand(std::wstring(row.macro) + L"\\Acme\\x.dat");
    EXPECT_EQ(path, row.path + L"\\Acme\\x.dat") << text::ToUtf8(row.macro);
    EXPECT_EQ(allUsers, row.allUsers.empty() ? L"" : row.allUsers + L"\\Acme\\x.dat")
        << text::ToUtf8(row.macro);
  }
}

TEST_F(PathMacrosTest, FirstRowInTableOrderWinsAndEveryOccurrenceIgnoringCase) {
  EXPECT_EQ(Expand(L"%ProgramFiles%\\A;%programfiles%\\B").first,
            L"C:\\Program Files\\A;C:\\Program Files\\B");
  EXPECT_EQ(Expand(L"%WINDIR%\\a;%SYSDIR%\\b").first, L"%WINDIR%\\a;C:\\Windows\\system32\\b");
  // The all-users form is built from the caller's text, not the expansion.
  EXPECT_EQ(Expand(L"%AppData%\\x %SYSTEM%"),
            std::make_pair(std::wstring(L"C:\\Users\\test\\AppData\\Roaming\\x %SYSTEM%"),
                           std::wstring(L"C:\\ProgramData\\x %SYSTEM%")));
  EXPECT_EQ(Expand(L"%LOCALAPPDATA%\\x"),
            std::make_pair(std::wstring(L"%LOCALAPPDATA%\\x"), std::wstring()));
}

TEST_F(PathMacrosTest, FolderStateAndFailedLookupsShapeTheExpansion) {
  m.files.AddFolder(L"C:\\Recycled");
  EXPECT_EQ(Expand(L"%RECYCLE%").first, L"C:\\Recycled");
  m.system.environment.erase(L"USERPROFILE");
  EXPECT_EQ(Expand(L"%USERPROFILE%\\x").first, L"\\x");
  m.faults.Set(mem::Fault::SpecialFolder);
  EXPECT_EQ(Expand(L"%DESKTOP%\\a.lnk"),
            std::make_pair(std::wstring(L"\\a.lnk"), std::wstring(L"\\a.lnk")));
}

}  // namespace
}  // namespace varnel
