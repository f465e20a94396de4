#pragma once

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/cli_args.h"
#include "inventory/soft_list.h"
#include "platform/platform.h"
#include "uninstall/deletion_guard.h"
#include "uninstall/uninstall_view.h"

namespace varnel::cli {

// Lines for the user while something runs (stderr on the console).
using Progress = std::function<void(const std::string&)>;

// The uninstalling window without a window: captions are kept for the
// sequence to read back. Once started, each new one is passed to `progress`
// (which may be empty) without its cycling dots, save the step names the
// window shows at rest and the registry backup, which makes none.
class ConsoleUninstallView final : public IUninstallView {
 public:
  explicit ConsoleUninstallView(Progress progress) : progress_(std::move(progress)) {}
  // After the sequence has set its resting captions.
  void Start();
  void SetStep(int) override {}
  std::wstring Caption(StepLine line) const override;
  void SetCaption(StepLine line, std::wstring_view text) override;
  void HideUninstallMarker() override {}
  void EnableScan() override {}
  void ProcessMessages() override {}
  void ShowMessage(std::wstring_view text) override;
  bool AdvancedChosen() const override { return false; }
  void CloseWindow() override {}

 private:
  void Show(std::wstring_view text);

  Progress progress_;
  bool started_ = false;
  std::map<StepLine, std::wstring> captions_;
  std::map<StepLine, std::wstring> resting_;
  std::wstring lastShown_;
};

// What happened to one program named on the command line.
struct UninstallOutcome {
  int index = -1;
  std::wstring name;
  std::wstring command;  // as started
  std::wstring skipped;  // why it was not run; empty when it was
  bool started = false;
  bool addonRemoved = false;
  // A toolbar without an uninstaller under --advanced: its leftover scan is
  // its uninstall, nothing is run.
  bool byScan = false;
  std::wstring removeInBrowser;  // the add-on was left for this browser to remove
  std::vector<DeletionOutcome> addonKept;  // add-on files the guard would not delete
  std::optional<std::uint32_t> exitCode;
  bool stillListed = true;  // its Uninstall key (or add-on files) are still there
};

struct UninstallReport {
  std::vector<UninstallOutcome> programs;
  std::wstring logFile;
};

class LeftoverCleanup;

// With `cleanup`, its leftovers (and what was deleted) follow.
std::string FormatUninstallText(const UninstallReport& report,
                                const LeftoverCleanup* cleanup = nullptr);
std::string FormatUninstallJson(const UninstallReport& report,
                                const LeftoverCleanup* cleanup = nullptr);
nlohmann::ordered_json UninstallJson(const UninstallReport& report,
                                     const LeftoverCleanup* cleanup);
// 0 every program gone, 1 one skipped or not started, 3 one still listed.
int UninstallExitCode(const UninstallReport& report);

// Runs the uninstallers of the records at `indexes`, in order, through the
// uninstall sequence.
UninstallReport UninstallPrograms(const Platform& platform, const SoftList& list,
                                  const std::vector<int>& indexes, const UninstallOptions& options,
                                  const Progress& progress);

// Scans (and with `remove` deletes) the leftovers of every program the
// report ran, or tried to run: a skipped program was never touched.
void CleanLeftovers(const SoftList& list, const UninstallReport& report,
                    LeftoverCleanup& cleanup, const Progress& progress);

int RunUninstall(const Platform& platform, const UninstallOptions& options, std::string& out,
                 std::string& err, const Progress& progress);

}  // namespace varnel::cli
