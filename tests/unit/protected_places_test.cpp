#include <gtest/gtest.h>

#include "core/path_resolution.h"
#include "core/protected_places.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

constexpr const wchar_t* kProfileList =
    L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList";

// A machine with a second profile, one program beside the one looked at,
// an 8.3 alias and a junction a user could make into the Windows folder.
class ProtectedPlacesTest : public testing::Test {
 protected:
  ProtectedPlacesTest() {
    m.files.AddFolder(L"C:\\Program Files\\App");
    m.files.AddFolder(L"C:\\Program Files\\Other App\\plugins");
    m.files.SetShortName(L"C:\\Program Files", L"PROGRA~1");
    m.files.AddFolder(L"C:\\Users\\alice");
    m.registry.SetString(RegRoot::LocalMachine, std::wstring(kProfileList) + L"\\S-1-5-21-7",
                         L"ProfileImagePath", L"%SystemDrive%\\Users\\alice", true,
                         RegType::ExpandString);
    m.system.environment[L"SYSTEMDRIVE"] = L"C:";
    m.files.AddLink(L"C:\\Users\\test\\Links\\Evil", L"C:\\Windows");
    m.files.AddFile(L"C:\\Windows\\notepad.exe", "MZ");
  }
  std::wstring Resolve(std::wstring_view path, bool expand = false) {
    return ResolvePath(m.Get(), path, expand);
  }
  ProtectedPlaces Places() { return ProtectedPlaces(m.Get(), {L"C:\\Program Files\\Other App"}); }

  mem::MemoryPlatform m;
};

TEST_F(ProtectedPlacesTest, EverySpellingResolvesToOnePath) {
  const struct {
    const wchar_t* given;
    bool expand;
    const wchar_t* resolved;
  } cases[] = {
      {L"c:/program files//app/", false, L"C:\\Program Files\\App"},
      {L"\\\\?\\C:\\windows\\SYSTEM32", false, L"C:\\Windows\\system32"},
      {L"\\\\.\\C:\\Windows", false, L"C:\\Windows"},
      {L"C:\\Program Files\\Other App\\plugins\\..\\..\\App", false, L"C:\\Program Files\\App"},
      {L"C:\\.\\..\\..\\Windows\\.", false, L"C:\\Windows"},
      {L"C:\\Windows. .\\system32 ", false, L"C:\\Windows\\system32"},
      {L"%SystemRoot%\\System32", true, L"C:\\Windows\\system32"},
      {L"C:\\PROGRA~1\\app", false, L"C:\\Program Files\\App"},
      {L" C:\\Program Files\\App ", false, L"C:\\Program Files\\App"},
      {L"\"C:\\Program Files\\App\"", false, L""},
      {L"C:\\Gone\\Deeper\\..\\Kept", false, L"C:\\Gone\\Kept"},
      {L"C:\\/", false, L"C:\\"},
      {L"\\\\?\\UNC\\server\\share\\x\\..", false, L"\\\\server\\share\\"},
      // Not a local path one could compare: relative, drive-relative, a
      // device, a wildcard, a stream, an unexpanded reference.
      {L"Program Files\\App", false, L""},
      {L"C:App", false, L""},
      {L"\\\\.\\PhysicalDrive0", false, L""},
      {L"C:\\App\\NUL.txt", false, L""},
      {L"C:\\App*", false, L""},
      {L"C:\\App\\file.txt:hidden", false, L""},
      {L"%SystemRoot%\\System32", false, L""},
      {L"%NOSUCHNAME%\\x", true, L""},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Resolve(c.given, c.expand), c.resolved) << c.given;
  EXPECT_TRUE(PathIsOrIsBelow(L"C:\\App\\x", L"c:\\app"));
  EXPECT_TRUE(PathIsOrIsBelow(L"C:\\App", L"C:\\"));
  EXPECT_FALSE(PathIsOrIsBelow(L"C:\\App2", L"C:\\App"));
}

TEST_F(ProtectedPlacesTest, InstallFolderRefusesEveryProtectedKind) {
  const auto places = Places();
  const struct {
    const wchar_t* given;
    Refusal refusal;
  } cases[] = {
      {L"C:\\/", Refusal::DriveRoot},
      {L"\\\\?\\C:\\windows\\system32", Refusal::WindowsFolder},
      {L"C:\\Windows\\Temp\\App", Refusal::WindowsFolder},
      {L"C:\\PROGRA~1", Refusal::SystemRoot},
      {L"C:\\Program Files (x86)", Refusal::SystemRoot},
      {L"C:\\ProgramData\\", Refusal::SystemRoot},
      {L"c:\\users", Refusal::SystemRoot},
      {L"C:\\Users\\alice", Refusal::ProfileFolder},
      {L"C:\\Users\\test\\AppData\\Roaming", Refusal::ProfileFolder},
      {L"C:\\Users\\test\\Downloads", Refusal::ProfileFolder},
      {L"C:\\Users\\test\\AppData\\Roaming\\Microsoft", Refusal::HoldsProtected},
      {L"C:\\Program Files\\Other App\\plugins\\..", Refusal::OtherProgram},
      {L"C:\\Program Files\\Other App\\plugins", Refusal::OtherProgram},
      {L"C:\\Users\\test\\Links\\Evil", Refusal::Link},
      {L"%ProgramFiles%", Refusal::Unresolvable},
      {L"\\\\server\\share\\App", Refusal::Unresolvable},
      {L"C:\\PROGRA~1\\App\\", Refusal::None},
      {L"C:\\Users\\test\\AppData\\Local\\Programs\\App", Refusal::None},
  };
  for (const auto& c : cases)
    EXPECT_EQ(places.CheckInstallFolder(Resolve(c.given)), c.refusal) << c.given;

  // A folder holding another program's is refused once that program is listed.
  EXPECT_EQ(ProtectedPlaces(m.Get(), {L"C:\\Program Files\\App\\Sub"})
                .CheckInstallFolder(Resolve(L"C:\\Program Files\\App")),
            Refusal::OtherProgram);
  // A hostile other entry naming a protected folder protects nothing more.
  EXPECT_EQ(ProtectedPlaces(m.Get(), {L"C:\\", L"C:\\Program Files", L"rel"})
                .CheckInstallFolder(Resolve(L"C:\\Program Files\\App")),
            Refusal::None);
}

TEST_F(ProtectedPlacesTest, DeletionPassesContentsButNotTheFoldersOrThroughLinks) {
  const auto places = Places();
  const std::wstring code = L"{11111111-2222-3333-4444-555555555555}";
  const struct {
    const wchar_t* given;
    const std::wstring productCode;
    Refusal refusal;
  } cases[] = {
      {L"C:\\Users\\test\\Documents\\report.txt", L"", Refusal::None},
      {L"C:\\Users\\test\\Documents", L"", Refusal::ProfileFolder},
      {L"C:\\Users\\test\\AppData\\Roaming\\Microsoft", L"", Refusal::HoldsProtected},
      {L"C:\\Windows\\Installer\\{11111111-2222-3333-4444-555555555555}\\a.ico", code,
       Refusal::None},
      {L"C:\\Windows\\Installer\\{11111111-2222-3333-4444-555555555555}", L"", Refusal::WindowsFolder},
      {L"C:\\Windows\\Installer", code, Refusal::WindowsFolder},
      {L"C:\\Program Files\\Other App\\plugins\\x.dll", L"", Refusal::OtherProgram},
      {L"C:\\Users\\test\\Links\\Evil\\notepad.exe", L"", Refusal::Link},
      {L"C:\\Users\\test\\Links\\Evil", L"", Refusal::None},  // removed as a link
  };
  for (const auto& c : cases)
    EXPECT_EQ(places.CheckDeletion(Resolve(c.given), c.productCode), c.refusal) << c.given;
}

TEST_F(ProtectedPlacesTest, RegistryRefusesWindowsKeysAndWhatHoldsThemOnly) {
  const struct {
    RegRoot root;
    const wchar_t* key;
    bool wholeKey;
    bool refused;
  } cases[] = {
      {RegRoot::LocalMachine, L"", true, true},
      {RegRoot::LocalMachine, L"\\SOFTWARE\\", true, true},
      {RegRoot::LocalMachine, L"SOFTWARE\\WOW6432Node\\Microsoft", true, true},
      {RegRoot::ClassesRoot, L"CLSID", true, true},
      {RegRoot::Users, L"S-1-5-21-7_Classes\\Wow6432Node\\CLSID", true, true},
      {RegRoot::CurrentUser, L"Software\\Microsoft\\Windows\\CurrentVersion\\Run", true, true},
      {RegRoot::LocalMachine, L"SYSTEM\\ControlSet001\\Services", true, true},
      {RegRoot::LocalMachine, L"SYSTEM\\CurrentControlSet\\Enum\\ROOT", true, true},
      {RegRoot::ClassesRoot, L"txtfile", true, true},
      {RegRoot::ClassesRoot, L"txtfile\\shell\\open\\command", true, true},
      {RegRoot::ClassesRoot, L"*\\shellex\\ContextMenuHandlers", true, true},
      {RegRoot::ClassesRoot, L".exe", true, true},
      // What a program added below them is its own.
      {RegRoot::CurrentUser, L"Software\\Microsoft\\Windows\\CurrentVersion\\Run", false, false},
      {RegRoot::ClassesRoot, L"CLSID\\{0A0A0A0A-1111-2222-3333-444444444444}", true, false},
      {RegRoot::ClassesRoot, L"txtfile\\shell\\Open with App", true, false},
      {RegRoot::ClassesRoot, L"*\\shellex\\ContextMenuHandlers\\App", true, false},
      {RegRoot::ClassesRoot, L".xyz", true, false},
      {RegRoot::LocalMachine, L"SYSTEM\\CurrentControlSet\\Services\\AppSvc", true, false},
      {RegRoot::LocalMachine, L"SYSTEM\\CurrentControlSet\\Enum\\ROOT\\LEGACY_APPSVC", true, false},
      {RegRoot::LocalMachine, L"SOFTWARE\\WOW6432Node\\Vendor\\App", true, false},
  };
  for (const auto& c : cases)
    EXPECT_EQ(ProtectedPlaces::CheckRegistryKey(c.root, c.key, c.wholeKey) == Refusal::RegistryRoot,
              c.refused)
        << c.key;
}

TEST_F(ProtectedPlacesTest, MemoryJunctionsBehaveAsWindowsOnes) {
  std::vector<FindEntry> found;
  ASSERT_TRUE(m.files.FindEntries(L"C:\\Users\\test\\Links\\Evil\\*.exe", found));
  EXPECT_EQ(found[0].name, L"notepad.exe");
  EXPECT_TRUE(*m.files.GetAttributes(L"C:\\Users\\test\\Links\\Evil") & FileAttr::ReparsePoint);
  m.files.AddLink(L"C:\\Loop\\Self", L"C:\\Loop");
  std::wstring deep = L"C:\\Loop";
  for (int i = 0; i < 70; ++i) deep += L"\\Self";
  EXPECT_FALSE(m.files.GetAttributes(deep));
  EXPECT_TRUE(m.files.RemoveFolder(L"C:\\Users\\test\\Links\\Evil"));
  EXPECT_TRUE(m.files.FileExists(L"C:\\Windows\\notepad.exe"));
}

}  // namespace
}  // namespace varnel
