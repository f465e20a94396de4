#include "cli/list_command.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/backups_command.h"
#include "cli/extensions_command.h"
#include "cli/force_command.h"
#include "cli/json_output.h"
#include "cli/logs_command.h"
#include "cli/scan_command.h"
#include "cli/uninstall_command.h"
#include "core/data_folder.h"
#include "base/text.h"
#include "inventory/software_info.h"

namespace varnel::cli {
namespace {

// Display width in code points, so that accented names line up.
std::size_t Width(const std::string& utf8) {
  return static_cast<std::size_t>(
      std::count_if(utf8.begin(), utf8.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

std::string FormatListText(const SoftList& list, bool all) {
  struct Row {
    std::string cells[5];
  };
  std::vector<Row> rows;
  for (const auto& info : list) {
    if (info->Hidden && !all) continue;
    std::wstring view = info->Is64BitView ? L"64-bit" : L"32-bit";
    if (info->RootKey == L"HKEY_CURRENT_USER") view += L" user";
    if (info->Hidden) view += L" hidden";
    rows.push_back(Row{{Utf8(info->Name), Utf8(info->Version), Utf8(info->SizeText),
                        Utf8(info->InstallDateText), Utf8(view)}});
  }
  std::size_t widths[5] = {0, 0, 0, 0, 0};
  for (const auto& row : rows)
    for (int c = 0; c < 4; ++c) widths[c] = std::max(widths[c], Width(row.cells[c]));
  std::string out;
  for (const auto& row : rows) {
    for (int c = 0; c < 5; ++c) {
      out += row.cells[c];
      if (c < 4) out.append(widths[c] - Width(row.cells[c]) + 2, ' ');
    }
    out += '\n';
  }
  return out;
}

std::string FormatListJson(const SoftList& list, bool all) {
  nlohmann::ordered_json array = nlohmann::ordered_json::array();
  for (std::size_t i = 0; i < list.size(); ++i) {
    const TSoftInfo& info = *list[i];
    if (info.Hidden && !all) continue;
    array.push_back({
        {"index", i},
        {"name", Utf8(info.Name)},
        {"publisher", Utf8(info.Publisher)},
        {"version", Utf8(info.Version)},
        {"installDate", Utf8(info.InstallDateText)},
        {"size", info.Size},
        {"sizeText", Utf8(info.SizeText)},
        {"rootKey", Utf8(info.RootKey)},
        {"keyPath", Utf8(info.KeyPath)},
        {"uninstallString", Utf8(info.UninstallString)},
        {"installLocation", Utf8(info.InstallLocation)},
        {"displayIcon", Utf8(info.DisplayIcon)},
        {"is64BitView", info.Is64BitView},
        {"isWindowsUpdate", info.IsWindowsUpdate},
        {"isToolbar", info.IsToolbar},
        {"isSystemComponent", info.IsSystemComponent},
        {"hidden", info.Hidden},
    });
  }
  return DumpJson(array);
}

void WithInventory(const Platform& platform, std::string& err,
                   const std::function<void(const SoftList&)>& use) {
  TAppFrame frame(platform);
  std::wstring cacheFile = SoftwareCacheFileName(frame, true);
  if (cacheFile.empty()) {
    err += "varnel-cli: no application-data folder; the software cache is not kept\n";
  }
  GuiDispatcher dispatcher;
  TSoftwareInfo::Options inventoryOptions;
  inventoryOptions.cacheFile = cacheFile;
  TSoftwareInfo inventory(platform, dispatcher, std::move(inventoryOptions));
  inventory.Analysis().WaitForPass();
  use(inventory.Items());
}

int RunList(const Platform& platform, const ListOptions& options, std::string& out,
            std::string& err) {
  WithInventory(platform, err, [&](const SoftList& items) {
    out += options.json ? FormatListJson(items, options.all) : FormatListText(items, options.all);
  });
  return ExitCode::Ok;
}

int RunCli(const Platform& platform, const std::vector<std::wstring>& args, std::string& out,
           std::string& err, const std::function<void(const std::string&)>& progress) {
  std::wstring error;
  auto parsed = ParseArguments(args, error);
  if (!parsed) {
    err += "varnel-cli: " + text::ToUtf8(error) + "\n" + text::ToUtf8(UsageText());
    return ExitCode::Usage;
  }
  if (parsed->command == L"scan") return RunScan(platform, parsed->scan, out, err);
  if (parsed->command == L"uninstall")
    return RunUninstall(platform, parsed->uninstall, out, err, progress);
  if (parsed->command == L"force") return RunForce(platform, parsed->force, out, err, progress);
  if (parsed->command == L"logs") return RunLogs(platform, parsed->logs, out, err);
  if (parsed->command == L"backups") return RunBackups(platform, parsed->backups, out, err);
  if (parsed->command == L"restore") return RunRestore(platform, parsed->restore, out, err);
  if (parsed->command == L"extensions")
    return RunExtensions(platform, parsed->extensions, out, err);
  return RunList(platform, parsed->list, out, err);
}

}  // namespace varnel::cli
