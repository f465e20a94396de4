#ifdef _WIN32

#include <windows.h>

#include <winioctl.h>

#include <cstring>

#include "platform/win32/unique_handle.h"
#include "tests/platform/win32_case.h"
#include "uninstall/backup.h"
#include "uninstall/deletion_guard.h"

namespace varnel::testing_support {
namespace {

// A junction made the way the system's own tools make one: an empty folder
// given a mount-point reparse buffer.
bool MakeJunction(const std::wstring& link, const std::wstring& target) {
  if (!CreateDirectoryW(link.c_str(), nullptr)) return false;
  win32::UniqueFile folder(CreateFileW(link.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                       FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                                       nullptr));
  if (!folder) return false;
  const std::wstring substitute = L"\\??\\" + target;
  const auto units = [](const std::wstring& s) { return static_cast<WORD>(s.size() * 2); };
  std::vector<BYTE> buffer(8 + 8);
  auto put16 = [&](std::size_t at, WORD v) { std::memcpy(buffer.data() + at, &v, 2); };
  const DWORD tag = IO_REPARSE_TAG_MOUNT_POINT;
  std::memcpy(buffer.data(), &tag, 4);
  put16(8, 0);
  put16(10, units(substitute));
  put16(12, units(substitute) + 2);
  put16(14, units(target));
  for (const std::wstring* part : {&substitute, &target}) {
    const auto* bytes = reinterpret_cast<const BYTE*>(part->c_str());
    buffer.insert(buffer.end(), bytes, bytes + (part->size() + 1) * 2);
  }
  put16(4, static_cast<WORD>(buffer.size() - 8));
  DWORD returned = 0;
  return DeviceIoControl(folder.get(), FSCTL_SET_REPARSE_POINT, buffer.data(),
                         static_cast<DWORD>(buffer.size()), nullptr, 0, &returned, nullptr);
}

DWORD RunAndWait(std::wstring commandLine) {
  STARTUPINFOW start{};
  start.cb = sizeof(start);
  PROCESS_INFORMATION info{};
  if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW,
                      nullptr, nullptr, &start, &info))
    return ~DWORD{0};
  win32::UniqueHandle process(info.hProcess), thread(info.hThread);
  WaitForSingleObject(process.get(), 60'000);
  DWORD code = ~DWORD{0};
  GetExitCodeProcess(process.get(), &code);
  return code;
}

class Win32Deletion : public Contract {};

TEST_P(Win32Deletion, AJunctionInsideADeletedFolderLeavesItsTargetAlone) {
  auto& fs = p().files;
  const std::wstring app = Scratch(L"App"), target = Scratch(L"Target");
  ASSERT_TRUE(fs.MakeDirectory(app) && fs.MakeDirectory(target));
  ASSERT_TRUE(fs.WriteWholeFile(app + L"\\app.exe", Bytes("exe")));
  ASSERT_TRUE(fs.WriteWholeFile(target + L"\\keep.txt", Bytes("keep")));
  if (!MakeJunction(app + L"\\link", target)) GTEST_SKIP() << "no junctions here";
  ASSERT_TRUE(fs.FileExists(app + L"\\link\\keep.txt"));
  ASSERT_TRUE(*fs.GetAttributes(app + L"\\link") & FileAttr::ReparsePoint);

  // No backup: the guard's own walk has to step over the link.
  DeletionGuard guard = DeletionGuard::WithoutBackup(p(), ProtectedPlaces(p(), {}));
  const DeletionOutcome outcome = guard.DeleteFolderTree(app);
  EXPECT_TRUE(outcome.deleted) << outcome.reason;
  EXPECT_FALSE(fs.GetAttributes(app));
  EXPECT_TRUE(fs.FileExists(target + L"\\keep.txt"));
}

TEST_P(Win32Deletion, RegImportReadsTheBackupsRegistryFile) {
  const std::wstring key = Key(L"Saved");
  auto created = p().registry.CreateKey(RegRoot::CurrentUser, key + L"\\Sub", true);
  ASSERT_TRUE(created);
  const std::vector<std::pair<std::wstring, RegValue>> values = {
      {L"", Str(L"default \"quoted\" C:\\dir\\")},
      {L"Expand", Str(L"%SystemRoot%\\x", RegType::ExpandString)},
      {L"Multi", {RegType::MultiString, text::ToUtf16Bytes(std::wstring(L"a\0b\0", 4))}},
      {L"Count", {RegType::DWord, {0xEF, 0xBE, 0xAD, 0xDE}}},
      {L"Quad", {RegType::QWord, {1, 2, 3, 4, 5, 6, 7, 8}}},
      {L"Blob", {RegType::Binary, std::vector<std::uint8_t>(120, 0x5A)}},
  };
  for (const auto& [name, value] : values) ASSERT_TRUE(created->WriteValue(name, value));
  created.reset();

  auto backup = Backup::Begin(p());
  ASSERT_TRUE(backup);
  ASSERT_TRUE(backup->SaveKey(RegRoot::CurrentUser, Key(), true));
  ASSERT_TRUE(p().registry.DeleteKey(RegRoot::CurrentUser, Key(), true));
  const std::wstring file = backup->Folder() + L"\\registry64.reg";
  EXPECT_EQ(RunAndWait(L"reg.exe import \"" + file + L"\" /reg:64"), 0u);

  auto back = p().registry.OpenKey(RegRoot::CurrentUser, key + L"\\Sub", RegAccess::Read, true);
  ASSERT_TRUE(back);
  for (const auto& [name, value] : values) {
    const auto read = back->ReadValue(name);
    ASSERT_TRUE(read) << text::ToUtf8(name);
    EXPECT_EQ(read->type, value.type) << text::ToUtf8(name);
    EXPECT_EQ(read->data, value.data) << text::ToUtf8(name);
  }
  EXPECT_TRUE(DeleteBackup(p(), backup->Id()));
}

INSTANTIATE_TEST_SUITE_P(Backends, Win32Deletion, ::testing::ValuesIn(Win32Only()), BackendName);

}  // namespace
}  // namespace varnel::testing_support

#endif
