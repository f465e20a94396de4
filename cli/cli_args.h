#pragma once

#include <optional>
#include <string>
#include <vector>

namespace varnel::cli {

// Exit codes the console tool documents.
namespace ExitCode {
constexpr int Ok = 0;
constexpr int Failed = 1;
constexpr int Usage = 2;
constexpr int StillListed = 3;  // an uninstaller ended, yet its program is still listed
}  // namespace ExitCode

struct ListOptions {
  bool json = false;
  bool all = false;
};

struct ScanOptions {
  std::wstring target;      // a program's name or its index in `list --json`
  bool json = false;
  std::wstring recordFile;  // a record saved by `list --json`, instead of the installed list
};

struct UninstallOptions {
  std::vector<std::wstring> targets;  // names or indexes, in the order to uninstall
  bool quiet = false;
  bool json = false;
  bool restorePoint = false;
  bool advanced = false;         // scan each program's leftovers after its uninstaller
  bool deleteLeftovers = false;  // and delete them (with `advanced`)
  bool noBackup = false;         // delete without a backup (with `deleteLeftovers`)
};

struct ForceOptions {
  std::wstring file;  // a program's file or a shortcut to it
  bool quiet = false;
  bool deleteLeftovers = false;
  bool noBackup = false;
  bool json = false;
};

struct LogsOptions {
  bool json = false;
  std::wstring show;  // the one log to print
};

struct BackupsOptions {
  bool json = false;
};

struct RestoreOptions {
  std::wstring id;  // a backup's id, or "latest"
  bool json = false;
};

struct ExtensionsOptions {
  bool json = false;
};

struct ParsedCommand {
  // "list", "scan", "uninstall", "logs", "backups", "restore" or "extensions"
  std::wstring command;
  ListOptions list;
  ScanOptions scan;
  UninstallOptions uninstall;
  ForceOptions force;
  LogsOptions logs;
  BackupsOptions backups;
  RestoreOptions restore;
  ExtensionsOptions extensions;
};

// nullopt, with `error` set, for an unknown command or option.
std::optional<ParsedCommand> ParseArguments(const std::vector<std::wstring>& args,
                                            std::wstring& error);

std::wstring UsageText();

}  // namespace varnel::cli
