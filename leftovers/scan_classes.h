#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/protected_places.h"
#include "inventory/soft_info.h"
#include "leftovers/filter_manage.h"
#include "leftovers/image_list.h"
#include "leftovers/scan_category.h"
#include "leftovers/scan_results.h"
#include "platform/platform.h"

namespace varnel {

enum class ScanRunState : std::int32_t { Running = 0, StopRequested = 1, Idle = 2 };

// Finds what one program left behind in the registry and on disk. Lives for
// the scan of one program; runs on the GUI thread, calling the message step
// once per item so that a Stop button can be served.
class TRegeditScanClasses {
 public:
  using MessageStep = std::function<void()>;

  // `filter` is the caller's and must outlive the scan.
  TRegeditScanClasses(const Platform& platform, const TFilterManage& filter,
                      MessageStep processMessages = {});
  TRegeditScanClasses(const TRegeditScanClasses&) = delete;
  TRegeditScanClasses& operator=(const TRegeditScanClasses&) = delete;

  // The places no finding may be; given before SetUp (the caller's, it must
  // outlive the scan). Without one, SetUp reads the machine's own and knows
  // no other programs.
  void SetProtectedPlaces(const ProtectedPlaces* places) { places_ = places; }
  const ProtectedPlaces& Places() const { return *places_; }

  // The result lists stay the caller's; `images` may be null (no icons then).
  void SetUp(std::vector<TShowRegInfo>* registryResults, std::vector<TFileInfo>* fileResults,
             std::uintptr_t ownerWindow, const TSoftInfo& record, IImageList* images);
  void FullScan();
  // The toolbar's browser entries (and its class keys when they lie in the folder).
  void ToolbarScan(const std::wstring& toolbarClsid);
  // Disk only, from an install location that may name a file.
  void FileOnlyScan();
  void Stop() { runState_ = ScanRunState::StopRequested; }
  // Runs one scanner step on its own, in the run state a full scan gives it.
  void RunAlone(const std::function<void()>& step);
  void ClearResults();
  ScanRunState RunState() const { return runState_; }

  // ---- What the individual scanners share.

  const Platform& Machine() const { return platform_; }
  const TSoftInfo& Record() const { return record_; }
  bool Use64() const { return record_.Is64BitView; }
  // Resolved (ResolvePath), lower case, with a trailing "\"; empty when the
  // program has none or it is a place no program may own (ProtectedPlaces::
  // CheckInstallFolder refuses it, or "%" is left in it).
  const std::wstring& InstallFolder() const { return installFolder_; }
  // The same folder as the disk spells it, for reporting.
  const std::wstring& InstallFolderAsWritten() const { return installFolderAsWritten_; }
  const std::wstring& KeyPath() const { return keyPath_; }
  bool Running() const { return runState_ == ScanRunState::Running; }
  // The per-item step: lets the window process messages, then tells whether
  // the scan may go on.
  bool Step();

  NamedList<TRegeditItemGroup>& Category(ScanCategory category) {
    return categories_[static_cast<std::size_t>(category)];
  }

  std::unique_ptr<IRegistryKey> Open(RegRoot root, std::wstring_view path) const;
  bool KeyExists(RegRoot root, std::wstring_view path) const;

  // Files the key (and, when `recursive`, every subkey) under `name` in the
  // category and reports it with its values; nothing when the name is filed
  // already or the key does not open. Returns the new group or null.
  TRegeditItemGroup* AddKey(ScanCategory category, RegRoot root, bool recursive,
                            const std::wstring& name, const std::wstring& keyPath);
  // The same, filed in a group's subkey list.
  TRegeditItemGroup* AddKey(TRegeditItemGroup& parent, RegRoot root, bool recursive,
                            const std::wstring& name, const std::wstring& keyPath);
  // Reports a value; an unset default value (no name, no data) is skipped, and
  // a name already filed in `group` is reported once.
  void AddValue(TRegeditItemGroup* group, RegRoot root, const std::wstring& keyPath,
                const std::wstring& valueName, const std::wstring& data);
  // The group filed under `name` in the category, made empty when missing.
  TRegeditItemGroup& CategoryRoot(ScanCategory category, const std::wstring& name);

  // Reports a file or folder with the shell's small icon when there is an image list.
  void AddFile(const std::wstring& path, std::uint32_t word1, std::uint32_t word2,
               std::uint32_t kind);

  // Whether the class key's "InprocServer32" or "LocalServer32" server lies in
  // the install folder (long path form, substring test).
  bool ServerPathMatches(std::wstring_view classKeyPath) const;
  // The same test on a server key's default value already read.
  bool ServerTextMatches(std::wstring_view serverPath) const;
  // Whether some value of the key or of a key below it, read as text with "\"
  // appended, contains the install folder.
  bool KeyRefersToInstallFolder(RegRoot root, std::wstring_view keyPath);
  // Whether `text`, lower-cased, contains the install folder.
  bool TextHasInstallFolder(std::wstring_view text) const;

  // Found by the Windows Installer step, used by the file scan.
  std::wstring ProductCode;
  // Existing folders named in the program's installer records, lower case, each once.
  std::vector<std::wstring> InstallerFolders;
  void AddInstallerFolder(const std::wstring& folder);

  // The protection filter: the row matched for this program ("" when none).
  const TFilterManage& Filter() const { return filter_; }
  const std::wstring& FilterEntryName() const { return filterEntry_; }
  bool HasFilterEntry() const { return hasFilterEntry_; }
  void LookUpFilterEntry();

  std::vector<TShowRegInfo>& RegistryResults() { return *registryResults_; }
  std::vector<TFileInfo>& FileResults() { return *fileResults_; }
  std::uintptr_t OwnerWindow() const { return ownerWindow_; }

 private:
  void AddKeyBody(TRegeditItemGroup& group, IRegistryKey& key, bool recursive);
  void DeriveInstallFolder(std::wstring location);

  Platform platform_;
  MessageStep processMessages_;
  const TFilterManage& filter_;
  std::array<NamedList<TRegeditItemGroup>, kScanCategoryCount> categories_;
  const ProtectedPlaces* places_ = nullptr;
  std::unique_ptr<ProtectedPlaces> ownPlaces_;
  std::vector<TShowRegInfo>* registryResults_ = nullptr;
  std::vector<TFileInfo>* fileResults_ = nullptr;
  std::vector<TShowRegInfo> ownRegistryResults_;  // until SetUp hands lists over
  std::vector<TFileInfo> ownFileResults_;
  std::wstring installFolder_;
  std::wstring installFolderAsWritten_;
  std::wstring keyPath_;
  IImageList* images_ = nullptr;
  std::unordered_map<int, int> iconCache_;  // system icon index -> our index
  TSoftInfo record_;
  std::uintptr_t ownerWindow_ = 0;
  ScanRunState runState_ = ScanRunState::Idle;
  bool hasFilterEntry_ = false;
  std::wstring filterEntry_;
};

}  // namespace varnel
