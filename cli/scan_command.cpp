#include "cli/scan_command.h"

#include <nlohmann/json.hpp>

#include "cli/json_output.h"
#include "cli/list_command.h"
#include "core/registry_location.h"
#include "base/text.h"

namespace varnel::cli {

namespace {

std::wstring Field(const nlohmann::json& object, const char* name) {
  auto it = object.find(name);
  return it != object.end() && it->is_string() ? text::FromUtf8(it->get<std::string>())
                                               : std::wstring();
}

bool Flag(const nlohmann::json& object, const char* name) {
  auto it = object.find(name);
  return it != object.end() && it->is_boolean() && it->get<bool>();
}

std::unique_ptr<TSoftInfo> RecordFrom(const nlohmann::json& object) {
  auto info = std::make_unique<TSoftInfo>();
  info->Name = Field(object, "name");
  info->Publisher = Field(object, "publisher");
  info->Version = Field(object, "version");
  info->RootKey = Field(object, "rootKey");
  info->KeyPath = Field(object, "keyPath");
  info->UninstallString = Field(object, "uninstallString");
  info->InstallLocation = Field(object, "installLocation");
  info->DisplayIcon = Field(object, "displayIcon");
  info->Is64BitView = Flag(object, "is64BitView");
  info->IsWindowsUpdate = Flag(object, "isWindowsUpdate");
  info->IsToolbar = Flag(object, "isToolbar");
  info->IsSystemComponent = Flag(object, "isSystemComponent");
  info->Hidden = Flag(object, "hidden");
  return info;
}

bool AllDigits(const std::wstring& s) {
  if (s.empty() || s.size() > 9) return false;
  for (wchar_t c : s)
    if (c < L'0' || c > L'9') return false;
  return true;
}

}  // namespace

int FindProgram(const SoftList& list, const std::wstring& target) {
  std::vector<int> positions(list.size());
  for (std::size_t i = 0; i < list.size(); ++i) positions[i] = static_cast<int>(i);
  return FindProgram(list, positions, target);
}

int FindProgram(const SoftList& list, const std::vector<int>& indexes,
                const std::wstring& target) {
  for (std::size_t i = 0; i < list.size(); ++i)
    if (!list[i]->Hidden && text::SameText(list[i]->Name, target)) return static_cast<int>(i);
  if (AllDigits(target)) {
    const int index = std::stoi(target);
    for (std::size_t i = 0; i < list.size() && i < indexes.size(); ++i)
      if (indexes[i] == index) return static_cast<int>(i);
  }
  return -1;
}

bool ReadRecords(const std::string& json, SoftList& records, std::vector<int>& indexes) {
  auto parsed = nlohmann::json::parse(json, nullptr, false);
  if (parsed.is_discarded()) return false;
  if (!parsed.is_object() && !parsed.is_array()) return false;
  if (parsed.is_object()) parsed = nlohmann::json::array({std::move(parsed)});
  for (const auto& item : parsed) {
    if (!item.is_object()) return false;
    auto index = item.find("index");
    const bool saved = index != item.end() && index->is_number_integer() &&
                       index->get<std::int64_t>() >= 0 && index->get<std::int64_t>() <= 999999999;
    indexes.push_back(saved ? static_cast<int>(index->get<std::int64_t>())
                            : static_cast<int>(records.size()));
    records.push_back(RecordFrom(item));
  }
  return true;
}

std::string FormatScanText(const ScanFindings& found) {
  std::string out = Utf8(found.Record.Name) + ": " + std::to_string(found.Count()) +
                    (found.Count() == 1 ? " leftover\n" : " leftovers\n");
  if (!found.Registry.empty()) {
    out += "Registry (" + std::to_string(found.Registry.size()) + ")\n";
    for (const auto& item : found.Registry)
      out += "  " +
             Utf8(FormatRegistryLocation(item.Root, item.KeyPath, item.ValueName, item.ValueData)) +
             "\n";
  }
  if (!found.Files.empty()) {
    out += "File (" + std::to_string(found.Files.size()) + ")\n";
    for (const auto& item : found.Files)
      out += "  " + Utf8(item.Path) + (item.Kind == FileKind::Folder ? "\\" : "") + "\n";
  }
  return out;
}

nlohmann::ordered_json ScanJson(const ScanFindings& found) {
  nlohmann::ordered_json registry = nlohmann::ordered_json::array();
  for (const auto& item : found.Registry)
    registry.push_back({
        {"root", Utf8(RootKeyName(item.Root))},
        {"key", Utf8(item.KeyPath)},
        {"value", Utf8(item.ValueName)},
        {"data", Utf8(item.ValueData)},
        {"is64BitView", found.Record.Is64BitView},
        {"text", Utf8(FormatRegistryLocation(item.Root, item.KeyPath, item.ValueName,
                                             item.ValueData))},
    });
  nlohmann::ordered_json files = nlohmann::ordered_json::array();
  for (const auto& item : found.Files)
    files.push_back({{"path", Utf8(item.Path)},
                     {"kind", item.Kind == FileKind::Folder ? "folder" : "file"}});
  return {{"program", Utf8(found.Record.Name)},
          {"count", found.Count()},
          {"registry", std::move(registry)},
          {"files", std::move(files)}};
}

std::string FormatScanJson(const ScanFindings& found) { return DumpJson(ScanJson(found)); }

int RunScan(const Platform& platform, const ScanOptions& options, std::string& out,
            std::string& err) {
  const TFilterManage filter;
  auto scanOne = [&](const SoftList& list, const std::vector<int>* saved) {
    int index = options.target.empty() && list.size() == 1 ? 0
                : saved ? FindProgram(list, *saved, options.target)
                        : FindProgram(list, options.target);
    if (index < 0) {
      err += "varnel-cli: no program \"" + Utf8(options.target) + "\"\n";
      return ExitCode::Failed;
    }
    ScanDriver driver(platform, filter);
    auto found = driver.Collect(list, index, L"", nullptr);
    out += options.json ? FormatScanJson(found) : FormatScanText(found);
    return ExitCode::Ok;
  };
  if (!options.recordFile.empty()) {
    std::vector<std::uint8_t> bytes;
    SoftList records;
    std::vector<int> indexes;
    if (!platform.files.ReadWholeFile(options.recordFile, bytes) ||
        !ReadRecords(std::string(bytes.begin(), bytes.end()), records, indexes)) {
      err += "varnel-cli: \"" + Utf8(options.recordFile) + "\" holds no saved record\n";
      return ExitCode::Failed;
    }
    return scanOne(records, &indexes);
  }
  int code = ExitCode::Failed;
  WithInventory(platform, err, [&](const SoftList& items) { code = scanOne(items, nullptr); });
  return code;
}

}  // namespace varnel::cli
