#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <unordered_set>
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
  // Starts one reader; it may throw as std::thread's constructor does.
  using ThreadStarter = std::function<std::thread(std::function<void()>)>;

  // Without a starter, readers are plain threads.
  explicit RegistrySnapshot(IRegistry& live, ThreadStarter startThread = {});

  // Copies each tree's key and every key below it. A key that does not open
  // is missing from the copy as it is from the live registry; trees already
  // copied are copied again. Readers that cannot be started leave the work
  // to the others, down to the calling thread alone. A read that throws ends
  // the copy after every reader stopped, leaves these trees to the live
  // registry and is thrown again.
  void Capture(const std::vector<Tree>& trees);
  // For a copy taken on a window's thread: while readers copy, the caller
  // only calls `wait` (every few ms; it may serve the window's messages), and
  // a false from it abandons the copy as a failed read does.
  void SetWaitStep(std::function<bool()> wait) { wait_ = std::move(wait); }

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
  ThreadStarter startThread_;
  std::function<bool()> wait_;
  std::vector<std::wstring> trees_;  // ids of the copied tree roots
  std::unordered_map<std::wstring, Node> nodes_;
  // Keys copied without the keys below them: registry links can nest a key
  // in itself, so the copy stops at a depth no real tree reaches and leaves
  // what lies deeper to the live registry.
  std::unordered_set<std::wstring> cutOff_;
};

}  // namespace varnel
