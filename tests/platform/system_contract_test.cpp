#include "platform/csidl.h"
#include "tests/platform/contract_fixture.h"

namespace varnel::testing_support {
namespace {

class SystemContract : public Contract {};

TEST_P(SystemContract, FoldersExistAndHaveTheDocumentedShape) {
  auto& sys = p().system;
  for (int csidl : {Csidl::AppData, Csidl::LocalAppData, Csidl::CommonAppData,
                    Csidl::ProgramFiles, Csidl::DesktopDirectory, Csidl::StartMenu,
                    Csidl::Programs, Csidl::Personal}) {
    const std::wstring folder = sys.SpecialFolder(csidl);
    ASSERT_FALSE(folder.empty()) << csidl;
    EXPECT_NE(folder.back(), L'\\') << csidl;
    EXPECT_EQ(folder.substr(1, 2), L":\\") << csidl;
    EXPECT_TRUE(p().files.DirectoryExists(folder)) << text::ToUtf8(folder);
  }
  EXPECT_TRUE(sys.SpecialFolder(0x7F).empty());
  EXPECT_EQ(sys.TempDirectory().back(), L'\\');
  EXPECT_TRUE(p().files.DirectoryExists(sys.TempDirectory()));
  EXPECT_TRUE(text::StartsWithText(sys.SystemDirectory(), sys.WindowsDirectory() + L"\\"));
  EXPECT_FALSE(sys.ModulePath().empty());
}

TEST_P(SystemContract, EnvironmentExpandsKnownNamesAndKeepsUnknownOnes) {
  auto& sys = p().system;
  const auto windir = sys.EnvironmentVariable(L"windir");
  ASSERT_TRUE(windir);
  EXPECT_TRUE(text::SameText(*windir, sys.WindowsDirectory()));
  EXPECT_FALSE(sys.EnvironmentVariable(L"VARNEL_NO_SUCH_VARIABLE"));
  const auto expanded = sys.ExpandEnvironment(L"%WinDir%\\x;%VARNEL_NO_SUCH%;50%");
  ASSERT_TRUE(expanded);
  EXPECT_TRUE(text::SameText(*expanded, *windir + L"\\x;%VARNEL_NO_SUCH%;50%"))
      << text::ToUtf8(*expanded);
}

TEST_P(SystemContract, VersionAndViews) {
  auto& sys = p().system;
  EXPECT_TRUE(sys.IsWow64()) << "64-bit Windows has a 64-bit view beside the default one";
  const OsVersion v = sys.GetOsVersion();
  EXPECT_EQ(v.platformId, 2u);
  EXPECT_GE(v.major, 5u);
}

TEST_P(SystemContract, AnsiCodePageRoundTrips) {
  auto& sys = p().system;
  EXPECT_EQ(sys.ToAnsi(L"Setup 1.0"), "Setup 1.0");
  EXPECT_EQ(sys.FromAnsi("Setup 1.0"), L"Setup 1.0");
  if (sys.AnsiCodePage() == 1252) {
    EXPECT_EQ(sys.ToAnsi(L"caf\u00e9 \u20ac"), "caf\xE9 \x80");
    EXPECT_EQ(sys.FromAnsi("caf\xE9 \x80"), L"caf\u00e9 \u20ac");
  }
}

TEST_P(SystemContract, LocalTimeRoundTripsAndRejectsImpossibleDates) {
  auto& sys = p().system;
  const LocalDateTime t{2010, 3, 15, 13, 45, 30, 250};
  const auto ft = sys.FromLocalTime(t);
  ASSERT_TRUE(ft);
  const auto back = sys.ToLocalTime(*ft);
  ASSERT_TRUE(back);
  EXPECT_EQ(back->year, 2010);
  EXPECT_EQ(back->month, 3);
  EXPECT_EQ(back->day, 15);
  EXPECT_EQ(back->hour, 13);
  EXPECT_EQ(back->minute, 45);
  EXPECT_EQ(back->second, 30);
  EXPECT_EQ(back->millisecond, 250);
  EXPECT_FALSE(sys.FromLocalTime(LocalDateTime{2010, 2, 30, 0, 0, 0, 0}));
  EXPECT_FALSE(sys.FromLocalTime(LocalDateTime{2010, 13, 1, 0, 0, 0, 0}));
  EXPECT_GT(sys.Now(), *ft);
}

TEST_P(SystemContract, Md5MatchesTheRfcVectors) {
  auto hex = [](const std::array<std::uint8_t, 16>& d) {
    static const char* digits = "0123456789abcdef";
    std::string s;
    for (auto b : d) {
      s.push_back(digits[b >> 4]);
      s.push_back(digits[b & 15]);
    }
    return s;
  };
  EXPECT_EQ(hex(p().system.Md5({})), "d41d8cd98f00b204e9800998ecf8427e");
  const std::string abc = "abc";
  EXPECT_EQ(hex(p().system.Md5(std::span(reinterpret_cast<const std::uint8_t*>(abc.data()), 3))),
            "900150983cd24fb0d6963f7d28e17f72");
}

TEST_P(SystemContract, MissingWindowsAndVersionResourcesAreNoResult) {
  EXPECT_EQ(p().windows.FindTopWindow(L"VarnelNoSuchWindowClass"), 0u);
  EXPECT_FALSE(p().system.OpenVersionInfo(Scratch(L"missing.exe")));
}

INSTANTIATE_TEST_SUITE_P(Backends, SystemContract, ::testing::ValuesIn(AllBackends()),
                         BackendName);

}  // namespace
}  // namespace varnel::testing_support
