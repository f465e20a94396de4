#include "base/text.h"

#include <gtest/gtest.h>

namespace varnel::text {
namespace {

TEST(Text, CaseMappingCoversLatinAndCyrillicButNotPunctuation) {
  EXPECT_EQ(Upper(L"c:\\program files\\\u00e9t\u00e9 \u0444\u0430\u0439\u043b"),
            L"C:\\PROGRAM FILES\\\u00c9T\u00c9 \u0424\u0410\u0419\u041b");
  EXPECT_EQ(Lower(L"ABC-\u00c4\u0178\u0100"), L"abc-\u00e4\u00ff\u0101");
  EXPECT_EQ(Upper(L"{}[]_~\u00f7"), L"{}[]_~\u00f7");
  EXPECT_TRUE(SameText(L"%ProgramFiles%", L"%PROGRAMFILES%"));
  EXPECT_FALSE(SameText(L"abc", L"abcd"));
}

TEST(Text, SearchAndReplaceIgnoringCase) {
  EXPECT_EQ(FindText(L"xx%WinDir%yy", L"%windir%"), 2u);
  EXPECT_EQ(FindText(L"abc", L"abcd"), std::wstring_view::npos);
  EXPECT_EQ(FindText(L"aXbX", L"x", 2), 3u);
  EXPECT_EQ(ReplaceAllText(L"%Temp%\\a;%TEMP%\\b", L"%temp%", L"C:\\T"), L"C:\\T\\a;C:\\T\\b");
  // Replaced text is not scanned again, so a replacement holding the pattern
  // cannot loop.
  EXPECT_EQ(ReplaceAll(L"aa", L"a", L"aa"), L"aaaa");
  EXPECT_EQ(ReplaceAll(L"a\\\\\\b", L"\\\\", L"\\"), L"a\\\\b");
  EXPECT_EQ(RemoveAll(L"\\??\\C:\\x\\??\\", L"\\??\\"), L"C:\\x");
  EXPECT_EQ(ReplaceAll(L"abc", L"", L"x"), L"abc");
}

TEST(Text, TrimRemovesBlanksAndControlCharactersOnly) {
  EXPECT_EQ(Trim(L" \t\r\n a b \x01"), L"a b");
  EXPECT_EQ(Trim(L"   "), L"");
  EXPECT_EQ(TrimLeft(L"  x "), L"x ");
  EXPECT_EQ(TrimRight(L"  x "), L"  x");
}

TEST(Text, DequoteExtractsTheLeadingQuotedPart) {
  EXPECT_EQ(Dequote(L"\"C:\\a b\\u.exe\" /S", L'"'), L"C:\\a b\\u.exe");
  EXPECT_EQ(Dequote(L"\"C:\\x\"", L'"'), L"C:\\x");
  EXPECT_EQ(Dequote(L"\"say \"\"hi\"\"\"", L'"'), L"say \"hi\"");
  EXPECT_EQ(Dequote(L"C:\\x.exe \"arg\"", L'"'), L"C:\\x.exe \"arg\"");
  EXPECT_EQ(Dequote(L"\"unclosed", L'"'), L"\"unclosed");
  EXPECT_EQ(Dequote(L"\"\"", L'"'), L"");
  EXPECT_EQ(Dequote(L"", L'"'), L"");
}

TEST(Text, PathPieces) {
  EXPECT_EQ(IncludeTrailingBackslash(L"C:\\a"), L"C:\\a\\");
  EXPECT_EQ(IncludeTrailingBackslash(L"C:\\a\\"), L"C:\\a\\");
  EXPECT_EQ(IncludeTrailingBackslash(L""), L"\\");
  EXPECT_EQ(ExcludeTrailingBackslash(L"C:\\a\\"), L"C:\\a");
  EXPECT_EQ(ExtractFilePath(L"C:\\a\\b.exe"), L"C:\\a\\");
  EXPECT_EQ(ExtractFilePath(L"C:b.exe"), L"C:");
  EXPECT_EQ(ExtractFilePath(L"b.exe"), L"");
  EXPECT_EQ(ExtractFileName(L"C:\\a\\b.exe"), L"b.exe");
}

TEST(Text, Utf16BytesRoundTripAndStopAtTerminator) {
  const std::wstring s = L"A\u00e9\u4e2d";
  auto bytes = ToUtf16Bytes(s);
  ASSERT_EQ(bytes.size(), 8u);
  EXPECT_EQ(bytes[2], 0xE9);
  EXPECT_EQ(FromUtf16Bytes(bytes), s);
  // No terminator and an odd tail byte: the text is what whole units hold.
  std::vector<std::uint8_t> raw = {'h', 0, 'i', 0, 'x'};
  EXPECT_EQ(FromUtf16Bytes(raw), L"hi");
  std::vector<std::uint8_t> embedded = {'a', 0, 0, 0, 'b', 0};
  EXPECT_EQ(FromUtf16Bytes(embedded), L"a");
}

TEST(Text, Utf8RoundTripIncludingSurrogatesAndBadBytes) {
  const std::wstring s = L"x\u00e9\u4e2d\xD83D\xDE00";
  EXPECT_EQ(FromUtf8(ToUtf8(s)), s);
  EXPECT_EQ(ToUtf8(L"\u00e9"), "\xC3\xA9");
  EXPECT_EQ(FromUtf8("a\xFF" "b"), L"a\uFFFD" L"b");
  EXPECT_EQ(FromUtf8("\xE4\xB8"), L"\uFFFD\uFFFD");
}

}  // namespace
}  // namespace varnel::text
