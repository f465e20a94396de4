#ifdef _WIN32

#include <atomic>
#include <thread>

#include "tests/platform/win32_case.h"

namespace varnel::testing_support {
namespace {

class Win32Registry : public Contract {
 protected:
  // The same key as the 64-bit view shows the 32-bit one.
  std::wstring Wow(std::wstring_view sub) {
    return L"Software\\WOW6432Node" + Key(sub).substr(std::wstring_view(L"Software").size());
  }
};

TEST_P(Win32Registry, NamesAtTheSystemLimitsAndManyKeysEnumerateCompletely) {
  auto& reg = p().registry;
  auto key = reg.CreateKey(RegRoot::CurrentUser, Key(), true);
  ASSERT_TRUE(key);
  for (int i = 0; i < 300; ++i) {
    ASSERT_TRUE(reg.CreateKey(RegRoot::CurrentUser, Key(L"k" + std::to_wstring(i)), true)) << i;
  }
  ASSERT_TRUE(key->WriteValue(L"a", Str(L"x")));
  EXPECT_EQ(key->SubKeyNames().size(), 300u);
  EXPECT_EQ(key->ValueNames(), std::vector<std::wstring>{L"a"});

  // Longer names added after a first walk on the same handle: the next walk
  // must size its buffers afresh.
  const std::wstring longestKey(255, L'K');
  const std::wstring longestValue(16'383, L'v');
  ASSERT_TRUE(reg.CreateKey(RegRoot::CurrentUser, Key(longestKey), true));
  ASSERT_TRUE(key->WriteValue(longestValue, Str(L"x")));
  EXPECT_FALSE(key->WriteValue(longestValue + L"v", Str(L"x")));
  ASSERT_TRUE(key->WriteValue(L"", Str(L"default")));

  // Windows refuses a longer key name; a registry that allows one must still
  // list every key, that one included.
  const bool overLimit =
      reg.CreateKey(RegRoot::CurrentUser, Key(longestKey + L"+"), true) != nullptr;

  const auto subKeys = key->SubKeyNames();
  EXPECT_EQ(subKeys.size(), overLimit ? 302u : 301u);
  if (overLimit) {
    EXPECT_NE(std::find(subKeys.begin(), subKeys.end(), longestKey + L"+"), subKeys.end());
  }
  EXPECT_NE(std::find(subKeys.begin(), subKeys.end(), longestKey), subKeys.end());
  EXPECT_NE(std::find(subKeys.begin(), subKeys.end(), L"k299"), subKeys.end());
  const auto values = key->ValueNames();
  EXPECT_EQ(values.size(), 3u);
  EXPECT_NE(std::find(values.begin(), values.end(), longestValue), values.end());
  EXPECT_NE(std::find(values.begin(), values.end(), L""), values.end()) << "default value";
  const auto withData = key->Values();
  ASSERT_EQ(withData.size(), 3u);
  EXPECT_TRUE(std::any_of(withData.begin(), withData.end(),
                          [&](const auto& value) { return value.first == longestValue; }));
  EXPECT_TRUE(key->ValueExists(longestValue));
}

TEST_P(Win32Registry, ShortReadAfterHugeReadCarriesNothingOver) {
  auto key = p().registry.CreateKey(RegRoot::CurrentUser, Key(), true);
  ASSERT_TRUE(key);
  ASSERT_TRUE(key->WriteValue(L"Huge",
                              RegValue{RegType::Binary, std::vector<std::uint8_t>(200'000, 0xAB)}));
  ASSERT_TRUE(key->WriteValue(L"Small", RegValue{RegType::Binary, {1, 2, 3}}));
  ASSERT_TRUE(key->WriteValue(L"Dw", RegValue{RegType::DWord, {4, 0, 0, 0}}));
  ASSERT_TRUE(key->WriteValue(L"Nothing", RegValue{RegType::None, {}}));
  for (int round = 0; round < 2; ++round) {
    auto huge = key->ReadValue(L"Huge");
    ASSERT_TRUE(huge);
    EXPECT_EQ(huge->data.size(), 200'000u);
    auto small = key->ReadValue(L"Small");
    ASSERT_TRUE(small);
    EXPECT_EQ(small->data, (std::vector<std::uint8_t>{1, 2, 3}));
    auto dw = key->ReadValue(L"Dw");
    ASSERT_TRUE(dw);
    EXPECT_EQ(dw->type, RegType::DWord);
    EXPECT_EQ(dw->data, (std::vector<std::uint8_t>{4, 0, 0, 0}));
    auto nothing = key->ReadValue(L"Nothing");
    ASSERT_TRUE(nothing);
    EXPECT_EQ(nothing->type, RegType::None);
    EXPECT_TRUE(nothing->data.empty());
  }
}

TEST_P(Win32Registry, ValueResizedByAnotherThreadIsReadWhole) {
  const std::wstring path = Key();
  // Sizes beyond any read buffer kept between calls, so reads of them take
  // the grow-and-retry path while the other thread keeps changing the size.
  const std::vector<RegValue> sizes{
      RegValue{RegType::Binary, std::vector<std::uint8_t>(16, 0x11)},
      RegValue{RegType::Binary, std::vector<std::uint8_t>(1'200'000, 0x22)},
      RegValue{RegType::Binary, std::vector<std::uint8_t>(2'400'000, 0x33)}};
  ASSERT_TRUE(
      p().registry.CreateKey(RegRoot::CurrentUser, path, true)->WriteValue(L"Flip", sizes[0]));
  std::atomic<bool> stop{false};
  std::thread writer([&] {
    auto key = p().registry.OpenKey(RegRoot::CurrentUser, path, RegAccess::Write, true);
    for (std::size_t i = 1; key && !stop; ++i) {
      key->WriteValue(L"Flip", sizes[i % sizes.size()]);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  auto reader = p().registry.OpenKey(RegRoot::CurrentUser, path, RegAccess::Read, true);
  ASSERT_TRUE(reader);
  std::vector<int> seen(sizes.size(), 0);
  int missing = 0, torn = 0;
  const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (*std::min_element(seen.begin(), seen.end()) < 10 &&
         std::chrono::steady_clock::now() < until) {
    auto v = reader->ReadValue(L"Flip");
    if (!v) {
      ++missing;
      continue;
    }
    auto match = std::find_if(sizes.begin(), sizes.end(),
                              [&](const RegValue& s) { return s.data == v->data; });
    if (match == sizes.end()) {
      ++torn;
    } else {
      ++seen[match - sizes.begin()];
    }
  }
  stop = true;
  writer.join();
  EXPECT_GE(*std::min_element(seen.begin(), seen.end()), 10) << "the race never happened";
  EXPECT_EQ(missing, 0);
  EXPECT_EQ(torn, 0);
}

TEST_P(Win32Registry, ZeroCharactersAndEmptyPathsNeverReachAnotherKey) {
  auto& reg = p().registry;
  ASSERT_TRUE(reg.CreateKey(RegRoot::CurrentUser, Key(L"keep"), true)->WriteValue(L"v", Str(L"1")));
  // Cut at the zero, these would name the parent key or its value.
  const std::wstring withZero = Key(L"keep") + std::wstring(1, L'\0') + L"x";
  EXPECT_FALSE(reg.DeleteKey(RegRoot::CurrentUser, withZero, true));
  EXPECT_FALSE(reg.OpenKey(RegRoot::CurrentUser, withZero, RegAccess::Read, true));
  EXPECT_FALSE(reg.CreateKey(RegRoot::CurrentUser, withZero, true));
  auto key = reg.OpenKey(RegRoot::CurrentUser, Key(L"keep"), RegAccess::Write, true);
  ASSERT_TRUE(key);
  EXPECT_FALSE(key->DeleteValue(std::wstring(L"v\0w", 3)));
  EXPECT_FALSE(key->ReadValue(std::wstring(L"v\0w", 3)));
  EXPECT_TRUE(key->ValueExists(L"v"));

  EXPECT_FALSE(reg.DeleteKey(RegRoot::CurrentUser, L"", true)) << "never the root itself";
  EXPECT_FALSE(reg.DeleteKey(RegRoot::CurrentUser, L"\\\\", true));
  EXPECT_TRUE(reg.KeyExists(RegRoot::CurrentUser, L"Software", true));
  EXPECT_TRUE(reg.KeyExists(RegRoot::CurrentUser, L"", true));
}

INSTANTIATE_TEST_SUITE_P(Real, Win32Registry, ::testing::ValuesIn(Win32Only()), BackendName);

}  // namespace
}  // namespace varnel::testing_support

#endif
