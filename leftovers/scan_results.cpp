#include "leftovers/scan_results.h"

#include "base/text.h"

namespace varnel {

template <typename T>
int NamedList<T>::IndexOf(std::wstring_view name) const {
  auto it = index_.find(text::Upper(name));
  return it == index_.end() ? -1 : it->second;
}

template <typename T>
T& NamedList<T>::Add(std::wstring name, std::unique_ptr<T> object) {
  index_.emplace(text::Upper(name), static_cast<int>(items_.size()));
  items_.emplace_back(std::move(name), std::move(object));
  return *items_.back().second;
}

template class NamedList<TRegeditItemGroup>;
template class NamedList<TRegeditItemInfo>;

TMyTreeData RegistryTreeData(const TShowRegInfo& item, bool is64BitView) {
  TMyTreeData data;
  data.Kind = TreeDataKind::Registry;
  data.Is64BitView = is64BitView;
  data.Root = item.Root;
  data.KeyPath = item.KeyPath;
  data.ValueName = item.ValueName;
  data.ValueData = item.ValueData;
  data.Reserved = item.Reserved;
  return data;
}

TMyTreeData FileTreeData(const TFileInfo& item, bool is64BitView) {
  TMyTreeData data;
  data.Kind = TreeDataKind::File;
  data.Is64BitView = is64BitView;
  data.FilePath = item.Path;
  data.Words[0] = item.Word1;
  data.Words[1] = item.Word2;
  data.Words[2] = item.Word3;
  data.Words[3] = item.Word4;
  data.FileKindWord = item.Kind;
  data.IconIndex = item.IconIndex;
  return data;
}

}  // namespace varnel
