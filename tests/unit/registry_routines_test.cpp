#include <gtest/gtest.h>

#include "core/registry_location.h"
#include "core/registry_routines.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

TEST(RegistryLocation, RootNamesAndLocationText) {
  EXPECT_EQ(RootKeyFromName(L"hkey_local_machine"), RegRoot::LocalMachine);
  EXPECT_EQ(RootKeyFromName(L"HKEY_PERFORMANCE_DATA"), RegRoot::Invalid);
  EXPECT_EQ(RootKeyFromName(L"HKLM"), RegRoot::Invalid);

  EXPECT_EQ(FormatRegistryLocation(RegRoot::LocalMachine, L"Software\\Acme", L"Path", L"C:\\A"),
            L"HKEY_LOCAL_MACHINE\\Software\\Acme | Path - C:\\A");
  EXPECT_EQ(FormatRegistryLocation(RegRoot::CurrentUser, L"Software\\Acme", L"", L"C:\\A"),
            L"HKEY_CURRENT_USER\\Software\\Acme | Default - C:\\A");
  EXPECT_EQ(FormatRegistryLocation(RegRoot::ClassesRoot, L"CLSID\\{1}", L"", L""),
            L"HKEY_CLASSES_ROOT\\CLSID\\{1}");
  EXPECT_EQ(FormatRegistryLocation(RegRoot::PerformanceData, L"K", L"", L""), L"\\K");
}

class RegistryRoutinesTest : public testing::Test {
 protected:
  std::int64_t Read(const wchar_t* root, const wchar_t* name, bool use64 = true) {
    return ReadRegistryInteger(reg, root, L"Software\\Acme", name, use64);
  }
  bool Has(RegRoot root, const wchar_t* key, bool use64 = true) {
    return reg.KeyExists(root, key, use64);
  }
  mem::MemoryPlatform m;
  mem::MemoryRegistry& reg = m.registry;
};

TEST_F(RegistryRoutinesTest, IntegerReadIsSignedNeedsADwordAndFallsBackToCurrentUser) {
  reg.SetDWord(RegRoot::LocalMachine, L"Software\\Acme", L"Neg", 0xFFFFFFFEu);
  reg.SetString(RegRoot::LocalMachine, L"Software\\Acme", L"Text", L"12");
  reg.SetRaw(RegRoot::LocalMachine, L"Software\\Acme", L"Short", {RegType::DWord, {1, 2}});
  reg.SetDWord(RegRoot::CurrentUser, L"Software\\Acme", L"Neg", 2);
  EXPECT_EQ(Read(L"HKEY_LOCAL_MACHINE", L"Neg"), -2);
  EXPECT_EQ(Read(L"HKEY_LOCAL_MACHINE", L"Neg", false), 0);  // not in the 32-bit view
  EXPECT_EQ(Read(L"HKEY_LOCAL_MACHINE", L"Text"), 0);
  EXPECT_EQ(Read(L"HKEY_LOCAL_MACHINE", L"Short"), 0);
  EXPECT_EQ(Read(L"HKEY_LOCAL_MACHINE", L"None"), 0);
  EXPECT_EQ(Read(L"hkey_local_machine", L"Neg"), 2);  // names match exactly here
  EXPECT_EQ(Read(L"HKLM", L"Neg"), 2);
  EXPECT_EQ(ReadRegistryInteger(reg, L"HKEY_USERS", L"Software\\Nope", L"v", true), 0);
  EXPECT_FALSE(Has(RegRoot::Users, L"Software\\Nope"));  // reading creates nothing
}

TEST_F(RegistryRoutinesTest, KeyDeletionReportsOnlyAnUnknownRoot) {
  reg.SetString(RegRoot::LocalMachine, L"Software\\Acme\\Sub", L"v", L"x", true);
  reg.SetString(RegRoot::LocalMachine, L"Software\\Acme", L"v", L"x", false);
  EXPECT_FALSE(DeleteRegistryKeyByName(reg, L"HKLM", L"Software\\Acme", true));
  EXPECT_TRUE(Has(RegRoot::LocalMachine, L"Software\\Acme"));
  EXPECT_TRUE(DeleteRegistryKeyByName(reg, L"hkey_local_machine", L"Software\\Acme", true));
  EXPECT_FALSE(Has(RegRoot::LocalMachine, L"Software\\Acme"));
  EXPECT_TRUE(Has(RegRoot::LocalMachine, L"Software\\Acme", false));  // other view untouched
  EXPECT_TRUE(DeleteRegistryKeyByName(reg, L"HKEY_LOCAL_MACHINE", L"Software\\Acme", true));
  EXPECT_TRUE(DeleteRegistryKey(reg, RegRoot::LocalMachine, L"Software\\Acme", false));
  EXPECT_FALSE(Has(RegRoot::LocalMachine, L"Software\\Acme", false));

  reg.SetString(RegRoot::CurrentUser, L"Software\\Stuck", L"v", L"x");
  m.faults.Set(mem::Fault::RegDeleteKey);
  EXPECT_TRUE(DeleteRegistryKey(reg, RegRoot::CurrentUser, L"Software\\Stuck", true));
  EXPECT_TRUE(Has(RegRoot::CurrentUser, L"Software\\Stuck"));
}

TEST_F(RegistryRoutinesTest, ValueDeletionReportsOnlyAFailedDeletion) {
  reg.SetString(RegRoot::CurrentUser, L"Software\\Acme", L"Path", L"x");
  reg.SetString(RegRoot::CurrentUser, L"Software\\Acme", L"", L"default");
  reg.SetString(RegRoot::CurrentUser, L"Software\\Acme", L"Keep", L"x");
  EXPECT_TRUE(DeleteRegistryValue(reg, RegRoot::CurrentUser, L"Software\\Acme", L"Path", true));
  EXPECT_TRUE(DeleteRegistryValue(reg, RegRoot::CurrentUser, L"Software\\Acme", L"", true));
  auto key = reg.OpenKey(RegRoot::CurrentUser, L"Software\\Acme", RegAccess::Read, true);
  ASSERT_TRUE(key);
  EXPECT_FALSE(key->ValueExists(L"Path"));
  EXPECT_FALSE(key->ValueExists(L""));
  EXPECT_TRUE(key->ValueExists(L"Keep"));

  EXPECT_TRUE(DeleteRegistryValue(reg, RegRoot::CurrentUser, L"Software\\Acme", L"Path", true));
  EXPECT_TRUE(DeleteRegistryValue(reg, RegRoot::CurrentUser, L"Software\\None", L"Path", true));
  EXPECT_FALSE(Has(RegRoot::CurrentUser, L"Software\\None"));
  const std::wstring longKey = L"Software\\" + std::wstring(70000, L'k');
  EXPECT_TRUE(DeleteRegistryValue(reg, RegRoot::CurrentUser, longKey, L"v", true));

  m.faults.Set(mem::Fault::RegDeleteValue);
  EXPECT_FALSE(DeleteRegistryValue(reg, RegRoot::CurrentUser, L"Software\\Acme", L"Keep", true));
}

}  // namespace
}  // namespace varnel
