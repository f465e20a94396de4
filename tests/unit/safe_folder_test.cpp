#include <gtest/gtest.h>

#include "core/safe_folder.h"
#include "core/shell_command.h"
#include "base/text.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

constexpr const wchar_t* kShellFolders =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

class SafeFolderTest : public testing::Test {
 protected:
  bool Safe(std::wstring_view path) { return IsSafeFolder(m.Get(), path); }
  mem::MemoryPlatform m;
};

TEST_F(SafeFolderTest, RefusesMacrosRootsAndTheFiveShellFolders) {
  EXPECT_FALSE(Safe(L"%ProgramFiles%\\Acme"));
  EXPECT_FALSE(Safe(L"C:\\"));
  EXPECT_FALSE(Safe(L"C:"));
  EXPECT_FALSE(Safe(L""));
  EXPECT_FALSE(Safe(L"c:\\windows"));
  EXPECT_FALSE(Safe(L"C:\\WINDOWS\\SYSTEM32\\"));
  EXPECT_FALSE(Safe(L"c:\\users\\test\\desktop"));
  EXPECT_FALSE(Safe(L"C:\\Users\\test\\AppData\\Roaming\\Microsoft\\Windows\\Start Menu\\"));
  EXPECT_FALSE(Safe(L"C:\\Users\\test\\AppData\\Roaming\\Microsoft\\Windows\\Recent"));

  EXPECT_TRUE(Safe(L"C:\\Program Files\\Acme"));
  EXPECT_TRUE(Safe(L"C:\\Program Files\\Acme\\"));
  EXPECT_TRUE(Safe(L"C:\\Windows\\Temp"));           // subfolders pass
  EXPECT_TRUE(Safe(L"C:\\Users\\test\\Desktop\\Acme"));
  EXPECT_TRUE(Safe(L"C:\\Users\\test"));             // not one of the five
  EXPECT_TRUE(Safe(L"D:\\A"));
  EXPECT_TRUE(Safe(L"C:\\" + std::wstring(32000, L'a')));
}

TEST_F(SafeFolderTest, UnreadableShellFoldersOnlyWeakenTheTest) {
  m.registry.DeleteKey(RegRoot::CurrentUser, kShellFolders, true);
  EXPECT_TRUE(Safe(L"C:\\Users\\test\\Desktop"));
  EXPECT_FALSE(Safe(L"C:\\Windows"));

  // An unterminated string with an odd trailing byte, and a value of the
  // wrong type.
  auto bytes = text::ToUtf16Bytes(L"D:\\Odd Desktop", false);
  bytes.push_back(0x41);
  m.registry.SetRaw(RegRoot::CurrentUser, kShellFolders, L"Desktop", {RegType::String, bytes});
  m.registry.SetDWord(RegRoot::CurrentUser, kShellFolders, L"Recent", 7);
  EXPECT_FALSE(Safe(L"d:\\odd desktop\\"));
  EXPECT_TRUE(Safe(L"D:\\Other"));

  m.registry.SetString(RegRoot::CurrentUser, kShellFolders, L"Start Menu", L"%USERPROFILE%\\SM",
                       true, RegType::ExpandString);
  EXPECT_TRUE(Safe(L"C:\\Users\\test\\SM"));  // compared as written, not expanded
}

class ShellCommandTest : public testing::Test {
 protected:
  const mem::MemoryShell::Call& Run(std::wstring_view command) {
    RunShellCommand(m.Get(), command);
    return m.shell.calls.back();
  }
  mem::MemoryPlatform m;
};

TEST_F(ShellCommandTest, PlaceholdersAreReplacedCaseSensitively) {
  const auto& restore = Run(L"%SYSTEM%\\restore\\rstrui.exe");
  EXPECT_EQ(restore.verb, L"open");
  EXPECT_EQ(restore.file, L"C:\\Windows\\system32\\restore\\rstrui.exe");
  EXPECT_EQ(restore.parameters, L"");
  EXPECT_EQ(restore.directory, L"");
  EXPECT_EQ(restore.show, ShowCmd::Normal);
  EXPECT_FALSE(restore.waitedIdle);

  EXPECT_EQ(Run(L"%WINDOWS%\\notepad.exe").file, L"C:\\Windows\\notepad.exe");
  EXPECT_EQ(Run(L"%APP%\\tool.exe").file, L"C:\\Program Files\\Varnel\\tool.exe");
  EXPECT_EQ(Run(L"%APP%/tool.exe").file, L"C:\\Program Files\\Varnel\\tool.exe");
  EXPECT_EQ(Run(L"%windows%\\x.exe").file, L"%windows%\\x.exe");
  EXPECT_EQ(Run(L"%APP%tool.exe").file, L"%APP%tool.exe");
}

TEST_F(ShellCommandTest, RundllCommandsGoToTheLauncherWithTheRestAsParameters) {
  const auto& call = Run(L"rUnDlL32.exe shell32.dll,Control_RunDLL sysdm.cpl");
  EXPECT_EQ(call.file, L"RunDll32.exe");
  EXPECT_EQ(call.parameters, L"shell32.dll,Control_RunDLL sysdm.cpl");
  EXPECT_EQ(call.show, ShowCmd::Normal);

  EXPECT_EQ(Run(L"RUNDLL32.EXE").parameters, L"");
  EXPECT_EQ(Run(L"RUNDLL32.EXE ").parameters, L"");
  const auto& longCall = Run(L"rundll32.exe " + std::wstring(1000, L'p'));
  EXPECT_EQ(longCall.parameters, std::wstring(255, L'p'));
  EXPECT_EQ(Run(L"rundll32 x.dll").file, L"rundll32 x.dll");  // not the full launcher name
}

}  // namespace
}  // namespace varnel
