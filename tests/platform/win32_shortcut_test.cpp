#ifdef _WIN32

#include "core/shortcut.h"
#include "platform/win32/shell_link_writer.h"
#include "tests/platform/win32_case.h"

namespace varnel::testing_support {
namespace {

// The core reads link files byte by byte; these links come from the shell's
// own link object, so the reader is held to what Windows really writes.
class Win32Shortcut : public Contract {
 protected:
  std::wstring MakeTarget(std::wstring_view relative) {
    const std::wstring path = Scratch(relative);
    const std::wstring folder = text::ExcludeTrailingBackslash(text::ExtractFilePath(path));
    if (!p().files.DirectoryExists(folder)) p().files.MakeDirectory(folder);
    p().files.WriteWholeFile(path, Bytes("MZ"));
    return path;
  }
};

TEST_P(Win32Shortcut, ShellMadeLinkToALocalProgramReadsBack) {
  const std::wstring target = MakeTarget(L"Tool Folder\\Tool.exe");
  const std::wstring link = Scratch(L"Tool.lnk");
  ASSERT_TRUE(win32::WriteShellLink(link, {.target = target,
                                           .arguments = L"/quiet",
                                           .workingDirectory = Scratch(L"Tool Folder"),
                                           .description = L"A tool"}));
  EXPECT_EQ(GetShortcutLinkKind(p().files, link), LinkKind::LocalPath);
  EXPECT_TRUE(text::SameText(GetShortcutTarget(p().files, p().system, link), target))
      << text::ToUtf8(GetShortcutTarget(p().files, p().system, link));
}

TEST_P(Win32Shortcut, TargetWithAnsiLettersComesBackThroughTheCodePage) {
  if (p().system.AnsiCodePage() != 1252) GTEST_SKIP() << "needs code page 1252";
  const std::wstring target = MakeTarget(L"Caf\u00e9 M\u00fcller\\Start.exe");
  const std::wstring link = Scratch(L"Caf\u00e9.lnk");
  ASSERT_TRUE(win32::WriteShellLink(link, {.target = target}));
  EXPECT_EQ(GetShortcutLinkKind(p().files, link), LinkKind::LocalPath);
  EXPECT_TRUE(text::SameText(GetShortcutTarget(p().files, p().system, link), target));
}

INSTANTIATE_TEST_SUITE_P(Real, Win32Shortcut, ::testing::ValuesIn(Win32Only()), BackendName);

}  // namespace
}  // namespace varnel::testing_support

#endif
