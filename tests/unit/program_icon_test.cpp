#include <gtest/gtest.h>

#include "inventory/program_icon.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

constexpr const wchar_t* kProductKey =
    L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\"
    L"{12345678-ABCD-EF01-2345-6789ABCDEF01}";
constexpr const wchar_t* kPackedProducts =
    L"Installer\\Products\\87654321DCBA10FE32547698BADCFE10";

TEST(IconIndexOfTest, ReadsTheNumberAfterTheLastComma) {
  EXPECT_EQ(IconIndexOf(L"C:\\App\\app.exe,3"), 3);
  EXPECT_EQ(IconIndexOf(L"\"C:\\App\\app.exe\", -101 "), -101);
  EXPECT_EQ(IconIndexOf(L"C:\\A,B\\app.dll,+2"), 2);
  EXPECT_EQ(IconIndexOf(L"C:\\App\\app.exe"), 0);
  EXPECT_EQ(IconIndexOf(L"C:\\A,B\\app.exe"), 0);
  EXPECT_EQ(IconIndexOf(L"app.exe,"), 0);
  EXPECT_EQ(IconIndexOf(L"app.exe,-"), 0);
  EXPECT_EQ(IconIndexOf(L"app.exe,1x"), 0);
  EXPECT_EQ(IconIndexOf(L"app.exe,99999999999"), 0);
  EXPECT_EQ(IconIndexOf(L"app.exe,-2147483647"), -2147483647);
}

class ProgramIconTest : public testing::Test {
 protected:
  ProgramIcon Find() { return FindProgramIcon(TAppFrame(m.Get()), info); }
  mem::MemoryPlatform m;
  TSoftInfo info;
};

TEST_F(ProgramIconTest, DisplayIconComesFirst) {
  m.files.AddFile(L"C:\\Program Files\\Acme\\acme.exe");
  m.files.AddFile(L"C:\\Windows\\Installer\\acme.ico");
  m.registry.SetString(RegRoot::ClassesRoot, kPackedProducts, L"ProductIcon",
                       L"C:\\Windows\\Installer\\acme.ico");
  info.KeyPath = kProductKey;
  info.DisplayIcon = L"\"C:\\Program Files\\Acme\\acme.exe\",-101";
  const ProgramIcon icon = Find();
  EXPECT_EQ(icon.file, L"C:\\Program Files\\Acme\\acme.exe");
  EXPECT_EQ(icon.index, -101);
}

TEST_F(ProgramIconTest, InstallerProductIconWhenDisplayIconIsMissing) {
  m.files.AddFile(L"C:\\Windows\\Installer\\acme.exe");
  m.registry.SetString(RegRoot::ClassesRoot, kPackedProducts, L"ProductIcon",
                       L"C:\\Windows\\Installer\\acme.exe,2");
  info.KeyPath = kProductKey;
  info.DisplayIcon = L"C:\\Program Files\\Acme\\gone.exe,0";
  ProgramIcon icon = Find();
  EXPECT_EQ(icon.file, L"C:\\Windows\\Installer\\acme.exe");
  EXPECT_EQ(icon.index, 2);

  info.DisplayIcon.clear();
  EXPECT_EQ(Find().file, L"C:\\Windows\\Installer\\acme.exe");

  // Only a key named by a product code leads to the Installer keys.
  info.KeyPath = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Acme";
  EXPECT_EQ(Find().file, L"");
}

TEST_F(ProgramIconTest, NothingWhenNoCandidateFileExists) {
  info.KeyPath = kProductKey;
  info.DisplayIcon = L"C:\\Program Files\\Acme\\gone.exe";
  EXPECT_EQ(Find().file, L"");  // no Installer key at all
  m.registry.SetString(RegRoot::ClassesRoot, kPackedProducts, L"ProductIcon",
                       L"C:\\Windows\\Installer\\gone.ico");
  const ProgramIcon icon = Find();
  EXPECT_EQ(icon.file, L"");
  EXPECT_EQ(icon.index, 0);
  info.DisplayIcon = L"   ";
  EXPECT_EQ(Find().file, L"");
}

}  // namespace
}  // namespace varnel
