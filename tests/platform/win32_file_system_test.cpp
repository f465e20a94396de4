#ifdef _WIN32

#include <cstring>

#include "core/reboot_file_ops.h"
#include "tests/platform/win32_case.h"

namespace varnel::testing_support {
namespace {

class Win32FileSystem : public Contract {
 protected:
  // A folder chain well past MAX_PATH, made one level at a time.
  std::wstring MakeDeepFolder(std::size_t atLeast) {
    std::wstring folder = Scratch();
    for (int level = 0; folder.size() < atLeast; ++level) {
      folder += L"\\" + std::wstring(100, static_cast<wchar_t>(L'a' + level));
      if (!p().files.MakeDirectory(folder)) return {};
    }
    return folder;
  }
};

TEST_P(Win32FileSystem, PathsPastMaxPathWorkEverywhere) {
  auto& fs = p().files;
  const std::wstring deep = MakeDeepFolder(600);
  ASSERT_FALSE(deep.empty());
  ASSERT_GT(deep.size(), 600u);
  const std::wstring file = deep + L"\\Long File Name.txt";
  ASSERT_TRUE(fs.WriteWholeFile(file, Bytes("deep")));
  std::vector<std::uint8_t> back;
  ASSERT_TRUE(fs.ReadWholeFile(file, back));
  EXPECT_EQ(back, Bytes("deep"));
  EXPECT_TRUE(fs.FileExists(file));
  // Normalised before the long form is applied, which would not do it.
  const std::wstring detour = deep + L"\\sub\\..\\.\\Long File Name.txt";
  EXPECT_TRUE(fs.FileExists(detour));
  std::wstring slashes = file;
  std::replace(slashes.begin() + 3, slashes.end(), L'\\', L'/');
  EXPECT_TRUE(fs.FileExists(slashes));

  std::vector<FindEntry> entries;
  ASSERT_TRUE(fs.FindEntries(deep + L"\\*.txt", entries));
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].name, L"Long File Name.txt");
  EXPECT_EQ(entries[0].size, 4u);

  // The answer comes back in the caller's form, not the "\\?\" one.
  const std::wstring shortForm = fs.ShortPathName(file);
  ASSERT_FALSE(shortForm.empty());
  EXPECT_TRUE(text::StartsWithText(shortForm, Scratch().substr(0, 3))) << text::ToUtf8(shortForm);
  EXPECT_LT(shortForm.size(), file.size());
  EXPECT_TRUE(fs.FileExists(shortForm));

  ASSERT_TRUE(fs.MoveEntry(file, deep + L"\\moved.txt"));
  EXPECT_TRUE(fs.SetAttributes(deep + L"\\moved.txt", FileAttr::Hidden));
  EXPECT_TRUE(*fs.GetAttributes(deep + L"\\moved.txt") & FileAttr::Hidden);
  EXPECT_TRUE(fs.RemoveFile(deep + L"\\moved.txt"));
  EXPECT_TRUE(fs.RemoveFolder(deep));
  EXPECT_FALSE(fs.DirectoryExists(deep));
}

TEST_P(Win32FileSystem, ShortNamesComeFromTheSystem) {
  auto& fs = p().files;
  ASSERT_TRUE(fs.MakeDirectory(Scratch(L"Program Folder")));
  const std::wstring file = Scratch(L"Program Folder\\Long File Name.text");
  ASSERT_TRUE(fs.WriteWholeFile(file, Bytes("x")));
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"Program Folder\\SHORT.TXT"), Bytes("y")));

  std::vector<FindEntry> entries;
  ASSERT_TRUE(fs.FindEntries(Scratch(L"Program Folder\\*"), entries));
  std::wstring alias;
  const FileTime now = p().system.Now(), minute = 600'000'000;
  for (const auto& e : entries) {
    if (e.name.front() != L'.') {
      EXPECT_LT((std::max)(now, e.lastWriteTime) - (std::min)(now, e.lastWriteTime), minute);
    }
    if (e.name == L"SHORT.TXT") {
      EXPECT_TRUE(e.shortName.empty()) << "already 8.3";
    }
    if (e.name == L"Long File Name.text") alias = e.shortName;
  }
  ASSERT_FALSE(alias.empty());
  EXPECT_LE(alias.size(), 12u);
  EXPECT_NE(alias.find(L'~'), std::wstring::npos);

  const std::wstring shortPath = fs.ShortPathName(file);
  EXPECT_TRUE(text::EndsWithText(shortPath, L"\\" + alias)) << text::ToUtf8(shortPath);
  EXPECT_EQ(shortPath.find(L"Program Folder"), std::wstring::npos);
  EXPECT_TRUE(text::SameText(fs.LongPathName(shortPath), file)) << text::ToUtf8(shortPath);
}

TEST_P(Win32FileSystem, RewritingReplacesHiddenFilesAndTruncates) {
  auto& fs = p().files;
  const std::wstring file = Scratch(L"settings.ini");
  ASSERT_TRUE(fs.WriteWholeFile(file, Bytes("a long first version")));
  ASSERT_TRUE(fs.SetAttributes(file, FileAttr::Hidden | FileAttr::System));
  ASSERT_TRUE(fs.WriteWholeFile(file, Bytes("short")));
  std::vector<std::uint8_t> back;
  ASSERT_TRUE(fs.ReadWholeFile(file, back));
  EXPECT_EQ(back, Bytes("short"));
  ASSERT_TRUE(fs.WriteWholeFile(file, {}));
  ASSERT_TRUE(fs.ReadWholeFile(file, back));
  EXPECT_TRUE(back.empty());

  // Larger than one read request of the tail loop, and not a round size.
  std::vector<std::uint8_t> big(3'000'017);
  for (std::size_t i = 0; i < big.size(); ++i) big[i] = static_cast<std::uint8_t>(i * 7);
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"big.bin"), big));
  ASSERT_TRUE(fs.ReadWholeFile(Scratch(L"big.bin"), back));
  EXPECT_EQ(back, big);
}

// The pending list is the machine's; the test puts back what it found.
TEST_P(Win32FileSystem, RebootDeletionsAndRenamesJoinThePendingRenames) {
  auto& reg = p().registry;
  const wchar_t* sessionManager = L"SYSTEM\\CurrentControlSet\\Control\\Session Manager";
  const wchar_t* pending = L"PendingFileRenameOperations";
  auto key = reg.OpenKey(RegRoot::LocalMachine, sessionManager, RegAccess::Write, true);
  ASSERT_TRUE(key);
  const std::optional<RegValue> original = key->ReadValue(pending);

  const std::wstring doomed = Scratch(L"doomed.dll");
  const std::wstring from = Scratch(L"new.dll");
  const std::wstring to = Scratch(L"live.dll");
  ASSERT_TRUE(p().files.WriteWholeFile(doomed, Bytes("1")));
  ASSERT_TRUE(p().files.WriteWholeFile(from, Bytes("2")));
  const bool deleted = ScheduleFileOnReboot(p(), doomed, L"", RebootMode::Delete);
  const bool renamed = ScheduleFileOnReboot(p(), from, to, RebootMode::Rename);
  const std::optional<RegValue> after = key->ReadValue(pending);
  if (original) {
    key->WriteValue(pending, *original);
  } else {
    key->DeleteValue(pending);
  }

  ASSERT_TRUE(deleted);
  ASSERT_TRUE(renamed);
  ASSERT_TRUE(after);
  EXPECT_EQ(after->type, RegType::MultiString);
  // Appended as pairs: "\??\" + source, then "!" (replace) + target, or
  // an empty string for a deletion.
  std::wstring list(after->data.size() / 2, L'\0');
  std::memcpy(list.data(), after->data.data(), list.size() * 2);
  using namespace std::string_literals;
  const std::wstring expected = L"\\??\\"s + doomed + L'\0' + L'\0' + L"\\??\\" + from + L'\0' +
                                L"!\\??\\" + to + L'\0';
  EXPECT_NE(list.find(expected), std::wstring::npos) << text::ToUtf8(list);
  if (original) {
    const std::size_t kept = original->data.size() - 2;  // less the list's own end
    EXPECT_TRUE(std::equal(original->data.begin(), original->data.begin() + kept,
                           after->data.begin()))
        << "earlier entries kept";
  }
}

INSTANTIATE_TEST_SUITE_P(Real, Win32FileSystem, ::testing::ValuesIn(Win32Only()), BackendName);

}  // namespace
}  // namespace varnel::testing_support

#endif
