#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "core/text.h"
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
