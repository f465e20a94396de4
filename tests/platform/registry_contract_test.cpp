#include <algorithm>

#include "tests/platform/contract_fixture.h"

namespace varnel::testing_support {
namespace {

class RegistryContract : public Contract {};

bool Contains(const std::vector<std::wstring>& names, std::wstring_view name) {
  return std::any_of(names.begin(), names.end(),
                     [&](const std::wstring& n) { return text::SameText(n, name); });
}

TEST_P(RegistryContract, ValuesOfEveryTypeRoundTripByteForByte) {
  auto key = p().registry.CreateKey(RegRoot::CurrentUser, Key(), true);
  ASSERT_TRUE(key);
  const RegValue values[] = {
      Str(L"C:\\Program Files\\App\\u.exe"),
      Str(L"%ProgramFiles%\\App", RegType::ExpandString),
      RegValue{RegType::DWord, {0x78, 0x56, 0x34, 0x12}},
      RegValue{RegType::QWord, {1, 2, 3, 4, 5, 6, 7, 8}},
      RegValue{RegType::Binary, {0, 0xFF, 0x10}},
      RegValue{RegType::MultiString, text::ToUtf16Bytes(std::wstring(L"a\0b\0", 4))},
      RegValue{RegType::Binary, {}},
  };
  const std::wstring names[] = {L"Str", L"Exp", L"Dw", L"Qw", L"Bin", L"Multi", L"Empty"};
  for (int i = 0; i < 7; ++i) ASSERT_TRUE(key->WriteValue(names[i], values[i])) << i;
  key.reset();

  auto read = p().registry.OpenKey(RegRoot::CurrentUser, Key(), RegAccess::Read, true);
  ASSERT_TRUE(read);
  const auto listed = read->ValueNames();
  EXPECT_EQ(listed.size(), 7u);
  for (int i = 0; i < 7; ++i) {
    auto v = read->ReadValue(text::Lower(names[i]));  // names ignore case
    ASSERT_TRUE(v) << i;
    EXPECT_EQ(v->type, values[i].type) << i;
    EXPECT_EQ(v->data, values[i].data) << i;
    EXPECT_TRUE(Contains(listed, names[i])) << i;
  }
  EXPECT_FALSE(read->ReadValue(L"Missing"));
  EXPECT_FALSE(read->ValueExists(L"Missing"));
  EXPECT_TRUE(read->ValueExists(L"DW"));
  EXPECT_NE(read->LastWriteTime(), 0u);
}

TEST_P(RegistryContract, DefaultValueHugeValuesAndStringsWithoutTerminator) {
  auto key = p().registry.CreateKey(RegRoot::CurrentUser, Key(), true);
  ASSERT_TRUE(key);
  EXPECT_FALSE(key->ReadValue(L"")) << "a new key has no default value";
  ASSERT_TRUE(key->WriteValue(L"", Str(L"default text")));
  const std::wstring huge(70'000, L'x');
  ASSERT_TRUE(key->WriteValue(L"Huge", Str(huge)));
  const RegValue unterminated{RegType::String, {'a', 0, 'b', 0, 'c', 0}};
  ASSERT_TRUE(key->WriteValue(L"Raw", unterminated));
  const RegValue odd{RegType::String, {'a', 0, 'b'}};
  ASSERT_TRUE(key->WriteValue(L"Odd", odd));
  key.reset();

  auto read = p().registry.OpenKey(RegRoot::CurrentUser, Key(), RegAccess::Read, true);
  ASSERT_TRUE(read);
  EXPECT_EQ(text::FromUtf16Bytes(read->ReadValue(L"")->data), L"default text");
  EXPECT_EQ(text::FromUtf16Bytes(read->ReadValue(L"Huge")->data), huge);
  EXPECT_EQ(read->ReadValue(L"Raw")->data, unterminated.data);
  EXPECT_EQ(read->ReadValue(L"Odd")->data, odd.data);
  // All at once, the huge one included, as read one by one.
  const auto all = read->Values();
  EXPECT_EQ(all.size(), 4u);
  for (const auto& [name, value] : all) {
    auto single = read->ReadValue(name);
    ASSERT_TRUE(single) << text::ToUtf8(name);
    EXPECT_EQ(value.type, single->type) << text::ToUtf8(name);
    EXPECT_EQ(value.data, single->data) << text::ToUtf8(name);
  }
}

TEST_P(RegistryContract, SubkeysEnumerateSortedAndPathsIgnoreOuterBackslashes) {
  for (const wchar_t* name : {L"beta", L"Alpha", L"gamma"})
    ASSERT_TRUE(p().registry.CreateKey(RegRoot::CurrentUser, Key(name), true));
  auto key = p().registry.OpenKey(RegRoot::CurrentUser, L"\\" + Key() + L"\\", RegAccess::Read,
                                  true);
  ASSERT_TRUE(key);
  EXPECT_EQ(key->SubKeyNames(), (std::vector<std::wstring>{L"Alpha", L"beta", L"gamma"}));
  EXPECT_TRUE(p().registry.KeyExists(RegRoot::CurrentUser, text::Upper(Key(L"ALPHA")), true));
  EXPECT_FALSE(p().registry.KeyExists(RegRoot::CurrentUser, Key(L"delta"), true));
  EXPECT_FALSE(p().registry.OpenKey(RegRoot::CurrentUser, Key(L"delta"), RegAccess::Read, true));
}

TEST_P(RegistryContract, ReadOnlyHandlesRefuseChanges) {
  ASSERT_TRUE(p().registry.CreateKey(RegRoot::CurrentUser, Key(), true)->WriteValue(L"v", Str(L"1")));
  auto key = p().registry.OpenKey(RegRoot::CurrentUser, Key(), RegAccess::Read, true);
  ASSERT_TRUE(key);
  EXPECT_FALSE(key->WriteValue(L"v", Str(L"2")));
  EXPECT_FALSE(key->DeleteValue(L"v"));
  EXPECT_EQ(text::FromUtf16Bytes(key->ReadValue(L"v")->data), L"1");
}

TEST_P(RegistryContract, DeletingValuesAndWholeSubtrees) {
  {
    auto key = p().registry.CreateKey(RegRoot::CurrentUser, Key(L"a\\b\\c"), true);
    ASSERT_TRUE(key);
    ASSERT_TRUE(key->WriteValue(L"v", Str(L"x")));
    EXPECT_TRUE(key->DeleteValue(L"V"));
    EXPECT_FALSE(key->DeleteValue(L"v")) << "a missing value cannot be deleted";
    EXPECT_FALSE(key->ValueExists(L"v"));
  }
  ASSERT_TRUE(p().registry.CreateKey(RegRoot::CurrentUser, Key(L"a\\side"), true));
  EXPECT_TRUE(p().registry.DeleteKey(RegRoot::CurrentUser, Key(L"a"), true));
  EXPECT_FALSE(p().registry.KeyExists(RegRoot::CurrentUser, Key(L"a\\b\\c"), true));
  EXPECT_FALSE(p().registry.KeyExists(RegRoot::CurrentUser, Key(L"a"), true));
  EXPECT_TRUE(p().registry.KeyExists(RegRoot::CurrentUser, Key(), true));
  EXPECT_FALSE(p().registry.DeleteKey(RegRoot::CurrentUser, Key(L"a"), true));
}

TEST_P(RegistryContract, MachineSoftwareHasSeparate32And64BitViews) {
  auto& reg = p().registry;
  ASSERT_TRUE(p().system.IsWow64());
  ASSERT_TRUE(reg.CreateKey(RegRoot::LocalMachine, Key(L"Only32"), false));
  ASSERT_TRUE(reg.CreateKey(RegRoot::LocalMachine, Key(L"Only64"), true));

  EXPECT_TRUE(reg.KeyExists(RegRoot::LocalMachine, Key(L"Only32"), false));
  EXPECT_FALSE(reg.KeyExists(RegRoot::LocalMachine, Key(L"Only32"), true));
  EXPECT_TRUE(reg.KeyExists(RegRoot::LocalMachine, Key(L"Only64"), true));
  EXPECT_FALSE(reg.KeyExists(RegRoot::LocalMachine, Key(L"Only64"), false));

  // The 32-bit view lives under WOW6432Node when seen from the 64-bit view.
  const std::wstring wowPath = L"Software\\WOW6432Node" + Key(L"Only32").substr(8);
  EXPECT_TRUE(reg.KeyExists(RegRoot::LocalMachine, wowPath, true)) << text::ToUtf8(wowPath);
  // And the reverse: made under WOW6432Node, seen by the 32-bit view only.
  ASSERT_TRUE(reg.CreateKey(RegRoot::LocalMachine, wowPath + L"\\ByWow", true));
  EXPECT_TRUE(reg.KeyExists(RegRoot::LocalMachine, Key(L"Only32\\ByWow"), false));
  EXPECT_FALSE(reg.KeyExists(RegRoot::LocalMachine, Key(L"Only32\\ByWow"), true));

  // Deleting a whole subtree in one view leaves the other's twin alone.
  ASSERT_TRUE(reg.CreateKey(RegRoot::LocalMachine, Key(L"Both\\Sub"), false));
  ASSERT_TRUE(reg.CreateKey(RegRoot::LocalMachine, Key(L"Both\\Sub"), true));
  EXPECT_TRUE(reg.DeleteKey(RegRoot::LocalMachine, Key(L"Both"), false));
  EXPECT_FALSE(reg.KeyExists(RegRoot::LocalMachine, Key(L"Both"), false));
  EXPECT_TRUE(reg.KeyExists(RegRoot::LocalMachine, Key(L"Both\\Sub"), true));
}

TEST_P(RegistryContract, CurrentUserSoftwareIsOneViewForBoth) {
  ASSERT_TRUE(p().registry.CreateKey(RegRoot::CurrentUser, Key(L"shared"), false)
                  ->WriteValue(L"v", Str(L"one")));
  auto other = p().registry.OpenKey(RegRoot::CurrentUser, Key(L"shared"), RegAccess::Read, true);
  ASSERT_TRUE(other);
  EXPECT_EQ(text::FromUtf16Bytes(other->ReadValue(L"v")->data), L"one");
}

TEST_P(RegistryContract, ClassesRootShowsMachineClasses) {
  auto key = p().registry.CreateKey(RegRoot::LocalMachine, L"Software\\Classes\\" + ClassKey(), true);
  ASSERT_TRUE(key);
  ASSERT_TRUE(key->WriteValue(L"", Str(L"Varnel test class")));
  key.reset();
  auto viaRoot = p().registry.OpenKey(RegRoot::ClassesRoot, ClassKey(), RegAccess::Read, true);
  ASSERT_TRUE(viaRoot);
  EXPECT_EQ(text::FromUtf16Bytes(viaRoot->ReadValue(L"")->data), L"Varnel test class");
}

TEST_P(RegistryContract, UnknownRootsAndHugePathsAreRefused) {
  EXPECT_FALSE(p().registry.OpenKey(RegRoot::Invalid, L"Software", RegAccess::Read, true));
  EXPECT_FALSE(p().registry.CreateKey(RegRoot::Invalid, Key(), true));
  EXPECT_FALSE(p().registry.DeleteKey(RegRoot::Invalid, Key(), true));
  const std::wstring longName = Key(std::wstring(300, L'k'));
  EXPECT_FALSE(p().registry.KeyExists(RegRoot::CurrentUser, longName, true));
  const std::wstring deep = Key(std::wstring(32'000, L'k'));
  EXPECT_FALSE(p().registry.OpenKey(RegRoot::CurrentUser, deep, RegAccess::Read, true));
}

INSTANTIATE_TEST_SUITE_P(Backends, RegistryContract, ::testing::ValuesIn(AllBackends()),
                         BackendName);

}  // namespace
}  // namespace varnel::testing_support
