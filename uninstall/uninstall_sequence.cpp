#include "uninstall/uninstall_sequence.h"

#include <charconv>
#include <limits>
#include <utility>

#include "base/date_time.h"
#include "core/protected_places.h"
#include "base/text.h"
#include "leftovers/other_programs.h"
#include "leftovers/scan_driver.h"
#include "uninstall/backup.h"
#include "uninstall/uninstall_log.h"

namespace varnel {

namespace {

// A job entry as a record index; anything but a plain decimal number is -1.
int ParseJobIndex(std::wstring_view entry) {
  std::string narrow;
  for (wchar_t c : entry) {
    if (c > 0x7F) return -1;
    narrow += static_cast<char>(c);
  }
  const char* first = narrow.data();
  const char* last = first + narrow.size();
  if (first != last && *first == '+') ++first;
  int value = -1;
  const auto [end, ec] = std::from_chars(first, last, value);
  if (ec != std::errc() || end != last || first == last) return -1;
  return value;
}

}  // namespace

UninstallSequence::UninstallSequence(const Platform& platform, IUninstallView& view,
                                       UninstallTexts texts, Options options)
    : platform_(platform), view_(view), texts_(std::move(texts)), options_(std::move(options)) {}

UninstallSequence::UninstallSequence(const Platform& platform, IUninstallView& view,
                                       UninstallTexts texts)
    : UninstallSequence(platform, view, std::move(texts), Options{}) {}

UninstallSequence::~UninstallSequence() = default;

void UninstallSequence::SetJobs(const std::vector<std::wstring>* jobs, int mode) {
  if (!jobs) return;
  jobs_ = *jobs;
  mode_ = mode;
}

void UninstallSequence::Prepare() {
  cancel_ = false;
  view_.SetStep(-1);
  view_.SetCaption(StepLine::RestorePoint, texts_.CreateRestorePoint);
  view_.SetCaption(StepLine::RegBackup, texts_.CreateRegBackup);
  view_.SetCaption(StepLine::Uninstalling, texts_.StandardUninstall);
}

void UninstallSequence::Cancel() {
  cancel_ = true;
  stop_ = true;
  if (ScanDriver* driver = scanning_.load()) driver->Stop();
}

void UninstallSequence::Run() {
  runs_.clear();
  logFile_.clear();
  forced_.reset();
  view_.SetStep(0);
  if (!cancel_ && options_.restorePoint) RestorePointStep();
  if (!cancel_) RegBackupStep();
  if (!cancel_) UninstallStep();
  if (cancel_) {
    view_.CloseWindow();
    return;
  }
  const bool advanced = view_.AdvancedChosen();
  if (options_.saveModeChoice) SaveModeChoice(platform_, advanced);
  if (advanced) {
    view_.SetStep(2);
    view_.EnableScan();
  } else {
    view_.ShowMessage(texts_.UninstallFinish);
    view_.CloseWindow();
  }
}

void UninstallSequence::UninstallStep() {
  view_.SetStep(1);
  std::vector<std::wstring> lines;
  if (mode_ == JobMode::Uninstall) {
    UninstallPrograms(lines);
  } else if (mode_ == JobMode::Forced) {
    ForcedUninstall(lines);
  }
  // Other modes run nothing, yet the day's log is still begun.
  if (!cancel_) logFile_ = WriteUninstallLog(platform_, lines);
}

void UninstallSequence::UninstallPrograms(std::vector<std::wstring>& lines) {
  static const SoftList kNoSoftware;
  const SoftList& list = software_ ? *software_ : kNoSoftware;
  UninstallRunner runner(
      platform_, stop_,
      [this](const std::wstring& caption) { view_.SetCaption(StepLine::Uninstalling, caption); },
      [this] { view_.ProcessMessages(); });
  for (const std::wstring& entry : jobs_) {
    if (cancel_) break;
    const int index = ParseJobIndex(entry);
    if (index < 0) continue;
    view_.SetCaption(StepLine::Uninstalling, texts_.StandardUninstall);
    std::wstring command;
    if (options_.commandFor && index < static_cast<int>(list.size()) && list[index]) {
      command = options_.commandFor(*list[index]);
    }
    UninstallRun run =
        runner.RunUninstaller(list, index, view_.Caption(StepLine::Uninstalling), command);
    run.index = index;
    AppendLogBlock(lines, run.name,
                   run.removeInBrowser.empty()
                       ? texts_.StandardUninstall
                       : text::ReplaceAll(texts_.RemoveInBrowser, L"%s", run.removeInBrowser));
    runs_.push_back(std::move(run));
  }
  view_.SetCaption(StepLine::Uninstalling, texts_.UninstallFinish);
  view_.HideUninstallMarker();
}

void UninstallSequence::ForcedUninstall(std::vector<std::wstring>& lines) {
  const std::wstring file = jobs_.empty() ? std::wstring() : jobs_.front();
  if (!file.empty() && platform_.files.FileExists(file)) DeleteForcedFile(file);
  AppendLogBlock(lines, text::ExtractFileName(file), texts_.ForcedUninstall);
  view_.SetCaption(StepLine::Uninstalling, texts_.UninstallFinish);
  view_.HideUninstallMarker();
}

// The file is whatever the user pointed at: the guard decides whether it may
// go, and a locked one goes at the next start.
void UninstallSequence::DeleteForcedFile(const std::wstring& file) {
  Backup* backup = options_.backup;
  if (!backup && !options_.noBackup) {
    ownBackup_ = Backup::Begin(platform_);
    backup = ownBackup_.get();
  }
  ProtectedPlaces places(platform_, OtherProgramFolders());
  DeletionGuard guard = options_.noBackup && !backup
                            ? DeletionGuard::WithoutBackup(platform_, std::move(places))
                            : DeletionGuard(platform_, std::move(places), backup);
  forced_ = guard.DeleteSingleFile(file);
}

void UninstallSequence::AppendLogBlock(std::vector<std::wstring>& lines, const std::wstring& name,
                                        const std::wstring& operation) {
  lines.push_back(L"[" + name + L"]");
  lines.push_back(texts_.Operation + L":" + operation);
  lines.push_back(texts_.DateTime + L":" + NowShortDateTime(platform_.system));
  lines.emplace_back();
}

std::vector<std::wstring> UninstallSequence::OtherProgramFolders() const {
  if (!software_) return {};
  // The one routine the scan uses, so that the guard keeps exactly what the
  // scan would not offer.
  std::vector<int> jobs;
  if (mode_ == JobMode::Uninstall)
    for (const std::wstring& entry : jobs_) jobs.push_back(ParseJobIndex(entry));
  return varnel::OtherProgramFolders(platform_, *software_, jobs);
}

int UninstallSequence::Scan(ScanDriver& driver, const IImageList* listImages, IResultsTree& tree,
                             IImageList* treeImages) {
  static const SoftList kNoSoftware;
  const SoftList& list = software_ ? *software_ : kNoSoftware;
  view_.SetStep(3);
  // The programs of one batch may share folders: none protects another's.
  std::vector<int> together;
  for (const std::wstring& entry : jobs_) {
    const int index = ParseJobIndex(entry);
    if (index >= 0 && index < static_cast<int>(list.size())) together.push_back(index);
  }
  driver.SetScannedTogether(std::move(together));
  driver.BeginBatch();
  scanning_ = &driver;
  int branches = 0;
  for (const std::wstring& entry : jobs_) {
    if (cancel_) break;
    const int index = ParseJobIndex(entry);
    int found = 0;
    if (index >= 0) {
      // An index outside the list names no program; scanning "around" it
      // would scan the disk around nothing.
      if (index >= static_cast<int>(list.size())) continue;
      found = driver.ScanProgram(list, listImages, index, tree, L"", treeImages);
    } else if (mode_ == JobMode::Forced && !entry.empty()) {
      found = driver.ScanProgram(list, listImages, -1, tree, entry, treeImages);
    }
    if (found > 0) ++branches;
  }
  scanning_ = nullptr;
  driver.EndBatch();
  return branches;
}

}  // namespace varnel
