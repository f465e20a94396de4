#include "tests/platform/backend_world.h"

#include <chrono>
#include <random>

#include "base/text.h"
#include "platform/memory/memory_platform.h"
#ifdef _WIN32
#include "platform/win32/win32_platform.h"
#endif

namespace varnel::testing_support {

namespace {

std::wstring UniqueSuffix() {
  std::random_device rd;
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  return std::to_wstring(rd() ^ static_cast<unsigned>(now));
}

// Removes a folder tree through the platform itself, so cleanup needs no
// second file API.
void RemoveTree(IFileSystem& files, const std::wstring& folder) {
  std::vector<FindEntry> entries;
  if (files.FindEntries(folder + L"\\*", entries)) {
    for (const auto& e : entries) {
      if (e.name == L"." || e.name == L"..") continue;
      const std::wstring path = folder + L"\\" + e.name;
      if (e.attributes & FileAttr::Directory) {
        RemoveTree(files, path);
      } else {
        files.SetAttributes(path, FileAttr::Normal);
        files.RemoveFile(path);
      }
    }
  }
  files.RemoveFolder(folder);
}

template <typename Machine>
class OwnedWorld final : public World {
 public:
  OwnedWorld() : key_(L"Software\\VarnelTest\\" + UniqueSuffix()) {
    Platform p = machine_.Get();
    scratch_ = text::ExcludeTrailingBackslash(p.system.TempDirectory()) + L"\\varnel-contract-" +
               UniqueSuffix();
    p.files.MakeDirectory(scratch_);
  }
  ~OwnedWorld() override {
    Platform p = machine_.Get();
    RemoveTree(p.files, scratch_);
    for (bool use64 : {true, false}) {
      p.registry.DeleteKey(RegRoot::CurrentUser, key_, use64);
      p.registry.DeleteKey(RegRoot::LocalMachine, key_, use64);
    }
    p.registry.DeleteKey(RegRoot::LocalMachine, L"Software\\Classes\\" + ClassKey(), true);
  }
  Platform Get() override { return machine_.Get(); }
  std::wstring Scratch() const override { return scratch_; }
  std::wstring KeyName() const override { return key_; }
  std::wstring ClassKey() const override { return L"VarnelTest." + text::ExtractFileName(key_); }

 private:
  Machine machine_;
  std::wstring key_;
  std::wstring scratch_;
};

}  // namespace

std::vector<Backend> AllBackends() {
  std::vector<Backend> all;
  all.push_back({"memory", [] { return std::make_unique<OwnedWorld<mem::MemoryPlatform>>(); }});
#ifdef _WIN32
  all.push_back({"win32", [] { return std::make_unique<OwnedWorld<win32::Win32Platform>>(); }});
#endif
  return all;
}

}  // namespace varnel::testing_support
