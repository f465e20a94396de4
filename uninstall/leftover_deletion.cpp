#include "uninstall/leftover_deletion.h"

#include <map>

#include "base/date_time.h"
#include "core/registry_location.h"
#include "uninstall/uninstall_log.h"

namespace varnel {

namespace {

constexpr std::uint32_t kItemPauseMs = 10;

bool IsFolder(const TMyTreeData& data) {
  return data.Kind == TreeDataKind::File && data.FileKindWord == FileKind::Folder;
}

std::wstring Describe(const TMyTreeData& data) {
  if (data.Kind == TreeDataKind::File) return data.FilePath;
  return FormatRegistryLocation(data.Root, data.KeyPath, data.ValueName, data.ValueData);
}

// The log in pieces, so that what the folder pass refuses can still be
// reported in its group although its line was written before the pass.
struct LogLine {
  std::wstring text;
  bool dropped = false;
};
struct LogBlock {
  std::vector<LogLine> lines;
  std::vector<std::wstring> skipped;
};
struct FolderPlace {
  std::size_t block = 0;
  std::size_t line = SIZE_MAX;  // its "Deleted Folder" line, when it was checked
};

std::wstring SkippedLine(const DeletionOutcome& outcome, const std::wstring& item) {
  std::wstring reason = outcome.reason;
  if (reason.empty()) reason = RefusalReason(outcome.refused);
  return L"Skipped " + item + L": " + reason;
}

}  // namespace

std::wstring CaptionName(std::wstring_view caption) {
  const auto open = caption.find(L'(');
  return open == std::wstring_view::npos ? std::wstring() : std::wstring(caption.substr(0, open));
}

LeftoverDeletion::LeftoverDeletion(const Platform& platform, DeletionGuard& guard,
                                   DeletionTexts texts)
    : platform_(platform), guard_(guard), texts_(std::move(texts)) {}

DeletionResult LeftoverDeletion::Run(const std::vector<LeftoverRoot>& roots,
                                     IDeletionProgress& progress,
                                     const std::atomic<bool>& cancel) {
  DeletionResult result;
  int nodes = 0;
  for (const auto& root : roots) {
    ++nodes;
    for (const auto& group : root.groups) nodes += 1 + static_cast<int>(group.items.size());
  }
  auto handled = [&](const DeletionOutcome& outcome) {
    result.outcomes.push_back(outcome);
    if (outcome.refused != Refusal::None) {
      ++result.skipped;
    } else if (outcome.deleted || outcome.atRestart) {
      ++result.deleted;
    }
    return outcome.refused != Refusal::None;
  };
  auto show = [&](const std::wstring& item) {
    progress.SetCaption(texts_.Deleting + L" :" + item);
  };

  std::vector<LogBlock> blocks;
  std::map<const TMyTreeData*, FolderPlace> folders;
  int counter = 0;
  for (const auto& root : roots) {
    if (cancel) break;
    blocks.push_back({{{L"[" + CaptionName(root.caption) + L"]"},
                       {texts_.Option + L":" + texts_.PowerfulScan},
                       {texts_.DateTime + L":" + NowShortDateTime(platform_.system)}},
                      {}});
    for (const auto& group : root.groups) {
      LogBlock& block = blocks.emplace_back();
      block.lines = {{L""}, {L"------" + CaptionName(group.caption) + L"------"}};
      for (const auto& leaf : group.items) {
        const TMyTreeData& data = leaf.data;
        if (IsFolder(data)) folders[&data].block = blocks.size() - 1;
        if (!leaf.checked || cancel) continue;
        progress.ProcessMessages();
        if (cancel) break;
        ++counter;
        const std::wstring item = Describe(data);
        if (IsFolder(data)) {
          folders[&data].line = block.lines.size();
          block.lines.push_back({L"Deleted Folder " + item});
          continue;
        }
        show(item);
        progress.SetPosition(nodes > 0 ? 100 * counter / nodes : 0);
        platform_.system.SleepMs(kItemPauseMs);
        std::wstring line;
        DeletionOutcome outcome;
        // A default value (no name, but data) is a value: taking its whole
        // key would take whatever else the key holds.
        if (data.Kind == TreeDataKind::File) {
          outcome = guard_.DeleteSingleFile(data.FilePath);
          line = L"Deleted File ";
        } else if (data.ValueName.empty() && data.ValueData.empty()) {
          outcome = guard_.DeleteKey(data.Root, data.KeyPath, data.Is64BitView);
          line = L"Deleted Registry Key ";
        } else {
          outcome = guard_.DeleteValue(data.Root, data.KeyPath, data.ValueName, data.Is64BitView);
          line = L"Deleted Registry Value ";
        }
        if (handled(outcome)) {
          block.skipped.push_back(SkippedLine(outcome, item));
        } else {
          block.lines.push_back({line + item});
        }
      }
    }
  }

  // Every folder of the tree, in tree order, checked or not.
  for (const auto& root : roots) {
    for (const auto& group : root.groups) {
      for (const auto& leaf : group.items) {
        if (cancel) break;
        if (!IsFolder(leaf.data)) continue;
        progress.ProcessMessages();
        if (cancel) break;
        show(leaf.data.FilePath);
        const DeletionOutcome outcome = guard_.DeleteFolderTree(leaf.data.FilePath);
        if (!handled(outcome)) continue;
        const FolderPlace& place = folders[&leaf.data];
        LogBlock& block = blocks[place.block];
        if (place.line < block.lines.size()) block.lines[place.line].dropped = true;
        block.skipped.push_back(SkippedLine(outcome, leaf.data.FilePath));
      }
    }
  }

  for (const LogBlock& block : blocks) {
    for (const LogLine& line : block.lines)
      if (!line.dropped) result.logLines.push_back(line.text);
    result.logLines.insert(result.logLines.end(), block.skipped.begin(), block.skipped.end());
  }
  result.cancelled = cancel;
  if (!result.cancelled) result.logFile = WriteUninstallLog(platform_, result.logLines);
  return result;
}

}  // namespace varnel
