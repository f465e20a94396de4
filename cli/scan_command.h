#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/cli_args.h"
#include "inventory/soft_list.h"
#include "leftovers/scan_driver.h"
#include "platform/platform.h"

namespace varnel::cli {

// The record `scan` means: the first visible one with that name (ignoring
// case), else the one at that index; -1 when none.
int FindProgram(const SoftList& list, const std::wstring& target);
// The same over saved records, where an index means the record saved with
// that "index" (`indexes` parallel to `list`), not a position.
int FindProgram(const SoftList& list, const std::vector<int>& indexes,
                const std::wstring& target);

// Records from `list --json` output (an array or one object), with the index
// each was saved with (its position when it has none); false when the text
// is not that.
bool ReadRecords(const std::string& json, SoftList& records, std::vector<int>& indexes);

std::string FormatScanText(const ScanFindings& found);
// The object `scan --json` prints.
nlohmann::ordered_json ScanJson(const ScanFindings& found);
std::string FormatScanJson(const ScanFindings& found);

int RunScan(const Platform& platform, const ScanOptions& options, std::string& out,
            std::string& err);

}  // namespace varnel::cli
