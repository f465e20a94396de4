#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "core/registry_snapshot.h"
#include "base/text.h"
#include "inventory/uninstall_keys.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

constexpr RegRoot kMachine = RegRoot::LocalMachine;

// The memory registry behind a lock, claiming that four readers pay, so the
// copy is taken by several threads; reading `poison` throws.
class SharedRegistry final : public IRegistry {
 public:
  explicit SharedRegistry(IRegistry& inner) : inner_(inner) {}
  std::wstring poison;

  std::unique_ptr<IRegistryKey> OpenKey(RegRoot root, std::wstring_view path, RegAccess access,
                                        bool use64) override {
    std::lock_guard lock(mutex_);
    if (!poison.empty() && text::SameText(path, poison)) throw std::runtime_error("unreadable");
    auto key = inner_.OpenKey(root, path, access, use64);
    return key ? std::make_unique<Key>(std::move(key), mutex_) : nullptr;
  }
  std::unique_ptr<IRegistryKey> CreateKey(RegRoot root, std::wstring_view path,
                                          bool use64) override {
    return inner_.CreateKey(root, path, use64);
  }
  bool KeyExists(RegRoot root, std::wstring_view path, bool use64) override {
    return inner_.KeyExists(root, path, use64);
  }
  bool DeleteKey(RegRoot root, std::wstring_view path, bool use64) override {
    return inner_.DeleteKey(root, path, use64);
  }
  int ConcurrentReaders() const override { return 4; }

 private:
  class Key final : public IRegistryKey {
   public:
    Key(std::unique_ptr<IRegistryKey> inner, std::mutex& mutex)
        : inner_(std::move(inner)), mutex_(mutex) {}
    ~Key() override {
      std::lock_guard lock(mutex_);
      inner_.reset();
    }
    std::vector<std::wstring> SubKeyNames() const override {
      std::lock_guard lock(mutex_);
      return inner_->SubKeyNames();
    }
    std::vector<std::wstring> ValueNames() const override {
      std::lock_guard lock(mutex_);
      return inner_->ValueNames();
    }
    std::optional<RegValue> ReadValue(std::wstring_view name) const override {
      std::lock_guard lock(mutex_);
      return inner_->ReadValue(name);
    }
    bool ValueExists(std::wstring_view name) const override { return ReadValue(name).has_value(); }
    bool WriteValue(std::wstring_view name, const RegValue& value) override {
      std::lock_guard lock(mutex_);
      return inner_->WriteValue(name, value);
    }
    bool DeleteValue(std::wstring_view) override { return false; }
    std::uint64_t LastWriteTime() const override { return 0; }

   private:
    std::unique_ptr<IRegistryKey> inner_;
    std::mutex& mutex_;
  };

  IRegistry& inner_;
  std::mutex mutex_;
};

std::vector<std::wstring> Walk(IRegistry& registry, bool use64) {
  std::vector<std::wstring> seen;
  WalkKeyTree(registry, L"HKEY_LOCAL_MACHINE", L"\\Software\\Vendors", use64,
              [&](const std::wstring& path, const IRegistryKey* key) {
                seen.push_back(path);
                if (!key) return;
                for (const auto& [name, value] : key->Values()) {
                  seen.push_back(L"  " + name + L"=" + text::FromUtf16Bytes(value.data));
                }
              });
  return seen;
}

class RegistrySnapshotTest : public testing::Test {
 protected:
  void SetUp() override {
    for (int v = 0; v < 12; ++v) {
      std::wstring vendor = L"Software\\Vendors\\V" + std::to_wstring(v);
      reg.SetString(kMachine, vendor, L"Name", L"Vendor " + std::to_wstring(v), false);
      for (int a = 0; a < 5; ++a) {
        reg.SetString(kMachine, vendor + L"\\App" + std::to_wstring(a) + L"\\Parts", L"",
                      L"part of " + std::to_wstring(a), false);
      }
    }
    // Deeper than the copy goes (as a registry link nesting a key in itself
    // would be): what lies below is read live.
    std::wstring deep = L"Software\\Vendors\\Deep";
    for (int d = 0; d < 70; ++d) deep += L"\\D" + std::to_wstring(d);
    reg.SetString(kMachine, deep, L"Bottom", L"reached", false);
    reg.SetString(kMachine, L"Software\\Vendors", L"DisplayName", L"64 only", true);
    reg.SetString(kMachine, L"Software\\Other", L"Mark", L"before", false);
  }
  mem::MemoryPlatform m;
  mem::MemoryRegistry& reg = m.registry;
};

TEST_F(RegistrySnapshotTest, CopyTakenByManyReadersWalksLikeTheLiveRegistryAndStaysAsTaken) {
  SharedRegistry shared(reg);
  RegistrySnapshot copy(shared);
  copy.Capture({{kMachine, L"\\Software\\Vendors\\", false}});
  const auto live = Walk(reg, false);
  ASSERT_EQ(live.size(), 1u + 12 * (2 + 5 + 5 * 2) + 71 + 1);
  EXPECT_EQ(Walk(copy, false), live);

  auto vendor = copy.OpenKey(kMachine, L"software\\VENDORS\\v3", RegAccess::Read, false);
  ASSERT_TRUE(vendor);
  EXPECT_EQ(text::FromUtf16Bytes(vendor->ReadValue(L"NAME")->data), L"Vendor 3");
  EXPECT_FALSE(vendor->ReadValue(L""));
  EXPECT_FALSE(vendor->WriteValue(L"Name", {RegType::String, {}}));

  // Later changes inside the copied tree are not seen; outside it, and in a
  // view not copied, the live registry answers.
  reg.SetString(kMachine, L"Software\\Vendors\\V3", L"Name", L"changed", false);
  reg.SetString(kMachine, L"Software\\Vendors\\New", L"Name", L"new", false);
  reg.SetString(kMachine, L"Software\\Other", L"Mark", L"after", false);
  EXPECT_EQ(text::FromUtf16Bytes(vendor->ReadValue(L"Name")->data), L"Vendor 3");
  EXPECT_FALSE(copy.KeyExists(kMachine, L"Software\\Vendors\\New", false));
  EXPECT_FALSE(copy.OpenKey(kMachine, L"Software\\Vendors\\New", RegAccess::Read, false));
  auto other = copy.OpenKey(kMachine, L"Software\\Other", RegAccess::Read, false);
  ASSERT_TRUE(other);
  EXPECT_EQ(text::FromUtf16Bytes(other->ReadValue(L"Mark")->data), L"after");
  EXPECT_TRUE(copy.KeyExists(kMachine, L"Software\\VendorsX", false) ==
              reg.KeyExists(kMachine, L"Software\\VendorsX", false));
  auto view64 = copy.OpenKey(kMachine, L"Software\\Vendors", RegAccess::Read, true);
  ASSERT_TRUE(view64);
  EXPECT_TRUE(view64->ReadValue(L"DisplayName"));

  // Writing through the copy reaches the live registry.
  auto write = copy.OpenKey(kMachine, L"Software\\Vendors\\V3", RegAccess::Write, false);
  ASSERT_TRUE(write);
  EXPECT_TRUE(write->WriteValue(L"Extra", {RegType::String, text::ToUtf16Bytes(L"x")}));
  EXPECT_TRUE(reg.OpenKey(kMachine, L"Software\\Vendors\\V3", RegAccess::Read, false)
                  ->ValueExists(L"Extra"));

  // Copying again picks the changes up.
  copy.Capture({{kMachine, L"Software\\Vendors", false}});
  EXPECT_TRUE(copy.KeyExists(kMachine, L"Software\\Vendors\\New", false));
  EXPECT_EQ(Walk(copy, false), Walk(reg, false));
}

// A reader that cannot start or that fails never ends the program: the copy
// is taken by the threads there are, or left to the live registry.
TEST_F(RegistrySnapshotTest, ReadersThatCannotStartOrFailLeaveACorrectAnswer) {
  const struct {
    const char* name;
    int threadsAvailable;  // -1: any number
    const wchar_t* poison;
    int waiting = 0;  // the caller waits: 1 going on, 2 abandoning the copy
  } cases[] = {
      {"no thread at all", 0, L""},
      {"fewer threads than wanted", 2, L""},
      {"a read throws", -1, L"Software\\Vendors\\V7\\App2"},
      {"a waiting caller", -1, L"", 1},
      {"a waiting caller abandons", -1, L"", 2},
  };
  const auto live = Walk(reg, false);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    SharedRegistry shared(reg);
    shared.poison = c.poison;
    int started = 0;
    RegistrySnapshot copy(shared, [&](std::function<void()> work) {
      if (c.threadsAvailable >= 0 && started >= c.threadsAvailable)
        throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
      ++started;
      return std::thread(std::move(work));
    });
    std::atomic<int> waits{0};
    if (c.waiting) copy.SetWaitStep([&] { return ++waits, c.waiting == 1; });
    const bool fails = *c.poison || c.waiting == 2;
    if (fails) {
      EXPECT_THROW(copy.Capture({{kMachine, L"Software\\Vendors", false}}), std::runtime_error);
      shared.poison.clear();
    } else {
      copy.Capture({{kMachine, L"Software\\Vendors", false}});
    }
    EXPECT_EQ(waits > 0, c.waiting != 0);
    // Changed after the copy: only a failed copy may see it.
    reg.SetString(kMachine, L"Software\\Vendors\\V1", L"Later", L"x", false);
    EXPECT_EQ(Walk(copy, false) == Walk(reg, false), fails);
    if (!fails) {
      EXPECT_EQ(Walk(copy, false), live);
    }
    reg.OpenKey(kMachine, L"Software\\Vendors\\V1", RegAccess::Write, false)->DeleteValue(L"Later");
  }
  // A missing tree is an empty copy, not an error.
  RegistrySnapshot empty(reg);
  empty.Capture({{kMachine, L"Software\\Missing", false}});
  EXPECT_FALSE(empty.KeyExists(kMachine, L"Software\\Missing", false));
}

}  // namespace
}  // namespace varnel
