#include <gtest/gtest.h>

#include "base/text.h"
#include "leftovers/scan_steps.h"
#include "scan_world.h"

namespace varnel {
namespace {

using testing_scan::ExpectReported;
using testing_scan::Key;
using testing_scan::ScanWorld;
using testing_scan::Value;
constexpr RegRoot HKLM = RegRoot::LocalMachine;
constexpr RegRoot HKCU = RegRoot::CurrentUser;
constexpr RegRoot HKCR = RegRoot::ClassesRoot;

const std::wstring kFolder = L"C:\\Program Files\\Acme\\Writer";
const std::wstring kSibling = L"C:\\Program Files\\Acme\\Writer2";  // another program
const std::wstring kClasses = L"\\SOFTWARE\\Classes\\";
const std::wstring kClsid = L"\\SOFTWARE\\Classes\\CLSID\\";
const std::wstring kVersion = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\";
const std::wstring kA = L"{AAAAAAAA-0000-0000-0000-000000000001}";
const std::wstring kB = L"{AAAAAAAA-0000-0000-0000-000000000002}";
const std::wstring kAppId = L"{AAAAAAAA-0000-0000-0000-0000000000A0}";
const std::wstring kLib = L"{AAAAAAAA-0000-0000-0000-0000000000B0}";


class LeftoverComTest : public testing::Test {
 protected:
  void Set(RegRoot root, const std::wstring& path, const std::wstring& name,
           const std::wstring& value = L"") {
    w.Set(root, path, name, value);
  }
  void Class(const std::wstring& id, const std::wstring& inproc, const std::wstring& local = L"") {
    if (!inproc.empty()) Set(HKLM, kClsid + id + L"\\InprocServer32", L"", inproc);
    if (!local.empty()) Set(HKLM, kClsid + id + L"\\LocalServer32", L"", local);
  }
  // A class with its AppID, type library and ProgID.
  void ComServer(const std::wstring& id, const std::wstring& folder, const std::wstring& tag) {
    Class(id, folder + L"\\" + tag + L".dll");
    Set(HKLM, kClsid + id, L"AppID", L"{APP-" + tag + L"}");
    Set(HKLM, kClasses + L"AppID\\{APP-" + tag + L"}", L"", tag);
    Set(HKLM, kClsid + id + L"\\TypeLib", L"", L"{LIB-" + tag + L"}");
    Set(HKLM, kClasses + L"TypeLib\\{LIB-" + tag + L"}\\1.0\\0\\win32", L"", L"x.tlb");
    Set(HKLM, kClsid + id + L"\\ProgID", L"", tag + L".Object.1");
    Set(HKLM, kClasses + tag + L".Object.1\\CLSID", L"", id);
  }
  // Everything a program can register outside its classes, named by `tag`.
  void ShellFootprint(const std::wstring& folder, const std::wstring& tag) {
    const std::wstring exe = L"\"" + folder + L"\\" + tag + L".exe\"";
    Set(HKLM, kVersion + L"Run", tag, exe + L" /tray");
    Set(HKLM, kVersion + L"App Paths\\" + tag + L".exe", L"Path", folder);
    Set(HKLM, kVersion + L"Control Panel\\Cpls", tag, folder + L"\\" + tag + L".cpl");
    Set(HKLM, L"\\SOFTWARE\\Clients\\Mail\\" + tag + L"\\shell\\open\\command", L"", exe);
    Set(HKLM, kClasses + tag + L".Doc\\shell\\open\\command", L"", exe + L" \"%1\"");
    Set(HKLM, kClasses + L"." + tag, L"", tag + L".Doc");
    Set(HKLM, kClasses + L"*\\shell\\" + tag + L"Open\\command", L"", exe);
    Set(HKLM, kClasses + L"Directory\\shell\\" + tag + L"Here\\command", L"", exe);
  }
  std::vector<std::wstring> Full() { return all = w.Full(); }
  bool Has(const std::wstring& caption) const { return ScanWorld::Has(all, caption); }
  int Count(const std::wstring& caption) const { return ScanWorld::CountOf(all, caption); }

  ScanWorld w;
  std::vector<std::wstring> all;
};

TEST_F(LeftoverComTest, ServerClassesBringTheirKeysAndTheirAttachments) {
  // InprocServer32 elsewhere, LocalServer32 inside: the class is the program's.
  Class(kA, L"C:\\Windows\\system32\\ole32.dll", L"\"" + kFolder + L"\\writer.exe\" /automation");
  Set(HKLM, kClsid + kA, L"AppID", kAppId);
  Set(HKLM, kClasses + L"AppID\\" + kAppId, L"", L"Writer");
  Set(HKLM, kClsid + kA + L"\\TypeLib", L"", kLib);
  Set(HKLM, kClasses + L"TypeLib\\" + kLib + L"\\1.0\\0\\win32", L"", L"C:\\elsewhere\\w.tlb");
  Set(HKLM, kClsid + kA + L"\\ProgID", L"", L"Acme.Writer.1");
  Set(HKLM, kClasses + L"Acme.Writer.1\\CLSID", L"", kA);
  Set(HKCU, L"\\Software\\Classes\\CLSID\\" + kA, L"", L"user copy");
  Set(HKLM, L"\\SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar", kA, L"bar");
  Set(HKLM, L"\\SOFTWARE\\Microsoft\\Internet Explorer\\Extensions\\" + kA, L"ButtonText", L"W");
  Set(HKLM, kVersion + L"Ext\\PreApproved\\" + kA, L"", L"");
  Set(HKLM,
      L"\\SOFTWARE\\Classes\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Ext\\Settings\\" + kA,
      L"Flags", L"1");
  Set(HKCU, L"\\Software\\Microsoft\\Windows\\CurrentVersion\\Ext\\Stats\\" + kA + L"\\iexplore",
      L"Count", L"3");
  Set(HKCU, L"\\Software\\Microsoft\\Internet Explorer\\Toolbar\\WebBrowser", kA, L"web");
  Set(HKLM, kVersion + L"Explorer\\Browser Helper Objects\\" + kA, L"NoExplorer", L"1");
  // A second class of the program, written in short form, shares the AppID;
  // a third lies in D:\backup\ but its path holds the install folder.
  w.m.files.SetShortName(L"C:\\Program Files", L"PROGRA~1");
  w.m.files.AddFile(kFolder + L"\\writer.dll", "MZ");
  Class(kB, L"C:\\PROGRA~1\\Acme\\Writer\\writer.dll");
  Set(HKLM, kClsid + kB, L"AppID", kAppId);
  const std::wstring kD = L"{AAAAAAAA-0000-0000-0000-000000000004}";
  Class(kD, L"D:\\backup\\c:\\program files\\acme\\writer\\x.dll");
  Full();

  for (const auto& id : {kA, kB, kD}) {
    EXPECT_TRUE(Has(Key(HKLM, kClsid + id))) << text::ToUtf8(id);
    EXPECT_TRUE(Has(Key(HKCR, L"\\CLSID\\" + id)));
  }
  EXPECT_TRUE(Has(Key(HKLM, kClsid + kA + L"\\LocalServer32")));  // recursive
  EXPECT_TRUE(Has(Key(HKCU, L"\\Software\\Classes\\CLSID\\" + kA)));
  EXPECT_FALSE(Has(Key(HKCU, L"\\Software\\Classes\\CLSID\\" + kB)));
  EXPECT_EQ(Count(Key(HKLM, kClasses + L"AppID\\" + kAppId)), 1);
  EXPECT_EQ(Count(Key(HKCR, L"\\AppID\\" + kAppId)), 1);
  ExpectReported(all, {
      {Key(HKLM, kClasses + L"TypeLib\\" + kLib), true},
      {Key(HKCR, L"\\TypeLib\\" + kLib + L"\\1.0\\0\\win32"), true},
      {Key(HKLM, kClasses + L"Acme.Writer.1"), true},
      {Key(HKCR, L"\\Acme.Writer.1"), true},
      {Value(HKLM, L"\\SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar", kA, L"bar"), true},
      {Key(HKLM, L"\\SOFTWARE\\Microsoft\\Internet Explorer\\Extensions\\" + kA), true},
      {Key(HKLM, kVersion + L"Ext\\PreApproved\\" + kA), true},
  });
  EXPECT_TRUE(Has(Key(
      HKLM,
      L"\\SOFTWARE\\Classes\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Ext\\Settings\\" + kA)));
  EXPECT_TRUE(Has(Key(
      HKCU, L"\\Software\\Microsoft\\Windows\\CurrentVersion\\Ext\\Stats\\" + kA + L"\\iexplore")));
  EXPECT_TRUE(Has(
      Value(HKCU, L"\\Software\\Microsoft\\Internet Explorer\\Toolbar\\WebBrowser", kA, L"web")));
  EXPECT_TRUE(Has(Key(HKLM, kVersion + L"Explorer\\Browser Helper Objects\\" + kA)));
}

// A verb added to a class Windows ships is the program's; the class is not.
TEST_F(LeftoverComTest, AClassReachedByAVerbBringsOnlyTheVerb) {
  Class(kA, L"C:\\Windows\\system32\\shell32.dll");
  Set(HKLM, kClsid + kA + L"\\shell\\open\\command", L"", L"\"" + kFolder + L"\\writer.exe\" %1");
  Set(HKLM, kClsid + kA, L"AppID", kAppId);
  Set(HKLM, kClasses + L"AppID\\" + kAppId, L"", L"");
  Set(HKLM, kClsid + kA + L"\\ProgID", L"", L"Shell.Thing");
  Set(HKLM, kClasses + L"Shell.Thing", L"", L"thing");
  Full();
  ExpectReported(all, {
      {Key(HKLM, kClsid + kA + L"\\shell\\open"), true},
      {Key(HKCR, L"\\CLSID\\" + kA + L"\\shell\\open"), true},
      {Key(HKLM, kClsid + kA), false},
      {Key(HKLM, kClasses + L"AppID\\" + kAppId), false},
      {Key(HKLM, kClasses + L"Shell.Thing"), false},
  });
}

TEST_F(LeftoverComTest, AppIdNamesAndInterfacesFollowWhatTheClassesFiled) {
  ComServer(kA, kFolder, L"Writer");
  ComServer(kB, kSibling, L"Other");
  Set(HKLM, kClasses + L"AppID\\writer.exe", L"AppID", L"{APP-Writer}");
  Set(HKLM, kClasses + L"AppID\\other.exe", L"AppID", L"{APP-Other}");
  const std::wstring iface = kClasses + L"Interface\\";
  // Tied by the class's type library although its proxy is the system's.
  Set(HKLM, iface + L"{I1}\\TypeLib", L"", L"{LIB-Writer}");
  Set(HKLM, iface + L"{I1}\\ProxyStubClsid32", L"", L"{00020424-0000-0000-C000-000000000046}");
  Set(HKLM, iface + L"{I2}\\ProxyStubClsid32", L"", kA);
  // A library no class names, whose file lies in the folder.
  Set(HKLM, iface + L"{I3}\\TypeLib", L"", L"{LIB-Loose}");
  Set(HKLM, kClasses + L"TypeLib\\{LIB-Loose}\\2.0\\409\\win64", L"", kFolder + L"\\loose.tlb");
  Set(HKLM, iface + L"{I4}\\TypeLib", L"", L"{LIB-Other}");
  Set(HKLM, iface + L"{I5}\\ProxyStubClsid32", L"", kB);
  Full();
  EXPECT_TRUE(Has(Key(HKLM, kClasses + L"AppID\\writer.exe")));
  EXPECT_TRUE(Has(Key(HKCR, L"\\AppID\\writer.exe")));
  for (const auto* id : {L"{I1}", L"{I2}", L"{I3}"}) {
    EXPECT_TRUE(Has(Key(HKLM, iface + id))) << text::ToUtf8(id);
    EXPECT_TRUE(Has(Key(HKCR, L"\\Interface\\" + std::wstring(id))));
  }
  EXPECT_TRUE(Has(Key(HKLM, kClasses + L"TypeLib\\{LIB-Loose}")));
  for (const auto& caption : all) {
    EXPECT_EQ(caption.find(L"Other"), std::wstring::npos) << text::ToUtf8(caption);
    EXPECT_EQ(caption.find(L"{I4}"), std::wstring::npos);
    EXPECT_EQ(caption.find(L"{I5}"), std::wstring::npos);
  }
}

TEST_F(LeftoverComTest, ShellEntriesOfTheFolderAreFoundAndNoneOfTheSiblingFolder) {
  ShellFootprint(kFolder, L"writer");
  ShellFootprint(kSibling, L"other");
  Set(HKCU, kVersion + L"Run", L"writer", kFolder + L"\\writer.exe");
  // The cache as Windows writes it (values only) yields nothing: only subkey
  // names are compared, and no key name can hold a folder path.
  const std::wstring mui = L"\\Software\\Microsoft\\Windows\\ShellNoRoam\\MUICache";
  Set(HKCU, mui, kFolder + L"\\writer.exe", L"Writer");
  Full();
  EXPECT_FALSE(Has(Value(HKCU, mui, kFolder + L"\\writer.exe", L"Writer")));

  const std::wstring exe = L"\"" + kFolder + L"\\writer.exe\"";
  EXPECT_TRUE(Has(Value(HKLM, kVersion + L"Run", L"writer", exe + L" /tray")));
  EXPECT_TRUE(Has(Value(HKCU, kVersion + L"Run", L"writer", kFolder + L"\\writer.exe")));
  EXPECT_TRUE(Has(Key(HKLM, kVersion + L"App Paths\\writer.exe")));  // Path without "\"
  EXPECT_TRUE(
      Has(Value(HKLM, kVersion + L"Control Panel\\Cpls", L"writer", kFolder + L"\\writer.cpl")));
  ExpectReported(all, {
      {Key(HKLM, L"\\SOFTWARE\\Clients\\Mail\\writer"), true},
      {Key(HKLM, L"\\SOFTWARE\\Clients\\Mail\\writer\\shell\\open\\command"), true},
      {Key(HKLM, L"\\SOFTWARE\\Clients\\Mail"), false},
      {Key(HKLM, kClasses + L"writer.Doc"), true},
      {Key(HKCR, L"\\writer.Doc"), true},
      {Key(HKLM, kClasses + L".writer"), true},
      {Key(HKCR, L"\\.writer"), true},
      {Key(HKLM, kClasses + L"*\\shell\\writerOpen"), true},
      {Key(HKCR, L"\\*\\shell\\writerOpen"), true},
      {Key(HKLM, kClasses + L"Directory\\shell\\writerHere"), true},
      {Key(HKCR, L"\\Directory\\shell\\writerHere"), true},
  });
  for (const auto& caption : all) {
    EXPECT_EQ(text::Lower(caption).find(L"other"), std::wstring::npos) << text::ToUtf8(caption);
    // Keys that hold other programs' entries are never reported whole.
    EXPECT_FALSE(caption.ends_with(L"\\*\\shell") || caption.ends_with(L"\\Directory") ||
                 caption.ends_with(L"\\Directory\\shell"))
        << text::ToUtf8(caption);
  }
}

TEST_F(LeftoverComTest, SharedClassesAndExtensionsLoseOnlyTheProgramsEntries) {
  ComServer(kA, kFolder, L"Writer");
  const std::wstring exe = kFolder + L"\\writer.exe";
  // The version-independent ProgID names the class; the document class has a verb.
  Set(HKLM, kClasses + L"Writer.Object\\CLSID", L"", kA);
  Set(HKLM, kClasses + L"Writer.Object\\CurVer", L"", L"Writer.Object.1");
  Set(HKLM, kClasses + L"Acme.Doc\\DefaultIcon", L"", exe + L",0");
  Set(HKLM, kClasses + L"Acme.Doc\\shellex\\ContextMenuHandlers\\Writer", L"", kA);
  // txtfile keeps its own verb and loses the program's.
  Set(HKLM, kClasses + L"txtfile\\shell\\open\\command", L"", L"notepad.exe %1");
  Set(HKLM, kClasses + L"txtfile\\shell\\edit\\command", L"", exe + L" %1");
  // .txt merely lists the program among its "open with" classes.
  Set(HKLM, kClasses + L".txt", L"", L"txtfile");
  Set(HKLM, kClasses + L".txt\\OpenWithProgids", L"Acme.Doc", L"");
  Set(HKLM, kClasses + L".txt\\OpenWithProgids", L"txtfile", L"");
  Set(HKLM, kClasses + L".wdoc", L"", L"Acme.Doc");
  // A type that Windows defines keeps its key even when it names the program.
  Set(HKLM, kClasses + L".wtxt", L"", L"Acme.Doc");
  Set(HKLM, kClasses + L".wtxt", L"Content Type", L"text/plain");
  // Folder is everybody's, even when the program's verb is all it holds.
  Set(HKLM, kClasses + L"Folder\\shell\\WriterHere\\command", L"", exe);
  Set(HKLM, kClasses + L"*\\shellex\\ContextMenuHandlers\\Writer", L"", kA);
  Set(HKLM, kClasses + L"*\\shellex\\ContextMenuHandlers\\Zip", L"", L"{ZIP}");
  Set(HKLM, kVersion + L"Shell Extensions\\Approved", kA, L"Writer menu");
  Set(HKLM, kVersion + L"Shell Extensions\\Approved", L"{ZIP}", L"Zip menu");
  // A per-user install: its extension names a class of the user's own.
  Set(HKCU, L"\\Software\\Classes\\.wnote", L"", L"Acme.Note");
  Set(HKCU, L"\\Software\\Classes\\Acme.Note\\shell\\open\\command", L"", exe);
  Full();
  ExpectReported(all, {
      {Key(HKLM, kClasses + L"Writer.Object"), true},
      {Key(HKLM, kClasses + L"Acme.Doc"), true},
      {Key(HKCR, L"\\Acme.Doc"), true},
      {Key(HKLM, kClasses + L"txtfile\\shell\\edit"), true},
      {Key(HKLM, kClasses + L"txtfile"), false},
      {Key(HKLM, kClasses + L"txtfile\\shell\\open"), false},
      {Value(HKLM, kClasses + L".txt\\OpenWithProgids", L"Acme.Doc", L""), true},
      {Key(HKLM, kClasses + L".txt"), false},
      {Value(HKLM, kClasses + L".txt\\OpenWithProgids", L"txtfile", L""), false},
      {Key(HKLM, kClasses + L".wdoc"), true},
      {Key(HKLM, kClasses + L".wtxt"), false},
      {Key(HKLM, kClasses + L"Folder\\shell\\WriterHere"), true},
      {Key(HKLM, kClasses + L"Folder"), false},
      {Key(HKLM, kClasses + L"*\\shellex\\ContextMenuHandlers\\Writer"), true},
      {Key(HKCR, L"\\*\\shellex\\ContextMenuHandlers\\Writer"), true},
      {Key(HKLM, kClasses + L"*\\shellex\\ContextMenuHandlers\\Zip"), false},
      {Key(HKLM, kClasses + L"*\\shellex\\ContextMenuHandlers"), false},
      {Value(HKLM, kVersion + L"Shell Extensions\\Approved", kA, L"Writer menu"), true},
      {Value(HKLM, kVersion + L"Shell Extensions\\Approved", L"{ZIP}", L"Zip menu"), false},
      {Key(HKCU, L"\\Software\\Classes\\.wnote"), true},
      {Key(HKCU, L"\\Software\\Classes\\Acme.Note"), true},
  });
}

TEST_F(LeftoverComTest, AHandlerWhoseClassIsGoneDoesNotMakeAClassShared) {
  const std::wstring exe = L"\"" + kFolder + L"\\writer.exe\" \"%1\"";
  const std::wstring gone = L"{0E2F2D5C-0000-4000-8000-000000000001}";
  const std::wstring other = L"{0E2F2D5C-0000-4000-8000-000000000002}";
  Class(other, L"C:\\Program Files\\Zipper\\zip.dll");
  for (const wchar_t* name : {L"Acme.Old", L"Acme.Mixed"})
    Set(HKLM, kClasses + name + L"\\shell\\open\\command", L"", exe);
  Set(HKLM, kClasses + L"Acme.Old\\shellex\\ContextMenuHandlers\\Writer", L"", gone);
  Set(HKLM, kClasses + L"Acme.Mixed\\shellex\\ContextMenuHandlers\\Zip", L"", other);
  Full();
  ExpectReported(all, {
      {Key(HKLM, kClasses + L"Acme.Old"), true},
      {Key(HKLM, kClasses + L"Acme.Mixed"), false},
      {Key(HKLM, kClasses + L"Acme.Mixed\\shell\\open"), true},
  });
}

TEST_F(LeftoverComTest, AToolbarScanReportsItsValuesAndItsOwnClass) {
  Class(kA, kFolder + L"\\bar.dll");
  Set(HKLM, L"\\SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar", kA, L"");
  Set(HKCU, L"\\Software\\Microsoft\\Internet Explorer\\Toolbar\\WebBrowser", kA, L"x");
  Set(HKCU, L"\\Software\\Microsoft\\Internet Explorer\\Toolbar\\WebBrowser", kB, L"y");
  w.SetUp().ToolbarScan(kA);
  all = w.Captions();
  const std::wstring bar = L"\\SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar";
  EXPECT_TRUE(Has(Value(HKLM, bar, kA, L"")));  // named, so reported although empty
  const std::wstring web = L"\\Software\\Microsoft\\Internet Explorer\\Toolbar\\WebBrowser";
  ExpectReported(all, {
      {Value(HKCU, web, kA, L"x"), true},
      {Value(HKCU, web, kB, L"y"), false},
      {Key(HKLM, kClsid + kA), true},
      {Key(HKCR, L"\\CLSID\\" + kA), true},
  });
}

}  // namespace
}  // namespace varnel
