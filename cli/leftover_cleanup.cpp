#include "cli/leftover_cleanup.h"

#include <atomic>
#include <utility>

#include "cli/json_output.h"
#include "cli/scan_command.h"
#include "core/protected_places.h"
#include "base/text.h"
#include "uninstall/leftover_deletion.h"

namespace varnel::cli {

namespace {

// The deletion's captions as progress lines; the bar has no place here.
class ConsoleDeletionProgress final : public IDeletionProgress {
 public:
  explicit ConsoleDeletionProgress(const std::function<void(const std::string&)>& progress)
      : progress_(progress) {}
  void SetCaption(std::wstring_view text) override {
    if (progress_) progress_(Utf8(std::wstring(text)) + "\n");
  }
  void SetPosition(int) override {}
  void ProcessMessages() override {}

 private:
  const std::function<void(const std::string&)>& progress_;
};

bool IsRegistryItem(const std::wstring& item) { return item.starts_with(L"HKEY_"); }
bool Gone(const DeletionOutcome& o) { return o.deleted || o.atRestart; }

}  // namespace

LeftoverCleanup::LeftoverCleanup(const Platform& platform, bool remove, bool backup)
    : platform_(platform), remove_(remove), backup_(backup), driver_(platform, filter_) {}

Backup* LeftoverCleanup::RunBackup() {
  if (!backup_) return nullptr;
  if (!begun_) {
    runBackup_ = Backup::Begin(platform_);
    begun_ = true;
  }
  return runBackup_.get();
}

void LeftoverCleanup::Scan(const SoftList& list, int index, const std::wstring& filePath) {
  ScanFindings found = driver_.Collect(list, index, filePath, nullptr);
  if (remove_) driver_.AddBranch(found, nullptr, tree_, nullptr);
  found_.push_back(std::move(found));
}

void LeftoverCleanup::Finish(const std::vector<std::wstring>& otherProgramFolders,
                             const std::function<void(const std::string&)>& progress) {
  driver_.EndBatch();
  if (!remove_ || tree_.Count() == 0) return;
  finished_ = true;
  Backup* backup = RunBackup();
  // Nothing goes without its backup unless the user said so.
  if (backup_ && !backup) {
    deletionError_ = L"no backup could be begun";
    return;
  }
  ProtectedPlaces places(platform_, otherProgramFolders);
  DeletionGuard guard = backup_ ? DeletionGuard(platform_, std::move(places), backup)
                                : DeletionGuard::WithoutBackup(platform_, std::move(places));
  LeftoverDeletion deletion(platform_, guard, DeletionTexts{});
  ConsoleDeletionProgress console(progress);
  const std::atomic<bool> cancel{false};
  tree_.SetAll(CheckState::Checked);
  outcomes_ = deletion.Run(tree_.Findings(), console, cancel).outcomes;
}

std::wstring LeftoverCleanup::BackupId() const {
  if (runBackup_ && !runBackup_->Items().empty()) return runBackup_->Id();
  return {};
}

void LeftoverCleanup::AddJson(nlohmann::ordered_json& result) const {
  nlohmann::ordered_json leftovers = nlohmann::ordered_json::array();
  for (const ScanFindings& found : found_) leftovers.push_back(ScanJson(found));
  result["leftovers"] = std::move(leftovers);
  if (!remove_) return;
  nlohmann::ordered_json registry = nlohmann::ordered_json::array();
  nlohmann::ordered_json files = nlohmann::ordered_json::array();
  nlohmann::ordered_json atRestart = nlohmann::ordered_json::array();
  nlohmann::ordered_json skipped = nlohmann::ordered_json::array();
  for (const DeletionOutcome& o : outcomes_) {
    if (!Gone(o)) {
      skipped.push_back({{"item", Utf8(o.item)}, {"reason", Utf8(o.reason)}});
    } else if (IsRegistryItem(o.item)) {
      registry.push_back(Utf8(o.item));
    } else {
      (o.atRestart ? atRestart : files).push_back(Utf8(o.item));
    }
  }
  if (!deletionError_.empty())
    skipped.push_back({{"item", nullptr}, {"reason", Utf8(deletionError_)}});
  result["deleted"] = {
      {"registry", std::move(registry)}, {"files", std::move(files)}, {"atRestart", atRestart}};
  result["skipped"] = std::move(skipped);
  const std::wstring id = BackupId();
  result["backup"] = id.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(Utf8(id));
}

std::string LeftoverCleanup::Text() const {
  std::string out;
  for (const ScanFindings& found : found_) out += FormatScanText(found);
  if (!finished_) return out;
  int gone = 0;
  for (const DeletionOutcome& o : outcomes_) {
    if (Gone(o)) {
      ++gone;
      out += "  deleted " + Utf8(o.item) + (o.atRestart ? " (at the next start)" : "") + "\n";
    } else {
      out += "  skipped " + Utf8(o.item) + ": " + Utf8(o.reason) + "\n";
    }
  }
  if (!deletionError_.empty()) out += "  nothing deleted: " + Utf8(deletionError_) + "\n";
  out += std::to_string(gone) + (gone == 1 ? " item deleted" : " items deleted");
  const std::wstring id = BackupId();
  out += id.empty() ? "\n" : ", backup " + Utf8(id) + " (varnel-cli restore " + Utf8(id) + ")\n";
  return out;
}

}  // namespace varnel::cli
