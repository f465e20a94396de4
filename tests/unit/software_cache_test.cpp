#include <gtest/gtest.h>

#include <string>

#include "base/date_time.h"
#include "inventory/icon_cache.h"
#include "inventory/software_cache.h"
#include "platform/memory/memory_platform.h"
#include "base/ext_ini_file.h"

namespace varnel {
namespace {

constexpr const wchar_t* kCacheFile = L"C:\\Data\\SoftwareCache.ini";
constexpr const wchar_t* kUninstall = L"\"C:\\Program Files\\Acme\\unins000.exe\" /SILENT";

TEST(CacheFingerprintTest, IsTheMd5OfTheAnsiTextInLowerCaseHex) {
  mem::MemoryPlatform m;
  EXPECT_EQ(CacheFingerprint(m.system, L"", L""), L"d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(CacheFingerprint(m.system, L"3/15/2010", kUninstall),
            L"ed25595fc58bd79c10515a0cb49aba5e");
  // One byte per character in code page 1252, not UTF-8 or UTF-16.
  EXPECT_EQ(CacheFingerprint(m.system, L"", L"Caf\u00e9"), L"355c5442233eb033103eb7e1255a17db");
  // Only the concatenation counts.
  EXPECT_EQ(CacheFingerprint(m.system, L"ab", L"c"), CacheFingerprint(m.system, L"a", L"bc"));
}

class ApplySoftwareCacheTest : public testing::Test {
 protected:
  void SetUp() override { m.files.AddFolder(L"C:\\Data"); }

  TSoftInfo& Add(std::wstring name, std::wstring uninstall = kUninstall) {
    auto info = std::make_unique<TSoftInfo>();
    info->Name = std::move(name);
    info->UninstallString = std::move(uninstall);
    info->LastAccessDate = 1.5;
    list.push_back(std::move(info));
    return *list.back();
  }

  // A complete, matching section as the analysis thread writes it.
  void Cache(const std::wstring& name, const std::wstring& date = L"3/15/2010",
             const std::wstring& uninstall = kUninstall) {
    ini.WriteInt64(name, L"size", 3145728);
    ini.WriteString(name, L"UseSize", L"3.00 MB");
    ini.WriteString(name, L"Location", L"C:\\Program Files\\Acme\\");
    ini.WriteString(name, L"DisplayIcon", L"C:\\Program Files\\Acme\\acme.exe");
    ini.WriteInteger(name, L"IconIndex", -101);
    ini.WriteString(name, L"InstallDate", date);
    ini.WriteFloat(name, L"InstallDateT", 40252);
    ini.WriteFloat(name, L"LastAccessDate", 44000.25);
    ini.WriteString(name, L"MD5", CacheFingerprint(m.system, date, uninstall));
  }

  void Apply() {
    ASSERT_TRUE(ini.SaveToFile(m.Get(), kCacheFile));
    ApplySoftwareCache(m.Get(), list, kCacheFile);
  }

  mem::MemoryPlatform m;
  TExtIniFile ini;
  SoftList list;
};

TEST_F(ApplySoftwareCacheTest, MatchingEntryFillsTheEmptyFields) {
  Cache(L"ACME");
  // Section names and the stored print are compared ignoring case.
  ini.WriteString(L"ACME", L"MD5", L"ED25595FC58BD79C10515A0CB49ABA5E");
  TSoftInfo& info = Add(L"Acme");
  Apply();
  EXPECT_EQ(info.InstallDateText, L"3/15/2010");
  EXPECT_EQ(info.InstallDate, *TryEncodeDate(2010, 3, 15));
  EXPECT_EQ(info.Size, 3145728);
  EXPECT_EQ(info.SizeText, L"3.00 MB");
  EXPECT_EQ(info.DisplayIcon, L"C:\\Program Files\\Acme\\acme.exe");
  EXPECT_EQ(info.IconIndex, -101);
  EXPECT_EQ(info.InstallLocation, L"C:\\Program Files\\Acme\\");
  EXPECT_EQ(info.LastAccessDate, 44000.25);
}

TEST_F(ApplySoftwareCacheTest, RegistryValuesWinOverTheCache) {
  Cache(L"Acme");
  TSoftInfo& info = Add(L"Acme");
  info.InstallDateText = L"1/2/2003";
  info.InstallDate = 37623;
  info.Size = 2048;
  info.DisplayIcon = L"C:\\Own\\own.ico";
  info.InstallLocation = L"C:\\Own\\";
  Apply();
  EXPECT_EQ(info.InstallDateText, L"1/2/2003");
  EXPECT_EQ(info.InstallDate, 37623);
  EXPECT_EQ(info.Size, 2048);
  EXPECT_EQ(info.SizeText, L"2.00 KB");  // formatted afresh all the same
  EXPECT_EQ(info.DisplayIcon, L"C:\\Own\\own.ico");
  EXPECT_EQ(info.IconIndex, 0);
  EXPECT_EQ(info.InstallLocation, L"C:\\Own\\");
  EXPECT_EQ(info.LastAccessDate, 44000.25);  // always taken
}

TEST_F(ApplySoftwareCacheTest, AnotherInstallationIsLeftAlone) {
  Cache(L"Moved", L"3/15/2010", L"C:\\Old\\uninst.exe");
  Cache(L"Redated", L"1/1/2001");
  ini.WriteString(L"Redated", L"InstallDate", L"3/15/2010");
  Cache(L"Unsigned");
  ini.DeleteKey(L"Unsigned", L"MD5");
  TSoftInfo& moved = Add(L"Moved");
  TSoftInfo& redated = Add(L"Redated");
  TSoftInfo& unsigned_ = Add(L"Unsigned");
  TSoftInfo& unknown = Add(L"Never Cached");
  Cache(L"Hidden");
  TSoftInfo& hidden = Add(L"Hidden");
  hidden.Hidden = true;
  Apply();
  for (const TSoftInfo* info : {&moved, &redated, &unsigned_, &unknown, &hidden}) {
    EXPECT_EQ(info->Size, 0) << info->Name;
    EXPECT_TRUE(info->SizeText.empty()) << info->Name;
    EXPECT_TRUE(info->InstallLocation.empty()) << info->Name;
    EXPECT_EQ(info->LastAccessDate, 1.5) << info->Name;
  }
}

TEST_F(ApplySoftwareCacheTest, BadDatesAndNumbersFallBackToEmptyOrDefault) {
  Cache(L"Acme", L"2010-03-15");
  TSoftInfo& acme = Add(L"Acme");
  ini.WriteString(L"Bare", L"MD5", CacheFingerprint(m.system, L"", kUninstall));
  ini.WriteString(L"Bare", L"size", L"lots");
  TSoftInfo& bare = Add(L"Bare");
  // Sizes no program has: unknown, so that the analysis measures again.
  for (const wchar_t* size : {L"-5", L"4398046511104"}) {
    ini.WriteString(size, L"MD5", CacheFingerprint(m.system, L"", kUninstall));
    ini.WriteString(size, L"size", size);
    Add(size);
  }
  Apply();
  EXPECT_TRUE(acme.InstallDateText.empty());
  EXPECT_EQ(acme.InstallDate, 0);
  EXPECT_EQ(acme.Size, 3145728);
  for (std::size_t i = 1; i < list.size(); ++i) {
    EXPECT_EQ(list[i]->Size, 0) << i;
    EXPECT_EQ(list[i]->SizeText, L"0 Byte") << i;
  }
  EXPECT_EQ(bare.LastAccessDate, NowLocal(m.system));
}

TEST_F(ApplySoftwareCacheTest, MissingOrGarbledFileChangesNothing) {
  TSoftInfo& info = Add(L"Acme");
  ApplySoftwareCache(m.Get(), list, kCacheFile);
  EXPECT_EQ(info.LastAccessDate, 1.5);

  m.files.AddFile(kCacheFile, std::string("\xff\xfe[\x00\xd8\x00\x00Acme]\r\n\x01\x02", 14));
  ApplySoftwareCache(m.Get(), list, kCacheFile);
  EXPECT_EQ(info.LastAccessDate, 1.5);
  EXPECT_TRUE(info.SizeText.empty());

  // A file that exists but cannot be read.
  Cache(L"Acme");
  ASSERT_TRUE(ini.SaveToFile(m.Get(), kCacheFile));
  m.faults.Set(mem::Fault::FileRead);
  ApplySoftwareCache(m.Get(), list, kCacheFile);
  EXPECT_EQ(info.Size, 0);
}

// The icon cache is read whole or not at all: every way a file can be cut
// short or lie about its lengths gives no entry.
TEST(IconCacheTest, AFileThatIsNotWholeGivesNoEntry) {
  mem::MemoryPlatform m;
  TSoftInfo info;
  info.Name = L"Acme";
  IconCache cache;
  cache.Store(m.system, info, {1, 2, 3, 4}, {5, 6, 7, 8});
  const std::vector<std::uint8_t> whole = cache.Encode();
  ASSERT_TRUE(cache.Decode(whole));
  ASSERT_NE(cache.Find(m.system, info), nullptr);

  auto with = [&](std::size_t at, std::uint8_t value) {
    auto bytes = whole;
    bytes[at] = value;
    return bytes;
  };
  const std::size_t count = 8, nameLength = 12;
  const struct {
    const char* what;
    std::vector<std::uint8_t> bytes;
  } cases[] = {
      {"empty", {}},
      {"another magic", with(0, 'X')},
      {"cut short", {whole.begin(), whole.end() - 1}},
      {"a byte too many", [&] { auto b = whole; b.push_back(0); return b; }()},
      {"more entries than bytes", with(count, 200)},
      {"a length past the end", with(nameLength + 1, 0x40)},
      {"text of an odd length", with(nameLength, 7)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_FALSE(cache.Decode(c.bytes));
    EXPECT_EQ(cache.Find(m.system, info), nullptr);
  }
}

}  // namespace
}  // namespace varnel
