#include "cli/cli_args.h"

namespace varnel::cli {

namespace {

std::optional<ParsedCommand> ParseScan(const std::vector<std::wstring>& args,
                                       ParsedCommand& parsed, std::wstring& error) {
  bool haveTarget = false;
  for (std::size_t i = 1; i < args.size(); ++i) {
    if (args[i] == L"--json") {
      parsed.scan.json = true;
    } else if (args[i] == L"--record") {
      if (i + 1 >= args.size() || args[i + 1].empty()) {
        error = L"\"--record\" needs a file";
        return std::nullopt;
      }
      parsed.scan.recordFile = args[++i];
    } else if (args[i].starts_with(L"--")) {
      error = L"unknown option \"" + args[i] + L"\" for \"scan\"";
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
         L"       varnel-cli scan <name|index> [--json] [--record FILE]\n"
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
         L"exit codes: 0 done, 1 failed (or no such program), 2 bad command line\n";
}

}  // namespace varnel::cli
