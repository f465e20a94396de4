#include "base/ext_ini_file.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/text.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

using Lines = std::vector<std::wstring>;
constexpr const wchar_t* kPath = L"C:\\t\\a.ini";

class ExtIniFileTest : public testing::Test {
 protected:
  TExtIniFile& Load(std::string_view bytes) {
    m.files.AddFile(kPath, bytes);
    EXPECT_TRUE(ini.LoadFromFile(m.Get(), kPath));
    return ini;
  }
  mem::MemoryPlatform m;
  TExtIniFile ini;
};

TEST_F(ExtIniFileTest, ParsingTrimsSplitsAndSkips) {
  ini.LoadFromText(
      L"orphan=before any section\r\n"
      L"[  First Section \t]\r\n"
      L"  key   =   value with  inner blanks   \r\n"
      L"; a comment\r\n"
      L"   ;indented comment\r\n"
      L"\r\n   \t  \r\n"
      L"a = b = c\r\n"
      L"empty=\r\n"
      L"=no key\r\n"
      L"  bare line  \r\n"
      L"[unclosed\r\n"
      L"k;v=x ; not a comment\r\n"
      L"[]\r\n"
      L"x=1\r\n"
      L"[a]b]\r\n");
  EXPECT_EQ(ini.ReadSections(), (Lines{L"First Section", L"", L"a]b"}));
  EXPECT_EQ(ini.ReadSectionValues(L"First Section"),
            (Lines{L"key=value with  inner blanks", L"a=b = c", L"empty=", L"=no key",
                   L"bare line", L"[unclosed", L"k;v=x ; not a comment"}));
  EXPECT_EQ(ini.ReadSection(L"first section"), (Lines{L"key", L"a", L"empty", L"", L"k;v"}));
  EXPECT_EQ(ini.ReadString(L"First Section", L"a", L"-"), L"b = c");
  EXPECT_EQ(ini.ReadString(L"First Section", L"empty", L"-"), L"");
  EXPECT_EQ(ini.ReadString(L"", L"x", L"-"), L"1");
  // A bare line has no key, even one spelled like its text.
  EXPECT_FALSE(ini.ValueExists(L"First Section", L"bare line"));
  EXPECT_EQ(ini.ReadString(L"First Section", L"orphan", L"-"), L"-");

  // Every kind of line break; zero characters are text like any other.
  Load(std::string("[A]\rk1=1\nk2=2\r\n[B]\r\r\nk3=a\0b\n\n\rk4=4", 34));
  EXPECT_EQ(ini.ReadSectionValues(L"A"), (Lines{L"k1=1", L"k2=2"}));
  EXPECT_EQ(ini.ReadString(L"B", L"k3", L""), std::wstring(L"a\0b", 3));
  EXPECT_EQ(ini.ReadString(L"B", L"k4", L""), L"4");
}

TEST_F(ExtIniFileTest, LookUpsIgnoreCaseAndTheFirstOfARepeatWins) {
  ini.LoadFromText(L"[Main]\nLanguage=Deutsch\nLANGUAGE=English\n[\u00C9t\u00E9]\nK=1\n"
                   L"[MAIN]\nLanguage=Fran\u00E7ais\n");
  EXPECT_EQ(ini.ReadString(L"mAIN", L"language", L""), L"Deutsch");
  EXPECT_EQ(ini.ReadString(L"\u00E9T\u00C9", L"k", L""), L"1");
  EXPECT_EQ(ini.ReadSections(), (Lines{L"Main", L"\u00C9t\u00E9", L"MAIN"}));
  // Removing the first lets the second answer.
  ini.EraseSection(L"main");
  EXPECT_EQ(ini.ReadString(L"Main", L"Language", L""), L"Fran\u00E7ais");
  ini.EraseSection(L"main");
  EXPECT_FALSE(ini.SectionExists(L"Main"));
}

TEST_F(ExtIniFileTest, WritesReplaceInPlaceAndNeverSplitALine) {
  ini.LoadFromText(L"[A]\r\nx=1\r\nbare\r\ny=2\r\n[B]\r\nz=3\r\n");
  ini.WriteString(L"a", L"X", L"10");
  ini.WriteString(L"A", L"w", L"new");
  ini.WriteString(L"C", L"k", L"v");
  ini.DeleteKey(L"b", L"Z");
  ini.DeleteKey(L"A", L"missing");
  EXPECT_EQ(ini.ToText(), L"[A]\r\nX=10\r\nbare\r\ny=2\r\nw=new\r\n[B]\r\n[C]\r\nk=v\r\n");
  ini.EraseSection(L"b");
  EXPECT_EQ(ini.ReadSections(), (Lines{L"A", L"C"}));

  ini.Clear();
  ini.WriteString(L"Evil\r\n[Other]", L"k", L"one\ntwo\rthree");
  ini.WriteString(L"Other", L"k", L"real");
  TExtIniFile back;
  back.LoadFromText(ini.ToText());
  EXPECT_EQ(back.ReadSections(), (Lines{L"Evil  [Other]", L"Other"}));
  EXPECT_EQ(back.ReadString(L"Evil  [Other]", L"k", L""), L"one two three");
  EXPECT_EQ(back.ReadString(L"Other", L"k", L""), L"real");
}

TEST_F(ExtIniFileTest, NumbersReadBackAndBadOnesGiveTheDefault) {
  ini.LoadFromText(
      L"[N]\nneg=-42\nhex=0x1F\nhexAll=0xFFFFFFFF\nbig=4294967296\nmin64=-9223372036854775808\n"
      L"over64=9223372036854775808\njunk=12abc\nhexEmpty=0x\nf1=41234,25\nf2=abc\nb2=-3\n");
  EXPECT_EQ(ini.ReadInteger(L"N", L"neg", 0), -42);
  EXPECT_EQ(ini.ReadInteger(L"N", L"hex", 0), 31);
  EXPECT_EQ(ini.ReadInteger(L"N", L"hexAll", 0), -1);
  EXPECT_EQ(ini.ReadInt64(L"N", L"hexAll", 0), 4294967295LL);
  EXPECT_EQ(ini.ReadInteger(L"N", L"big", 5), 5);
  EXPECT_EQ(ini.ReadInt64(L"N", L"big", 0), 4294967296LL);
  EXPECT_EQ(ini.ReadInt64(L"N", L"min64", 0), INT64_MIN);
  for (const wchar_t* bad : {L"over64", L"junk", L"hexEmpty", L"f1", L"none"})
    EXPECT_EQ(ini.ReadInt64(L"N", bad, 77), 77) << bad;
  EXPECT_DOUBLE_EQ(ini.ReadFloat(L"N", L"f1", 0), 41234.25);
  EXPECT_DOUBLE_EQ(ini.ReadFloat(L"N", L"f2", 2.5), 2.5);
  EXPECT_TRUE(ini.ReadBool(L"N", L"b2", false));
  EXPECT_TRUE(ini.ReadBool(L"N", L"f2", true));
  EXPECT_FALSE(ini.ReadBool(L"N", L"f2", false));

  const double date = 41234.123456789012;
  ini.WriteFloat(L"W", L"date", date);
  ini.WriteInt64(L"W", L"min", INT64_MIN);
  ini.WriteBool(L"W", L"f", false);
  TExtIniFile back;
  back.LoadFromText(ini.ToText());
  EXPECT_EQ(back.ReadFloat(L"W", L"date", 0), date);
  EXPECT_EQ(back.ReadInt64(L"W", L"min", 0), INT64_MIN);
  EXPECT_FALSE(back.ReadBool(L"W", L"f", true));
}

TEST_F(ExtIniFileTest, FilesKeepEveryNameAndTheMarkOverridesTheCodePage) {
  m.files.AddFolder(L"C:\\t");
  const std::wstring name = L"\u65E5\u672C\u8A9E \u0416\u0443\u043A \xD83D\xDE00 \u20AC";
  ini.WriteString(name, name, name);
  ASSERT_TRUE(ini.SaveToFile(m.Get(), kPath));
  TExtIniFile back;
  ASSERT_TRUE(back.LoadFromFile(m.Get(), kPath));
  EXPECT_EQ(back.ReadString(name, name, L""), name);

  const std::string plain = "[S]\nName=Caf\xC3\xA9\n";
  EXPECT_EQ(Load(plain).ReadString(L"S", L"Name", L""), L"Caf\u00C3\u00A9");
  m.system.ansiCodePage = 65001;
  EXPECT_EQ(Load(plain).ReadString(L"S", L"Name", L""), L"Caf\u00E9");

  EXPECT_FALSE(ini.LoadFromFile(m.Get(), L"C:\\t\\missing.ini"));
  EXPECT_TRUE(ini.ReadSections().empty());
  m.faults.Set(mem::Fault::FileWrite);
  EXPECT_FALSE(back.SaveToFile(m.Get(), kPath));
}

TEST_F(ExtIniFileTest, ThousandsOfSectionsEachFindTheirOwnValues) {
  for (int i = 0; i < 3000; ++i) ini.WriteInt64(L"Program " + std::to_wstring(i), L"size", i);
  TExtIniFile back;
  back.LoadFromText(ini.ToText());
  ASSERT_EQ(back.ReadSections().size(), 3000u);
  for (int i = 2999; i >= 0; --i)
    ASSERT_EQ(back.ReadInt64(L"PROGRAM " + std::to_wstring(i), L"SIZE", -1), i);
  back.EraseSection(L"Program 1500");
  EXPECT_FALSE(back.SectionExists(L"Program 1500"));
  EXPECT_EQ(back.ReadInt64(L"Program 1501", L"size", -1), 1501);
}

}  // namespace
}  // namespace varnel
