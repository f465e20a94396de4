#include "leftovers/scan_sink.h"

#include <memory>
#include <utility>

#include "leftovers/value_text.h"

namespace varnel {

void ScanSink::SetUp(std::vector<TShowRegInfo>* registry, std::vector<TFileInfo>* files,
                     IImageList* images) {
  registry_ = registry ? registry : &ownRegistry_;
  files_ = files ? files : &ownFiles_;
  images_ = images;
  iconCache_.clear();
}

void ScanSink::ClearResults() {
  registry_->clear();
  files_->clear();
}

TRegeditItemGroup* ScanSink::AddKey(ScanCategory category, RegRoot root, bool recursive,
                                    const std::wstring& name, const std::wstring& keyPath) {
  return AddKeyTo(Category(category), root, recursive, name, keyPath);
}

TRegeditItemGroup* ScanSink::AddKey(TRegeditItemGroup& parent, RegRoot root, bool recursive,
                                    const std::wstring& name, const std::wstring& keyPath) {
  return AddKeyTo(parent.SubKeys, root, recursive, name, keyPath);
}

TRegeditItemGroup* ScanSink::AddKeyTo(NamedList<TRegeditItemGroup>& list, RegRoot root,
                                      bool recursive, const std::wstring& name,
                                      const std::wstring& keyPath) {
  if (list.Contains(name)) return nullptr;
  // A key Windows owns is never anybody's leftover, whatever led to it.
  if (ProtectedPlaces::CheckRegistryKey(root, keyPath, true) != Refusal::None) return nullptr;
  auto key = context_.Open(root, keyPath);
  if (!key) return nullptr;
  auto group = std::make_unique<TRegeditItemGroup>();
  group->Root = root;
  group->KeyPath = keyPath;
  auto& added = list.Add(name, std::move(group));
  AddKeyBody(added, *key, recursive);
  return &added;
}

void ScanSink::AddKeyBody(TRegeditItemGroup& group, IRegistryKey& key, bool recursive) {
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
    registry_->push_back({g.Root, g.KeyPath, L"", L"", 0});
    auto subKeys =
        recursive && stack.size() < kMaxKeyDepth ? k.SubKeyNames() : std::vector<std::wstring>();
    stack.push_back({&g, std::move(owned), &k, std::move(subKeys), 0});
  };
  enter(group, nullptr, key);
  while (!stack.empty()) {
    Level& top = stack.back();
    if (top.next < top.subKeys.size()) {
      const auto& sub = top.subKeys[top.next++];
      context_.ProcessMessages();
      TRegeditItemGroup& parent = *top.group;
      if (parent.SubKeys.Contains(sub)) continue;
      const auto path = parent.KeyPath + L"\\" + sub;
      auto child = context_.Open(parent.Root, path);
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
      AddValue(top.group, top.group->Root, top.group->KeyPath, name, ReadValueText(*top.key, name));
    stack.pop_back();
  }
}

void ScanSink::AddValue(TRegeditItemGroup* group, RegRoot root, const std::wstring& keyPath,
                        const std::wstring& valueName, const std::wstring& data) {
  if (valueName.empty() && data.empty()) return;
  if (group) {
    if (group->Values.Contains(valueName)) return;
    group->Values.Add(valueName, std::make_unique<TRegeditItemInfo>(
                                     TRegeditItemInfo{valueName, data, keyPath, 0, root}));
  }
  registry_->push_back({root, keyPath, valueName, data, 0});
}

TRegeditItemGroup& ScanSink::CategoryRoot(ScanCategory category, const std::wstring& name) {
  auto& list = Category(category);
  int at = list.IndexOf(name);
  if (at >= 0) return list.Object(at);
  auto group = std::make_unique<TRegeditItemGroup>();
  group->Kind = GroupKind::CategoryRoot;
  return list.Add(name, std::move(group));
}

void ScanSink::AddFile(const std::wstring& path, std::uint32_t word1, std::uint32_t word2,
                       std::uint32_t kind) {
  TFileInfo info;
  info.Path = path;
  info.Word1 = word1;
  info.Word2 = word2;
  info.Kind = kind;
  if (images_) {
    int systemIndex = -1;
    auto icon = context_.Machine().shell.SmallFileIcon(path, systemIndex);
    auto cached = iconCache_.find(systemIndex);
    if (systemIndex >= 0 && cached != iconCache_.end()) {
      info.IconIndex = cached->second;
    } else if (icon) {
      info.IconIndex = images_->Add(icon);
      if (systemIndex >= 0 && info.IconIndex >= 0) iconCache_[systemIndex] = info.IconIndex;
    }
  }
  files_->push_back(std::move(info));
}

}  // namespace varnel
