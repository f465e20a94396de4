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

struct ParsedCommand {
  std::wstring command;  // "list" or "scan"
  ListOptions list;
  ScanOptions scan;
};

// nullopt, with `error` set, for an unknown command or option.
std::optional<ParsedCommand> ParseArguments(const std::vector<std::wstring>& args,
                                            std::wstring& error);

std::wstring UsageText();

}  // namespace varnel::cli
