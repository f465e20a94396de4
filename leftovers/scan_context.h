#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "core/protected_places.h"
#include "inventory/soft_info.h"
#include "leftovers/filter_manage.h"
#include "platform/platform.h"

namespace varnel {

enum class ScanRunState : std::int32_t { Running = 0, StopRequested = 1, Idle = 2 };

// What every step of one program's scan reads: the machine, the program, its
// install folder, the places no finding may be and its filter row. The
// scanner that owns it fills it in; the steps see it read-only.
class ScanContext {
 public:
  using MessageStep = std::function<void()>;

  // `filter` and `runState` are the owner's and outlive the context.
  ScanContext(const Platform& platform, const TFilterManage& filter, MessageStep processMessages,
              const ScanRunState& runState);

  // ---- Filled in by the owner before the steps run.

  // `places` must outlive the scan.
  void SetUp(const TSoftInfo& record, const ProtectedPlaces& places);
  // From the record's install location, which may name a file.
  void DeriveInstallFolder();
  void LookUpFilterEntry();

  // ---- What the steps read.

  const Platform& Machine() const { return platform_; }
  const TSoftInfo& Record() const { return record_; }
  const ProtectedPlaces& Places() const { return *places_; }
  // Resolved (ResolvePath), lower case, with a trailing "\"; empty when the
  // program has none or it is a place no program may own (ProtectedPlaces::
  // CheckInstallFolder refuses it, or "%" is left in it).
  const std::wstring& InstallFolder() const { return installFolder_; }
  // The same folder as the disk spells it, for reporting.
  const std::wstring& InstallFolderAsWritten() const { return installFolderAsWritten_; }

  // The protection filter and the row matched for this program ("" when none).
  const TFilterManage& Filter() const { return filter_; }
  const std::wstring& FilterEntryName() const { return filterEntry_; }
  bool HasFilterEntry() const { return hasFilterEntry_; }

  bool Running() const { return runState_ == ScanRunState::Running; }
  // Lets the window process messages.
  void ProcessMessages() const {
    if (processMessages_) processMessages_();
  }
  // The per-item step: processes messages, then tells whether the scan may go on.
  bool Step() const {
    ProcessMessages();
    return Running();
  }

  // Registry reads in the record's view.
  std::unique_ptr<IRegistryKey> Open(RegRoot root, std::wstring_view path) const;
  bool KeyExists(RegRoot root, std::wstring_view path) const;

  // Whether the class key's "InprocServer32" or "LocalServer32" server lies in
  // the install folder (long path form, substring test).
  bool ServerPathMatches(std::wstring_view classKeyPath) const;
  // The same test on a server key's default value already read.
  bool ServerTextMatches(std::wstring_view serverPath) const;
  // Whether some value of the key or of a key below it, read as text with "\"
  // appended, contains the install folder.
  bool KeyRefersToInstallFolder(RegRoot root, std::wstring_view keyPath) const;
  // Whether `text`, lower-cased, contains the install folder.
  bool TextHasInstallFolder(std::wstring_view text) const;

 private:
  Platform platform_;
  const TFilterManage& filter_;
  MessageStep processMessages_;
  const ScanRunState& runState_;
  const ProtectedPlaces* places_ = nullptr;
  TSoftInfo record_;
  std::wstring installFolder_;
  std::wstring installFolderAsWritten_;
  bool hasFilterEntry_ = false;
  std::wstring filterEntry_;
};

// Registry links can make a key hold itself; no real key nests this deep.
inline constexpr std::size_t kMaxKeyDepth = 64;

}  // namespace varnel
