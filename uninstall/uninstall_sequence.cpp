#include "uninstall/uninstall_sequence.h"

#include "leftovers/scan_driver.h"

namespace varnel {

TUninstallSequence::TUninstallSequence(const Platform& platform, IUninstallView& view,
                                       TUninstallTexts texts, Options options)
    : platform_(platform), view_(view), texts_(std::move(texts)), options_(std::move(options)) {}

TUninstallSequence::TUninstallSequence(const Platform& platform, IUninstallView& view,
                                       TUninstallTexts texts)
    : TUninstallSequence(platform, view, std::move(texts), Options{}) {}

TUninstallSequence::~TUninstallSequence() = default;

void TUninstallSequence::SetJobs(const std::vector<std::wstring>* jobs, int mode) {
  if (!jobs) return;
  jobs_ = *jobs;
  mode_ = mode;
}

void TUninstallSequence::Prepare() { cancel_ = false; }
void TUninstallSequence::Run(bool) {}
void TUninstallSequence::Cancel() { cancel_ = true; stop_ = true; }
int TUninstallSequence::Scan(TScanDriver&, const IImageList*, IResultsTree&, IImageList*) {
  return 0;
}
void TUninstallSequence::RestorePointStep() {}
void TUninstallSequence::RegBackupStep() {}
void TUninstallSequence::UninstallStep() {}
void TUninstallSequence::WaitWithDots(StepLine, const std::atomic<bool>&, unsigned, int, int) {}

void SaveModeChoice(const Platform&, bool) {}
bool LoadModeChoice(const Platform&) { return false; }

}  // namespace varnel
