#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "base/text.h"
#include "inventory/software_info.h"
#include "inventory/toolbar_folding.h"
#include "inventory/uninstall_keys.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

constexpr std::wstring_view kUninstall = L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall";

class UninstallKeysTest : public testing::Test {
 protected:
  std::wstring Key(std::wstring_view name) { return std::wstring(kUninstall) + L"\\" + std::wstring(name); }

  // A minimal usable entry.
  void Entry(RegRoot root, std::wstring_view key, std::wstring_view name, bool use64 = true,
             std::wstring_view uninstall = L"C:\\App\\unins000.exe") {
    m.registry.SetString(root, Key(key), L"DisplayName", name, use64);
    m.registry.SetString(root, Key(key), L"UninstallString", uninstall, use64);
  }
  void Set(RegRoot root, std::wstring_view key, std::wstring_view value, std::wstring_view data,
           bool use64 = true) {
    m.registry.SetString(root, Key(key), value, data, use64);
  }

  SoftList Collect() {
    SoftList list;
    CollectInstalledSoftware(TAppFrame(m.Get()), list);
    return list;
  }
  static std::vector<const TSoftInfo*> Visible(const SoftList& list) {
    std::vector<const TSoftInfo*> out;
    for (const auto& info : list)
      if (!info->Hidden) out.push_back(info.get());
    return out;
  }

  mem::MemoryPlatform m;
  const RegRoot HKLM = RegRoot::LocalMachine;
  const RegRoot HKCU = RegRoot::CurrentUser;
};

TEST_F(UninstallKeysTest, ARecordTakesItsFieldsFromTheKey) {
  Entry(HKLM, L"Acme", L"  Acme Writer  ", true, L"\"C:\\Program Files\\Acme\\uninst.exe\" /S");
  Set(HKLM, L"Acme", L"Publisher", L" Acme Corp ");
  Set(HKLM, L"Acme", L"DisplayVersion", L"2.1");
  Set(HKLM, L"Acme", L"URLInfoAbout", L" https://acme.example ");
  Set(HKLM, L"Acme", L"InstallDate", L"20100315");
  Set(HKLM, L"Acme", L"DisplayIcon", L"C:\\Program Files\\Acme\\acme.exe,0");
  Set(HKLM, L"Acme", L"Readme", L"C:\\Program Files\\Acme\\readme.txt");
  m.registry.SetDWord(HKLM, Key(L"Acme"), L"EstimatedSize", 2048);
  m.files.AddFolder(L"C:\\Program Files\\Acme");
  Set(HKLM, L"Acme", L"InstallLocation", L"C:\\Program Files\\Acme");

  auto list = Collect();
  ASSERT_EQ(list.size(), 1u);
  const TSoftInfo& a = *list[0];
  EXPECT_EQ(a.Name, L"Acme Writer");
  EXPECT_EQ(a.Publisher, L"Acme Corp");
  EXPECT_EQ(a.Version, L"2.1");
  EXPECT_EQ(a.HelpLink, L"-");
  EXPECT_EQ(a.URLInfoAbout, L" https://acme.example ") << "kept as read";
  EXPECT_EQ(a.UninstallString, L"\"C:\\Program Files\\Acme\\uninst.exe\" /S");
  EXPECT_EQ(a.RootKey, L"HKEY_LOCAL_MACHINE");
  EXPECT_EQ(a.KeyPath, L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Acme");
  EXPECT_EQ(a.Size, 2097152);
  EXPECT_EQ(a.SizeText, L"2.00 MB");
  EXPECT_EQ(a.InstallDate, *TryEncodeDate(2010, 3, 15));
  EXPECT_EQ(a.InstallDateText, L"3/15/2010");
  EXPECT_EQ(a.InstallLocation, L"C:\\Program Files\\Acme");
  EXPECT_EQ(a.Readme, L"C:\\Program Files\\Acme\\readme.txt");
  EXPECT_TRUE(a.Is64BitView);
  EXPECT_FALSE(a.IsSystemComponent || a.IsWindowsUpdate || a.IsToolbar || a.Hidden);
  EXPECT_EQ(a.LastAccessDate, NowLocal(m.system));
}

TEST_F(UninstallKeysTest, InstallDatesParseOnlyInTheirPackedForm) {
  struct Case {
    const wchar_t* raw;
    const wchar_t* text;
  } cases[] = {
      {L"20100315", L"3/15/2010"}, {L"2010-03-15", L""}, {L"20101315", L""},
      {L"2010", L""},              {L"", L""},           {L"20000229", L"2/29/2000"},
      {L"19000229", L""},
  };
  for (const auto& c : cases) {
    TSoftInfo info;
    info.InstallDateText = c.raw;
    ParseInstallDate(EntryContext(m.system), info);
    EXPECT_EQ(info.InstallDateText, c.text) << text::ToUtf8(c.raw);
    EXPECT_EQ(info.InstallDate == 0, std::wstring(c.text).empty()) << text::ToUtf8(c.raw);
  }
  m.system.shortDateFormat = L"dd.MM.yyyy";
  m.system.dateSeparator = L'.';
  TSoftInfo info;
  info.InstallDateText = L"20100305";
  ParseInstallDate(EntryContext(m.system), info);
  EXPECT_EQ(info.InstallDateText, L"05.03.2010");
}

TEST_F(UninstallKeysTest, KeysWithoutNameOrCommandAndMicrosoftRegistrationsAreSkipped) {
  m.registry.SetString(HKLM, Key(L"NoName"), L"UninstallString", L"C:\\x.exe");
  m.registry.SetString(HKLM, Key(L"NoCommand"), L"DisplayName", L"No Command");
  m.registry.SetString(HKLM, Key(L"Blank"), L"DisplayName", L"   ");
  m.registry.SetString(HKLM, Key(L"Blank"), L"UninstallString", L"C:\\x.exe");
  Entry(HKLM, L"MsReg", L"MS Control", true, L"regsvr32 /u ctl.ocx");
  Set(HKLM, L"MsReg", L"Publisher", L"Microsoft Corporation");
  Entry(HKLM, L"OtherReg", L"Other Control", true, L"regsvr32 /u other.ocx");
  Set(HKLM, L"OtherReg", L"Publisher", L"Acme");
  Entry(HKLM, L"UpperReg", L"Upper Control", true, L"Regsvr32 /u upper.ocx");
  Set(HKLM, L"UpperReg", L"Publisher", L"Microsoft");

  auto list = Collect();
  std::vector<std::wstring> names;
  for (auto* info : Visible(list)) names.push_back(info->Name);
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::wstring>{L"Other Control", L"Upper Control"}));
}

TEST_F(UninstallKeysTest, AnInstallerPackageStandsInForAMissingCommand) {
  std::wstring code = L"{12345678-1234-1234-1234-123456789ABC}";
  m.registry.SetString(HKLM, Key(code), L"DisplayName", L"Packaged");
  m.registry.SetString(HKLM, Key(code), L"InstallSource", L"C:\\Setup\\Packaged\\");
  m.files.AddFile(L"C:\\Setup\\Packaged\\readme.txt");
  m.files.AddFile(L"C:\\Setup\\Packaged\\packaged.msi");
  // The same, but a system component: no stand-in.
  std::wstring other = L"{87654321-1234-1234-1234-123456789ABC}";
  m.registry.SetString(HKLM, Key(other), L"DisplayName", L"Component");
  m.registry.SetString(HKLM, Key(other), L"InstallSource", L"C:\\Setup\\Packaged");
  m.registry.SetDWord(HKLM, Key(other), L"SystemComponent", 1);
  // The braces are looked for in the key path's tail, not in a GUID-shaped name.
  m.registry.SetString(HKLM, Key(L"{x}"), L"DisplayName", L"Braced");
  m.registry.SetString(HKLM, Key(L"{x}"), L"InstallSource", L"C:\\Setup\\Packaged");
  m.registry.SetString(HKLM, Key(L"NoBraces"), L"DisplayName", L"Plain");
  m.registry.SetString(HKLM, Key(L"NoBraces"), L"InstallSource", L"C:\\Setup\\Packaged");

  auto list = Collect();
  auto visible = Visible(list);
  ASSERT_EQ(visible.size(), 2u);
  EXPECT_EQ(visible[0]->Name, L"Packaged");
  EXPECT_EQ(visible[0]->UninstallString, L"C:\\Setup\\Packaged\\packaged.msi");
  EXPECT_EQ(visible[1]->Name, L"Braced");
  EXPECT_EQ(visible[1]->UninstallString, L"C:\\Setup\\Packaged\\packaged.msi");
  EXPECT_EQ(FindMsiInFolder(m.files, L"C:\\Setup"), L"");
  EXPECT_EQ(FindMsiInFolder(m.files, L""), L"");
}

TEST_F(UninstallKeysTest, WindowsUpdatesAreMarkedByNameAndPublisher) {
  Entry(HKLM, L"KB1", L"Security Update for Windows (KB2479628)");
  Entry(HKLM, L"SP", L"Office Service Pack 2");
  Set(HKLM, L"SP", L"Publisher", L"Microsoft Corporation");
  Entry(HKLM, L"SP3", L"Acme Service Pack 3");
  Set(HKLM, L"SP3", L"Publisher", L"Acme");
  Entry(HKLM, L"kb", L"Notes (kb7)");
  auto list = Collect();
  std::map<std::wstring, bool> update;
  for (const auto& info : list) update[info->Name] = info->IsWindowsUpdate;
  EXPECT_TRUE(update[L"Security Update for Windows (KB2479628)"]);
  EXPECT_TRUE(update[L"Office Service Pack 2"]);
  EXPECT_FALSE(update[L"Acme Service Pack 3"]);
  EXPECT_TRUE(update[L"Notes (kb7)"]) << "compared upper-cased";
}

TEST_F(UninstallKeysTest, SameNameInBothRootsShowsOnceWithMergedFields) {
  Entry(HKLM, L"Tool", L"Shared Tool", false);
  Set(HKLM, L"Tool", L"Publisher", L"Acme", false);
  Entry(HKCU, L"ToolUser", L"shared tool", false, L"C:\\Users\\test\\tool\\uninst.exe");
  Set(HKCU, L"ToolUser", L"URLUpdateInfo", L"https://acme.example/update", false);
  Set(HKCU, L"ToolUser", L"Readme", L"C:\\readme.txt", false);
  m.registry.SetDWord(HKCU, Key(L"ToolUser"), L"EstimatedSize", 10, false);

  auto list = Collect();
  auto visible = Visible(list);
  ASSERT_EQ(visible.size(), 1u);
  const TSoftInfo& kept = *visible[0];
  EXPECT_EQ(kept.RootKey, L"HKEY_LOCAL_MACHINE");
  EXPECT_FALSE(kept.Is64BitView);
  EXPECT_EQ(kept.Publisher, L"Acme");
  EXPECT_EQ(kept.URLUpdateInfo, L"https://acme.example/update");
  EXPECT_EQ(kept.Readme, L"C:\\readme.txt");
  EXPECT_EQ(kept.Size, 10240);
  EXPECT_EQ(kept.SizeText, L"10.00 KB");
  EXPECT_EQ(kept.UninstallString, L"C:\\App\\unins000.exe") << "not a fill-in field";
  // HKCU is one key in both views, so the user entry is met twice.
  EXPECT_EQ(list.size(), 3u);
}

TEST_F(UninstallKeysTest, ASystemComponentYieldsToItsNamesake) {
  Entry(HKLM, L"A", L"Runtime", false);
  m.registry.SetDWord(HKLM, Key(L"A"), L"SystemComponent", 1, false);
  Set(HKLM, L"A", L"DisplayIcon", L"C:\\rt.ico", false);
  Entry(HKLM, L"B", L"RUNTIME", false);
  Entry(HKLM, L"Msi", L"Installer Part", false, L"MsiExec.exe /X{00000000-0000-0000-0000-000000000001}");
  m.registry.SetDWord(HKLM, Key(L"Msi"), L"SystemComponent", 1, false);
  Entry(HKLM, L"MsiPlain", L"Plain Component", false, L"MsiExec.exe/X{x}");
  m.registry.SetDWord(HKLM, Key(L"MsiPlain"), L"SystemComponent", 1, false);

  auto list = Collect();
  auto visible = Visible(list);
  ASSERT_EQ(visible.size(), 2u);
  EXPECT_EQ(visible[0]->Name, L"RUNTIME");
  EXPECT_EQ(visible[0]->DisplayIcon, L"C:\\rt.ico") << "the component's fields move to the survivor";
  EXPECT_EQ(visible[1]->Name, L"Plain Component") << "no blank before the slash";
  EXPECT_TRUE(visible[1]->IsSystemComponent);
}

TEST_F(UninstallKeysTest, BothViewsAreReadOnASixtyFourBitSystemOnly) {
  Entry(HKLM, L"Wide", L"Wide App", true);
  Entry(HKLM, L"Narrow", L"Narrow App", false);
  auto list = Collect();
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0]->Name, L"Narrow App");
  EXPECT_FALSE(list[0]->Is64BitView);
  EXPECT_EQ(list[1]->Name, L"Wide App");
  EXPECT_TRUE(list[1]->Is64BitView);

  m.registry.SetIs64BitSystem(false);
  auto only = Collect();
  ASSERT_EQ(only.size(), 1u);
  EXPECT_FALSE(only[0]->Is64BitView);
}

TEST_F(UninstallKeysTest, ValuesOfTheWrongTypeReadAsEmpty) {
  m.registry.SetDWord(HKLM, Key(L"DwordName"), L"DisplayName", 5);
  m.registry.SetString(HKLM, Key(L"DwordName"), L"UninstallString", L"C:\\x.exe");
  m.registry.SetString(HKLM, Key(L"BinCommand"), L"DisplayName", L"Binary Command");
  m.registry.SetRaw(HKLM, Key(L"BinCommand"), L"UninstallString",
                    {RegType::Binary, text::ToUtf16Bytes(L"C:\\x.exe")});
  Entry(HKLM, L"DwordPublisher", L"Dword Publisher");
  m.registry.SetRaw(HKLM, Key(L"DwordPublisher"), L"Publisher", {RegType::DWord, {1, 2}});
  std::wstring longName(20000, L'N');
  Entry(HKLM, L"Long", longName);
  Entry(HKLM, L"Expand", L"Expand Icon");
  m.registry.SetString(HKLM, Key(L"Expand"), L"DisplayIcon", L"%ProgramFiles%\\e.exe", true,
                       RegType::ExpandString);

  auto list = Collect();
  ASSERT_EQ(list.size(), 3u);
  std::map<std::wstring, const TSoftInfo*> byName;
  for (const auto& info : list) byName[info->Name] = info.get();
  ASSERT_TRUE(byName.count(L"Dword Publisher"));
  EXPECT_EQ(byName[L"Dword Publisher"]->Publisher, L"-");
  ASSERT_TRUE(byName.count(longName));
  ASSERT_TRUE(byName.count(L"Expand Icon"));
  EXPECT_EQ(byName[L"Expand Icon"]->DisplayIcon, L"%ProgramFiles%\\e.exe") << "not expanded";
}

// "EstimatedSize" is a signed 32-bit count of kilobytes; whatever else a
// broken entry holds leaves the size unknown, never negative or absurd.
TEST_F(UninstallKeysTest, SizesThatNoProgramCanHaveAreUnknown) {
  const auto le = [](std::uint64_t v, int bytes) {
    std::vector<std::uint8_t> out;
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
    return out;
  };
  const struct {
    const wchar_t* name;
    RegValue value;
    std::int64_t size;
  } cases[] = {
      {L"Plain", {RegType::DWord, le(2048, 4)}, 2097152},
      {L"Negative", {RegType::DWord, le(0xFFFFFFFB, 4)}, 0},
      {L"Beyond a terabyte", {RegType::DWord, le(0x7FFFFFFF, 4)}, 0},
      {L"Quad", {RegType::QWord, le(std::uint64_t{1} << 60, 8)}, 0},
      {L"Text", {RegType::MultiString, text::ToUtf16Bytes(L"12")}, 0},
  };
  for (const auto& c : cases) {
    Entry(HKLM, c.name, c.name);
    m.registry.SetRaw(HKLM, Key(c.name), L"EstimatedSize", c.value);
  }
  const auto list = Collect();
  ASSERT_EQ(list.size(), std::size(cases));
  for (const auto& info : list) {
    const auto c = std::find_if(std::begin(cases), std::end(cases),
                                [&](const auto& c) { return info->Name == c.name; });
    ASSERT_NE(c, std::end(cases)) << text::ToUtf8(info->Name);
    EXPECT_EQ(info->Size, c->size) << text::ToUtf8(info->Name);
    EXPECT_EQ(info->SizeText, c->size ? L"2.00 MB" : L"0 Byte") << text::ToUtf8(info->Name);
  }
}

TEST_F(UninstallKeysTest, TheTreeIsWalkedBreadthFirstAndFailuresAreSwallowed) {
  Entry(HKLM, L"A", L"Top A");
  Entry(HKLM, L"A\\Child", L"Child of A");
  Entry(HKLM, L"A\\Child\\Grand", L"Grandchild");
  Entry(HKLM, L"B", L"Top B");
  std::vector<std::wstring> keys;
  EnumerateKeyTree(m.registry, L"hkey_local_machine", L"\\" + std::wstring(kUninstall), keys, true);
  std::wstring base = L"\\" + std::wstring(kUninstall);
  EXPECT_EQ(keys, (std::vector<std::wstring>{base, base + L"\\A", base + L"\\B",
                                             base + L"\\A\\Child", base + L"\\A\\Child\\Grand"}));
  keys.clear();
  EnumerateKeyTree(m.registry, L"HKEY_NOWHERE", base, keys, true);
  EXPECT_EQ(keys, std::vector<std::wstring>{base});

  // Nested entries are records of their own.
  auto list = Collect();
  EXPECT_EQ(list.size(), 4u);

  // A value that cannot be read reads as empty. The start key has four
  // reads; the fifth is the first entry's name, so that entry drops out.
  m.faults.FailTimes(mem::Fault::RegRead, 5);
  SoftList partial;
  EXPECT_EQ(EnumerateUninstallKeys(TAppFrame(m.Get()), &partial, true), 3);
  EXPECT_EQ(EnumerateUninstallKeys(TAppFrame(m.Get()), nullptr, true), -1);
}

TEST_F(UninstallKeysTest, ToolbarsFoldIntoTheProgramTheyBelongTo) {
  auto make = [](std::wstring name, std::wstring location, bool toolbar) {
    auto info = std::make_unique<TSoftInfo>();
    info->Name = std::move(name);
    info->InstallLocation = std::move(location);
    info->IsToolbar = toolbar;
    if (toolbar) {
      info->ToolbarClsid = L"{11111111-2222-3333-4444-555555555555}";
      info->ToolbarFile = info->InstallLocation + L"bar.dll";
    }
    return info;
  };
  m.files.AddFolder(L"C:\\Program Files\\Acme Search");
  m.files.SetShortName(L"C:\\Program Files\\Acme Search", L"ACMESE~1");
  SoftList list;
  list.push_back(make(L"Photo Tool", L"C:\\Photo\\", false));
  list.push_back(make(L"Acme Search Toolbar Suite", L"", false));
  list.push_back(make(L"Acme Search", L"C:\\Program Files\\Acme Search\\", false));
  // Name match: the first program whose name holds the toolbar's.
  list.push_back(make(L"Acme Search Toolbar", L"C:\\Elsewhere\\", true));
  // A folder match alone is not enough without "Toolbar" in a name or folder.
  list.push_back(make(L"Quick Bar", L"C:\\Program Files\\Acme Search\\", true));
  // No match at all (an empty folder matches nothing): stays a record of its own.
  list.push_back(make(L"Lonely Toolbar", L"", true));

  FoldToolbars(m.files, list, 3);
  EXPECT_TRUE(list[1]->IsToolbar);
  EXPECT_EQ(list[1]->ToolbarFile, L"C:\\Elsewhere\\bar.dll");
  EXPECT_TRUE(list[3]->Hidden);
  EXPECT_FALSE(list[2]->IsToolbar);
  EXPECT_FALSE(list[4]->Hidden);
  EXPECT_FALSE(list[5]->Hidden);
  EXPECT_FALSE(list[0]->IsToolbar);

  // Once the program's name says "Toolbar", the folder match folds it.
  list[2]->Name = L"Acme Search with Toolbar";
  FoldToolbars(m.files, list, 3);
  EXPECT_TRUE(list[4]->Hidden);
  EXPECT_TRUE(list[2]->IsToolbar);
  EXPECT_EQ(list[2]->ToolbarFile, L"C:\\Program Files\\Acme Search\\bar.dll");
  EXPECT_FALSE(list[5]->Hidden);
}

TEST_F(UninstallKeysTest, DiscoveredToolbarsAreFoldedAfterBothViews) {
  Entry(HKLM, L"Acme", L"Acme Search Toolbar", true);
  int calls = 0;
  SoftList list;
  CollectInstalledSoftware(TAppFrame(m.Get()), list, [&calls](SoftList& l, bool use64) {
    ++calls;
    if (use64) return;
    auto bar = std::make_unique<TSoftInfo>();
    bar->Name = L"Acme Search";
    bar->IsToolbar = true;
    bar->ToolbarClsid = L"{CLSID}";
    l.push_back(std::move(bar));
  });
  EXPECT_EQ(calls, 2);
  ASSERT_EQ(list.size(), 2u);
  EXPECT_TRUE(list[0]->IsToolbar);
  EXPECT_EQ(list[0]->ToolbarClsid, L"{CLSID}");
  EXPECT_TRUE(list[1]->Hidden);
}

}  // namespace
}  // namespace varnel
