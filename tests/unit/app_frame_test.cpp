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
  mem::MemoryPlatform m;
};

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
