#include "cli/uninstall_command.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/json_output.h"
#include "cli/leftover_cleanup.h"
#include "cli/list_command.h"
#include "cli/scan_command.h"
#include "core/registry_location.h"
#include "base/text.h"
#include "leftovers/other_programs.h"
#include "uninstall/quiet_command.h"
#include "uninstall/uninstall_sequence.h"

namespace varnel::cli {

namespace {

std::wstring WithoutDots(std::wstring_view text) {
  while (!text.empty() && text.back() == L'.') text.remove_suffix(1);
  return std::wstring(text);
}

bool StillListed(const Platform& platform, const TSoftInfo& info) {
  if (IsBrowserAddon(info)) return platform.files.GetAttributes(info.ToolbarFile).has_value();
  return platform.registry.KeyExists(RootKeyFromName(info.RootKey), info.KeyPath,
                                     info.Is64BitView);
}

}  // namespace

std::wstring ConsoleUninstallView::Caption(StepLine line) const {
  auto it = captions_.find(line);
  return it == captions_.end() ? std::wstring() : it->second;
}

void ConsoleUninstallView::Start() {
  resting_ = captions_;
  started_ = true;
}

void ConsoleUninstallView::SetCaption(StepLine line, std::wstring_view text) {
  captions_[line] = std::wstring(text);
  if (!started_ || line == StepLine::RegBackup || text == resting_[line]) return;
  Show(text);
}

void ConsoleUninstallView::ShowMessage(std::wstring_view text) { Show(text); }

void ConsoleUninstallView::Show(std::wstring_view text) {
  // The waits redraw their caption with cycling dots many times a second.
  std::wstring shown = WithoutDots(text);
  if (!progress_ || shown.empty() || shown == lastShown_) return;
  lastShown_ = shown;
  progress_(Utf8(shown) + "\n");
}

UninstallReport UninstallPrograms(const Platform& platform, const SoftList& list,
                                  const std::vector<int>& indexes, const UninstallOptions& options,
                                  const Progress& progress) {
  UninstallReport report;
  std::map<const TSoftInfo*, std::wstring> quietCommands;
  std::vector<std::wstring> jobs;
  for (int index : indexes) {
    const bool seen = std::any_of(report.programs.begin(), report.programs.end(),
                                  [&](const UninstallOutcome& o) { return o.index == index; });
    if (seen) continue;
    const TSoftInfo& info = *list[index];
    UninstallOutcome outcome;
    outcome.index = index;
    outcome.name = info.Name;
    outcome.byScan = options.advanced && info.IsToolbar && text::Trim(info.UninstallString).empty();
    if (options.quiet && !outcome.byScan) {
      QuietCommand quiet = FindQuietCommand(platform, info);
      outcome.skipped = quiet.reason;
      quietCommands[&info] = quiet.command;
    }
    if (outcome.skipped.empty() && !outcome.byScan) jobs.push_back(std::to_wstring(index));
    report.programs.push_back(std::move(outcome));
  }

  if (!jobs.empty()) {
    ConsoleUninstallView view(progress);
    UninstallSequence::Options sequenceOptions;
    sequenceOptions.restorePoint = options.restorePoint;
    sequenceOptions.saveModeChoice = false;
    if (options.quiet) {
      sequenceOptions.commandFor = [&quietCommands](const TSoftInfo& info) {
        auto it = quietCommands.find(&info);
        return it == quietCommands.end() ? std::wstring() : it->second;
      };
    }
    UninstallSequence sequence(platform, view, UninstallTexts{}, std::move(sequenceOptions));
    sequence.SetSoftware(&list);
    sequence.SetJobs(&jobs, JobMode::Uninstall);
    sequence.Prepare();
    view.Start();
    sequence.Run();
    for (const UninstallRun& run : sequence.Runs()) {
      for (UninstallOutcome& outcome : report.programs) {
        if (outcome.index != run.index) continue;
        outcome.command = run.command;
        outcome.started = run.started;
        outcome.addonRemoved = run.addonRemoved;
        outcome.removeInBrowser = run.removeInBrowser;
        outcome.addonKept = run.addonKept;
        outcome.exitCode = run.exitCode;
      }
    }
    report.logFile = sequence.LogFile();
  }
  // Read afresh: only the registry says whether the uninstaller did its work.
  for (UninstallOutcome& outcome : report.programs)
    outcome.stillListed = StillListed(platform, *list[outcome.index]);
  return report;
}

int UninstallExitCode(const UninstallReport& report) {
  int code = ExitCode::Ok;
  for (const UninstallOutcome& o : report.programs) {
    if (o.byScan) continue;
    if (!o.skipped.empty() || (!o.started && !o.addonRemoved)) return ExitCode::Failed;
    if (o.stillListed) code = ExitCode::StillListed;
  }
  return code;
}

std::string FormatUninstallText(const UninstallReport& report, const LeftoverCleanup* cleanup) {
  std::string out;
  for (const UninstallOutcome& o : report.programs) {
    out += Utf8(o.name) + ": ";
    if (!o.skipped.empty()) {
      out += "skipped, " + Utf8(o.skipped);
    } else if (!o.removeInBrowser.empty()) {
      out += "installed in " + Utf8(o.removeInBrowser) + ", remove it there";
    } else if (o.byScan) {
      out += "a toolbar without an uninstaller: removed with its leftovers";
    } else if (!o.addonKept.empty()) {
      out += "add-on kept";
      for (const DeletionOutcome& kept : o.addonKept)
        out += "; " + Utf8(kept.item) + ": " + Utf8(kept.reason);
    } else if (!o.started && !o.addonRemoved) {
      out += "could not start " + Utf8(o.command);
    } else {
      out += o.stillListed ? "still listed after its uninstaller ended" : "uninstalled";
      if (o.exitCode) out += " (exit code " + std::to_string(*o.exitCode) + ")";
    }
    out += "\n";
  }
  if (cleanup) out += cleanup->Text();
  if (!report.logFile.empty()) out += "log: " + Utf8(report.logFile) + "\n";
  return out;
}

std::string FormatUninstallJson(const UninstallReport& report, const LeftoverCleanup* cleanup) {
  return DumpJson(UninstallJson(report, cleanup));
}

nlohmann::ordered_json UninstallJson(const UninstallReport& report,
                                     const LeftoverCleanup* cleanup) {
  nlohmann::ordered_json programs = nlohmann::ordered_json::array();
  for (const UninstallOutcome& o : report.programs) {
    nlohmann::ordered_json item = {
        {"name", Utf8(o.name)},
        {"index", o.index},
        {"command", Utf8(o.command)},
        {"started", o.started},
        {"exitCode", nullptr},
        {"stillListed", o.stillListed},
        {"skipped", nullptr},
    };
    if (o.exitCode) item["exitCode"] = *o.exitCode;
    if (!o.skipped.empty()) item["skipped"] = Utf8(o.skipped);
    if (o.addonRemoved) item["addonRemoved"] = true;
    if (o.byScan) item["byScan"] = true;
    if (!o.removeInBrowser.empty()) item["removeInBrowser"] = Utf8(o.removeInBrowser);
    for (const DeletionOutcome& kept : o.addonKept)
      item["addonKept"].push_back({{"item", Utf8(kept.item)}, {"reason", Utf8(kept.reason)}});
    programs.push_back(std::move(item));
  }
  nlohmann::ordered_json result = {
      {"programs", std::move(programs)},
      {"logFile", report.logFile.empty() ? nlohmann::ordered_json(nullptr)
                                         : nlohmann::ordered_json(Utf8(report.logFile))},
  };
  if (cleanup) cleanup->AddJson(result);
  return result;
}

void CleanLeftovers(const SoftList& list, const UninstallReport& report,
                    LeftoverCleanup& cleanup, const Progress& progress) {
  std::vector<int> cleaned;
  for (const UninstallOutcome& o : report.programs) {
    if (o.skipped.empty() && o.removeInBrowser.empty()) cleaned.push_back(o.index);
  }
  // Programs cleaned together may share folders: none protects another's.
  cleanup.ScanTogether(cleaned);
  // The records as they were before their uninstallers ran: entries may be gone.
  for (int index : cleaned) cleanup.Scan(list, index);
  cleanup.Finish(OtherProgramFolders(cleanup.Machine(), list, cleaned), progress);
}

int RunUninstall(const Platform& platform, const UninstallOptions& options, std::string& out,
                 std::string& err, const Progress& progress) {
  int code = ExitCode::Failed;
  WithInventory(platform, err, [&](const SoftList& list) {
    std::vector<int> indexes;
    for (const std::wstring& target : options.targets) {
      const int index = FindProgram(list, target);
      if (index < 0) {
        // Nothing runs: a mistyped name must not leave half a batch done.
        err += "varnel-cli: no program \"" + Utf8(target) + "\"\n";
        return;
      }
      indexes.push_back(index);
    }
    const Progress shown = options.json ? Progress() : progress;
    const UninstallReport report = UninstallPrograms(platform, list, indexes, options, shown);
    std::unique_ptr<LeftoverCleanup> cleanup;
    if (options.advanced) {
      cleanup = std::make_unique<LeftoverCleanup>(platform, options.deleteLeftovers,
                                                  !options.noBackup);
      CleanLeftovers(list, report, *cleanup, shown);
    }
    out += options.json ? FormatUninstallJson(report, cleanup.get())
                        : FormatUninstallText(report, cleanup.get());
    code = UninstallExitCode(report);
  });
  return code;
}

}  // namespace varnel::cli
