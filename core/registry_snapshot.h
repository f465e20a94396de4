#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/registry.h"

namespace varnel {

// A registry that answers reads below chosen keys from a copy taken once and
// passes everything else to the live registry. The copy is read with as many
// threads as the live registry says pay: under Wine every read waits on one
// server process, and a thousand Uninstall entries read one after another
// take over a second.
//
// Writes and deletions go to the live registry and are not seen in the copy,
// so keep a snapshot only as long as one walk over what it copied.
class RegistrySnapshot final : public IRegistry {
 public:
  struct Tree {
    RegRoot root;
    std::wstring path;
    bool use64;
  };

  explicit RegistrySnapshot(IRegistry& live);

  // Copies each tree's key and every key below it. A key that does not open
  // is missing from the copy as it is from the live registry; trees already
  // copied are copied again.
  void Capture(const std::vector<Tree>& trees);

  std::unique_ptr<IRegistryKey> OpenKey(RegRoot root, std::wstring_view path, RegAccess access,
                                        bool use64) override;
  std::unique_ptr<IRegistryKey> CreateKey(RegRoot root, std::wstring_view path,
                                          bool use64) override;
  bool KeyExists(RegRoot root, std::wstring_view path, bool use64) override;
  bool DeleteKey(RegRoot root, std::wstring_view path, bool use64) override;

  struct Node {
    std::vector<std::wstring> subKeys;
    std::vector<std::pair<std::wstring, RegValue>> values;
  };

 private:
  // Null when the key lies outside every copied tree; `copied` tells whether
  // it lies inside one (and was then absent when copied).
  const Node* Find(RegRoot root, std::wstring_view path, bool use64, bool& copied) const;

  IRegistry& live_;
  std::vector<std::wstring> trees_;  // ids of the copied tree roots
  std::unordered_map<std::wstring, Node> nodes_;
};

}  // namespace varnel
