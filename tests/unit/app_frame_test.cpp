#include <gtest/gtest.h>

#include <string>

#include "core/app_frame.h"
#include "platform/csidl.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

class AppFrameTest : public testing::Test {
 protected:
  std::wstring User(int index) {
    std::wstring s = L"unchanged";
    TAppFrame(m.Get()).GetUserFolder(index, s);
    return s;
  }
  std::wstring Common(int index) {
    std::wstring s = L"unchanged";
    TAppFrame(m.Get()).GetCommonFolder(index, s);
    return s;
  }
  mem::MemoryPlatform m;
};

TEST_F(AppFrameTest, CapturesTheThreeFoldersAtCreation) {
  TAppFrame frame(m.Get());
  EXPECT_EQ(frame.UserAppData, L"C:\\Users\\test\\AppData\\Roaming");
  EXPECT_EQ(frame.CommonAppData, L"C:\\ProgramData");
  EXPECT_EQ(frame.AppFolder, L"C:\\Program Files\\Varnel\\");
}

TEST_F(AppFrameTest, FolderTablesMapIndexesToTheirFolders) {
  // Every special folder answers with its own number, so a table entry that
  // points at the wrong id shows.
  for (int id = 0; id < 0x40; ++id) m.system.specialFolders[id] = std::to_wstring(id);
  using namespace Csidl;
  const int user[] = {-1, -1, -1, InternetCache, Cookies, History, Recent, DesktopDirectory,
                      Programs, Favorites, Startup, Profile, AppData, LocalAppData, -1,
                      ProgramFiles, ProgramFilesCommon, StartMenu, CommonAppData, LocalAppData,
                      Fonts, Templates, NetHood, SendTo, MyMusic, MyVideo, PrintHood, MyPictures,
                      SystemX86, ProgramFilesX86, ProgramFilesCommon, ProgramFilesCommonX86,
                      AdminTools, Resources, CdBurnArea, Personal};
  for (int i = 3; i < 36; ++i) {
    if (i == 14) continue;
    EXPECT_EQ(User(i), std::to_wstring(user[i])) << "user index " << i;
  }
  EXPECT_EQ(User(0), L"C:\\Windows");
  EXPECT_EQ(User(1), L"C:\\Windows\\system32");
  EXPECT_EQ(User(2), L"C:\\Users\\test\\AppData\\Local\\Temp\\");
  EXPECT_EQ(User(14), L"unchanged");
  EXPECT_EQ(User(36), L"unchanged");
  EXPECT_EQ(User(-1), L"unchanged");

  const int common[] = {CommonAppData,  CommonDesktopDirectory, CommonPrograms, CommonStartMenu,
                        CommonFavorites, CommonPrograms,        CommonStartup,  CommonTemplates,
                        CommonDocuments, CommonAdminTools,      CommonMusic,    CommonPictures,
                        CommonVideo};
  for (int i = 0; i < 13; ++i)
    EXPECT_EQ(Common(i), std::to_wstring(common[i])) << "common index " << i;
  EXPECT_EQ(Common(13), L"unchanged");
}

TEST_F(AppFrameTest, FailedOrOversizedLookupsYieldEmpty) {
  m.faults.Set(mem::Fault::SpecialFolder);
  EXPECT_EQ(User(12), L"");
  m.faults.Clear();
  m.system.specialFolders[Csidl::Favorites] = L"C:\\" + std::wstring(257, L'f');  // 260
  EXPECT_EQ(User(9).size(), 260u);
  m.system.specialFolders[Csidl::Favorites] += L"g";
  EXPECT_EQ(User(9), L"");
  m.system.specialFolders[Csidl::Favorites] = std::wstring(L"C:\\Fav\0junk", 11);
  EXPECT_EQ(User(9), L"C:\\Fav");
  m.system.systemDir = L"C:\\" + std::wstring(251, L's');  // 254 fits a 255 buffer
  EXPECT_EQ(User(1).size(), 254u);
  m.system.tempDir = std::wstring(32000, L't');
  EXPECT_EQ(User(2), L"");
}

TEST_F(AppFrameTest, ProfilesRootIsDriveAndFirstFolderOfAppData) {
  EXPECT_EQ(TAppFrame(m.Get()).GetProfilesRoot(), L"C:\\Users");
  m.system.specialFolders[Csidl::AppData] = L"D:\\Documents and Settings\\bob\\Application Data";
  EXPECT_EQ(TAppFrame(m.Get()).GetProfilesRoot(), L"D:\\Documents and Settings");
  m.system.specialFolders[Csidl::AppData] = L"";
  EXPECT_EQ(TAppFrame(m.Get()).GetProfilesRoot(), L"");
}

}  // namespace
}  // namespace varnel
