#include "leftovers/scan_reads.h"

#include "core/registry_snapshot.h"

namespace varnel {

namespace {

// The trees the scanners enumerate whole; what they read elsewhere is a
// handful of keys named by the findings.
std::vector<RegistrySnapshot::Tree> WalkedTrees(bool use64) {
  return {
      {RegRoot::LocalMachine, L"SOFTWARE\\Classes", use64},
      {RegRoot::CurrentUser, L"Software\\Classes", use64},
      {RegRoot::LocalMachine, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer", use64},
      {RegRoot::CurrentUser, L"Software\\Microsoft\\Installer", use64},
      // Services, their event-log sources and the firewall's lists.
      {RegRoot::LocalMachine, L"SYSTEM\\CurrentControlSet\\services", use64},
  };
}

}  // namespace

// The copy of a view is taken when a scan first reads in it, so a batch of
// 64-bit programs never copies the 32-bit trees.
class ScanReads::Registry final : public IRegistry {
 public:
  Registry(IRegistry& live, std::function<bool()> wait) : live_(live), copy_(live) {
    copy_.SetWaitStep(std::move(wait));
  }

  std::unique_ptr<IRegistryKey> OpenKey(RegRoot root, std::wstring_view path, RegAccess access,
                                        bool use64) override {
    if (access != RegAccess::Read) return live_.OpenKey(root, path, access, use64);
    Copy(use64);
    return copy_.OpenKey(root, path, access, use64);
  }
  std::unique_ptr<IRegistryKey> CreateKey(RegRoot root, std::wstring_view path,
                                          bool use64) override {
    return live_.CreateKey(root, path, use64);
  }
  bool KeyExists(RegRoot root, std::wstring_view path, bool use64) override {
    Copy(use64);
    return copy_.KeyExists(root, path, use64);
  }
  bool DeleteKey(RegRoot root, std::wstring_view path, bool use64) override {
    return live_.DeleteKey(root, path, use64);
  }
  int ConcurrentReaders() const override { return live_.ConcurrentReaders(); }

 private:
  void Copy(bool use64) {
    bool& copied = copied_[use64 ? 1 : 0];
    if (copied) return;
    copied = true;
    try {
      copy_.Capture(WalkedTrees(use64));
    } catch (...) {
      // A failed copy keeps nothing: the live registry answers instead.
    }
  }

  IRegistry& live_;
  RegistrySnapshot copy_;
  bool copied_[2] = {false, false};
};

ScanReads::ScanReads(const Platform& live, std::function<bool()> wait)
    : registry_(std::make_unique<Registry>(live.registry, std::move(wait))),
      files_(live.files),
      platform_{*registry_,    files_, live.system, live.shell, live.windows, live.processes,
                live.restorePoints} {}

ScanReads::~ScanReads() = default;

}  // namespace varnel
