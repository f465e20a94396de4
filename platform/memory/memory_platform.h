#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/platform.h"

// An in-memory machine for logic tests: both registry views, a file system
// with Windows path rules, configurable folders and locale, recorded shell and
// window traffic, and switches that make chosen calls fail.
namespace varnel::mem {

enum class Fault {
  RegOpen, RegCreate, RegEnumKeys, RegEnumValues, RegRead, RegWrite, RegDeleteKey, RegDeleteValue,
  FileAttributes, FileFind, FileRead, FileWrite, FileDelete, FolderCreate, FolderRemove,
  FileMove, FileReplace, MoveOnReboot, LongPath, ShortPath,
  SpecialFolder, ExpandEnvironment, VersionInfo,
};

class FaultSwitches {
 public:
  void Set(Fault fault, bool failing = true);
  // The next `count` calls of `fault` fail, later ones succeed.
  void FailTimes(Fault fault, int count);
  bool Fails(Fault fault);
  void Clear();

 private:
  std::set<Fault> always_;
  std::map<Fault, int> remaining_;
};

class MemoryRegistry final : public IRegistry {
 public:
  explicit MemoryRegistry(FaultSwitches& faults, bool is64BitSystem = true);
  ~MemoryRegistry() override;

  std::unique_ptr<IRegistryKey> OpenKey(RegRoot root, std::wstring_view path, RegAccess access,
                                        bool use64) override;
  std::unique_ptr<IRegistryKey> CreateKey(RegRoot root, std::wstring_view path,
                                          bool use64) override;
  bool KeyExists(RegRoot root, std::wstring_view path, bool use64) override;
  bool DeleteKey(RegRoot root, std::wstring_view path, bool use64) override;

  void SetIs64BitSystem(bool is64) { is64_ = is64; }
  bool Is64BitSystem() const { return is64_; }

  // Test set-up shortcuts; they bypass fault switches.
  void SetString(RegRoot root, std::wstring_view path, std::wstring_view name,
                 std::wstring_view value, bool use64 = true, std::uint32_t type = RegType::String);
  void SetDWord(RegRoot root, std::wstring_view path, std::wstring_view name, std::uint32_t value,
                bool use64 = true);
  void SetRaw(RegRoot root, std::wstring_view path, std::wstring_view name, const RegValue& value,
              bool use64 = true);

  struct Node;

 private:
  FaultSwitches& faults_;
  bool is64_;
  std::shared_ptr<Node> machine_;  // HKEY_LOCAL_MACHINE
  std::shared_ptr<Node> users_;    // HKEY_USERS; the current user is a child
  std::shared_ptr<Node> config_;   // HKEY_CURRENT_CONFIG
  std::uint64_t clock_ = 132'000'000'000'000'000ULL;

  friend class MemoryRegistryKey;
  struct Location;
  Location Locate(RegRoot root, std::wstring_view path, bool use64) const;
  std::shared_ptr<Node> Walk(const Location& where, bool create);
  void Touch(Node& node);
};

class MemoryFileSystem final : public IFileSystem {
 public:
  explicit MemoryFileSystem(FaultSwitches& faults);
  ~MemoryFileSystem() override;

  std::optional<std::uint32_t> GetAttributes(std::wstring_view path) override;
  bool SetAttributes(std::wstring_view path, std::uint32_t attributes) override;
  std::optional<FindEntry> GetFileInfo(std::wstring_view path) override;
  bool FindEntries(std::wstring_view pattern, std::vector<FindEntry>& out) override;
  bool ReadWholeFile(std::wstring_view path, std::vector<std::uint8_t>& out) override;
  bool ReadFilePart(std::wstring_view path, std::uint64_t offset, std::size_t maxBytes,
                    std::vector<std::uint8_t>& out) override;
  bool WriteWholeFile(std::wstring_view path, std::span<const std::uint8_t> bytes) override;
  bool RemoveFile(std::wstring_view path) override;
  bool MakeDirectory(std::wstring_view path) override;
  bool RemoveFolder(std::wstring_view path) override;
  bool MoveEntry(std::wstring_view from, std::wstring_view to) override;
  bool ReplaceEntry(std::wstring_view from, std::wstring_view to) override;
  std::wstring LongPathName(std::wstring_view path) override;
  std::wstring ShortPathName(std::wstring_view path) override;
  bool MoveOnReboot(std::wstring_view from, std::wstring_view to) override;

  // Test set-up: creates missing parent folders; bypasses fault switches.
  void AddFolder(std::wstring_view path);
  void AddFile(std::wstring_view path, std::string_view content = {},
               std::uint32_t attributes = FileAttr::Archive);
  void SetTimes(std::wstring_view path, FileTime creation, FileTime lastAccess, FileTime lastWrite);
  // A junction at `path` (parents made) to the folder `target`: it reports
  // FileAttr::ReparsePoint, paths through it reach the target's entries,
  // RemoveFolder removes the link alone, and a link to missing place or a
  // loop of links reads as missing beyond it.
  void AddLink(std::wstring_view path, std::wstring_view target);
  // Gives an entry an 8.3 alias that ShortPathName and FindEntries report.
  void SetShortName(std::wstring_view path, std::wstring_view shortName);

  // What MoveOnReboot queued, in order: (from, to); to empty means delete.
  const std::vector<std::pair<std::wstring, std::wstring>>& PendingRenames() const {
    return pending_;
  }
  // Counts every call that reads the disk (attributes, find, read), so tests
  // can prove that a cache spared the walk.
  std::uint64_t ReadCalls() const { return readCalls_; }

  struct Node;

 private:
  FaultSwitches& faults_;
  std::unique_ptr<Node> root_;  // children are drive letters "C:"
  std::vector<std::pair<std::wstring, std::wstring>> pending_;
  std::uint64_t readCalls_ = 0;
  FileTime clock_ = 0;
  Node* Find(std::wstring_view path);
  // An existing folder and the last name of a path below it.
  struct Place {
    Node* folder = nullptr;
    std::wstring name;
    bool atDriveRoot = false;
    std::vector<Node*> chain;  // the folders from the drive down to `folder`
  };
  std::optional<Place> Split(std::wstring_view path, bool lastMayWildcard);
  // Split for a set-up entry, its missing parent folders made first.
  std::optional<Place> WithParents(std::wstring_view path);
  Node& AddChild(Node& folder, const std::wstring& name, std::uint32_t attributes);
  // The path as stored, with long or (where there is one) short names.
  std::wstring SpelledPath(std::wstring_view path, bool shortNames);
};

class MemorySystem final : public ISystem {
 public:
  MemorySystem(FaultSwitches& faults, MemoryRegistry& registry);

  std::wstring SpecialFolder(int csidl) override;
  std::wstring SystemDirectory() override { return systemDir; }
  std::wstring WindowsDirectory() override { return windowsDir; }
  std::wstring TempDirectory() override { return tempDir; }
  std::optional<std::wstring> EnvironmentVariable(std::wstring_view name) override;
  std::optional<std::wstring> ExpandEnvironment(std::wstring_view text) override;
  std::wstring ModulePath() override { return modulePath; }
  OsVersion GetOsVersion() override { return osVersion; }
  bool IsWow64() override;
  bool SetFsRedirection(bool disable) override;
  std::uint32_t AnsiCodePage() override { return ansiCodePage; }
  std::string ToAnsi(std::wstring_view text) override;
  std::wstring FromAnsi(std::string_view bytes) override;
  FileTime Now() override { return now; }
  std::optional<LocalDateTime> ToLocalTime(FileTime utc) override;
  std::optional<FileTime> FromLocalTime(const LocalDateTime& local) override;
  std::wstring ShortDateFormat() override { return shortDateFormat; }
  std::wstring LongTimeFormat() override { return longTimeFormat; }
  wchar_t DateSeparator() override { return dateSeparator; }
  wchar_t DecimalSeparator() override { return decimalSeparator; }
  std::array<std::uint8_t, 16> Md5(std::span<const std::uint8_t> bytes) override;
  std::unique_ptr<IVersionInfo> OpenVersionInfo(std::wstring_view path) override;
  std::uint32_t LastErrorCode() override { return lastError; }
  void SetLastErrorCode(std::uint32_t code) override { lastError = code; }
  void SleepMs(std::uint32_t ms) override { sleptMs += ms; }

  // Configuration, public so tests can shape the machine.
  std::map<int, std::wstring> specialFolders;
  std::map<std::wstring, std::wstring> environment;  // names upper-cased
  std::wstring systemDir = L"C:\\Windows\\system32";
  std::wstring windowsDir = L"C:\\Windows";
  std::wstring tempDir = L"C:\\Users\\test\\AppData\\Local\\Temp\\";
  std::wstring modulePath = L"C:\\Program Files\\Varnel\\VarnelUninstaller.exe";
  OsVersion osVersion{10, 0, 19045, 2, 1, 9};
  std::uint32_t ansiCodePage = 1252;  // 1252 and 65001 are supported
  FileTime now = 133'000'000'000'000'000ULL;
  std::int64_t utcOffsetMinutes = 0;  // local = UTC + offset
  std::wstring shortDateFormat = L"M/d/yyyy";
  std::wstring longTimeFormat = L"h:mm:ss tt";
  wchar_t dateSeparator = L'/';
  wchar_t decimalSeparator = L'.';
  std::uint32_t lastError = 0;
  std::uint64_t sleptMs = 0;
  int redirectionDisabledDepth = 0;

  struct VersionResource {
    std::optional<std::pair<std::uint16_t, std::uint16_t>> translation;
    std::map<std::wstring, std::wstring> strings;  // full sub-block -> text
  };
  std::map<std::wstring, VersionResource> versionResources;  // path upper-cased

 private:
  FaultSwitches& faults_;
  MemoryRegistry& registry_;
};

class MemoryShell final : public IShell {
 public:
  struct Call {
    std::wstring verb, file, parameters, directory;
    int show = 0;
    bool waitedIdle = false;
  };
  std::intptr_t Execute(std::wstring_view verb, std::wstring_view file,
                        std::wstring_view parameters, std::wstring_view directory,
                        int show) override;
  bool ExecuteAndWaitIdle(std::wstring_view verb, std::wstring_view file, int show) override;
  bool ExtractIcons(std::wstring_view file, int index, IconHandle& small,
                    IconHandle& large) override;
  // The token's number in four bytes.
  std::vector<std::uint8_t> IconBits(const IconHandle& icon) override;
  IconHandle IconFromBits(std::span<const std::uint8_t> bits) override;
  // Paths with the same extension share a system index, as file types do.
  IconHandle SmallFileIcon(std::wstring_view path, int& systemIndex) override;

  std::vector<Call> calls;
  // Icon files by upper-cased path, with how many icons each holds.
  std::map<std::wstring, int> iconFiles;
  int iconsExtracted = 0;
  std::map<std::wstring, int> fileIconIndex;  // by upper-cased extension
  int fileIconsHanded = 0;
  std::intptr_t result = 42;
  // Runs after a successful ExecuteAndWaitIdle, e.g. to make a window appear.
  std::function<void(const Call&)> onStart;
};

class MemoryWindows final : public IWindowSteering {
 public:
  struct Message {
    WindowId window;
    enum Kind { Show, Front, Focus, KeyDown, Char } kind;
    std::uint32_t value;  // show command, virtual key or character
  };
  WindowId FindTopWindow(std::wstring_view className) override;
  WindowId FindChild(WindowId parent, std::wstring_view className) override;
  void Show(WindowId window, int showCmd) override;
  void BringToFront(WindowId window) override;
  void Focus(WindowId window) override;
  void SendKeyDown(WindowId window, std::uint32_t virtualKey) override;
  void SendChar(WindowId window, wchar_t ch) override;

  // Adds a window; parent 0 makes it top-level. Returns its id.
  WindowId AddWindow(std::wstring_view className, WindowId parent = 0);
  std::vector<Message> messages;

 private:
  struct Window {
    WindowId id;
    WindowId parent;
    std::wstring className;
  };
  std::vector<Window> windows_;
};

// Scripted programs: a command line (matched ignoring case) names a script
// of what its job holds at each query; a command without one starts and is
// gone at the first query. Every start and query is recorded in `events`.
class MemoryProcesses final : public IProcesses {
 public:
  struct Script {
    // The image names in the job at each query; the last entry stays.
    // Empty: the job is empty from the first query on.
    std::vector<std::vector<std::wstring>> polls;
    int failingQueries = 0;     // the first N queries fail; -1: every one
    std::optional<std::uint32_t> exitCode = 0;  // known once a query saw no process
    bool failsToStart = false;
    std::function<void()> onStart;   // runs when the program starts
    std::function<void()> onFinish;  // runs at the first query that finds the job empty
  };
  std::unique_ptr<IJob> StartInJob(std::wstring_view commandLine, int show) override;
  std::wstring ImageName(std::uint32_t processId) override;

  // By upper-cased command line.
  std::map<std::wstring, Script> scripts;
  void AddScript(std::wstring_view commandLine, Script script);
  // "start <command>", "query <command>" (one per query), "end <command>"
  // (the first query that finds the job empty) and "fail <command>".
  std::vector<std::wstring> events;
  std::vector<int> shows;  // the show command of each start

 private:
  friend class MemoryJob;
  std::map<std::uint32_t, std::wstring> images_;  // running processes
  std::uint32_t nextId_ = 1000;
};

class MemoryRestorePoints final : public IRestorePoints {
 public:
  bool BeginRestorePoint(std::wstring_view description) override;
  bool available = true;  // false: the library is missing
  std::vector<std::wstring> begun;  // the descriptions asked for
};

// A whole machine: a 64-bit Windows 10 with the usual folders of user "test",
// the shell-folder registry key, and no programs.
class MemoryPlatform {
 public:
  MemoryPlatform();
  MemoryPlatform(const MemoryPlatform&) = delete;
  MemoryPlatform& operator=(const MemoryPlatform&) = delete;

  Platform Get() {
    return Platform{registry, files, system, shell, windows, processes, restorePoints};
  }

  FaultSwitches faults;
  MemoryRegistry registry;
  MemoryFileSystem files;
  MemorySystem system;
  MemoryShell shell;
  MemoryWindows windows;
  MemoryProcesses processes;
  MemoryRestorePoints restorePoints;
};

}  // namespace varnel::mem
