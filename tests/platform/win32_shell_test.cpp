#ifdef _WIN32

#include "platform/win32/window_closer.h"
#include "tests/platform/win32_case.h"

namespace varnel::testing_support {
namespace {

class Win32Shell : public Contract {};

TEST_P(Win32Shell, ExecuteStartsProgramsAndReportsMissingOnes) {
  auto& shell = p().shell;
  const std::wstring marker = Scratch(L"ran.txt");
  const std::wstring cmd = p().system.SystemDirectory() + L"\\cmd.exe";
  const std::intptr_t started =
      shell.Execute(L"open", cmd, L"/c echo ran> \"" + marker + L"\"", Scratch(), ShowCmd::Hide);
  EXPECT_GT(started, 32);
  EXPECT_TRUE(Eventually([&] { return p().files.FileExists(marker); }));

  EXPECT_LE(shell.Execute(L"open", Scratch(L"missing.exe"), L"", L"", ShowCmd::Normal), 32);
  EXPECT_LE(shell.Execute(L"open", std::wstring(L"cmd.exe\0x", 9), L"", L"", ShowCmd::Hide), 32);
  EXPECT_LE(shell.Execute(L"open", L"", L"", L"", ShowCmd::Hide), 32);
  EXPECT_FALSE(shell.ExecuteAndWaitIdle(L"open", Scratch(L"missing.exe"), ShowCmd::Normal));
}

TEST_P(Win32Shell, WindowLookupsWithNothingToFind) {
  auto& windows = p().windows;
  EXPECT_EQ(windows.FindTopWindow(L""), 0u) << "no class must not mean any window";
  EXPECT_EQ(windows.FindChild(0, L"SysTreeView32"), 0u);
  EXPECT_EQ(windows.FindChild(0x12345678, L"SysTreeView32"), 0u);
  // Messages to windows that do not exist go nowhere and do no harm.
  windows.Show(0x12345678, ShowCmd::Normal);
  windows.BringToFront(0x12345678);
  windows.Focus(0x12345678);
  windows.SendKeyDown(0x12345678, VirtualKey::Home);
  windows.SendChar(0x12345678, L'a');
}

// Steering the system's own registry editor, another process, through the
// backend alone: start it, fold its tree, walk down to our key by key-downs
// and characters, and let the editor, asked to close, record where it ended.
// Each level waits longer than a tree view keeps typed characters together
// (Wine's keeps them across the Right key for 450 ms).
TEST_P(Win32Shell, RegistryEditorTreeIsSteeredToAKey) {
  const auto display = p().system.EnvironmentVariable(L"DISPLAY");
  if (!display || display->empty()) GTEST_SKIP() << "needs a display (run under Xvfb)";
  auto& reg = p().registry;
  auto& windows = p().windows;
  const std::wstring target = Key(L"Alpha\\Beta");
  ASSERT_TRUE(reg.CreateKey(RegRoot::CurrentUser, target, true));
  ASSERT_TRUE(reg.CreateKey(RegRoot::CurrentUser, Key(L"Alpine"), true));
  const wchar_t* applet = L"Software\\Microsoft\\Windows\\CurrentVersion\\Applets\\Regedit";
  if (auto settings = reg.OpenKey(RegRoot::CurrentUser, applet, RegAccess::Write, true)) {
    settings->DeleteValue(L"LastKey");
  }

  ASSERT_EQ(windows.FindTopWindow(L"RegEdit_RegEdit"), 0u) << "an editor is already open";
  ASSERT_TRUE(p().shell.ExecuteAndWaitIdle(L"open", L"regedit.exe", ShowCmd::Normal));
  const WindowId editor = windows.FindTopWindow(L"RegEdit_RegEdit");
  ASSERT_NE(editor, 0u);
  const WindowId tree = windows.FindChild(editor, L"SysTreeView32");
  ASSERT_NE(tree, 0u);
  EXPECT_NE(windows.FindChild(editor, L"SysListView32"), 0u);
  windows.Show(editor, ShowCmd::Maximize);
  windows.BringToFront(editor);
  windows.Focus(tree);
  for (int i = 0; i < 20; ++i) windows.SendKeyDown(tree, VirtualKey::Left);
  for (const std::wstring& level :
       {std::wstring(L"HKEY_CURRENT_USER"), std::wstring(L"Software"), std::wstring(L"VarnelTest"),
        text::ExtractFileName(Key()), std::wstring(L"Alpha"), std::wstring(L"Beta")}) {
    windows.SendKeyDown(tree, VirtualKey::Right);
    p().system.SleepMs(600);
    for (wchar_t c : level) windows.SendChar(tree, c);
  }
  ASSERT_TRUE(win32::CloseWindowAndWait(editor, 10'000));

  std::wstring lastKey;
  EXPECT_TRUE(Eventually([&] {
    auto settings = reg.OpenKey(RegRoot::CurrentUser, applet, RegAccess::Read, true);
    auto value = settings ? settings->ReadValue(L"LastKey") : std::nullopt;
    lastKey = value ? text::FromUtf16Bytes(value->data) : L"";
    return !lastKey.empty();
  }));
  EXPECT_TRUE(text::EndsWithText(lastKey, L"HKEY_CURRENT_USER\\" + target))
      << text::ToUtf8(lastKey);
}

INSTANTIATE_TEST_SUITE_P(Real, Win32Shell, ::testing::ValuesIn(Win32Only()), BackendName);

}  // namespace
}  // namespace varnel::testing_support

#endif
