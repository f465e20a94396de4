#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "base/text.h"
#include "platform/memory/memory_platform.h"
#include "uninstall/backup.h"
#include "uninstall/deletion_guard.h"
#include "uninstall/reg_file.h"

namespace varnel {
namespace {

constexpr wchar_t kKey[] = L"SOFTWARE\\Vendor\\App";
constexpr wchar_t kFolder[] = L"C:\\Program Files\\App";
constexpr wchar_t kFile[] = L"C:\\Users\\test\\AppData\\Roaming\\App\\state.dat";

using Tree = std::map<std::wstring, std::pair<std::uint32_t, std::vector<std::uint8_t>>>;

// Every value below a key, by "subkey|name"; keys without values as "subkey|".
void DumpKey(IRegistry& registry, RegRoot root, const std::wstring& path, bool use64, Tree& out,
             const std::wstring& prefix = L"") {
  auto key = registry.OpenKey(root, path, RegAccess::Read, use64);
  if (!key) return;
  out[prefix + L"|"] = {};
  for (auto& [name, value] : key->Values()) out[prefix + L"|" + name] = {value.type, value.data};
  for (const auto& sub : key->SubKeyNames())
    DumpKey(registry, root, path + L"\\" + sub, use64, out, prefix + L"\\" + sub);
}

RegValue Raw(std::uint32_t type, std::vector<std::uint8_t> data) { return {type, std::move(data)}; }
RegValue Text(std::wstring s) {
  s.push_back(L'\0');
  return {RegType::String, text::ToUtf16Bytes(s)};
}

TEST(BackupTest, DeletedKeysValuesFilesAndFoldersComeBackAsTheyWere) {
  mem::MemoryPlatform m;
  auto& r = m.registry;
  const auto hklm = RegRoot::LocalMachine;
  r.SetString(hklm, kKey, L"", L"default \"quoted\" C:\\path\\", true);
  r.SetString(hklm, kKey, L"Expand", L"%ProgramFiles%\\App", true, RegType::ExpandString);
  r.SetRaw(hklm, kKey, L"Multi", Raw(RegType::MultiString, text::ToUtf16Bytes(std::wstring(L"a\0b\0", 4))), true);
  r.SetDWord(hklm, kKey, L"Count", 0xDEADBEEF, true);
  r.SetRaw(hklm, kKey, L"Quad", Raw(RegType::QWord, {1, 2, 3, 4, 5, 6, 7, 8}), true);
  r.SetRaw(hklm, kKey, L"Blob", Raw(RegType::Binary, std::vector<std::uint8_t>(100, 0xAB)), true);
  r.SetRaw(hklm, kKey, L"Odd\tname=\"x\"", Raw(RegType::String, {'a', 0, 'b'}), true);  // unterminated
  r.SetRaw(hklm, kKey, L"Nothing", Raw(RegType::None, {}), true);
  r.SetString(hklm, std::wstring(kKey) + L"\\Sub\\Deeper", L"Line", L"two\r\nlines", true);
  r.SetDWord(hklm, kKey, L"Only32", 32, false);  // the other view, same path
  r.SetString(RegRoot::CurrentUser, L"Software\\App", L"Mru", L"one");
  r.SetString(RegRoot::CurrentUser, L"Software\\App", L"Stays", L"two");
  m.files.AddFile(kFile, "state", FileAttr::ReadOnly);
  m.files.AddFile(std::wstring(kFolder) + L"\\app.exe", "exe");
  m.files.AddFile(std::wstring(kFolder) + L"\\lang\\de\\texts.lng", "de");
  m.files.AddFolder(std::wstring(kFolder) + L"\\empty");

  Tree view64, view32, user;
  DumpKey(r, hklm, kKey, true, view64);
  DumpKey(r, hklm, kKey, false, view32);
  DumpKey(r, RegRoot::CurrentUser, L"Software\\App", true, user);

  for (bool copyInsteadOfMove : {false, true}) {
    SCOPED_TRACE(copyInsteadOfMove ? "copied" : "moved");
    auto backup = Backup::Begin(m.Get());
    ASSERT_TRUE(backup);
    DeletionGuard guard(m.Get(), ProtectedPlaces(m.Get(), {}), backup.get());
    m.faults.Set(mem::Fault::FileMove, copyInsteadOfMove);
    for (const DeletionOutcome& outcome :
         {guard.DeleteKey(hklm, kKey, true), guard.DeleteKey(hklm, kKey, false),
          guard.DeleteValue(RegRoot::CurrentUser, L"Software\\App", L"Mru", true),
          guard.DeleteSingleFile(kFile), guard.DeleteFolderTree(kFolder)})
      EXPECT_TRUE(outcome.deleted) << outcome.item << " " << outcome.reason;
    m.faults.Clear();
    ASSERT_FALSE(r.KeyExists(hklm, kKey, true));
    ASSERT_FALSE(r.KeyExists(hklm, kKey, false));
    ASSERT_FALSE(m.files.GetAttributes(kFolder));

    const auto list = ListBackups(m.Get());
    ASSERT_FALSE(list.empty());
    EXPECT_EQ(list.front().id, backup->Id());
    EXPECT_EQ(list.front().registryItems, 3);
    EXPECT_EQ(list.front().fileItems, 2);
    EXPECT_GT(list.front().bytes, 5u + 3u + 2u);

    const auto result = RestoreBackup(m.Get(), L"latest");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->restored, 5);
    EXPECT_TRUE(result->failed.empty());
    Tree again64, again32, againUser;
    DumpKey(r, hklm, kKey, true, again64);
    DumpKey(r, hklm, kKey, false, again32);
    DumpKey(r, RegRoot::CurrentUser, L"Software\\App", true, againUser);
    EXPECT_EQ(again64, view64);
    EXPECT_EQ(again32, view32);
    EXPECT_EQ(againUser, user);
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(m.files.ReadWholeFile(std::wstring(kFolder) + L"\\lang\\de\\texts.lng", bytes));
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "de");
    EXPECT_TRUE(m.files.DirectoryExists(std::wstring(kFolder) + L"\\empty"));
    EXPECT_EQ(m.files.GetAttributes(kFile).value_or(0) & FileAttr::ReadOnly, FileAttr::ReadOnly);
    // A second restore never writes over what is there now.
    EXPECT_FALSE(RestoreBackup(m.Get(), backup->Id())->failed.empty());
  }

  for (const auto& summary : ListBackups(m.Get())) EXPECT_TRUE(DeleteBackup(m.Get(), summary.id));
  EXPECT_TRUE(ListBackups(m.Get()).empty());
  EXPECT_FALSE(RestoreBackup(m.Get(), L"latest"));
  EXPECT_FALSE(DeleteBackup(m.Get(), L"..\\Log"));
}

// A backup folder any process of the user could have written: restore puts
// back only what the guard would have let go, from inside the backup only.
TEST(BackupTest, RestoreRefusesWhatATamperedBackupNames) {
  const std::wstring run = L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";
  const std::wstring app = L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Vendor\\App";
  const auto file = [](std::wstring path, std::wstring kept, const wchar_t* kind = L"file") {
    return BackupItem{kind, std::move(path), L"", false, std::move(kept), 0};
  };
  const auto reg = [](const wchar_t* kind, std::wstring key, std::wstring value = L"") {
    return BackupItem{kind, std::move(key), std::move(value), true, L"registry64.reg", 0};
  };
  const RegFileKey runEvil{run, {{L"Evil", Text(L"C:\\evil.exe")}}};
  struct Case {
    const char* name;
    std::vector<BackupItem> items;
    std::vector<RegFileKey> reg;
    std::wstring failed;   // the refused line
    std::wstring written;  // a file that must not appear
    int restored = 1;      // the honest file item, and what else may come back
  };
  const Case cases[] = {
      {"kept above the backup folder", {file(L"C:\\Program Files\\App\\a.txt", L"..\\..\\..\\..\\..\\..\\..\\..\\Secret\\s.txt")},
       {}, L"C:\\Program Files\\App\\a.txt (kept outside the backup)", L"C:\\Program Files\\App\\a.txt"},
      {"kept as an absolute path", {file(L"C:\\Program Files\\App\\a.txt", L"C:\\Secret\\s.txt")},
       {}, L"C:\\Program Files\\App\\a.txt (kept outside the backup)", L"C:\\Program Files\\App\\a.txt"},
      {"kept behind a link in the backup", {file(L"C:\\Program Files\\App\\a.txt", L"items\\9\\s.txt")},
       {}, L"C:\\Program Files\\App\\a.txt (kept outside the backup)", L"C:\\Program Files\\App\\a.txt"},
      {"a file into the Windows folder", {file(L"C:\\Windows\\System32\\evil.dll", L"items\\1\\ok.txt")},
       {}, L"C:\\Windows\\System32\\evil.dll (Windows folder)", L"C:\\Windows\\System32\\evil.dll"},
      {"a folder onto a drive root", {file(L"C:\\", L"items\\2", L"folder")},
       {}, L"C:\\ (drive root)", L"C:\\inner.txt"},
      {"a folder onto a profile's known folder", {file(L"C:\\Users\\test\\Desktop", L"items\\2", L"folder")},
       {}, L"C:\\Users\\test\\Desktop (user profile folder)", L"C:\\Users\\test\\Desktop\\inner.txt"},
      {"a file through a link", {file(L"C:\\Program Files\\AppLink\\ok.txt", L"items\\1\\ok.txt")},
       {}, L"C:\\Program Files\\AppLink\\ok.txt (junction or symbolic link)", L"C:\\Secret\\ok.txt"},
      {"a whole key Windows owns", {reg(L"key", run)}, {runEvil},
       run + L" (registry key owned by Windows)", L""},
      {"a .reg section no item lists", {reg(L"key", app)}, {{app, {}}, runEvil},
       run + L" (not listed in the backup)", L"", 2},
      {"a value the listed one shares its key with", {reg(L"value", run, L"Mine")},
       {{run, {{L"Mine", Text(L"C:\\mine.exe")}, {L"Evil", Text(L"C:\\evil.exe")}}}},
       L"", L"", 2},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    mem::MemoryPlatform m;
    const std::wstring folder = BackupRootFolder(m.Get()) + L"\\2024-01-01_000000";
    m.files.AddFile(folder + L"\\items\\1\\ok.txt", "ok");
    m.files.AddFile(folder + L"\\items\\2\\inner.txt", "inner");
    m.files.AddFile(L"C:\\Secret\\s.txt", "secret");
    m.files.AddFolder(L"C:\\Users\\test\\Desktop");
    m.files.AddLink(folder + L"\\items\\9", L"C:\\Secret");
    m.files.AddLink(L"C:\\Program Files\\AppLink", L"C:\\Secret");
    std::vector<BackupItem> items = c.items;
    items.push_back(file(L"C:\\Program Files\\App\\ok.txt", L"items\\1\\ok.txt"));  // the honest one
    const std::string manifest = ManifestText(L"2024-01-01 00:00:00", items);
    m.files.AddFile(folder + L"\\manifest.json", manifest);
    if (!c.reg.empty()) {
      const auto bytes = EncodeRegFile(c.reg);
      m.files.AddFile(folder + L"\\registry64.reg", std::string(bytes.begin(), bytes.end()));
    }

    const auto result = RestoreBackup(m.Get(), L"latest");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->restored, c.restored);
    EXPECT_EQ(result->failed, c.failed.empty() ? std::vector<std::wstring>{}
                                               : std::vector<std::wstring>{c.failed});
    EXPECT_TRUE(m.files.FileExists(L"C:\\Program Files\\App\\ok.txt"));
    if (!c.written.empty()) {
      EXPECT_FALSE(m.files.GetAttributes(c.written)) << c.written;
    }
    auto runKey = m.registry.OpenKey(RegRoot::LocalMachine,
                                     L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run",
                                     RegAccess::Read, true);
    EXPECT_FALSE(runKey && runKey->ValueExists(L"Evil"));
  }
}

TEST(BackupTest, ReadersRefuseWhatTheyDidNotWrite) {
  const char* manifests[] = {"", "not json", "[]", "{\"items\":3}",
                             "{\"items\":[{\"kind\":\"file\"}]}", "{\"items\":[7]}"};
  for (const char* text : manifests) EXPECT_FALSE(ReadManifest(text, nullptr)) << text;
  const char* regFiles[] = {
      "",
      "REGEDIT4\r\n[HKEY_CURRENT_USER\\X]\r\n",
      "Windows Registry Editor Version 5.00\r\n\"a\"=\"b\"\r\n",            // value before a key
      "Windows Registry Editor Version 5.00\r\n[-HKEY_CURRENT_USER\\X]\r\n",  // removal
      "Windows Registry Editor Version 5.00\r\n[HKEY_CURRENT_USER\\X]\r\n\"a\"=-\r\n",
      "Windows Registry Editor Version 5.00\r\n[HKEY_CURRENT_USER\\X]\r\n\"a\"=hex:1\r\n",
      "Windows Registry Editor Version 5.00\r\n[HKEY_CURRENT_USER\\X]\r\n\"a\"=dword:123456789\r\n",
      "Windows Registry Editor Version 5.00\r\n[HKEY_CURRENT_USER\\X]\r\n\"a=\"b\"\r\n",
  };
  for (const char* text : regFiles)
    EXPECT_FALSE(ParseRegFile(std::span(reinterpret_cast<const std::uint8_t*>(text), std::strlen(text))))
        << text;
}

}  // namespace
}  // namespace varnel
