#include <gtest/gtest.h>

#include <limits>

#include "core/file_size.h"
#include "core/file_version.h"
#include "core/os_name.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

TEST(OsName, NamesFollowTheVersionChainIncludingItsFallThrough) {
  mem::MemoryPlatform m;
  // The quirks of the chain, not its table: a 64-bit XP, the fall-through to
  // the newest name, and nothing for the old platform.
  const std::pair<OsVersion, const wchar_t*> cases[] = {
      {{5, 2, 0, 2, 1, 9}, L"Windows XP"}, {{5, 2, 0, 2, 3, 9}, L"Windows 2003 Server"},
      {{10, 0, 0, 2, 1, 0}, L"Windows 8"}, {{3, 51, 0, 2, 1, 0}, L"Windows 8"},
      {{4, 10, 0, 1, 1, 0}, L""},
  };
  for (const auto& [version, name] : cases) {
    m.system.osVersion = version;
    EXPECT_EQ(GetOSName(m.system), name) << version.major << "." << version.minor;
  }
}

TEST(FileSize, UnitsThresholdsRoundingAndSeparator) {
  EXPECT_EQ(FormatFileSize(0, L'.'), L"0 Byte");
  EXPECT_EQ(FormatFileSize(1023, L'.'), L"1023 Byte");
  EXPECT_EQ(FormatFileSize(1024, L'.'), L"1.00 KB");
  EXPECT_EQ(FormatFileSize(1034, L'.'), L"1.01 KB");  // 1.0098
  EXPECT_EQ(FormatFileSize(1152, L'.'), L"1.13 KB");  // exactly 1.125: halves round up
  EXPECT_EQ(FormatFileSize(1048575, L'.'), L"1024.00 KB");
  EXPECT_EQ(FormatFileSize(5 * 1048576 + 262144, L'.'), L"5.25 MB");
  EXPECT_EQ(FormatFileSize(1073741824, L'.'), L"1.00 GB");
  EXPECT_EQ(FormatFileSize(1099511627776LL, L'.'), L"1024.00 GB");  // no TB
  EXPECT_EQ(FormatFileSize(std::numeric_limits<std::int64_t>::max(), L'.'),
            L"8589934592.00 GB");
  mem::MemoryPlatform m;
  m.system.decimalSeparator = L',';
  EXPECT_EQ(FormatFileSize(m.system, 1536), L"1,50 KB");
}

TEST(FileVersion, FirstTranslationsTableWithUnknownForNoResource) {
  mem::MemoryPlatform m;
  auto& r = m.system.versionResources[L"C:\\APP\\TOOL.EXE"];
  r.translation = std::make_pair(std::uint16_t{0x0407}, std::uint16_t{0x04E4});
  for (const wchar_t* n : {L"CompanyName", L"FileVersion", L"ProductName", L"ProductVersion",
                           L"LegalTrademarks", L"Comments", L"WOW Version"})
    r.strings[std::wstring(L"\\StringFileInfo\\040704E4\\") + n] = std::wstring(L"v-") + n;
  r.strings[L"\\StringFileInfo\\040904B0\\FileDescription"] = L"not the first translation";
  r.strings[L"\\StringFileInfo\\040704E4\\InternalName"] = std::wstring(L"in\0pad", 6);
  const wchar_t* tool = L"C:\\App\\Tool.exe";

  EXPECT_EQ(GetFileVersionText(m.system, tool, 0), L"v-Comments");
  EXPECT_EQ(GetFileVersionText(m.system, tool, 1), L"v-CompanyName");
  EXPECT_EQ(GetFileVersionText(m.system, tool, 3), L"v-FileVersion");
  EXPECT_EQ(GetFileVersionText(m.system, tool, 8), L"v-ProductName");
  EXPECT_EQ(GetFileVersionText(m.system, tool, 9), L"v-ProductVersion");
  EXPECT_EQ(GetFileVersionText(m.system, tool, 10), L"v-WOW Version");
  EXPECT_EQ(GetFileVersionText(m.system, tool, 4), L"in");
  EXPECT_EQ(GetFileVersionText(m.system, tool, 2), L"");  // only in another table
  EXPECT_EQ(GetFileVersionText(m.system, tool, 11), L"");
  const auto all = ReadFileVersionText(m.system, tool);
  ASSERT_TRUE(all.has_value());
  EXPECT_EQ(all->LegalTrademarks, L"v-LegalTrademarks");
  EXPECT_EQ(all->Comments, L"v-Comments");

  EXPECT_EQ(GetFileVersionText(m.system, L"C:\\App\\Other.exe", 3), L"Unknown");
  r.translation.reset();
  EXPECT_EQ(GetFileVersionText(m.system, tool, 1), L"Unknown");
  EXPECT_FALSE(ReadFileVersionText(m.system, tool).has_value());
}

}  // namespace
}  // namespace varnel
