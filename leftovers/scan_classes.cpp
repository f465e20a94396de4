#include "leftovers/scan_classes.h"

#include "core/path_resolution.h"
#include "core/safe_folder.h"
#include "base/text.h"
#include "leftovers/scan_steps.h"
#include "leftovers/value_text.h"

namespace varnel {

namespace {

// Registry links can make a key hold itself; no real key nests this deep.
constexpr std::size_t kMaxKeyDepth = 64;

}  // namespace

TRegeditScanClasses::TRegeditScanClasses(const Platform& platform, const TFilterManage& filter,
                                         MessageStep processMessages)
    : platform_(platform),
      processMessages_(std::move(processMessages)),
      filter_(filter),
      registryResults_(&ownRegistryResults_),
      fileResults_(&ownFileResults_) {}

void TRegeditScanClasses::SetUp(std::vector<TShowRegInfo>* registryResults,
                                std::vector<TFileInfo>* fileResults, std::uintptr_t ownerWindow,
                                const TSoftInfo& record, IImageList* images) {
  CopySoftInfo(record_, record);
  registryResults_ = registryResults ? registryResults : &ownRegistryResults_;
  fileResults_ = fileResults ? fileResults : &ownFileResults_;
  ownerWindow_ = ownerWindow;
  images_ = images;
  iconCache_.clear();
  keyPath_ = record_.KeyPath;
  if (!places_) {
    ownPlaces_ = std::make_unique<ProtectedPlaces>(platform_, std::vector<std::wstring>{});
    places_ = ownPlaces_.get();
  }
  DeriveInstallFolder(record_.InstallLocation);
}

void TRegeditScanClasses::DeriveInstallFolder(std::wstring location) {
  installFolderAsWritten_.clear();
  installFolder_.clear();
  // Every test below sees the one real spelling, so "..", "\\?\", short
  // names or trailing dots cannot walk a folder out of harmless ground.
  auto folder = ResolvePath(platform_, location);
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

bool TRegeditScanClasses::Step() {
  if (processMessages_) processMessages_();
  return Running();
}

void TRegeditScanClasses::ClearResults() {
  registryResults_->clear();
  fileResults_->clear();
}

void TRegeditScanClasses::LookUpFilterEntry() {
  hasFilterEntry_ = filter_.Find(FilterSearchKey(record_), &filterEntry_, processMessages_);
  if (!hasFilterEntry_) filterEntry_.clear();
}

void TRegeditScanClasses::FullScan() {
  runState_ = ScanRunState::Running;
  const bool folder = !installFolder_.empty();
  // Each step runs only while nobody asked to stop.
  auto step = [&](bool needsFolder, auto&& run) {
    if (Running() && (folder || !needsFolder)) run();
  };
  ClearResults();
  CategoryRoot(ScanCategory::Toolbar, L"Toolbar");
  CategoryRoot(ScanCategory::Extensions, L"Extensions");
  CategoryRoot(ScanCategory::WebBrowser, L"WebBrowser");
  step(true, [&] { scan::ComClasses(*this); });
  step(false, [&] {
    LookUpFilterEntry();
    scan::Installer(*this);
  });
  step(false, [&] { scan::AppIdNames(*this); });
  step(true, [&] { scan::FileClasses(*this); });
  step(true, [&] { scan::Extensions(*this); });
  step(true, [&] { scan::Interfaces(*this); });
  step(true, [&] { scan::Services(*this); });
  step(true, [&] { scan::Firewall(*this); });
  step(true, [&] { scan::RunValues(*this); });
  step(true, [&] { scan::AppPaths(*this); });
  step(true, [&] { scan::ShellExtensionsApproved(*this); });
  step(true, [&] { scan::VendorKeys(*this); });
  step(true, [&] { scan::AllFilesVerbs(*this); });
  step(true, [&] { scan::ControlPanel(*this); });
  step(true, [&] { scan::Clients(*this); });
  step(true, [&] { scan::EventLog(*this); });
  step(true, [&] { scan::MuiCache(*this); });
  step(false, [&] { scan::MakerKey(*this); });
  step(false, [&] { scan::Files(*this, ProductCode); });
  runState_ = ScanRunState::Idle;
}

void TRegeditScanClasses::RunAlone(const std::function<void()>& step) {
  runState_ = ScanRunState::Running;
  step();
  runState_ = ScanRunState::Idle;
}

void TRegeditScanClasses::ToolbarScan(const std::wstring& toolbarClsid) {
  runState_ = ScanRunState::Running;
  scan::ToolbarValues(*this, toolbarClsid);
  runState_ = ScanRunState::Idle;
}

void TRegeditScanClasses::FileOnlyScan() {
  runState_ = ScanRunState::Running;
  // An existing file gives its folder; a folder that is gone stays itself,
  // since its parent belongs to another program or to everyone.
  DeriveInstallFolder(record_.InstallLocation);
  LookUpFilterEntry();
  scan::Files(*this, L"");
  runState_ = ScanRunState::Idle;
}

std::unique_ptr<IRegistryKey> TRegeditScanClasses::Open(RegRoot root,
                                                        std::wstring_view path) const {
  return platform_.registry.OpenKey(root, path, RegAccess::Read, record_.Is64BitView);
}

bool TRegeditScanClasses::KeyExists(RegRoot root, std::wstring_view path) const {
  return platform_.registry.KeyExists(root, path, record_.Is64BitView);
}

TRegeditItemGroup* TRegeditScanClasses::AddKey(ScanCategory category, RegRoot root,
                                               bool recursive, const std::wstring& name,
                                               const std::wstring& keyPath) {
  auto& list = Category(category);
  if (list.Contains(name)) return nullptr;
  // A key Windows owns is never anybody's leftover, whatever led to it.
  if (ProtectedPlaces::CheckRegistryKey(root, keyPath, true) != Refusal::None) return nullptr;
  auto key = Open(root, keyPath);
  if (!key) return nullptr;
  auto group = std::make_unique<TRegeditItemGroup>();
  group->Root = root;
  group->KeyPath = keyPath;
  auto& added = list.Add(name, std::move(group));
  AddKeyBody(added, *key, recursive);
  return &added;
}

TRegeditItemGroup* TRegeditScanClasses::AddKey(TRegeditItemGroup& parent, RegRoot root,
                                               bool recursive, const std::wstring& name,
                                               const std::wstring& keyPath) {
  if (parent.SubKeys.Contains(name)) return nullptr;
  if (ProtectedPlaces::CheckRegistryKey(root, keyPath, true) != Refusal::None) return nullptr;
  auto key = Open(root, keyPath);
  if (!key) return nullptr;
  auto group = std::make_unique<TRegeditItemGroup>();
  group->Root = root;
  group->KeyPath = keyPath;
  auto& added = parent.SubKeys.Add(name, std::move(group));
  AddKeyBody(added, *key, recursive);
  return &added;
}

void TRegeditScanClasses::AddKeyBody(TRegeditItemGroup& group, IRegistryKey& key,
                                     bool recursive) {
  // Depth first with a stack of its own: the key, then each subkey's whole
  // tree in turn, then the key's values, as a recursive walk would; links
  // that nest keys without end stop at kMaxKeyDepth.
  struct Level {
    TRegeditItemGroup* group;
    std::unique_ptr<IRegistryKey> owned;
    IRegistryKey* key;
    std::vector<std::wstring> subKeys;
    std::size_t next = 0;
  };
  std::vector<Level> stack;
  auto enter = [&](TRegeditItemGroup& g, std::unique_ptr<IRegistryKey> owned, IRegistryKey& k) {
    registryResults_->push_back({g.Root, g.KeyPath, L"", L"", 0});
    auto subKeys = recursive && stack.size() < kMaxKeyDepth ? k.SubKeyNames()
                                                            : std::vector<std::wstring>();
    stack.push_back({&g, std::move(owned), &k, std::move(subKeys), 0});
  };
  enter(group, nullptr, key);
  while (!stack.empty()) {
    Level& top = stack.back();
    if (top.next < top.subKeys.size()) {
      const auto& sub = top.subKeys[top.next++];
      if (processMessages_) processMessages_();
      TRegeditItemGroup& parent = *top.group;
      if (parent.SubKeys.Contains(sub)) continue;
      const auto path = parent.KeyPath + L"\\" + sub;
      auto child = Open(parent.Root, path);
      if (!child) continue;
      auto made = std::make_unique<TRegeditItemGroup>();
      made->Root = parent.Root;
      made->KeyPath = path;
      auto& added = parent.SubKeys.Add(sub, std::move(made));
      IRegistryKey& opened = *child;
      enter(added, std::move(child), opened);  // invalidates `top`
      continue;
    }
    for (const auto& name : top.key->ValueNames())
      AddValue(top.group, top.group->Root, top.group->KeyPath, name,
               ReadValueText(*top.key, name));
    stack.pop_back();
  }
}

void TRegeditScanClasses::AddValue(TRegeditItemGroup* group, RegRoot root,
                                   const std::wstring& keyPath, const std::wstring& valueName,
                                   const std::wstring& data) {
  if (valueName.empty() && data.empty()) return;
  if (group) {
    if (group->Values.Contains(valueName)) return;
    group->Values.Add(valueName, std::make_unique<TRegeditItemInfo>(
                                     TRegeditItemInfo{valueName, data, keyPath, 0, root}));
  }
  registryResults_->push_back({root, keyPath, valueName, data, 0});
}

TRegeditItemGroup& TRegeditScanClasses::CategoryRoot(ScanCategory category,
                                                     const std::wstring& name) {
  auto& list = Category(category);
  int at = list.IndexOf(name);
  if (at >= 0) return list.Object(at);
  auto group = std::make_unique<TRegeditItemGroup>();
  group->Kind = GroupKind::CategoryRoot;
  return list.Add(name, std::move(group));
}

void TRegeditScanClasses::AddFile(const std::wstring& path, std::uint32_t word1,
                                  std::uint32_t word2, std::uint32_t kind) {
  TFileInfo info;
  info.Path = path;
  info.Word1 = word1;
  info.Word2 = word2;
  info.Kind = kind;
  if (images_) {
    int systemIndex = -1;
    auto icon = platform_.shell.SmallFileIcon(path, systemIndex);
    auto cached = iconCache_.find(systemIndex);
    if (systemIndex >= 0 && cached != iconCache_.end()) {
      info.IconIndex = cached->second;
    } else if (icon) {
      info.IconIndex = images_->Add(icon);
      if (systemIndex >= 0 && info.IconIndex >= 0) iconCache_[systemIndex] = info.IconIndex;
    }
  }
  fileResults_->push_back(std::move(info));
}

bool TRegeditScanClasses::TextHasInstallFolder(std::wstring_view text) const {
  return !installFolder_.empty() && text::Lower(text).find(installFolder_) != std::wstring::npos;
}

bool TRegeditScanClasses::ServerPathMatches(std::wstring_view classKeyPath) const {
  if (installFolder_.empty()) return false;
  for (std::wstring_view server : {L"\\InprocServer32", L"\\LocalServer32"}) {
    auto key = Open(RegRoot::LocalMachine, std::wstring(classKeyPath) + std::wstring(server));
    if (key && ServerTextMatches(ReadValueText(*key, L""))) return true;
  }
  return false;
}

bool TRegeditScanClasses::ServerTextMatches(std::wstring_view serverPath) const {
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

bool TRegeditScanClasses::KeyRefersToInstallFolder(RegRoot root, std::wstring_view keyPath) {
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

void TRegeditScanClasses::AddInstallerFolder(const std::wstring& folder) {
  auto lower = text::Lower(folder);
  for (const auto& known : InstallerFolders)
    if (known == lower) return;
  InstallerFolders.push_back(std::move(lower));
}

}  // namespace varnel
