#ifdef _WIN32

#include <cwchar>
#include <thread>

#include "platform/csidl.h"
#include "tests/platform/win32_case.h"

namespace varnel::testing_support {
namespace {

class Win32System : public Contract {
 protected:
  std::wstring SystemExe(std::wstring_view name) {
    return p().system.SystemDirectory() + L"\\" + std::wstring(name);
  }
};

TEST_P(Win32System, FoldersAndVersionAreTheMachinesOwn) {
  auto& sys = p().system;
  EXPECT_TRUE(text::SameText(sys.SpecialFolder(Csidl::Windows), sys.WindowsDirectory()));
  EXPECT_TRUE(text::SameText(sys.SpecialFolder(Csidl::System), sys.SystemDirectory()));
  // A 64-bit Windows keeps the 32-bit system and program folders apart. A
  // Wine prefix without 32-bit support has no 32-bit system folder at all,
  // and the shell then reports none.
  const std::wstring x86System = sys.SpecialFolder(Csidl::SystemX86);
  const std::wstring x86Programs = sys.SpecialFolder(Csidl::ProgramFilesX86);
  EXPECT_FALSE(text::SameText(x86System, sys.SystemDirectory())) << text::ToUtf8(x86System);
  EXPECT_TRUE(x86System.empty() || p().files.DirectoryExists(x86System));
  EXPECT_FALSE(text::SameText(x86Programs, sys.SpecialFolder(Csidl::ProgramFiles)));
  for (int csidl : {Csidl::ProgramFilesX86, Csidl::ProgramFilesCommon, Csidl::CommonPrograms,
                    Csidl::CommonStartMenu, Csidl::CommonDesktopDirectory, Csidl::Fonts,
                    Csidl::Profile, Csidl::Startup, Csidl::SendTo}) {
    const std::wstring folder = sys.SpecialFolder(csidl);
    EXPECT_TRUE(p().files.DirectoryExists(folder)) << csidl << " " << text::ToUtf8(folder);
  }
  // The user's folders sit in the profile the environment names.
  const auto profile = sys.EnvironmentVariable(L"USERPROFILE");
  ASSERT_TRUE(profile);
  EXPECT_TRUE(text::SameText(sys.SpecialFolder(Csidl::Profile), *profile));
  EXPECT_TRUE(text::StartsWithText(sys.SpecialFolder(Csidl::AppData), *profile + L"\\"));
  EXPECT_TRUE(sys.SpecialFolder(-1).empty());
  const OsVersion v = sys.GetOsVersion();
  EXPECT_EQ(v.processorArchitecture, 9) << "x64";
  EXPECT_GT(v.build, 0u);
  EXPECT_TRUE(text::EndsWithText(sys.ModulePath(), L"\\varnel_platform_tests.exe"));
  EXPECT_TRUE(p().files.FileExists(sys.ModulePath()));
}

// kernel32.dll rather than a program: Wine's own notepad.exe carries no
// version resource.
TEST_P(Win32System, VersionResourceOfASystemLibrary) {
  auto info = p().system.OpenVersionInfo(SystemExe(L"kernel32.dll"));
  ASSERT_TRUE(info);
  const auto translation = info->FirstTranslation();
  ASSERT_TRUE(translation);
  wchar_t block[9];
  std::swprintf(block, 9, L"%04x%04x", translation->first, translation->second);
  const std::wstring prefix = L"\\StringFileInfo\\" + std::wstring(block) + L"\\";
  for (const wchar_t* field :
       {L"CompanyName", L"FileDescription", L"FileVersion", L"ProductName"}) {
    const auto value = info->QueryString(prefix + field);
    ASSERT_TRUE(value) << text::ToUtf8(field);
    EXPECT_FALSE(value->empty()) << text::ToUtf8(field);
    EXPECT_EQ(value->find(L'\0'), std::wstring::npos);
  }
  EXPECT_FALSE(info->QueryString(prefix + L"NoSuchField"));
  EXPECT_FALSE(info->QueryString(L"\\StringFileInfo\\7fff04b0\\CompanyName"));
  // A binary block read as text stays inside the block.
  const auto binary = info->QueryString(L"\\VarFileInfo\\Translation");
  if (binary) {
    EXPECT_LE(binary->size(), 2u);
  }

  ASSERT_TRUE(p().files.WriteWholeFile(Scratch(L"plain.exe"), Bytes("MZ not really")));
  EXPECT_FALSE(p().system.OpenVersionInfo(Scratch(L"plain.exe")));
  EXPECT_FALSE(p().system.OpenVersionInfo(std::wstring(L"C:\\x\0y", 6)));
}

// A 64-bit process is never redirected, so there is no switch to turn; the
// answer must say so on every thread and leave the system folder in place.
TEST_P(Win32System, FileSystemRedirectionHasNoSwitchFor64BitCode) {
  auto& sys = p().system;
  const std::wstring notepad = SystemExe(L"notepad.exe");
  EXPECT_FALSE(sys.SetFsRedirection(true));
  EXPECT_TRUE(p().files.FileExists(notepad));
  EXPECT_TRUE(sys.SetFsRedirection(false)) << "nothing was turned off";
  bool other = true;
  std::thread([&] { other = sys.SetFsRedirection(true); }).join();
  EXPECT_FALSE(other);
}

TEST_P(Win32System, EnvironmentGrowsPastItsFirstBuffers) {
  auto& sys = p().system;
  const auto windir = sys.EnvironmentVariable(L"windir");
  ASSERT_TRUE(windir);
  std::wstring text, expected;
  for (int i = 0; i < 600; ++i) {
    text += L"%windir%;";
    expected += *windir + L";";
  }
  const auto expanded = sys.ExpandEnvironment(text);
  ASSERT_TRUE(expanded);
  EXPECT_EQ(*expanded, expected);
  EXPECT_EQ(sys.ExpandEnvironment(L""), std::wstring());
  EXPECT_FALSE(sys.ExpandEnvironment(std::wstring(L"%windir%\0x", 10)));
  EXPECT_FALSE(sys.EnvironmentVariable(L""));
  EXPECT_FALSE(sys.EnvironmentVariable(L"=C:"));
  const auto path = sys.EnvironmentVariable(L"PATH");
  ASSERT_TRUE(path);
  EXPECT_TRUE(text::ContainsText(*path, sys.SystemDirectory())) << text::ToUtf8(*path);
}

TEST_P(Win32System, AnsiKeepsZerosAndMarksWhatItCannotSay) {
  auto& sys = p().system;
  EXPECT_EQ(sys.ToAnsi(std::wstring(L"a\0b", 3)), std::string("a\0b", 3));
  EXPECT_EQ(sys.FromAnsi(std::string("a\0b", 3)), std::wstring(L"a\0b", 3));
  EXPECT_EQ(sys.ToAnsi(L""), "");
  EXPECT_EQ(sys.FromAnsi(""), L"");
  if (sys.AnsiCodePage() == 1252) {
    EXPECT_EQ(sys.ToAnsi(L"\u4e2d"), "?");
  }
}

TEST_P(Win32System, LocaleFormatsComeFromTheUsersLocale) {
  auto& sys = p().system;
  const std::wstring date = sys.ShortDateFormat();
  EXPECT_NE(date.find(sys.DateSeparator()), std::wstring::npos) << text::ToUtf8(date);
  EXPECT_TRUE(text::ContainsText(date, L"d") && text::ContainsText(date, L"y"));
  EXPECT_TRUE(text::ContainsText(sys.LongTimeFormat(), L"m"));
  EXPECT_TRUE(sys.DecimalSeparator() == L'.' || sys.DecimalSeparator() == L',');
  EXPECT_FALSE(sys.ToLocalTime(~0ULL));
}

// Callers read the code a failed call left behind.
TEST_P(Win32System, LastErrorIsWhatTheFailedCallLeft) {
  auto& sys = p().system;
  sys.SetLastErrorCode(1234);
  EXPECT_EQ(sys.LastErrorCode(), 1234u);
  EXPECT_FALSE(p().files.RemoveFile(Scratch(L"missing.txt")));
  EXPECT_EQ(sys.LastErrorCode(), 2u) << "ERROR_FILE_NOT_FOUND";
  ASSERT_TRUE(p().files.WriteWholeFile(Scratch(L"ro.txt"), Bytes("x")));
  ASSERT_TRUE(p().files.SetAttributes(Scratch(L"ro.txt"), FileAttr::ReadOnly));
  EXPECT_FALSE(p().files.WriteWholeFile(Scratch(L"ro.txt"), Bytes("y")));
  EXPECT_EQ(sys.LastErrorCode(), 5u) << "ERROR_ACCESS_DENIED";
}

INSTANTIATE_TEST_SUITE_P(Real, Win32System, ::testing::ValuesIn(Win32Only()), BackendName);

}  // namespace
}  // namespace varnel::testing_support

#endif
