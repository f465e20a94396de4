#include "core/registry_location.h"
#include "base/text.h"
#include "leftovers/scan_steps.h"

namespace varnel::scan {

namespace {

constexpr std::wstring_view kMakerKey = L"\\software\\varnel\\";

}  // namespace

void MakerKey(const ScanContext& scan, ScanSink& out) {
  auto& root = out.CategoryRoot(ScanCategory::VarnelProgram, L"VarnelProgram");
  std::wstring entry;
  if (!scan.Filter().Find(FilterSearchKey(scan.Record()), &entry)) return;
  const auto reg = scan.Filter().GetField(entry, L"reg");
  if (reg.empty()) return;
  for (const auto& item : SplitFilterField(reg)) {
    if (!scan.Step()) return;
    auto cut = item.find(L'\\');
    if (cut == std::wstring::npos) continue;
    const RegRoot rootKey = RootKeyFromName(item.substr(0, cut));
    if (rootKey == RegRoot::Invalid) continue;
    std::wstring path = item.substr(cut);
    auto lower = text::Lower(path);
    auto at = lower.find(kMakerKey);
    if (rootKey == RegRoot::LocalMachine && at == 0) {
      // The maker's key goes too once this is the last of its programs under it.
      auto own = lower.substr(kMakerKey.size());
      auto maker = scan.Open(RegRoot::LocalMachine, L"\\SOFTWARE\\Varnel");
      if (maker) {
        auto programs = maker->SubKeyNames();
        if (programs.size() == 1 && text::Lower(programs[0]) == own)
          path = L"\\SOFTWARE\\Varnel";
      }
    }
    out.AddKey(root, rootKey, true, RootKeyName(rootKey) + path, path);
  }
}

}  // namespace varnel::scan
