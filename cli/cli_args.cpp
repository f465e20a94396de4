#include "cli/cli_args.h"

#include <initializer_list>
#include <span>
#include <utility>

namespace varnel::cli {

namespace {

using Flags = std::initializer_list<std::pair<std::wstring_view, bool*>>;

// Sets the flag `arg` names; false when it names none.
bool SetFlag(const std::wstring& arg, Flags flags) {
  for (const auto& [name, flag] : flags) {
    if (arg == name) {
      *flag = true;
      return true;
    }
  }
  return false;
}

// The argument after option `i`, which must not be empty.
std::optional<std::wstring> TakeValue(const std::vector<std::wstring>& args, std::size_t& i,
                                      std::wstring_view what, std::wstring& error) {
  if (i + 1 >= args.size() || args[i + 1].empty()) {
    error = L"\"" + args[i] + L"\" needs " + std::wstring(what);
    return std::nullopt;
  }
  return args[++i];
}

std::wstring UnknownOption(const std::wstring& arg, const std::wstring& command) {
  return L"unknown option \"" + arg + L"\" for \"" + command + L"\"";
}

std::optional<ParsedCommand> ParseScan(const std::vector<std::wstring>& args,
                                       ParsedCommand& parsed, std::wstring& error) {
  bool haveTarget = false;
  for (std::size_t i = 1; i < args.size(); ++i) {
    if (SetFlag(args[i], {{L"--json", &parsed.scan.json}})) continue;
    if (args[i] == L"--record") {
      auto file = TakeValue(args, i, L"a file", error);
      if (!file) return std::nullopt;
      parsed.scan.recordFile = *file;
    } else if (args[i].starts_with(L"--")) {
      error = UnknownOption(args[i], L"scan");
      return std::nullopt;
    } else if (haveTarget) {
      error = L"\"scan\" takes one program";
      return std::nullopt;
    } else {
      parsed.scan.target = args[i];
      haveTarget = true;
    }
  }
  // A record file holding a single object names its program itself.
  if (!haveTarget && parsed.scan.recordFile.empty()) {
    error = L"\"scan\" needs a program's name or index";
    return std::nullopt;
  }
  return parsed;
}

// --delete only after a scan, --no-backup only with --delete.
bool CleanupFlagsValid(bool scan, bool remove, bool noBackup, std::wstring& error) {
  if (remove && !scan) error = L"\"--delete\" deletes what \"--advanced\" finds: give both";
  if (noBackup && !remove) error = L"\"--no-backup\" goes with \"--delete\"";
  return error.empty();
}

// The flags `command` takes and its other arguments, in order; false, with
// `error` set, for an unknown option.
bool TakeFlagsAndTargets(const std::vector<std::wstring>& args, const std::wstring& command,
                         Flags flags, std::vector<std::wstring>& targets, std::wstring& error) {
  for (const std::wstring& arg : std::span(args).subspan(1)) {
    if (SetFlag(arg, flags)) continue;
    if (arg.starts_with(L"--")) {
      error = UnknownOption(arg, command);
      return false;
    }
    targets.push_back(arg);
  }
  return true;
}

std::optional<ParsedCommand> ParseUninstall(const std::vector<std::wstring>& args,
                                            ParsedCommand& parsed, std::wstring& error) {
  UninstallOptions& options = parsed.uninstall;
  if (!TakeFlagsAndTargets(args, L"uninstall",
                           {{L"--quiet", &options.quiet},
                            {L"--json", &options.json},
                            {L"--restore-point", &options.restorePoint},
                            {L"--advanced", &options.advanced},
                            {L"--delete", &options.deleteLeftovers},
                            {L"--no-backup", &options.noBackup}},
                           options.targets, error))
    return std::nullopt;
  if (options.targets.empty()) {
    error = L"\"uninstall\" needs at least one program's name or index";
    return std::nullopt;
  }
  if (!CleanupFlagsValid(options.advanced, options.deleteLeftovers, options.noBackup, error))
    return std::nullopt;
  return parsed;
}

std::optional<ParsedCommand> ParseForce(const std::vector<std::wstring>& args,
                                        ParsedCommand& parsed, std::wstring& error) {
  ForceOptions& options = parsed.force;
  std::vector<std::wstring> files;
  if (!TakeFlagsAndTargets(args, L"force",
                           {{L"--quiet", &options.quiet},
                            {L"--delete", &options.deleteLeftovers},
                            {L"--no-backup", &options.noBackup},
                            {L"--json", &options.json}},
                           files, error))
    return std::nullopt;
  if (files.size() != 1) {
    error = L"\"force\" takes one file: a program's file or a shortcut to it";
    return std::nullopt;
  }
  options.file = files.front();
  if (!CleanupFlagsValid(true, options.deleteLeftovers, options.noBackup, error))
    return std::nullopt;
  return parsed;
}

std::optional<ParsedCommand> ParseLogs(const std::vector<std::wstring>& args,
                                       ParsedCommand& parsed, std::wstring& error) {
  LogsOptions& options = parsed.logs;
  for (std::size_t i = 1; i < args.size(); ++i) {
    if (SetFlag(args[i], {{L"--json", &options.json}})) continue;
    if (args[i] != L"--show") {
      error = UnknownOption(args[i], L"logs");
      return std::nullopt;
    }
    auto name = TakeValue(args, i, L"a log's name", error);
    if (!name) return std::nullopt;
    options.show = *name;
  }
  if (options.json && !options.show.empty()) {
    error = L"\"--show\" prints the log itself and takes no \"--json\"";
    return std::nullopt;
  }
  return parsed;
}

// A command whose one option is --json.
std::optional<ParsedCommand> ParseJsonOnly(const std::vector<std::wstring>& args,
                                           ParsedCommand& parsed, bool& json,
                                           std::wstring& error) {
  for (const std::wstring& arg : std::span(args).subspan(1)) {
    if (!SetFlag(arg, {{L"--json", &json}})) {
      error = UnknownOption(arg, parsed.command);
      return std::nullopt;
    }
  }
  return parsed;
}

std::optional<ParsedCommand> ParseRestore(const std::vector<std::wstring>& args,
                                          ParsedCommand& parsed, std::wstring& error) {
  RestoreOptions& options = parsed.restore;
  for (const std::wstring& arg : std::span(args).subspan(1)) {
    if (SetFlag(arg, {{L"--json", &options.json}})) continue;
    if (arg.starts_with(L"-") || !options.id.empty()) {
      error = UnknownOption(arg, L"restore");
      return std::nullopt;
    }
    options.id = arg;
  }
  if (options.id.empty()) {
    error = L"\"restore\" needs a backup's id or \"latest\"";
    return std::nullopt;
  }
  return parsed;
}

}  // namespace

std::optional<ParsedCommand> ParseArguments(const std::vector<std::wstring>& args,
                                            std::wstring& error) {
  error.clear();
  if (args.empty()) {
    error = L"no command given";
    return std::nullopt;
  }
  ParsedCommand parsed;
  parsed.command = args[0];
  if (parsed.command == L"scan") return ParseScan(args, parsed, error);
  if (parsed.command == L"uninstall") return ParseUninstall(args, parsed, error);
  if (parsed.command == L"force") return ParseForce(args, parsed, error);
  if (parsed.command == L"logs") return ParseLogs(args, parsed, error);
  if (parsed.command == L"restore") return ParseRestore(args, parsed, error);
  if (parsed.command == L"backups") return ParseJsonOnly(args, parsed, parsed.backups.json, error);
  if (parsed.command == L"extensions")
    return ParseJsonOnly(args, parsed, parsed.extensions.json, error);
  if (parsed.command != L"list") {
    error = L"unknown command \"" + parsed.command + L"\"";
    return std::nullopt;
  }
  for (const std::wstring& arg : std::span(args).subspan(1)) {
    if (!SetFlag(arg, {{L"--json", &parsed.list.json}, {L"--all", &parsed.list.all}})) {
      error = UnknownOption(arg, L"list");
      return std::nullopt;
    }
  }
  return parsed;
}

std::wstring UsageText() {
  return L"usage: varnel-cli list [--json] [--all]\n"
         L"       varnel-cli scan <name|index> [--json] [--record FILE]\n"
         L"       varnel-cli uninstall <name|index>... [--quiet] [--json] [--restore-point]\n"
         L"                 [--advanced [--delete [--no-backup]]]\n"
         L"       varnel-cli force <file> [--quiet] [--delete [--no-backup]] [--json]\n"
         L"       varnel-cli logs [--json] | logs --show NAME\n"
         L"       varnel-cli backups [--json]\n"
         L"       varnel-cli restore <id|latest> [--json]\n"
         L"       varnel-cli extensions [--json]\n"
         L"\n"
         L"  list      the installed programs, one line each\n"
         L"  --json    an array of objects instead, one per program\n"
         L"  --all     include the entries that the list hides (duplicates, folded toolbars)\n"
         L"\n"
         L"  scan      what a program has in the registry and on disk, found as after its\n"
         L"            uninstaller ran; nothing is changed\n"
         L"  --json    one object: program, count, registry items, files\n"
         L"  --record  scan from a record saved by \"list --json\" (an object, or the array\n"
         L"            with the name or index choosing from it)\n"
         L"\n"
         L"  uninstall runs each program's own uninstaller in turn, waits until it and\n"
         L"            everything it started have ended, and writes the day's log\n"
         L"  --quiet   run the quiet form instead (the entry's own, or the one its\n"
         L"            Windows Installer, NSIS or Inno Setup uninstaller takes); a\n"
         L"            program without one is skipped\n"
         L"  --json    one object: per program what ran and whether it is still listed,\n"
         L"            and the log file\n"
         L"  --restore-point  make a system restore point first\n"
         L"  --advanced  then scan each program's leftovers (as \"scan\" does)\n"
         L"  --delete  and delete them, backed up first (\"restore\" puts them back);\n"
         L"            what the guard refuses is listed as skipped\n"
         L"  --no-backup  delete without a backup\n"
         L"\n"
         L"  force     the programs installed in the file's folder are uninstalled and their\n"
         L"            leftovers scanned; with none, the file itself is deleted (backed up)\n"
         L"            and the leftovers around it scanned; --delete deletes them too\n"
         L"\n"
         L"  logs      the uninstall log files; --json as an array; --show NAME prints one\n"
         L"\n"
         L"  backups   what each deletion run saved before deleting, newest first, with the\n"
         L"            room it takes; --json as an array\n"
         L"  restore   puts back the keys, values, files and folders of one backup (by its\n"
         L"            id, or the newest with \"latest\"); nothing that is there now is\n"
         L"            written over; --json as one object\n"
         L"\n"
         L"  extensions  every extension of every browser profile (Firefox, Chrome, Edge,\n"
         L"            Brave, Vivaldi, Opera), toolbar or not; --json as an array\n"
         L"\n"
         L"exit codes: 0 done, 1 failed (no such program, an uninstaller could not start\n"
         L"or was skipped), 2 bad command line, 3 an uninstaller ended but its program\n"
         L"is still listed\n";
}

}  // namespace varnel::cli
