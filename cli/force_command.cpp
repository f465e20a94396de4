#include "cli/force_command.h"

#include <nlohmann/json.hpp>

#include "cli/json_output.h"
#include "cli/leftover_cleanup.h"
#include "cli/list_command.h"
#include "base/text.h"
#include "leftovers/other_programs.h"
#include "uninstall/force_match.h"
#include "uninstall/uninstall_sequence.h"

namespace varnel::cli {

namespace {

// What became of the file itself when no program owned it.
struct ForcedFile {
  bool gone = false;
  bool atRestart = false;
  std::wstring skipped;  // why it stays
};

ForcedFile DeleteForcedFile(const Platform& platform, const SoftList& list,
                            const std::wstring& file, const ForceOptions& options,
                            LeftoverCleanup& cleanup, const Progress& progress,
                            std::wstring& logFile) {
  ConsoleUninstallView view(progress);
  UninstallSequence::Options sequenceOptions;
  sequenceOptions.restorePoint = false;
  sequenceOptions.saveModeChoice = false;
  sequenceOptions.noBackup = options.noBackup;
  sequenceOptions.backup = cleanup.RunBackup();
  UninstallSequence sequence(platform, view, UninstallTexts{}, std::move(sequenceOptions));
  const std::vector<std::wstring> jobs{file};
  sequence.SetSoftware(&list);
  sequence.SetJobs(&jobs, JobMode::Forced);
  sequence.Prepare();
  view.Start();
  sequence.Run();
  logFile = sequence.LogFile();
  ForcedFile result;
  if (const auto& outcome = sequence.ForcedOutcome()) {
    result.gone = outcome->deleted || outcome->atRestart;
    result.atRestart = outcome->atRestart;
    if (!result.gone) result.skipped = outcome->reason;
  }
  return result;
}

}  // namespace

int RunForce(const Platform& platform, const ForceOptions& options, std::string& out,
             std::string& err, const Progress& progress) {
  int code = ExitCode::Failed;
  const Progress shown = options.json ? Progress() : progress;
  WithInventory(platform, err, [&](const SoftList& list) {
    ForceMatch match(platform);
    match.SetSoftware(&list);
    if (!match.ChooseFile(options.file)) {
      err += "varnel-cli: \"" + Utf8(options.file) +
             "\" is no file to start from (missing, or in a folder no program can own)\n";
      return;
    }
    LeftoverCleanup cleanup(platform, options.deleteLeftovers, !options.noBackup);
    nlohmann::ordered_json result = {{"file", Utf8(match.File())}};

    if (match.ListShown()) {
      std::vector<int> indexes;
      for (const ForceRow& row : match.Rows()) indexes.push_back(row.index);
      UninstallOptions uninstall;
      uninstall.quiet = options.quiet;
      uninstall.advanced = true;
      const UninstallReport report = UninstallPrograms(platform, list, indexes, uninstall, shown);
      CleanLeftovers(list, report, cleanup, shown);
      result.update(UninstallJson(report, &cleanup));
      out += options.json ? DumpJson(result) : FormatUninstallText(report, &cleanup);
      code = UninstallExitCode(report);
      return;
    }

    std::wstring logFile;
    const ForcedFile forced =
        DeleteForcedFile(platform, list, match.File(), options, cleanup, shown, logFile);
    // A file the guard kept names no program of its own: nothing around it is touched.
    if (forced.gone) {
      cleanup.Scan(list, -1, match.File());
      cleanup.Finish(OtherProgramFolders(platform, list, {}), shown);
    }
    result["forced"] = {{"deleted", forced.gone},
                        {"atRestart", forced.atRestart},
                        {"skipped", forced.skipped.empty()
                                        ? nlohmann::ordered_json(nullptr)
                                        : nlohmann::ordered_json(Utf8(forced.skipped))}};
    cleanup.AddJson(result);
    result["logFile"] =
        logFile.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(Utf8(logFile));
    if (options.json) {
      out += DumpJson(result);
    } else {
      out += Utf8(match.File()) + ": " +
             (forced.gone ? (forced.atRestart ? "deleted at the next start" : "deleted")
                          : "kept, " + Utf8(forced.skipped)) +
             "\n" + cleanup.Text();
      if (!logFile.empty()) out += "log: " + Utf8(logFile) + "\n";
    }
    code = forced.gone ? ExitCode::Ok : ExitCode::Failed;
  });
  return code;
}

}  // namespace varnel::cli
