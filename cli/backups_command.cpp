#include "cli/backups_command.h"

#include "cli/json_output.h"
#include "base/text.h"
#include "uninstall/backup.h"

namespace varnel::cli {

int RunBackups(const Platform& platform, const BackupsOptions& options, std::string& out,
               std::string&) {
  const std::vector<BackupSummary> backups = ListBackups(platform);
  if (options.json) {
    nlohmann::ordered_json array = nlohmann::ordered_json::array();
    for (const BackupSummary& b : backups)
      array.push_back({{"id", Utf8(b.id)},
                       {"created", Utf8(b.created)},
                       {"registryItems", b.registryItems},
                       {"fileItems", b.fileItems},
                       {"bytes", b.bytes},
                       {"folder", Utf8(b.folder)}});
    out += DumpJson(array);
    return ExitCode::Ok;
  }
  for (const BackupSummary& b : backups)
    out += Utf8(b.id) + "  " + Utf8(b.created) + "  " + std::to_string(b.registryItems) +
           " registry, " + std::to_string(b.fileItems) + " files  " + std::to_string(b.bytes) +
           " bytes  " + Utf8(b.folder) + "\n";
  return ExitCode::Ok;
}

int RunRestore(const Platform& platform, const RestoreOptions& options, std::string& out,
               std::string& err) {
  // Named before restoring, so the output says which one "latest" was.
  std::wstring id = options.id;
  if (id == L"latest") {
    const auto backups = ListBackups(platform);
    if (!backups.empty()) id = backups.front().id;
  }
  const auto result = RestoreBackup(platform, id);
  if (!result) {
    err += "varnel-cli: no backup \"" + Utf8(options.id) + "\"\n";
    return ExitCode::Failed;
  }
  if (options.json) {
    nlohmann::ordered_json failed = nlohmann::ordered_json::array();
    for (const std::wstring& item : result->failed) failed.push_back(Utf8(item));
    out += DumpJson({{"id", Utf8(id)}, {"restored", result->restored}, {"failed", failed}});
  } else {
    out += "restored " + std::to_string(result->restored) + " items of " + Utf8(id) + "\n";
    for (const std::wstring& item : result->failed) out += "not restored: " + Utf8(item) + "\n";
  }
  return result->failed.empty() ? ExitCode::Ok : ExitCode::Failed;
}

}  // namespace varnel::cli
