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

constexpr wchar_t kCode[] = L"{6BA67843-0D45-48E2-9A39-FC786CBE3C43}";
const std::wstring kPacked = L"34876AB654D02E84A993CF87C6EBC334";
const std::wstring kFolder = L"C:\\Program Files\\Acme\\Writer";
const std::wstring kServices = L"\\SYSTEM\\CurrentControlSet\\services\\";
const std::wstring kMsi = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer";
const std::wstring kPolicy =
    L"\\SYSTEM\\CurrentControlSet\\services\\SharedAccess\\Parameters\\FirewallPolicy\\";


// Paths may be reported in any case; the same path twice is a fault whatever the case.
int CountNoCase(const std::vector<std::wstring>& all, const std::wstring& caption) {
  int n = 0;
  for (const auto& item : all) n += text::SameText(item, caption) ? 1 : 0;
  return n;
}

class LeftoverSystemTest : public testing::Test {
 protected:
  // The program as Windows Installer registers it: its Uninstall key is named
  // by the product code.
  void MakeMsiProgram() {
    w.record.KeyPath = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\" +
                       std::wstring(kCode);
    const std::wstring product = L"\\SOFTWARE\\Classes\\Installer\\Products\\" + kPacked;
    w.Set(HKLM, product, L"ProductName", L"Acme Writer");
    w.Set(HKLM, product, L"ProductIcon",
          L"C:\\Windows\\Installer\\" + std::wstring(kCode) + L"\\writer.ico");
    w.Set(HKLM, L"\\SOFTWARE\\Classes\\Installer\\Features\\" + kPacked,
          L"Complete", L"");
    w.Set(HKCU, L"\\Software\\Microsoft\\Installer\\Products\\" + kPacked,
          L"ProductName", L"Acme Writer");
    // One upgrade family holds only this product, the other a second one too.
    w.Set(HKLM, kMsi + L"\\UpgradeCodes\\C362941A5CF163B4995F3CEAC4155A9A", kPacked, L"");
    w.Set(HKLM, L"\\SOFTWARE\\Classes\\Installer\\UpgradeCodes\\11111111111111111111111111111111",
          kPacked, L"");
    w.Set(HKLM, L"\\SOFTWARE\\Classes\\Installer\\UpgradeCodes\\11111111111111111111111111111111",
          L"00000000000000000000000000000001", L"");
    w.Set(HKLM, kMsi + L"\\UserData\\S-1-5-18\\Products\\" + kPacked +
                    L"\\InstallProperties",
          L"DisplayName", L"Acme Writer");
    w.m.files.AddFile(L"C:\\Windows\\Installer\\" + std::wstring(kCode) + L"\\writer.ico", "ico");
  }
  scan::InstallerFindings Installer() {
    scan::InstallerFindings found;
    w.Run([&](const ScanContext& scan, ScanSink& out) { found = scan::Installer(scan, out); });
    return found;
  }
  ScanWorld w;
};

TEST_F(LeftoverSystemTest, InstallerRecordsAreFoundWithoutAnInstallFolder) {
  MakeMsiProgram();
  const std::wstring component = kMsi + L"\\UserData\\S-1-5-18\\Components\\C1";
  w.Set(HKLM, component, kPacked, kFolder + L"\\writer.exe");
  w.Set(HKLM, component, L"00000000000000000000000000000001", kFolder + L"\\writer.exe");
  w.record.InstallLocation.clear();
  EXPECT_EQ(Installer().ProductCode, kCode);
  auto all = w.Full();
  const std::wstring products = L"\\SOFTWARE\\Classes\\Installer\\Products\\" + kPacked;
  EXPECT_TRUE(ScanWorld::Has(all, Key(HKLM, products)));
  EXPECT_TRUE(ScanWorld::Has(all, Key(HKLM, L"\\SOFTWARE\\Classes\\Installer\\Features\\" +
                                                kPacked)));
  EXPECT_TRUE(ScanWorld::Has(
      all, Key(HKCU, L"\\Software\\Microsoft\\Installer\\Products\\" + kPacked)));
  EXPECT_TRUE(ScanWorld::Has(all, Key(HKLM, kMsi + L"\\UserData\\S-1-5-18\\Products\\" +
                                                kPacked + L"\\InstallProperties")));
  // The product's only upgrade family goes whole, a shared one loses one value.
  EXPECT_TRUE(
      ScanWorld::Has(all, Key(HKLM, kMsi + L"\\UpgradeCodes\\C362941A5CF163B4995F3CEAC4155A9A")));
  const std::wstring shared =
      L"\\SOFTWARE\\Classes\\Installer\\UpgradeCodes\\11111111111111111111111111111111";
  ExpectReported(all, {
      {Key(HKLM, shared), false},
      {Value(HKLM, shared, kPacked, L""), true},
      // A shared component is tied to the program by its folder only.
      {Value(HKLM, component, kPacked, kFolder + L"\\writer.exe"), false},
  });
  // The icon cache folder named by the product code goes to the file scan.
  EXPECT_EQ(Installer().Folders, std::vector<std::wstring>{L"c:\\windows\\installer\\" + text::Lower(kCode) + L"\\"});
  EXPECT_EQ(CountNoCase(all, L"C:\\Windows\\Installer\\" + std::wstring(kCode)), 1);

  // Anything but a product-code key name means no Installer records at all.
  w.record.KeyPath = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\AcmeWriter";
  EXPECT_TRUE(Installer().ProductCode.empty());
  all = w.Full();
  EXPECT_FALSE(ScanWorld::Has(all, Key(HKLM, products)));
}

TEST_F(LeftoverSystemTest, ComponentsAndFoldersAreMatchedByTheInstallFolder) {
  MakeMsiProgram();
  const std::wstring components = kMsi + L"\\UserData\\S-1-5-18\\Components\\";
  w.Set(HKLM, components + L"OWN", kPacked, kFolder + L"\\writer.exe");
  w.Set(HKLM, components + L"SHARED", kPacked, kFolder + L"\\common.dll");
  w.Set(HKLM, components + L"SHARED", L"00000000000000000000000000000001", L"C:\\x\\common.dll");
  // A component of this product alone goes whatever it names.
  w.Set(HKLM, components + L"REGISTRY", kPacked, L"02:\\Software\\Acme\\Writer\\Dir");
  w.Set(HKLM, components + L"ELSEWHERE", kPacked, L"C:\\Program Files\\Acme\\Writer2\\x.exe");
  w.Set(HKLM, components + L"ELSEWHERE", L"00000000000000000000000000000001", L"C:\\x.exe");
  w.m.files.AddFolder(kFolder + L"\\Templates");
  const std::wstring folders = kMsi + L"\\Folders";
  w.Set(HKLM, folders, kFolder + L"\\Templates\\", L"");
  w.Set(HKLM, folders, kFolder + L"\\Gone\\", L"");
  w.Set(HKLM, folders, L"C:\\Program Files\\Acme\\", L"");
  auto all = w.Full();
  ExpectReported(all, {
      {Key(HKLM, components + L"OWN"), true},
      {Key(HKLM, components + L"SHARED"), false},
      {Value(HKLM, components + L"SHARED", kPacked, kFolder + L"\\common.dll"), true},
      {Key(HKLM, components + L"REGISTRY"), true},
      {Key(HKLM, components + L"ELSEWHERE"), false},
  });
  EXPECT_FALSE(ScanWorld::Has(all, Value(HKLM, components + L"ELSEWHERE", kPacked,
                                         L"C:\\Program Files\\Acme\\Writer2\\x.exe")));
  ExpectReported(all, {
      {Value(HKLM, folders, kFolder + L"\\Templates\\", L""), true},
      {Value(HKLM, folders, kFolder + L"\\Gone\\", L""), true},
      {Value(HKLM, folders, L"C:\\Program Files\\Acme\\", L""), false},
  });
  // Only existing folders are handed on; each is reported once on disk.
  EXPECT_EQ(Installer().Folders.size(), 2u);
  EXPECT_EQ(CountNoCase(all, kFolder + L"\\Templates"), 1);
  EXPECT_EQ(CountNoCase(all, kFolder + L"\\writer.exe"), 1);
}

TEST_F(LeftoverSystemTest, ServicesGoWholeWithTheirDeviceInstances) {
  w.m.registry.SetString(HKLM, kServices + L"WriterSvc", L"ImagePath",
                         L"\"" + kFolder + L"\\svc.exe\"", true, RegType::ExpandString);
  w.m.registry.SetDWord(HKLM, kServices + L"WriterSvc", L"Start", 2);
  w.m.registry.SetDWord(HKLM, kServices + L"WriterSvc\\Enum", L"Count", 2);
  w.Set(HKLM, kServices + L"WriterSvc\\Enum", L"0", L"Root\\LEGACY_WRITERSVC\\0000");
  w.Set(HKLM, kServices + L"WriterSvc\\Enum", L"1", L"Root\\LEGACY_WRITERSVC\\0001");
  w.Set(HKLM, L"\\SYSTEM\\CurrentControlSet\\Enum\\Root\\LEGACY_WRITERSVC\\0000", L"Service",
        L"WriterSvc");
  // A shared-host service names its DLL below "Parameters".
  w.Set(HKLM, kServices + L"WriterHost", L"ImagePath", L"C:\\Windows\\system32\\svchost.exe -k x");
  w.Set(HKLM, kServices + L"WriterHost\\Parameters", L"ServiceDll", kFolder + L"\\host.dll");
  // Count = 0 names no instances, whatever values stand beside it.
  w.Set(HKLM, kServices + L"WriterIdle", L"ImagePath", kFolder + L"\\idle.exe");
  w.m.registry.SetDWord(HKLM, kServices + L"WriterIdle\\Enum", L"Count", 0);
  w.Set(HKLM, kServices + L"WriterIdle\\Enum", L"0", L"Root\\LEGACY_WRITERIDLE\\0000");
  w.Set(HKLM, L"\\SYSTEM\\CurrentControlSet\\Enum\\Root\\LEGACY_WRITERIDLE\\0000", L"Service",
        L"WriterIdle");
  w.Set(HKLM, kServices + L"Other", L"ImagePath", L"C:\\Program Files\\Acme\\Writer2\\o.exe");
  w.Set(HKLM, L"\\SYSTEM\\CurrentControlSet\\Enum\\Root\\LEGACY_OTHER\\0000", L"Service", L"Other");
  w.m.registry.SetDWord(HKLM, kServices + L"Other\\Enum", L"Count", 1);
  w.Set(HKLM, kServices + L"Other\\Enum", L"0", L"Root\\LEGACY_OTHER\\0000");

  auto all = w.Full();
  EXPECT_TRUE(ScanWorld::Has(all, Key(HKLM, kServices + L"WriterSvc")));
  EXPECT_TRUE(ScanWorld::Has(all, Value(HKLM, kServices + L"WriterSvc", L"Start", L"2")));
  EXPECT_TRUE(ScanWorld::Has(
      all, Key(HKLM, L"\\SYSTEM\\CurrentControlSet\\Enum\\Root\\LEGACY_WRITERSVC\\0000")));
  // Instance 1 has no key: nothing to report.
  EXPECT_FALSE(ScanWorld::Has(
      all, Key(HKLM, L"\\SYSTEM\\CurrentControlSet\\Enum\\Root\\LEGACY_WRITERSVC\\0001")));
  EXPECT_TRUE(ScanWorld::Has(all, Key(HKLM, kServices + L"WriterHost")));
  EXPECT_TRUE(ScanWorld::Has(all, Key(HKLM, kServices + L"WriterIdle")));
  EXPECT_FALSE(ScanWorld::Has(
      all, Key(HKLM, L"\\SYSTEM\\CurrentControlSet\\Enum\\Root\\LEGACY_WRITERIDLE\\0000")));
  EXPECT_FALSE(ScanWorld::Has(all, Key(HKLM, kServices + L"Other")));
  EXPECT_FALSE(ScanWorld::Has(
      all, Key(HKLM, L"\\SYSTEM\\CurrentControlSet\\Enum\\Root\\LEGACY_OTHER\\0000")));
  EXPECT_EQ(w.scanner->Sink().Category(ScanCategory::Services).Count(), 3);
  EXPECT_TRUE(w.scanner->Sink().Category(ScanCategory::Services).Contains(L"writersvc"));
}

TEST_F(LeftoverSystemTest, FirewallRulesAreValuesAndEventSourcesWholeKeys) {
  const std::wstring rules = kPolicy + L"FirewallRules";
  const std::wstring rule =
      L"v2.10|Action=Allow|Active=TRUE|Dir=In|App=" + kFolder + L"\\writer.exe|Name=Writer|";
  w.Set(HKLM, rules, L"{R1}", rule);
  w.Set(HKLM, rules, L"{R2}", L"v2.10|Action=Allow|App=C:\\Other\\o.exe|");
  // Two lists end in "System"; each keeps its own value of the same name.
  const std::wstring configurable = kPolicy + L"RestrictedServices\\Configurable\\System";
  const std::wstring fixed = kPolicy + L"RestrictedServices\\Static\\System";
  w.Set(HKLM, configurable, L"W1", rule);
  w.Set(HKLM, fixed, L"W1", rule);
  const std::wstring apps = kPolicy + L"StandardProfile\\AuthorizedApplications\\List";
  const std::wstring app = kFolder + L"\\writer.exe";
  w.Set(HKLM, apps, app, app + L":*:Enabled:Acme Writer");

  const std::wstring eventlog = kServices + L"eventlog\\";
  w.m.registry.SetString(HKLM, eventlog + L"Application\\Acme Writer", L"EventMessageFile",
                         kFolder + L"\\writer.exe", true, RegType::ExpandString);
  w.m.registry.SetDWord(HKLM, eventlog + L"Application\\Acme Writer", L"TypesSupported", 7);
  w.Set(HKLM, eventlog + L"System\\WriterSvc", L"EventMessageFile", kFolder + L"\\svc.exe");
  w.Set(HKLM, eventlog + L"Application\\Other", L"EventMessageFile", L"C:\\Other\\o.dll");

  auto all = w.Full();
  ExpectReported(all, {
      {Value(HKLM, rules, L"{R1}", rule), true},
      {Value(HKLM, rules, L"{R2}", L"v2.10|Action=Allow|App=C:\\Other\\o.exe|"), false},
      {Value(HKLM, configurable, L"W1", rule), true},
      {Value(HKLM, fixed, L"W1", rule), true},
      {Value(HKLM, apps, app, app + L":*:Enabled:Acme Writer"), true},
  });
  for (const auto& key : {rules, configurable, fixed, apps})
    EXPECT_FALSE(ScanWorld::Has(all, Key(HKLM, key))) << key;

  EXPECT_TRUE(ScanWorld::Has(all, Key(HKLM, eventlog + L"Application\\Acme Writer")));
  EXPECT_TRUE(ScanWorld::Has(
      all, Value(HKLM, eventlog + L"Application\\Acme Writer", L"TypesSupported", L"7")));
  ExpectReported(all, {
      {Key(HKLM, eventlog + L"System\\WriterSvc"), true},
      {Key(HKLM, eventlog + L"Application\\Other"), false},
      {Key(HKLM, eventlog + L"Application"), false},
  });
}

}  // namespace
}  // namespace varnel
