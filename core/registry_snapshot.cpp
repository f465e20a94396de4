#include "core/registry_snapshot.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <optional>
#include <stdexcept>
#include <thread>

#include "base/text.h"

namespace varnel {

namespace {

std::wstring_view TrimSlashes(std::wstring_view path) {
  while (!path.empty() && path.front() == L'\\') path.remove_prefix(1);
  while (!path.empty() && path.back() == L'\\') path.remove_suffix(1);
  return path;
}

std::wstring NodeId(RegRoot root, std::wstring_view path, bool use64) {
  return std::to_wstring(static_cast<std::uint32_t>(root)) + (use64 ? L"/64|" : L"/32|") +
         text::Upper(TrimSlashes(path));
}

bool Inside(const std::wstring& id, const std::wstring& tree) {
  if (!id.starts_with(tree)) return false;
  return id.size() == tree.size() || tree.back() == L'|' || id[tree.size()] == L'\\';
}

// Runs body(i) for every i below count on up to `threads` threads, the
// calling one included unless `wait` is given and a reader started: then the
// caller only waits, calling `wait` until the readers are done, and a false
// from it ends the copy. The first exception is thrown again once all ended.
template <typename Body>
void ForEachParallel(std::size_t count, int threads, const RegistrySnapshot::ThreadStarter& start,
                     const std::function<bool()>& wait, Body body) {
  std::atomic<std::size_t> next{0};
  std::exception_ptr failure;
  std::atomic<bool> failed{false};
  std::atomic<std::size_t> working{0};
  auto work = [&] {
    for (std::size_t i; !failed && (i = next++) < count;) {
      try {
        body(i);
      } catch (...) {
        if (!failed.exchange(true)) failure = std::current_exception();
      }
    }
    --working;
  };
  std::size_t helpers = std::min<std::size_t>(count, std::max(threads, 1)) - (count > 0 ? 1 : 0);
  // A joinable thread destroyed ends the program, so every reader started is
  // joined, and one that cannot be started leaves its share to the others.
  std::vector<std::thread> pool;
  try {
    pool.reserve(helpers);
  } catch (...) {
    helpers = 0;
  }
  for (std::size_t t = 0; t < helpers; ++t) {
    ++working;
    try {
      std::thread reader = start ? start(work) : std::thread(work);
      if (reader.joinable()) {
        pool.push_back(std::move(reader));
        continue;
      }
    } catch (...) {
    }
    --working;
    break;
  }
  if (wait && !pool.empty()) {
    do {
      if (!wait() && !failed.exchange(true))
        failure = std::make_exception_ptr(std::runtime_error("registry copy abandoned"));
      std::this_thread::sleep_for(std::chrono::milliseconds(15));
    } while (working > 0);
  } else {
    ++working;
    work();
  }
  for (auto& thread : pool) thread.join();
  if (failure) std::rethrow_exception(failure);
}

// Deeper than any real tree; only a registry link nesting a key in itself
// reaches it.
constexpr std::size_t kMaxCopyDepth = 64;

class SnapshotKey final : public IRegistryKey {
 public:
  explicit SnapshotKey(const RegistrySnapshot::Node& node) : node_(node) {}

  std::vector<std::wstring> SubKeyNames() const override { return node_.subKeys; }
  std::vector<std::wstring> ValueNames() const override {
    std::vector<std::wstring> names;
    names.reserve(node_.values.size());
    for (const auto& [name, value] : node_.values) names.push_back(name);
    return names;
  }
  std::vector<std::pair<std::wstring, RegValue>> Values() const override { return node_.values; }
  std::optional<RegValue> ReadValue(std::wstring_view name) const override {
    for (const auto& [stored, value] : node_.values) {
      if (text::SameText(stored, name)) return value;
    }
    return std::nullopt;
  }
  bool ValueExists(std::wstring_view name) const override { return ReadValue(name).has_value(); }
  // The copy is read-only.
  bool WriteValue(std::wstring_view, const RegValue&) override { return false; }
  bool DeleteValue(std::wstring_view) override { return false; }
  std::uint64_t LastWriteTime() const override { return 0; }

 private:
  const RegistrySnapshot::Node& node_;
};

}  // namespace

RegistrySnapshot::RegistrySnapshot(IRegistry& live, ThreadStarter startThread)
    : live_(live), startThread_(std::move(startThread)) {}

void RegistrySnapshot::Capture(const std::vector<Tree>& trees) {
  struct Pending {
    RegRoot root;
    bool use64;
    std::wstring path;
  };
  std::vector<Pending> level;
  std::vector<std::wstring> ids;
  auto forget = [&] {
    for (const auto& id : ids) {
      auto inside = [&](const auto& entry) { return Inside(entry, id); };
      std::erase_if(nodes_, [&](const auto& node) { return inside(node.first); });
      std::erase_if(cutOff_, inside);
    }
  };
  for (const auto& tree : trees) {
    ids.push_back(NodeId(tree.root, tree.path, tree.use64));
    if (std::find(trees_.begin(), trees_.end(), ids.back()) == trees_.end())
      trees_.push_back(ids.back());
    level.push_back({tree.root, tree.use64, std::wstring(TrimSlashes(tree.path))});
  }
  forget();
  try {
    // Level by level, so the threads start once per depth, not once per key.
    for (std::size_t depth = 0; !level.empty(); ++depth) {
      std::vector<std::optional<Node>> read(level.size());
      ForEachParallel(level.size(), live_.ConcurrentReaders(), startThread_, wait_,
                      [&](std::size_t i) {
        auto key = live_.OpenKey(level[i].root, level[i].path, RegAccess::Read, level[i].use64);
        if (key) read[i] = Node{key->SubKeyNames(), key->Values()};
      });
      std::vector<Pending> next;
      for (std::size_t i = 0; i < level.size(); ++i) {
        if (!read[i]) continue;
        auto id = NodeId(level[i].root, level[i].path, level[i].use64);
        if (depth + 1 < kMaxCopyDepth) {
          for (const auto& name : read[i]->subKeys) {
            next.push_back({level[i].root, level[i].use64,
                            level[i].path.empty() ? name : level[i].path + L"\\" + name});
          }
        } else if (!read[i]->subKeys.empty()) {
          cutOff_.insert(id);
        }
        nodes_[std::move(id)] = std::move(*read[i]);
      }
      level = std::move(next);
    }
  } catch (...) {
    forget();
    std::erase_if(trees_, [&](const std::wstring& tree) {
      return std::find(ids.begin(), ids.end(), tree) != ids.end();
    });
    throw;
  }
}

const RegistrySnapshot::Node* RegistrySnapshot::Find(RegRoot root, std::wstring_view path,
                                                       bool use64, bool& copied) const {
  std::wstring id = NodeId(root, path, use64);
  copied = std::any_of(trees_.begin(), trees_.end(),
                       [&](const std::wstring& tree) { return Inside(id, tree); });
  if (!copied) return nullptr;
  auto found = nodes_.find(id);
  if (found != nodes_.end()) return &found->second;
  // Absent below a key whose subkeys were not copied: never looked for.
  for (auto at = id.rfind(L'\\'); !cutOff_.empty() && at != std::wstring::npos;
       at = id.rfind(L'\\', at - 1)) {
    const std::wstring parent = id.substr(0, at);
    if (cutOff_.contains(parent)) {
      copied = false;
      break;
    }
    if (nodes_.contains(parent) || at == 0) break;
  }
  return nullptr;
}

std::unique_ptr<IRegistryKey> RegistrySnapshot::OpenKey(RegRoot root, std::wstring_view path,
                                                         RegAccess access, bool use64) {
  bool copied = false;
  const Node* node = access == RegAccess::Read ? Find(root, path, use64, copied) : nullptr;
  if (!copied) return live_.OpenKey(root, path, access, use64);
  return node ? std::make_unique<SnapshotKey>(*node) : nullptr;
}

std::unique_ptr<IRegistryKey> RegistrySnapshot::CreateKey(RegRoot root, std::wstring_view path,
                                                           bool use64) {
  return live_.CreateKey(root, path, use64);
}

bool RegistrySnapshot::KeyExists(RegRoot root, std::wstring_view path, bool use64) {
  bool copied = false;
  const Node* node = Find(root, path, use64, copied);
  return copied ? node != nullptr : live_.KeyExists(root, path, use64);
}

bool RegistrySnapshot::DeleteKey(RegRoot root, std::wstring_view path, bool use64) {
  return live_.DeleteKey(root, path, use64);
}

}  // namespace varnel
