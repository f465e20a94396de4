#include "leftovers/scan_steps.h"
#include "leftovers/value_text.h"

namespace varnel::scan {

namespace {

constexpr wchar_t kPolicy[] =
    L"\\SYSTEM\\CurrentControlSet\\services\\SharedAccess\\Parameters\\FirewallPolicy\\";

// The lists under the firewall policy; each is its own category root, named
// by its path below the policy key since two of them end in "System".
constexpr const wchar_t* kLists[] = {
    L"FirewallRules",
    L"RestrictedServices\\Configurable\\System",
    L"RestrictedServices\\Static\\System",
    L"StandardProfile\\AuthorizedApplications\\List",
};

}  // namespace

// Rules are values of shared keys: only the values go, never the keys.
void Firewall(const ScanContext& scan, ScanSink& out) {
  for (const wchar_t* list : kLists) {
    if (!scan.Running()) return;
    auto& root = out.CategoryRoot(ScanCategory::Firewall, list);
    const std::wstring path = std::wstring(kPolicy) + list;
    auto key = scan.Open(RegRoot::LocalMachine, path);
    if (!key) continue;
    for (const auto& name : key->ValueNames()) {
      if (!scan.Step()) return;
      auto data = ReadValueText(*key, name);
      if (scan.TextHasInstallFolder(data))
        out.AddValue(&root, RegRoot::LocalMachine, path, name, data);
    }
  }
}

}  // namespace varnel::scan
