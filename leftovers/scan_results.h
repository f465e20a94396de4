#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/registry.h"

namespace varnel {

// One reported registry key (value name and data empty) or value.
struct TShowRegInfo {
  RegRoot Root = RegRoot::LocalMachine;
  std::wstring KeyPath;  // with a leading "\"
  std::wstring ValueName;
  std::wstring ValueData;
  std::int32_t Reserved = 0;
};

namespace FileKind {
constexpr std::uint32_t Folder = 0;
constexpr std::uint32_t File = 1;
}  // namespace FileKind

// One reported file or folder. Files found by a folder walk carry their size
// in Word1 (low) and Word2 (high).
struct TFileInfo {
  std::wstring Path;
  std::uint32_t Word1 = 0;
  std::uint32_t Word2 = 0;
  std::uint32_t Word3 = 0;
  std::uint32_t Word4 = 0;
  std::uint32_t Kind = FileKind::Folder;
  std::int32_t IconIndex = -1;  // -1 when the scan keeps no image list
};

// Names with an owned object, looked up without regard to case; the first
// entry of a name is the one found.
template <typename T>
class NamedList {
 public:
  int IndexOf(std::wstring_view name) const;
  bool Contains(std::wstring_view name) const { return IndexOf(name) >= 0; }
  T& Add(std::wstring name, std::unique_ptr<T> object);
  int Count() const { return static_cast<int>(items_.size()); }
  const std::wstring& Name(int index) const { return items_[index].first; }
  T& Object(int index) const { return *items_[index].second; }
  void Clear() {
    items_.clear();
    index_.clear();
  }

 private:
  std::vector<std::pair<std::wstring, std::unique_ptr<T>>> items_;
  std::unordered_map<std::wstring, int> index_;  // upper-cased name -> first position
};

struct TRegeditItemInfo {
  std::wstring ValueName;
  std::wstring ValueData;
  std::wstring KeyPath;
  std::int32_t Reserved = 0;
  RegRoot Root = RegRoot::LocalMachine;
};

namespace GroupKind {
constexpr std::uint8_t CategoryRoot = 0;  // made empty by the scan, holds values
constexpr std::uint8_t Key = 1;           // a key found in the registry
}  // namespace GroupKind

// A reported key with the subkeys and values reported below it.
struct TRegeditItemGroup {
  NamedList<TRegeditItemGroup> SubKeys;
  NamedList<TRegeditItemInfo> Values;
  std::uint8_t Kind = GroupKind::Key;
  std::int32_t Reserved = 0;
  RegRoot Root = RegRoot::LocalMachine;
  std::wstring KeyPath;

  void Clear() {
    SubKeys.Clear();
    Values.Clear();
  }
};

namespace TreeDataKind {
constexpr std::int32_t Registry = 0;
constexpr std::int32_t File = 1;
}  // namespace TreeDataKind

// What a leaf of the results tree carries, so deletion needs nothing else.
struct TMyTreeData {
  std::int32_t Kind = TreeDataKind::Registry;
  bool Is64BitView = false;
  RegRoot Root = RegRoot::LocalMachine;
  std::wstring KeyPath;
  std::wstring ValueName;
  std::wstring ValueData;
  std::int32_t Reserved = 0;
  std::wstring FilePath;
  std::uint32_t Words[4] = {0, 0, 0, 0};
  std::uint32_t FileKindWord = FileKind::Folder;
  std::int32_t IconIndex = -1;
};

TMyTreeData RegistryTreeData(const TShowRegInfo& item, bool is64BitView);
TMyTreeData FileTreeData(const TFileInfo& item, bool is64BitView);

}  // namespace varnel
