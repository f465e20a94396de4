#include "base/text_file.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

std::wstring Decode(mem::MemoryPlatform& m, std::string_view s, TextEncoding* found = nullptr) {
  return DecodeText(m.system, std::vector<std::uint8_t>(s.begin(), s.end()), found);
}

TEST(TextFile, MarkChoosesTheEncodingElseTheAnsiCodePage) {
  mem::MemoryPlatform m;
  // "Ж€😀": the emoji needs a surrogate pair.
  const std::wstring expected = L"\u0416\u20AC\xD83D\xDE00";
  const std::pair<std::string, TextEncoding> cases[] = {
      {"\xEF\xBB\xBF\xD0\x96\xE2\x82\xAC\xF0\x9F\x98\x80", TextEncoding::Utf8},
      {std::string("\xFF\xFE\x16\x04\xAC\x20\x3D\xD8\x00\xDE", 10), TextEncoding::Utf16LE},
      {std::string("\xFE\xFF\x04\x16\x20\xAC\xD8\x3D\xDE\x00", 10), TextEncoding::Utf16BE}};
  for (const auto& [bytes, encoding] : cases) {
    TextEncoding found = TextEncoding::Ansi;
    EXPECT_EQ(Decode(m, bytes, &found), expected);
    EXPECT_EQ(found, encoding);
  }
  TextEncoding found = TextEncoding::Utf8;
  EXPECT_EQ(Decode(m, "Caf\xC3\xA9 \x80", &found), L"Caf\u00C3\u00A9 \u20AC");
  EXPECT_EQ(found, TextEncoding::Ansi);
  m.system.ansiCodePage = 65001;
  EXPECT_EQ(Decode(m, "Caf\xC3\xA9 \x80"), L"Caf\u00E9 \uFFFD");
  EXPECT_EQ(Decode(m, "\xEF\xBB"), L"\uFFFD\uFFFD");  // half a mark
  EXPECT_EQ(Decode(m, "\xEF\xBB\xBF"), L"");
}

TEST(TextFile, BrokenInputDecodesWithoutLosingTheRest) {
  mem::MemoryPlatform m;
  // A lone surrogate and a zero unit stay; an odd last byte becomes U+FFFD.
  EXPECT_EQ(Decode(m, std::string("\xFF\xFE" "a\0\0\xD8" "b\0\0\0c\0\x41", 13)),
            std::wstring(L"a\xD800" L"b\0c\uFFFD", 6));
  EXPECT_EQ(Decode(m, std::string("\xEF\xBB\xBF" "a\xC3(\xF0\x9F" "b\0c", 11)),
            std::wstring(L"a\uFFFD(\uFFFD" L"b\0c", 7));
}

TEST(TextFile, SplitLinesKnowsAllThreeBreaks) {
  using Lines = std::vector<std::wstring_view>;
  EXPECT_EQ(SplitLines(L"a\r\nb\nc\rd"), (Lines{L"a", L"b", L"c", L"d"}));
  EXPECT_EQ(SplitLines(L"a\r\r\nb\n\rc\r\n"), (Lines{L"a", L"", L"b", L"", L"c"}));
  EXPECT_EQ(SplitLines(L"\n\n"), (Lines{L"", L""}));
  EXPECT_EQ(SplitLines(L""), Lines{});
}

// Whatever goes wrong on the way, the file on the disk is the old one or the
// new one, never a part of either, and nothing is left beside it.
TEST(TextFile, AnUpdateReplacesTheWholeFileOrLeavesItAlone) {
  struct Case {
    const char* what;
    std::optional<mem::Fault> fault;
    const wchar_t* expected;
  };
  const Case cases[] = {
      {"written", std::nullopt, L"old+new"},
      {"disk full", mem::Fault::FileWrite, L"old"},
      {"not replaceable", mem::Fault::FileReplace, L"old"},
      {"unreadable, e.g. held unshared by another writer", mem::Fault::FileRead, L"old"},
  };
  const std::wstring path = L"C:\\data\\settings.ini";
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    mem::MemoryPlatform m;
    m.files.AddFile(path, "old");
    if (c.fault) m.faults.Set(*c.fault);
    const bool written =
        UpdateTextFile(m.Get(), path, [](std::wstring& text) { text += L"+new"; });
    m.faults.Clear();
    EXPECT_EQ(written, !c.fault);
    std::wstring text;
    ASSERT_TRUE(ReadTextFile(m.Get(), path, text));
    EXPECT_EQ(text, c.expected);
    std::vector<FindEntry> entries;
    m.files.FindEntries(L"C:\\data\\*", entries);
    EXPECT_EQ(entries.size(), 3u);  // ".", ".." and the file
  }
}

}  // namespace
}  // namespace varnel
