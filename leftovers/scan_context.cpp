#include "leftovers/scan_context.h"

#include <utility>
#include <vector>

#include "base/text.h"
#include "core/path_resolution.h"
#include "core/safe_folder.h"
#include "leftovers/value_text.h"

namespace varnel {

ScanContext::ScanContext(const Platform& platform, const TFilterManage& filter,
                         MessageStep processMessages, const ScanRunState& runState)
    : platform_(platform),
      filter_(filter),
      processMessages_(std::move(processMessages)),
      runState_(runState) {}

void ScanContext::SetUp(const TSoftInfo& record, const ProtectedPlaces& places) {
  CopySoftInfo(record_, record);
  places_ = &places;
  hasFilterEntry_ = false;
  filterEntry_.clear();
  DeriveInstallFolder();
}

void ScanContext::DeriveInstallFolder() {
  installFolderAsWritten_.clear();
  installFolder_.clear();
  // Every test below sees the one real spelling, so "..", "\\?\", short
  // names or trailing dots cannot walk a folder out of harmless ground.
  auto folder = ResolvePath(platform_, record_.InstallLocation);
  if (folder.empty()) return;
  if (platform_.files.FileExists(folder))
    folder = text::ExcludeTrailingBackslash(text::ExtractFilePath(folder));
  // A folder that no program can own would make every path on the machine a
  // leftover; such a program is scanned as one without a folder.
  if (!IsSafeFolder(platform_, folder) || places_->CheckInstallFolder(folder) != Refusal::None)
    return;
  installFolderAsWritten_ = text::IncludeTrailingBackslash(folder);
  installFolder_ = text::Lower(installFolderAsWritten_);
}

void ScanContext::LookUpFilterEntry() {
  hasFilterEntry_ = filter_.Find(FilterSearchKey(record_), &filterEntry_, processMessages_);
  if (!hasFilterEntry_) filterEntry_.clear();
}

std::unique_ptr<IRegistryKey> ScanContext::Open(RegRoot root, std::wstring_view path) const {
  return platform_.registry.OpenKey(root, path, RegAccess::Read, record_.Is64BitView);
}

bool ScanContext::KeyExists(RegRoot root, std::wstring_view path) const {
  return platform_.registry.KeyExists(root, path, record_.Is64BitView);
}

bool ScanContext::TextHasInstallFolder(std::wstring_view text) const {
  return !installFolder_.empty() && text::Lower(text).find(installFolder_) != std::wstring::npos;
}

bool ScanContext::ServerPathMatches(std::wstring_view classKeyPath) const {
  if (installFolder_.empty()) return false;
  for (std::wstring_view server : {L"\\InprocServer32", L"\\LocalServer32"}) {
    auto key = Open(RegRoot::LocalMachine, std::wstring(classKeyPath) + std::wstring(server));
    if (key && ServerTextMatches(ReadValueText(*key, L""))) return true;
  }
  return false;
}

bool ScanContext::ServerTextMatches(std::wstring_view serverPath) const {
  if (installFolder_.empty()) return false;
  auto path = text::Trim(serverPath);
  if (path.empty()) return false;
  // Only a short (8.3) component can change more than case; asking the
  // file system for every class of the machine would cost a disk lookup each.
  if (path.find(L'~') != std::wstring::npos) {
    auto longPath = platform_.files.LongPathName(path);
    if (!longPath.empty()) path = longPath;
  }
  return TextHasInstallFolder(path);
}

bool ScanContext::KeyRefersToInstallFolder(RegRoot root, std::wstring_view keyPath) const {
  if (installFolder_.empty()) return false;
  // Depth first, with its own stack and a depth bound against registry links.
  std::vector<std::pair<std::wstring, std::size_t>> pending{{std::wstring(keyPath), 0}};
  while (!pending.empty()) {
    auto [path, depth] = std::move(pending.back());
    pending.pop_back();
    auto key = Open(root, path);
    if (!key) continue;
    for (const auto& name : key->ValueNames()) {
      auto value = ReadValueText(*key, name);
      if (value.empty() || value.back() != L'\\') value += L'\\';
      if (TextHasInstallFolder(value)) return true;
    }
    if (depth + 1 >= kMaxKeyDepth) continue;
    auto subKeys = key->SubKeyNames();
    for (auto it = subKeys.rbegin(); it != subKeys.rend(); ++it)
      pending.emplace_back(path + L"\\" + *it, depth + 1);
  }
  return false;
}

}  // namespace varnel
