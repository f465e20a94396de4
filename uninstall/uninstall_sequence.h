#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "inventory/soft_list.h"
#include "platform/platform.h"
#include "uninstall/deletion_guard.h"
#include "uninstall/run_uninstaller.h"
#include "uninstall/uninstall_texts.h"
#include "uninstall/uninstall_view.h"

namespace varnel {

class Backup;
class ScanDriver;
class IResultsTree;
class IImageList;

namespace JobMode {
constexpr int Uninstall = 0;  // entries are record indexes
constexpr int Forced = 1;     // the first entry is a file path
}  // namespace JobMode

// The uninstall sequence of the uninstalling window, without the window:
// restore point, registry backup, each program's uninstaller in turn, the
// day's log, then the completion notice (Standard) or the leftover scan
// (Advanced). The window, the console tool and the tests drive it alike.
class UninstallSequence {
 public:
  struct Options {
    bool restorePoint = true;  // the console tool makes one only when asked
    // The command to run for a record instead of its uninstall string (the
    // console tool's quiet forms); empty result: the record's own.
    std::function<std::wstring(const TSoftInfo&)> commandFor;
    // How long the restore-point and backup workers pause before their work.
    unsigned workerDelayMs = 100;
    // The console tool leaves the window's saved mode alone.
    bool saveModeChoice = true;
    // Forced mode backs the file up here before deleting it; without one the
    // sequence begins a backup of its own, unless `noBackup` (asked for).
    Backup* backup = nullptr;
    bool noBackup = false;
  };

  UninstallSequence(const Platform& platform, IUninstallView& view, UninstallTexts texts,
                     Options options);
  UninstallSequence(const Platform& platform, IUninstallView& view, UninstallTexts texts);
  ~UninstallSequence();
  UninstallSequence(const UninstallSequence&) = delete;
  UninstallSequence& operator=(const UninstallSequence&) = delete;

  // The software list the job indexes point into; it must outlive the run.
  void SetSoftware(const SoftList* list) { software_ = list; }
  // A missing list changes nothing; otherwise the jobs are replaced.
  void SetJobs(const std::vector<std::wstring>* jobs, int mode);
  const std::vector<std::wstring>& Jobs() const { return jobs_; }
  int Mode() const { return mode_; }
  const UninstallTexts& Texts() const { return texts_; }

  // The window is about to show: clears the cancel flag, hides the markers
  // and sets the three step captions.
  void Prepare();
  // The whole sequence, once; it ends as the mode chosen at its end says.
  void Run();
  // Cancel or the close box while the sequence runs: stops the wait and a
  // running scan. The window closes itself once the scan button is enabled.
  void Cancel();
  bool Cancelled() const { return cancel_; }

  // "Powerful Scan": scans every job's program (or the forced file) into
  // `tree`; returns the number of branches added.
  int Scan(ScanDriver& driver, const IImageList* listImages, IResultsTree& tree,
           IImageList* treeImages);

  // The install folders of every listed program but the jobs' own: the
  // places a deletion of the jobs' leftovers must leave alone.
  std::vector<std::wstring> OtherProgramFolders() const;

  // What each program's run did, in job order; for the console tool.
  const std::vector<UninstallRun>& Runs() const { return runs_; }
  // The day's log file the run wrote to; empty when nothing was written.
  const std::wstring& LogFile() const { return logFile_; }
  // What the guard did with the forced file; empty when no file was handed
  // to it (another mode, or the file was not there).
  const std::optional<DeletionOutcome>& ForcedOutcome() const { return forced_; }
  // The backup the sequence began itself for the forced file, if any.
  const Backup* OwnBackup() const { return ownBackup_.get(); }

 private:
  void RestorePointStep();
  void RegBackupStep();
  void UninstallStep();
  void UninstallPrograms(std::vector<std::wstring>& lines);
  void ForcedUninstall(std::vector<std::wstring>& lines);
  void DeleteForcedFile(const std::wstring& file);
  void AppendLogBlock(std::vector<std::wstring>& lines, const std::wstring& name,
                      const std::wstring& operation);
  // Runs `work` on a worker thread, waiting for it as WaitWithDots does.
  void RunOnWorker(StepLine line, std::function<void()> work, unsigned sleepMs, int counterWrap,
                   int dotsDivisor);
  // Polls `finished` every `sleepMs`, cycling dots after `caption`.
  void WaitWithDots(StepLine line, const std::atomic<bool>& finished, unsigned sleepMs,
                    int counterWrap, int dotsDivisor);

  Platform platform_;
  IUninstallView& view_;
  UninstallTexts texts_;
  Options options_;
  const SoftList* software_ = nullptr;
  std::vector<std::wstring> jobs_;
  int mode_ = JobMode::Uninstall;
  std::atomic<bool> cancel_{false};
  std::atomic<bool> stop_{false};  // the run step's wait
  std::atomic<ScanDriver*> scanning_{nullptr};
  std::vector<UninstallRun> runs_;
  std::wstring logFile_;
  std::optional<DeletionOutcome> forced_;
  std::unique_ptr<Backup> ownBackup_;
};

// "Select.ini" in the program's settings folder: section "Main", key
// "Advanced", 1 for Advanced and 0 for Standard.
void SaveModeChoice(const Platform& platform, bool advanced);
// The saved choice; Standard (false) when there is none.
bool LoadModeChoice(const Platform& platform);

}  // namespace varnel
