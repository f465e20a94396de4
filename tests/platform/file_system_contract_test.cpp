#include <algorithm>
#include <string>

#include "tests/platform/contract_fixture.h"

namespace varnel::testing_support {
namespace {

class FileSystemContract : public Contract {
 protected:
  std::vector<std::wstring> Names(std::wstring_view pattern) {
    std::vector<FindEntry> entries;
    p().files.FindEntries(pattern, entries);
    std::vector<std::wstring> names;
    for (const auto& e : entries) names.push_back(e.name);
    std::sort(names.begin(), names.end());
    return names;
  }
};

TEST_P(FileSystemContract, FilesRoundTripAndNamesIgnoreCase) {
  auto& fs = p().files;
  const auto content = Bytes(std::string("MZ\0\x01payload", 11));
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"App.EXE"), content));
  std::vector<std::uint8_t> back;
  ASSERT_TRUE(fs.ReadWholeFile(Scratch(L"app.exe"), back));
  EXPECT_EQ(back, content);
  EXPECT_TRUE(fs.FileExists(Scratch(L"APP.exe")));
  EXPECT_FALSE(fs.DirectoryExists(Scratch(L"app.exe")));
  EXPECT_TRUE(fs.DirectoryExists(Scratch()));
  EXPECT_TRUE(fs.DirectoryExists(Scratch() + L"\\"));
  EXPECT_FALSE(fs.FileExists(Scratch()));
  EXPECT_TRUE(*fs.GetAttributes(Scratch(L"app.exe")) & FileAttr::Archive);

  // Rewriting replaces, it does not append.
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"app.exe"), Bytes("x")));
  ASSERT_TRUE(fs.ReadWholeFile(Scratch(L"app.exe"), back));
  EXPECT_EQ(back, Bytes("x"));
  EXPECT_FALSE(fs.ReadWholeFile(Scratch(L"missing.bin"), back));
  EXPECT_FALSE(fs.ReadWholeFile(Scratch(), back)) << "a folder is not a file";
  EXPECT_FALSE(fs.WriteWholeFile(Scratch(L"no\\such\\folder.txt"), Bytes("x")));
}

TEST_P(FileSystemContract, PartsOfAFileStopAtItsEnd) {
  auto& fs = p().files;
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"part.bin"), Bytes("0123456789")));
  struct Case {
    std::uint64_t offset;
    std::size_t max;
    std::string expected;
  };
  for (const Case& c : {Case{0, 4, "0123"}, Case{7, 100, "789"}, Case{10, 5, ""},
                        Case{1ULL << 40, 5, ""}, Case{3, 0, ""}}) {
    std::vector<std::uint8_t> part{'x'};
    EXPECT_TRUE(fs.ReadFilePart(Scratch(L"PART.bin"), c.offset, c.max, part)) << c.offset;
    EXPECT_EQ(part, Bytes(c.expected)) << c.offset << " " << c.max;
  }
  std::vector<std::uint8_t> part;
  EXPECT_FALSE(fs.ReadFilePart(Scratch(L"missing.bin"), 0, 4, part));
  EXPECT_FALSE(fs.ReadFilePart(Scratch(), 0, 4, part)) << "a folder is not a file";
}

TEST_P(FileSystemContract, FileInfoMatchesWhatFindReports) {
  auto& fs = p().files;
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"five.txt"), Bytes("12345")));
  auto info = fs.GetFileInfo(Scratch(L"FIVE.txt"));
  ASSERT_TRUE(info.has_value());
  EXPECT_EQ(info->size, 5u);
  EXPECT_FALSE(info->attributes & FileAttr::Directory);
  std::vector<FindEntry> found;
  ASSERT_TRUE(fs.FindEntries(Scratch(L"five.txt"), found));
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(info->creationTime, found[0].creationTime);
  EXPECT_EQ(info->lastWriteTime, found[0].lastWriteTime);

  auto folder = fs.GetFileInfo(Scratch());
  ASSERT_TRUE(folder.has_value());
  EXPECT_TRUE(folder->attributes & FileAttr::Directory);
  EXPECT_FALSE(fs.GetFileInfo(Scratch(L"missing.txt")).has_value());
  EXPECT_FALSE(fs.GetFileInfo(L"").has_value());
}

TEST_P(FileSystemContract, FindListsEntriesWithSizesAndHonoursWildcards) {
  auto& fs = p().files;
  ASSERT_TRUE(fs.MakeDirectory(Scratch(L"sub")));
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"a.txt"), Bytes("12345")));
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"B.log"), Bytes("")));
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"noext"), Bytes("1")));

  EXPECT_EQ(Names(Scratch(L"*.*")),
            (std::vector<std::wstring>{L".", L"..", L"B.log", L"a.txt", L"noext", L"sub"}));
  EXPECT_EQ(Names(Scratch(L"*.TXT")), (std::vector<std::wstring>{L"a.txt"}));
  EXPECT_EQ(Names(Scratch(L"?.log")), (std::vector<std::wstring>{L"B.log"}));
  EXPECT_EQ(Names(Scratch(L"A.TXT")), (std::vector<std::wstring>{L"a.txt"}));

  std::vector<FindEntry> entries;
  ASSERT_TRUE(fs.FindEntries(Scratch(L"*"), entries));
  for (const auto& e : entries) {
    if (e.name == L"a.txt") {
      EXPECT_EQ(e.size, 5u);
      EXPECT_FALSE(e.attributes & FileAttr::Directory);
      EXPECT_NE(e.lastWriteTime, 0u);
    }
    if (e.name == L"sub") {
      EXPECT_TRUE(e.attributes & FileAttr::Directory);
    }
  }
  EXPECT_FALSE(fs.FindEntries(Scratch(L"*.none"), entries));
  EXPECT_TRUE(entries.empty());
  EXPECT_FALSE(fs.FindEntries(Scratch(L"nowhere\\*"), entries));
}

TEST_P(FileSystemContract, FoldersAreMadeAndRemovedOnlyWhenItMakesSense) {
  auto& fs = p().files;
  EXPECT_FALSE(fs.MakeDirectory(Scratch(L"x\\y"))) << "parent missing";
  ASSERT_TRUE(fs.MakeDirectory(Scratch(L"x")));
  EXPECT_FALSE(fs.MakeDirectory(Scratch(L"X"))) << "already there";
  ASSERT_TRUE(fs.MakeDirectory(Scratch(L"x\\y")));
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"x\\y\\f"), Bytes("1")));
  EXPECT_FALSE(fs.RemoveFolder(Scratch(L"x\\y"))) << "not empty";
  EXPECT_FALSE(fs.RemoveFile(Scratch(L"x\\y"))) << "a folder is not a file";
  EXPECT_FALSE(fs.RemoveFolder(Scratch(L"x\\y\\f"))) << "a file is not a folder";
  ASSERT_TRUE(fs.RemoveFile(Scratch(L"x\\y\\f")));
  EXPECT_FALSE(fs.RemoveFile(Scratch(L"x\\y\\f")));
  EXPECT_TRUE(fs.RemoveFolder(Scratch(L"x\\y")));
  EXPECT_FALSE(fs.DirectoryExists(Scratch(L"x\\y")));
}

TEST_P(FileSystemContract, ReadOnlyFilesResistDeletionUntilCleared) {
  auto& fs = p().files;
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"ro.txt"), Bytes("keep")));
  ASSERT_TRUE(fs.SetAttributes(Scratch(L"ro.txt"), FileAttr::ReadOnly));
  EXPECT_TRUE(*fs.GetAttributes(Scratch(L"ro.txt")) & FileAttr::ReadOnly);
  EXPECT_FALSE(fs.RemoveFile(Scratch(L"ro.txt")));
  EXPECT_FALSE(fs.WriteWholeFile(Scratch(L"ro.txt"), Bytes("overwrite")));
  EXPECT_TRUE(fs.FileExists(Scratch(L"ro.txt")));
  ASSERT_TRUE(fs.SetAttributes(Scratch(L"ro.txt"), FileAttr::Normal));
  EXPECT_TRUE(fs.RemoveFile(Scratch(L"ro.txt")));
}

TEST_P(FileSystemContract, MovingRenamesAndNeverOverwrites) {
  auto& fs = p().files;
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"one"), Bytes("1")));
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"two"), Bytes("2")));
  EXPECT_FALSE(fs.MoveEntry(Scratch(L"one"), Scratch(L"two")));
  ASSERT_TRUE(fs.MakeDirectory(Scratch(L"dir")));
  ASSERT_TRUE(fs.MoveEntry(Scratch(L"one"), Scratch(L"dir\\three")));
  EXPECT_FALSE(fs.FileExists(Scratch(L"one")));
  std::vector<std::uint8_t> back;
  ASSERT_TRUE(fs.ReadWholeFile(Scratch(L"dir\\three"), back));
  EXPECT_EQ(back, Bytes("1"));
  EXPECT_FALSE(fs.MoveEntry(Scratch(L"dir"), Scratch(L"dir\\inside")));
}

TEST_P(FileSystemContract, ReplacingPutsTheNewFileInPlaceOrLeavesTheOldOne) {
  auto& fs = p().files;
  auto content = [&](const wchar_t* name) {
    std::vector<std::uint8_t> bytes;
    fs.ReadWholeFile(Scratch(name), bytes);
    return std::string(bytes.begin(), bytes.end());
  };
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"old"), Bytes("old")));
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"new"), Bytes("new")));
  ASSERT_TRUE(fs.ReplaceEntry(Scratch(L"new"), Scratch(L"old")));
  EXPECT_FALSE(fs.FileExists(Scratch(L"new")));
  EXPECT_EQ(content(L"old"), "new");

  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"newer"), Bytes("newer")));
  ASSERT_TRUE(fs.SetAttributes(Scratch(L"old"), FileAttr::ReadOnly));
  EXPECT_FALSE(fs.ReplaceEntry(Scratch(L"newer"), Scratch(L"old")));
  EXPECT_FALSE(fs.ReplaceEntry(Scratch(L"missing"), Scratch(L"newer")));
  EXPECT_EQ(content(L"old"), "new");
  EXPECT_EQ(content(L"newer"), "newer");
  ASSERT_TRUE(fs.SetAttributes(Scratch(L"old"), FileAttr::Normal));
}

TEST_P(FileSystemContract, PathsAreNormalisedLikeWindowsDoes) {
  auto& fs = p().files;
  ASSERT_TRUE(fs.MakeDirectory(Scratch(L"sub")));
  ASSERT_TRUE(fs.WriteWholeFile(Scratch(L"f.txt"), Bytes("x")));
  EXPECT_TRUE(fs.FileExists(Scratch(L"sub\\..\\f.txt")));
  EXPECT_TRUE(fs.FileExists(Scratch(L".\\sub\\..\\.\\f.txt")));
  // ".." never climbs above the drive.
  EXPECT_TRUE(fs.FileExists(Scratch().substr(0, 3) + L"..\\..\\" + Scratch(L"f.txt").substr(3)));
  EXPECT_TRUE(fs.FileExists(Scratch(L"f.txt.")));
  EXPECT_TRUE(fs.FileExists(L"\\\\?\\" + Scratch(L"f.txt")));

  const std::wstring longName = fs.LongPathName(Scratch(L"SUB"));
  EXPECT_TRUE(text::SameText(longName, Scratch(L"sub"))) << text::ToUtf8(longName);
  EXPECT_FALSE(fs.ShortPathName(Scratch(L"f.txt")).empty());
  EXPECT_TRUE(fs.LongPathName(Scratch(L"gone")).empty());
  EXPECT_TRUE(fs.ShortPathName(Scratch(L"gone")).empty());
}

TEST_P(FileSystemContract, HostilePathsGiveEmptyResultsNotCrashes) {
  auto& fs = p().files;
  std::vector<std::uint8_t> bytes;
  std::vector<FindEntry> entries;
  for (const std::wstring& bad :
       {Scratch(std::wstring(32'000, L'a')), Scratch(L"a<b>|c"), std::wstring(L"\x01:\\x"),
        Scratch(std::wstring(300, L'n'))}) {
    EXPECT_FALSE(fs.GetAttributes(bad));
    EXPECT_FALSE(fs.WriteWholeFile(bad, Bytes("x")));
    EXPECT_FALSE(fs.ReadWholeFile(bad, bytes));
    EXPECT_FALSE(fs.RemoveFile(bad));
    EXPECT_FALSE(fs.MakeDirectory(bad));
    EXPECT_FALSE(fs.RemoveFolder(bad));
    EXPECT_FALSE(fs.FindEntries(bad + L"\\*", entries));
    EXPECT_TRUE(fs.LongPathName(bad).empty());
    EXPECT_TRUE(fs.ShortPathName(bad).empty());
  }
}

INSTANTIATE_TEST_SUITE_P(Backends, FileSystemContract, ::testing::ValuesIn(AllBackends()),
                         BackendName);

}  // namespace
}  // namespace varnel::testing_support
