#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "core/shortcut.h"
#include "platform/memory/memory_platform.h"
#include "tests/unit/shell_link_bytes.h"

namespace varnel {
namespace {

using namespace test;

class ShortcutTest : public testing::Test {
 protected:
  void Write(const std::string& bytes) { m.files.AddFile(kLink, bytes); }
  int Kind() { return GetShortcutLinkKind(m.files, kLink); }
  std::wstring Target() { return GetShortcutTarget(m.files, m.system, kLink); }
  // Where the base path starts in a link made without item ids.
  static constexpr std::size_t kBasePathAt = 76 + 45;
  static constexpr const wchar_t* kLink = L"C:\\Users\\test\\Desktop\\App.lnk";
  mem::MemoryPlatform m;
};

TEST_F(ShortcutTest, LocalTargetIsFoundWithOrWithoutItemIds) {
  m.files.AddFile(L"C:\\Program Files\\App\\app.exe", "MZ");
  Write(MakeLink({1, "C:\\Program Files\\App\\app.exe"}));
  EXPECT_EQ(Kind(), LinkKind::LocalPath);
  EXPECT_EQ(Target(), L"C:\\Program Files\\App\\app.exe");

  Write(MakeLink({1, "C:\\Program Files\\App\\app.exe", 300}));
  EXPECT_EQ(Kind(), LinkKind::LocalPath);
  EXPECT_EQ(Target(), L"C:\\Program Files\\App\\app.exe");

  m.files.AddFolder(L"C:\\Data");  // folders are targets too
  Write(MakeLink({1, "C:\\Data", 0, true}));
  EXPECT_EQ(Target(), L"C:\\Data");
}

TEST_F(ShortcutTest, KindsFromHeaderAndLinkInfoFlags) {
  EXPECT_EQ(Kind(), LinkKind::NoFile);
  EXPECT_EQ(GetShortcutLinkKind(m.files, L"C:\\Windows"), LinkKind::NoFile);  // a folder
  EXPECT_EQ(GetShortcutTarget(m.files, m.system, L"C:\\" + std::wstring(32000, L'x')), L"");
  const std::pair<std::uint32_t, int> flags[] = {
      {2, LinkKind::Network}, {3, LinkKind::LocalAndNetwork}, {0, LinkKind::Other}, {5, LinkKind::Other}};
  for (const auto& [infoFlags, kind] : flags) {
    Write(MakeLink({infoFlags, "C:\\Windows\\regedit.exe", -1, true}));
    EXPECT_EQ(Kind(), kind);
    EXPECT_EQ(Target(), L"");
  }
  std::string bad = MakeLink({1, "C:\\Windows\\regedit.exe"});
  bad[0] = 75;
  Write(bad);
  EXPECT_EQ(Kind(), LinkKind::BadHeader);
  EXPECT_EQ(Target(), L"");
  Write("");
  EXPECT_EQ(Kind(), LinkKind::BadHeader);
  // Bytes past the end read as zero: a two-byte 76 is a header, and item ids
  // announced but cut off leave flags 0.
  Write(std::string("\x4C\0", 2));
  EXPECT_EQ(Kind(), LinkKind::Other);
  bad[0] = 76;
  Write(bad.substr(0, 20) + std::string("\1\0\0\0", 4));
  EXPECT_EQ(Kind(), LinkKind::Other);

  m.faults.Set(mem::Fault::FileRead);
  EXPECT_EQ(Kind(), LinkKind::NoFile);
}

TEST_F(ShortcutTest, MissingTargetFallsBackToTheFollowingTexts) {
  // Nothing after the path inside its length: the last attempt is empty.
  Write(MakeLink({1, "C:\\Gone\\app.exe"}));
  EXPECT_EQ(Target(), L"");

  m.files.AddFile(L"C:\\Real\\app.exe", "MZ");
  Write(MakeLink({1, std::string("C:\\Gone\\app.exe\0C:\\Real\\app.exe", 32)}));
  EXPECT_EQ(Target(), L"C:\\Real\\app.exe");
  // The third text is taken whether or not it exists.
  Write(MakeLink({1, std::string("a\0b\0C:\\Nowhere\0d", 16)}));
  EXPECT_EQ(Target(), L"C:\\Nowhere");
}

TEST_F(ShortcutTest, PathBytesAreAnsiWithAByteWiseSecondChance) {
  m.files.AddFile(L"C:\\Caf\u00e9\\\u20ac.exe", "MZ");
  Write(MakeLink({1, "C:\\Caf\xe9\\\x80.exe"}));  // code page 1252
  EXPECT_EQ(Target(), L"C:\\Caf\u00e9\\\u20ac.exe");

  m.system.ansiCodePage = 65001;
  Write(MakeLink({1, "C:\\Caf\xc3\xa9\\\xe2\x82\xac.exe"}));
  EXPECT_EQ(Target(), L"C:\\Caf\u00e9\\\u20ac.exe");

  // Not valid UTF-8: only taking each byte as its own character finds it.
  m.files.AddFile(L"C:\\Caf\u00e9\\x.exe", "MZ");
  Write(MakeLink({1, "C:\\Caf\xe9\\x.exe"}));
  EXPECT_EQ(Target(), L"C:\\Caf\u00e9\\x.exe");
}

TEST_F(ShortcutTest, ImplausibleLengthsAndTruncationGiveEmptyOrPartialText) {
  m.files.AddFile(L"C:\\A\\b.exe", "MZ");
  std::string link = MakeLink({1, "C:\\A\\b.exe"});
  const std::size_t info = 76;

  // Suffix offset and path offset against the path buffer and the file's end.
  const struct {
    std::uint32_t pathAt, suffixAt;
    const wchar_t* target;
  } cases[] = {
      {0, 45, L""},                         // suffix where the path starts: length 0
      {0, 10, L""},                         // suffix before the path
      {0, 45 + 261, L""},                   // longer than the buffer
      {0, 45 + 260, L"C:\\A\\b.exe"},       // just inside; reads past the end
      {0xFFFFFFF0u, 0xFFFFFFFFu, L""},      // far past the end of the file
  };
  for (const auto& c : cases) {
    std::string limit = link;
    if (c.pathAt) Put32(limit, info + 16, c.pathAt);
    Put32(limit, info + 24, c.suffixAt);
    Write(limit);
    EXPECT_EQ(Target(), c.target) << c.suffixAt;
  }

  // Cut in the middle of the path; the rest reads as zero bytes, leaving the
  // folder part.
  Write(link.substr(0, kBasePathAt + 5));
  EXPECT_EQ(Kind(), LinkKind::LocalPath);
  EXPECT_EQ(Target(), L"C:\\A\\");
}

}  // namespace
}  // namespace varnel
