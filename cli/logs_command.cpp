#include "cli/logs_command.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/json_output.h"
#include "base/date_time.h"
#include "base/text.h"
#include "base/text_file.h"

namespace varnel::cli {

namespace {

std::string LocalTime(const Platform& platform, FileTime time) {
  return Utf8(FormatDate(L"yyyy-MM-dd HH:mm:ss", FileTimeToLocalDateTime(platform.system, time)));
}

}  // namespace

std::string FormatLogsText(const Platform& platform, const std::vector<SavedLog>& logs) {
  std::string out;
  for (const SavedLog& log : logs)
    out += Utf8(log.name) + "  " + std::to_string(log.size) + " bytes  " +
           LocalTime(platform, log.lastWrite) + "  " + Utf8(log.path) + "\n";
  return out;
}

std::string FormatLogsJson(const Platform& platform, const std::vector<SavedLog>& logs) {
  nlohmann::ordered_json array = nlohmann::ordered_json::array();
  for (const SavedLog& log : logs)
    array.push_back({{"name", Utf8(log.name)},
                     {"path", Utf8(log.path)},
                     {"size", log.size},
                     {"time", LocalTime(platform, log.lastWrite)}});
  return DumpJson(array);
}

int RunLogs(const Platform& platform, const LogsOptions& options, std::string& out,
            std::string& err) {
  const std::vector<SavedLog> logs = ListUninstallLogs(platform);
  if (options.show.empty()) {
    out += options.json ? FormatLogsJson(platform, logs) : FormatLogsText(platform, logs);
    return ExitCode::Ok;
  }
  // Only a listed log: the name is never a path into somewhere else.
  auto it = std::find_if(logs.begin(), logs.end(),
                         [&](const SavedLog& log) { return text::SameText(log.name, options.show); });
  std::wstring content;
  if (it == logs.end() || !ReadTextFile(platform, it->path, content)) {
    err += "varnel-cli: no log \"" + Utf8(options.show) + "\"\n";
    return ExitCode::Failed;
  }
  for (std::wstring_view line : SplitLines(content)) out += Utf8(std::wstring(line)) + "\n";
  return ExitCode::Ok;
}

}  // namespace varnel::cli
