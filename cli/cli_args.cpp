#include "cli/cli_args.h"

namespace varnel::cli {

std::optional<ParsedCommand> ParseArguments(const std::vector<std::wstring>& args,
                                            std::wstring& error) {
  error.clear();
  if (args.empty()) {
    error = L"no command given";
    return std::nullopt;
  }
  ParsedCommand parsed;
  parsed.command = args[0];
  if (parsed.command != L"list") {
    error = L"unknown command \"" + parsed.command + L"\"";
    return std::nullopt;
  }
  for (std::size_t i = 1; i < args.size(); ++i) {
    if (args[i] == L"--json") {
      parsed.list.json = true;
    } else if (args[i] == L"--all") {
      parsed.list.all = true;
    } else {
      error = L"unknown option \"" + args[i] + L"\" for \"list\"";
      return std::nullopt;
    }
  }
  return parsed;
}

std::wstring UsageText() {
  return L"usage: varnel-cli list [--json] [--all]\n"
         L"\n"
         L"  list     the installed programs, one line each\n"
         L"  --json   an array of objects instead, one per program\n"
         L"  --all    include the entries that the list hides (duplicates, folded toolbars)\n"
         L"\n"
         L"exit codes: 0 done, 1 failed, 2 bad command line\n";
}

}  // namespace varnel::cli
