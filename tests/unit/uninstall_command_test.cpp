#include <gtest/gtest.h>

#include <string>

#include "core/uninstall_command.h"
#include "inventory/record_commands.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

class UninstallCommandTest : public testing::Test {
 protected:
  std::wstring FileOf(std::wstring_view command) {
    return GetFileFromCommandLine(TAppFrame(m.Get()), command);
  }
  std::wstring Clean(std::wstring_view command, LauncherRule rule) {
    return CleanUninstallCommand(TAppFrame(m.Get()), command, rule);
  }
  TDateTime DateOf(const UninstallSource& source) {
    return GetUninstallerFileDate(TAppFrame(m.Get()), source);
  }
  std::wstring FolderOf(const UninstallSource& source) {
    return GetInstallFolderFromUninstallString(TAppFrame(m.Get()), source);
  }
  std::wstring CleanFolder(std::wstring_view path) {
    return CleanFolderPath(TAppFrame(m.Get()), path);
  }
  static UninstallSource Command(std::wstring_view uninstall) {
    UninstallSource source;
    source.uninstallString = uninstall;
    return source;
  }

  // A file created at the given UTC time; returns the time as a file time.
  FileTime AddFileCreated(std::wstring_view path, LocalDateTime utc) {
    const auto saved = m.system.utcOffsetMinutes;
    m.system.utcOffsetMinutes = 0;
    const FileTime when = m.system.FromLocalTime(utc).value();
    m.system.utcOffsetMinutes = saved;
    m.files.AddFile(path, "MZ");
    m.files.SetTimes(path, when, when, when);
    return when;
  }

  mem::MemoryPlatform m;
};

TEST_F(UninstallCommandTest, CommandLinesAreCutToTheFileTheyName) {
  m.files.AddFile(L"C:\\App\\app.exe", "MZ");
  struct Case {
    std::wstring_view command, file;
  };
  const Case cases[] = {
      {L"", L""},
      {L"\"C:\\Program Files\\App\\app.exe\",0", L"C:\\Program Files\\App\\app.exe"},
      {L"C:\\App\\app.exe,-101", L"C:\\App\\app.exe"},
      {L"C:\\App\\app.exe /uninstall /S", L"C:\\App\\app.exe "},  // nothing trims
      {L"C:\\App\\uninst.exe -remove", L"C:\\App\\uninst.exe "},
      // " -" cuts at the first "-", even inside the path.
      {L"C:\\my-app\\x.exe -s", L"C:\\my"},
      {L"C:\\App\\a.exe -x\"", L"C:\\App\\a.exe "},
      {L"\"C:\\App\\a.exe\" %1", L"C:\\App\\a.exe"},
      {L"C:\\App\\a.exe \"%1\"", L"C:\\App\\a.exe "},
      {L"\"C:\\App\\a b.exe", L""},  // an unclosed quote takes the rest with it
      {L"C:\\A;pp\\a.exe;", L"C:\\App\\a.exe"},
      {L"\\??\\C:\\Windows\\system32\\drivers\\x.sys", L"C:\\Windows\\system32\\drivers\\x.sys"},
      {L"@C:\\App\\a.exe", L"C:\\App\\a.exe"},
      {L"xyzC:\\App\\a.exe", L"C:\\App\\a.exe"},
      {L"a:\\", L"a:\\"},
      {L":\\x", L":\\x"},
      {L"relative\\a.exe", L"relative\\a.exe"},
      // A leading environment reference is expanded, wherever it stands.
      {L"%windir%\\system32\\x.exe", L"C:\\Windows\\system32\\x.exe"},
      {L"%SystemRoot%\\x.dll,3", L"C:\\Windows\\x.dll"},
      {L"C:\\x\\%windir%\\a.exe", L"C:\\Windows\\ndir%\\a.exe"},
      {L"%APPDATA%\\a.exe", L"%APPDATA%\\a.exe"},  // not this routine's business
      // 12 - p characters from position p go: the token only for p = 1.
      {L"\\SystemRoot\\System32\\drivers\\x.sys", L"C:\\Windows\\System32\\drivers\\x.sys"},
      {L"\\??\\\\SystemRoot\\x.sys", L"C:\\Windows\\x.sys"},
      {L"X\\SystemRoot\\a.sys", L"C:\\WindowsXt\\a.sys"},
      {L"abcdefghijk\\systemroot\\a", L"C:\\Windowsabcdefghijk\\systemroot\\a"},
      // The launcher's target; without the blank it is not the launcher.
      {L"RunDll32.exe C:\\X\\Y.dll,Uninstall", L"C:\\X\\Y.dll"},
      {L"rundll32.exe nowhere.dll,Entry", L"nowhere.dll"},
      {L"rundll32.exeboth.dll", L"rundll32.exeboth.dll"},
      {L"rundll32.exe ", L""},
  };
  for (const auto& c : cases) EXPECT_EQ(FileOf(c.command), c.file) << std::wstring(c.command);
}

TEST_F(UninstallCommandTest, ExpansionFollowsTheEnvironmentAndTheWindowsFolder) {
  m.system.environment[L"PROGRAMFILES"] = L"D:\\Progs\\";
  EXPECT_EQ(FileOf(L"%programfiles%App\\a.exe"), L"D:\\Progs\\App\\a.exe");
  m.system.windowsDir.clear();
  EXPECT_EQ(FileOf(L"\\SystemRoot\\x.sys"), L"\\x.sys");

  // A failed or overlong expansion changes nothing.
  m.system.environment[L"WINDIR"] = L"D:\\" + std::wstring(516, L'w');  // 519 characters
  EXPECT_EQ(FileOf(L"%windir%\\a.exe"), m.system.environment[L"WINDIR"] + L"\\a.exe");
  m.system.environment[L"WINDIR"] += L"w";  // 520: no room for the terminator
  EXPECT_EQ(FileOf(L"%windir%\\a.exe"), L"%windir%\\a.exe");

  m.faults.Set(mem::Fault::ExpandEnvironment);
  EXPECT_EQ(FileOf(L"%ProgramFiles%\\\\App\\a.exe"), L"%ProgramFiles%\\\\App\\a.exe");
}

TEST_F(UninstallCommandTest, RunDllTargetsFallBackToTheWindowsThenTheSystemDirectory) {
  m.files.AddFile(L"C:\\Windows\\system32\\both.dll");
  EXPECT_EQ(FileOf(L"RUNDLL32.EXE both.dll,Entry"), L"C:\\Windows\\system32\\both.dll");
  m.files.AddFile(L"C:\\Windows\\both.dll");
  EXPECT_EQ(FileOf(L"rundll32.exe both.dll,Entry"), L"C:\\Windows\\both.dll");
}

TEST_F(UninstallCommandTest, CutsAfterTheEarliestExecutableExtension) {
  EXPECT_EQ(CutAtExecutableExtension(L"a.dll b.exe"), L"a.dll");
  EXPECT_EQ(CutAtExecutableExtension(L"C:\\APP\\Setup.EXE /S"), L"C:\\APP\\Setup.EXE");
  EXPECT_EQ(CutAtExecutableExtension(L"C:\\drv\\old.VXD x.exe"), L"C:\\drv\\old.VXD");
  EXPECT_EQ(CutAtExecutableExtension(L"C:\\a.executable"), L"C:\\a.exe");
  EXPECT_EQ(CutAtExecutableExtension(L".bat"), L".bat");
  EXPECT_EQ(CutAtExecutableExtension(L"C:\\readme.txt"), L"C:\\readme.txt");
  EXPECT_EQ(CutAtExecutableExtension(L".ex"), L".ex");
  EXPECT_EQ(CutAtExecutableExtension(L""), L"");
}

TEST_F(UninstallCommandTest, CleaningStripsQuotesPrefixesAndDoubledSeparators) {
  for (auto rule : {LauncherRule::UninstallerDate, LauncherRule::InstallFolder,
                    LauncherRule::FolderPath}) {
    EXPECT_EQ(Clean(L"\"C:\\PROGRAM FILES\\APP\\UNINS000.EXE\" /SILENT", rule),
              L"C:\\PROGRAM FILES\\APP\\UNINS000.EXE /SILENT");
    EXPECT_EQ(Clean(L"  \\??\\C:\\\\APP\\\\\\\\U.EXE  ", rule), L"C:\\APP\\\\U.EXE");
    EXPECT_EQ(Clean(L"%PROGRAMFILES%\\APP\\U.EXE", rule), L"C:\\Program Files\\APP\\U.EXE");
    EXPECT_EQ(Clean(L"", rule), L"");
  }
}

TEST_F(UninstallCommandTest, EachVariantHasItsOwnLauncherRule) {
  struct Case {
    std::wstring_view command, date, installFolder, folderPath;
  };
  const Case cases[] = {
      // At the start every variant removes it.
      {L"RUNDLL32.EXE C:\\X\\Y.DLL,UNINSTALL", L"C:\\X\\Y.DLL,UNINSTALL",
       L"C:\\X\\Y.DLL,UNINSTALL", L"C:\\X\\Y.DLL,UNINSTALL"},
      // Inside a name only the install-folder variant removes it.
      {L"C:\\APP\\MYRUNDLL.EXE", L"C:\\APP\\MYRUNDLL.EXE", L"C:\\APP\\MY",
       L"C:\\APP\\MYRUNDLL.EXE"},
      // A blank before it at the very start fails only the date variant's test.
      {L"\" RUNDLL32.EXE C:\\X\\Y.DLL\"", L"RUNDLL32.EXE C:\\X\\Y.DLL", L"C:\\X\\Y.DLL",
       L"C:\\X\\Y.DLL"},
      // After a blank further on, both blank rules remove every occurrence.
      {L"X RUNDLL C:\\RUNDLL\\A.DLL", L"X  C:\\\\A.DLL", L"X  C:\\\\A.DLL", L"X  C:\\\\A.DLL"},
      // Names are tested in order, each on what the previous one left: here
      // that is a string opening with " RUNDLL32".
      {L"RUNDLL.EXE RUNDLL32 Z", L"RUNDLL32 Z", L"Z", L"Z"},
  };
  for (const auto& c : cases) {
    const std::wstring command(c.command);
    EXPECT_EQ(Clean(command, LauncherRule::UninstallerDate), c.date) << command;
    EXPECT_EQ(Clean(command, LauncherRule::InstallFolder), c.installFolder) << command;
    EXPECT_EQ(Clean(command, LauncherRule::FolderPath), c.folderPath) << command;
  }
  // The launcher names are matched as written in capitals.
  EXPECT_EQ(Clean(L"rundll32.exe C:\\X\\Y.DLL", LauncherRule::InstallFolder),
            L"rundll32.exe C:\\X\\Y.DLL");
}

TEST_F(UninstallCommandTest, VisualBasicAndDriverPackageRemoversGiveTheirArgument) {
  const auto rule = LauncherRule::UninstallerDate;
  EXPECT_EQ(Clean(L"C:\\WINDOWS\\ST6UNST.EXE -N \"C:\\APP\\ST6UNST.LOG\"", rule),
            L"C:\\APP\\ST6UNST.LOG");
  EXPECT_EQ(Clean(L"ST6UNST.EXE -N", rule), L"");
  EXPECT_EQ(Clean(L"ST6UNST.EXE -N ", rule), L"");

  // The INF position is used as a length, so the text after it comes along.
  EXPECT_EQ(Clean(L"DPINST.EXE /U \"C:\\DRV\\X.INF\" /S", rule), L"C:\\DRV\\X.INF /S");
  EXPECT_EQ(Clean(L"C:\\D\\DPINST64.EXE /U C:\\D\\X.INF", rule), L"C:\\D\\X.INF");
  EXPECT_EQ(Clean(L"DPINST32.EXE /U C:\\D\\X.INF /Q /SW", rule), L"C:\\D\\X.INF /Q /SW");
  // Without "/U " the copy starts at the third character; without ".INF" it
  // takes three.
  EXPECT_EQ(Clean(L"DPINST.EXE /S", rule), L"INS");
  EXPECT_EQ(Clean(L"DPINST.EXE /U ", rule), L"");
  EXPECT_EQ(Clean(L"DPINST.EXE", rule), L"INS");
}

TEST_F(UninstallCommandTest, UninstallerDateIsTheLocalCreationTime) {
  AddFileCreated(L"C:\\Program Files\\App\\unins000.exe", {2010, 3, 15, 22, 30, 0, 0});
  m.system.utcOffsetMinutes = 120;
  const TDateTime expected = EncodeDateTime({2010, 3, 16, 0, 30, 0, 0});

  EXPECT_EQ(DateOf(Command(L"\"C:\\Program Files\\App\\unins000.exe\" /SILENT")), expected);
  EXPECT_EQ(DateOf(Command(L"%ProgramFiles%\\App\\unins000.exe")), expected);
  EXPECT_EQ(DateOf(Command(L"RunDll32.exe C:\\Program Files\\App\\unins000.exe")), expected);
  EXPECT_EQ(DateOf(Command(L"C:\\Program Files\\App\\unins001.exe")), 0);
  EXPECT_EQ(DateOf(Command(L"C:\\Program Files\\App")), 0);  // a folder is no uninstaller
  EXPECT_EQ(DateOf(Command(L"")), 0);
}

TEST_F(UninstallCommandTest, InstallerCommandsUseTheProductCodeAndAddOnsTheirManifest) {
  const FileTime t =
      AddFileCreated(L"C:\\Windows\\system32\\msiexec.exe", {2009, 1, 1, 0, 0, 0, 0});
  AddFileCreated(L"C:\\Data\\setup.exe", {2011, 6, 1, 0, 0, 0, 0});
  AddFileCreated(L"C:\\Users\\test\\ext\\install.rdf", {2012, 7, 2, 0, 0, 0, 0});
  const TDateTime msiexec = FileTimeToLocalDateTime(m.system, t);
  const TDateTime setup = EncodeDateTime({2011, 6, 1, 0, 0, 0, 0});
  const TDateTime manifest = EncodeDateTime({2012, 7, 2, 0, 0, 0, 0});

  auto source = Command(L"C:\\Windows\\system32\\MsiExec.exe");
  EXPECT_EQ(DateOf(source), msiexec);
  source = Command(L"C:\\Windows\\system32\\MsiExec.exe /X{90120000-0030-0000-0000-0000000FF1CE}");
  EXPECT_EQ(DateOf(source), 0);  // the (empty) product code stands in for the command
  source.productCode = L"C:\\Data\\setup.exe";
  EXPECT_EQ(DateOf(source), setup);

  source.isBrowserAddon = true;
  source.addonPath = L"C:\\Users\\test\\ext\\install.rdf";
  EXPECT_EQ(DateOf(source), manifest);
  source.uninstallString = L"C:\\Data\\setup.exe";
  EXPECT_EQ(DateOf(source), manifest);
  source.addonPath = {};
  EXPECT_EQ(DateOf(source), 0);
}

TEST_F(UninstallCommandTest, InstallFolderIsTheUninstallersExistingSafeFolder) {
  m.files.AddFile(L"C:\\Program Files\\App\\unins000.exe");
  EXPECT_EQ(FolderOf(Command(L"\"C:\\Program Files\\App\\unins000.exe\" /SILENT")),
            L"C:\\PROGRAM FILES\\APP\\");
  EXPECT_EQ(FolderOf(Command(L"RunDll32.exe C:\\Program Files\\App\\x.dll,Uninstall")),
            L"C:\\PROGRAM FILES\\APP\\");
  // The file itself need not exist, its folder must.
  EXPECT_EQ(FolderOf(Command(L"C:\\Program Files\\App\\gone.exe")), L"C:\\PROGRAM FILES\\APP\\");
  EXPECT_EQ(FolderOf(Command(L"C:\\Program Files\\Gone\\u.exe")), L"");
  EXPECT_EQ(FolderOf(Command(L"u.exe")), L"");
  EXPECT_EQ(FolderOf(Command(L"")), L"");

  // Special folders are nobody's own folder.
  m.files.AddFile(L"C:\\Users\\test\\Desktop\\u.exe");
  m.files.AddFile(L"C:\\%Odd%\\u.exe");
  EXPECT_EQ(FolderOf(Command(L"C:\\Users\\test\\Desktop\\u.exe")), L"");
  EXPECT_EQ(FolderOf(Command(L"C:\\Windows\\system32\\rundll32.exe")), L"");
  EXPECT_EQ(FolderOf(Command(L"C:\\u.exe")), L"");
  EXPECT_EQ(FolderOf(Command(L"C:\\%Odd%\\u.exe")), L"");
  EXPECT_EQ(FolderOf(Command(L"C:\\Users\\test\\Desktop\\Tools\\u.exe")), L"");
  m.files.AddFolder(L"C:\\Users\\test\\Desktop\\Tools");
  EXPECT_EQ(FolderOf(Command(L"C:\\Users\\test\\Desktop\\Tools\\u.exe")),
            L"C:\\USERS\\TEST\\DESKTOP\\TOOLS\\");
}

TEST_F(UninstallCommandTest, FolderPathsAreCleanedAndMustExist) {
  m.files.AddFolder(L"C:\\Program Files\\App");
  m.files.AddFile(L"C:\\Program Files\\App\\a.exe");
  EXPECT_EQ(CleanFolder(L"C:\\Program Files\\App\\"), L"C:\\Program Files\\App\\");
  EXPECT_EQ(CleanFolder(L" \"C:\\Program Files\\\\App\" "), L"C:\\Program Files\\App");
  EXPECT_EQ(CleanFolder(L"\\??\\C:\\Program Files\\App"), L"C:\\Program Files\\App");
  EXPECT_EQ(CleanFolder(L"%ProgramFiles%\\App"), L"C:\\Program Files\\App");
  EXPECT_EQ(CleanFolder(L"C:\\Program Files\\App\\a.exe"), L"");
  EXPECT_EQ(CleanFolder(L"C:\\Program Files\\Gone"), L"");
  EXPECT_EQ(CleanFolder(L""), L"");
  // Unlike the install folder, a special folder passes.
  EXPECT_EQ(CleanFolder(L"C:\\Windows"), L"C:\\Windows");
}

TEST_F(UninstallCommandTest, RecordsSupplyCommandProductCodeAndManifest) {
  AddFileCreated(L"C:\\Windows\\system32\\msiexec.exe", {2009, 1, 1, 0, 0, 0, 0});
  AddFileCreated(L"C:\\Program Files\\App\\unins000.exe", {2010, 3, 15, 0, 0, 0, 0});
  AddFileCreated(L"C:\\Users\\test\\ext\\install.rdf", {2012, 7, 2, 0, 0, 0, 0});
  const TAppFrame frame(m.Get());

  TSoftInfo info;
  info.KeyPath = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\App";
  info.UninstallString = L"\"C:\\Program Files\\App\\unins000.exe\"";
  EXPECT_EQ(GetUninstallerFileDate(frame, info), EncodeDateTime({2010, 3, 15, 0, 0, 0, 0}));
  EXPECT_EQ(GetInstallFolderFromUninstallString(frame, info), L"C:\\PROGRAM FILES\\APP\\");

  // A toolbar whose file is a manifest is an add-on: the date is the manifest's.
  info.IsToolbar = true;
  info.ToolbarFile = L"C:\\Users\\test\\ext\\install.rdf";
  EXPECT_EQ(GetUninstallerFileDate(frame, info), EncodeDateTime({2012, 7, 2, 0, 0, 0, 0}));
  EXPECT_EQ(GetInstallFolderFromUninstallString(frame, info), L"C:\\PROGRAM FILES\\APP\\");
  info.IsToolbar = false;

  info.UninstallString = L"C:\\Windows\\system32\\MsiExec.exe";
  EXPECT_EQ(GetUninstallerFileDate(frame, info), EncodeDateTime({2009, 1, 1, 0, 0, 0, 0}));
  info.UninstallString += L" /X{90120000-0030-0000-0000-0000000FF1CE}";
  EXPECT_EQ(GetUninstallerFileDate(frame, info), 0);
  info.KeyPath = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\"
                 L"{90120000-0030-0000-0000-0000000FF1CE}";
  EXPECT_EQ(GetUninstallerFileDate(frame, info), 0);
  EXPECT_EQ(GetInstallFolderFromUninstallString(frame, info), L"");
}

TEST_F(UninstallCommandTest, ProductCodesPackIntoTheInstallerKeyForm) {
  EXPECT_EQ(MsiProductCodeToPackedGuid(L"{90120000-0030-0000-0000-0000000FF1CE}"),
            L"00002109030000000000000000F01FEC");
  EXPECT_EQ(MsiProductCodeToPackedGuid(L"{12345678-ABCD-EF01-2345-6789ABCDEF01}"),
            L"87654321DCBA10FE32547698BADCFE10");
  EXPECT_EQ(MsiProductCodeToPackedGuid(L"{12345678-abcd-ef01-2345-6789abcdef01}"),
            L"87654321DCBA10FE32547698BADCFE10");

  for (std::wstring_view bad : {L"", L"12345678-ABCD-EF01-2345-6789ABCDEF01",
                                L"{12345678-ABCD-EF01-2345-6789ABCDEF0}",
                                L"{1234567-8ABCD-EF01-2345-6789ABCDEF01}",
                                L"{12345678-ABCD-EF01-2345-6789ABCDEFG1}"}) {
    EXPECT_EQ(MsiProductCodeToPackedGuid(bad), L"") << std::wstring(bad);
  }
}

}  // namespace
}  // namespace varnel
