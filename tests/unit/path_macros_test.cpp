#include <gtest/gtest.h>

#include <string>

#include "core/path_macros.h"
#include "base/text.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

class PathMacrosTest : public testing::Test {
 protected:
  std::pair<std::wstring, std::wstring> Expand(std::wstring path) {
    std::wstring allUsers = L"stale";
    TAppFrame(m.Get()).ExpandPathMacros(path, allUsers);
    return {path, allUsers};
  }
  mem::MemoryPlatform m;
};

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
