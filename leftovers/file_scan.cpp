#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "core/app_frame.h"
#include "core/path_resolution.h"
#include "core/shortcut.h"
#include "base/text.h"
#include "core/uninstall_command.h"
#include "leftovers/filter_manage.h"
#include "leftovers/scan_steps.h"
#include "platform/csidl.h"

namespace varnel::scan {

namespace {

// Lower-case paths without a trailing "\" that a folder walk never reports:
// everything reported already and the paths the filter keeps.
using HandledPaths = std::unordered_set<std::wstring>;

// A link file is a few kilobytes; anything larger on a desktop is not one
// and is not read whole to find out.
constexpr std::uint64_t kLargestLink = 1u << 20;

std::wstring Join(std::wstring_view folder, std::wstring_view name) {
  return text::ExcludeTrailingBackslash(folder) + L"\\" + std::wstring(name);
}

std::wstring KeyOf(std::wstring_view path) {
  return text::Lower(text::ExcludeTrailingBackslash(path));
}

bool IsDotName(const FindEntry& entry) { return !entry.name.empty() && entry.name[0] == L'.'; }
bool IsFolder(const FindEntry& entry) { return (entry.attributes & FileAttr::Directory) != 0; }
bool IsJunction(const FindEntry& entry) {
  return (entry.attributes & FileAttr::ReparsePoint) != 0;
}

// The inventory writes "-" for a publisher the program does not give.
std::wstring Given(std::wstring_view field) {
  auto trimmed = text::Trim(field);
  return trimmed == L"-" ? std::wstring() : text::Lower(trimmed);
}

// What a folder walk does after visiting an entry.
enum class Next { Skip, Enter, Stop };

// Depth first, entries in the order listed, each folder entered right after
// its visit, with a stack of its own so that a tree nested thousands deep
// cannot exhaust the thread's; a stop request ends it.
template <typename Visit>
void WalkFolders(const ScanContext& scan, const std::wstring& base, Visit visit) {
  struct Level {
    std::wstring folder;
    std::vector<FindEntry> entries;
    std::size_t next = 0;
  };
  std::vector<Level> stack;
  auto push = [&](std::wstring folder) {
    Level level{std::move(folder), {}, 0};
    if (!scan.Machine().files.FindEntries(Join(level.folder, L"*.*"), level.entries))
      level.entries.clear();
    stack.push_back(std::move(level));
  };
  push(base);
  while (!stack.empty()) {
    Level& top = stack.back();
    if (top.next == top.entries.size()) {
      stack.pop_back();
      continue;
    }
    const FindEntry& entry = top.entries[top.next++];
    if (!scan.Step() || IsDotName(entry)) {
      if (!scan.Running()) return;
      continue;
    }
    auto path = Join(top.folder, entry.name);
    const Next next = visit(entry, path);
    if (next == Next::Stop) return;
    if (next == Next::Enter) push(std::move(path));  // invalidates `top`
  }
}

// One depth-first walk for several names at once: found[i] is the first
// folder named names[i], as a walk for that name alone would find it.
void FindFolders(const ScanContext& scan, const std::wstring& base,
                 const std::vector<std::wstring>& names, std::vector<std::wstring>& found,
                 std::size_t& missing) {
  WalkFolders(scan, base, [&](const FindEntry& entry, const std::wstring& path) {
    if (!IsFolder(entry) || IsJunction(entry)) return Next::Skip;
    const auto lower = text::Lower(entry.name);
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (found[i].empty() && !names[i].empty() && lower == names[i]) {
        found[i] = path;
        --missing;
      }
    }
    return missing == 0 ? Next::Stop : Next::Enter;
  });
}

std::vector<std::wstring> FindFolders(const ScanContext& scan, const std::wstring& base,
                                      const std::vector<std::wstring>& names) {
  std::vector<std::wstring> found(names.size());
  std::size_t missing = 0;
  for (const auto& name : names)
    if (!name.empty()) ++missing;
  if (missing > 0 && !base.empty()) FindFolders(scan, base, names, found, missing);
  return found;
}

// The first folder below `base`, at any depth, whose whole name is `name`
// (any case); empty when there is none. A stop request ends the search.
std::wstring FindFolder(const ScanContext& scan, const std::wstring& base, std::wstring_view name) {
  return FindFolders(scan, base, {text::Lower(name)})[0];
}

// Reports every folder and file below `folder` that is not handled and puts
// it on the list; a handled folder is not entered, nor is a junction.
void AddFolderTree(const ScanContext& scan, ScanSink& out, const std::wstring& folder,
                   HandledPaths& handled) {
  WalkFolders(scan, folder, [&](const FindEntry& entry, const std::wstring& path) {
    if (!handled.insert(KeyOf(path)).second) return Next::Skip;
    if (!IsFolder(entry)) {
      out.AddFile(path, static_cast<std::uint32_t>(entry.size & 0xFFFFFFFFu),
                  static_cast<std::uint32_t>(entry.size >> 32), FileKind::File);
      return Next::Skip;
    }
    out.AddFile(path, 0, 0, FileKind::Folder);
    return IsJunction(entry) ? Next::Skip : Next::Enter;
  });
}

class FileScan {
 public:
  FileScan(const ScanContext& scan, ScanSink& out, const InstallerFindings& installer)
      : scan_(scan),
        out_(out),
        files_(scan.Machine().files),
        system_(scan.Machine().system),
        installer_(installer),
        productCode_(installer.ProductCode),
        name_(Given(scan.Record().Name)),
        publisher_(Given(scan.Record().Publisher)) {}

  void Run() {
    if (scan_.Running()) InstallFolder();
    if (scan_.Running()) InstallerFolders();
    for (int csidl : {Csidl::CommonAppData, Csidl::AppData})
      if (scan_.Running()) NameSearch(QuerySpecialFolder(system_, csidl));
    if (!productCode_.empty()) {
      for (int csidl : {Csidl::CommonAppData, Csidl::AppData}) {
        if (!scan_.Running()) return;
        auto base = QuerySpecialFolder(system_, csidl);
        if (!base.empty()) ReportTree(Join(base, L"Microsoft\\Installer\\" + productCode_));
      }
    }
    for (int csidl : {Csidl::CommonPrograms, Csidl::Programs})
      if (scan_.Running()) NameSearch(QuerySpecialFolder(system_, csidl));
    if (!scan_.InstallFolder().empty()) {
      for (int csidl : {Csidl::DesktopDirectory, Csidl::CommonDesktopDirectory})
        if (scan_.Running()) Shortcuts(QuerySpecialFolder(system_, csidl));
    }
    if (scan_.Running()) MakerPaths();
  }

 private:
  void Report(const std::wstring& path, std::uint32_t kind) {
    handled_.insert(KeyOf(path));
    out_.AddFile(path, 0, 0, kind);
  }

  // Whether a folder found by name or named by a record may be offered at
  // all: never a protected folder, one holding it, one in the Windows folder
  // (but the program's own installer cache), another program's, or one
  // reached through a link.
  bool Offered(const std::wstring& path) const {
    const auto resolved = ResolvePath(scan_.Machine(), path);
    return !resolved.empty() &&
           scan_.Places().CheckDeletion(resolved, productCode_) == Refusal::None;
  }

  // A folder that is not handled yet goes with everything in it; a folder
  // that is itself a link goes alone, as a link.
  void ReportTree(const std::wstring& folder) {
    if (handled_.contains(KeyOf(folder)) || !files_.DirectoryExists(folder) || !Offered(folder))
      return;
    Report(folder, FileKind::Folder);
    const auto attributes = files_.GetAttributes(folder);
    if (attributes && !(*attributes & FileAttr::ReparsePoint))
      AddFolderTree(scan_, out_, folder, handled_);
  }

  // A folder the uninstaller already removed is no leftover, so only an
  // existing install folder is reported; the paths the filter keeps make it
  // go item by item instead of whole.
  void InstallFolder() {
    const auto folder = text::ExcludeTrailingBackslash(text::Trim(scan_.InstallFolderAsWritten()));
    if (folder.empty()) return;
    handled_.insert(KeyOf(folder));
    std::wstring kept;
    if (scan_.HasFilterEntry())
      kept = scan_.Filter().GetField(scan_.FilterEntryName(), L"filter");
    const auto keptPaths = SplitFilterField(kept);
    for (const auto& entry : keptPaths) {
      const auto path = ExpandFilterPath(system_, entry, scan_.InstallFolderAsWritten());
      if (files_.FileExists(path)) handled_.insert(KeyOf(text::ExtractFilePath(path)));
      handled_.insert(KeyOf(path));
    }
    if (!files_.DirectoryExists(folder)) return;
    if (keptPaths.empty()) Report(folder, FileKind::Folder);
    AddFolderTree(scan_, out_, folder, handled_);
  }

  void InstallerFolders() {
    for (const auto& folder : installer_.Folders) {
      if (!scan_.Step()) return;
      ReportTree(text::ExcludeTrailingBackslash(folder));
    }
  }

  // The publisher's folder holding one named like the program is preferred
  // to a namesake elsewhere below the base folder.
  void NameSearch(const std::wstring& base) {
    if (base.empty() || (name_.empty() && publisher_.empty())) return;
    std::wstring result;
    if (!publisher_.empty()) {
      auto found = FindFolders(scan_, base, {publisher_, name_});
      if (!found[0].empty() && !name_.empty()) result = FindFolder(scan_, found[0], name_);
      if (result.empty()) result = found[1];
    } else {
      result = FindFolder(scan_, base, name_);
    }
    if (!result.empty() && scan_.Running()) ReportTree(result);
  }

  // Shortcuts directly on the desktop whose target lies in the install folder;
  // one that cannot be read is passed over.
  void Shortcuts(const std::wstring& desktop) {
    if (desktop.empty()) return;
    std::vector<FindEntry> entries;
    if (!files_.FindEntries(Join(desktop, L"*.*"), entries)) return;
    for (const auto& entry : entries) {
      if (!scan_.Step()) return;
      if (IsDotName(entry) || IsFolder(entry) || entry.size > kLargestLink) continue;
      const auto path = Join(desktop, entry.name);
      if (handled_.contains(KeyOf(path))) continue;
      // A leftover link usually points at a file the uninstaller removed:
      // the stored path counts as well as the recovered one.
      for (auto target : {GetShortcutTarget(files_, system_, path),
                          GetShortcutBasePath(files_, system_, path)}) {
        if (target.empty()) continue;
        if (target.back() != L'\\') target += L'\\';
        if (!scan_.TextHasInstallFolder(target)) continue;
        Report(path, FileKind::File);
        break;
      }
    }
  }

  // The folders and files the protection filter names for one of the
  // maker's own programs.
  void MakerPaths() {
    std::wstring entry;
    if (!name_.empty() && !publisher_.empty()) {
      if (!scan_.HasFilterEntry()) return;
      entry = scan_.FilterEntryName();
    } else if (name_.empty() && publisher_.empty()) {
      const TAppFrame frame(scan_.Machine());
      entry = text::ExtractFileName(GetFileFromCommandLine(frame, scan_.Record().UninstallString));
    }
    if (entry.empty()) return;
    for (const auto& item : SplitFilterField(scan_.Filter().GetField(entry, L"path"))) {
      if (!scan_.Step()) return;
      const auto path = ExpandFilterPath(system_, item, scan_.InstallFolderAsWritten());
      if (handled_.contains(KeyOf(path))) continue;
      if (files_.DirectoryExists(path))
        ReportTree(path);
      else if (files_.FileExists(path) && Offered(path))
        Report(path, FileKind::File);
    }
  }

  const ScanContext& scan_;
  ScanSink& out_;
  IFileSystem& files_;
  ISystem& system_;
  const InstallerFindings& installer_;
  const std::wstring& productCode_;
  const std::wstring name_;
  const std::wstring publisher_;
  HandledPaths handled_;
};

}  // namespace

void Files(const ScanContext& scan, ScanSink& out, const InstallerFindings& installer) {
  FileScan(scan, out, installer).Run();
}

}  // namespace varnel::scan
