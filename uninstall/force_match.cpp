#include "uninstall/force_match.h"

#include "core/file_version.h"
#include "core/safe_folder.h"
#include "core/shortcut.h"
#include "base/text.h"
#include "inventory/software_queries.h"
#include "uninstall/uninstall_sequence.h"

namespace varnel {

namespace {

constexpr int kProductNameField = 8;

std::wstring CaptionOf(const TSoftInfo& info) {
  return info.Name + (info.Is64BitView ? L"(x64)" : L"");
}

int IndexOf(const std::wstring& text) {
  try {
    std::size_t used = 0;
    const int value = std::stoi(text, &used);
    return used == text.size() ? value : -1;
  } catch (...) {
    return -1;
  }
}

}  // namespace

ForceMatch::ForceMatch(const Platform& platform) : platform_(platform) {}

void ForceMatch::Clear() {
  file_.clear();
  name_.clear();
  rows_.clear();
}

bool ForceMatch::ChooseFile(const std::wstring& path) {
  std::wstring file = path;
  // ".ink" is taken on purpose: shortcuts reach us misspelt that way.
  if (text::EndsWithText(file, L".lnk") || text::EndsWithText(file, L".ink"))
    file = GetShortcutTarget(platform_.files, platform_.system, file);
  if (file.empty() || !platform_.files.FileExists(file)) return false;
  // Forced mode makes the file's folder the program's folder: the desktop or
  // the Windows folder must never become one.
  if (!IsSafeFolder(platform_, file) || !IsSafeFolder(platform_, text::ExtractFilePath(file)))
    return false;
  file_ = file;
  MatchFile();
  return true;
}

void ForceMatch::MatchFile() {
  static const SoftList kNone;
  Fill(FindSoftwareByFolder(platform_, software_ ? *software_ : kNone, file_));
  if (!rows_.empty()) {
    name_ = software_->at(rows_.front().index)->Name;
    return;
  }
  name_ = GetFileVersionText(platform_.system, file_, kProductNameField);
  if (name_.empty() || text::SameText(name_, L"Unknown")) name_ = UnknownText;
}

void ForceMatch::SearchByName(const std::wstring& text) {
  static const SoftList kNone;
  Fill(FindSoftwareByName(software_ ? *software_ : kNone, text));
}

void ForceMatch::Fill(const std::vector<std::wstring>& indexes) {
  rows_.clear();
  if (!software_) return;
  for (const std::wstring& text : indexes) {
    const int index = IndexOf(text);
    TSoftInfo info;
    // The first program of the list is never offered here; that stays so.
    if (index <= 0 || !GetSoftwareRecord(*software_, index, info)) continue;
    ForceRow row;
    row.index = index;
    row.caption = CaptionOf(info);
    row.size = info.SizeText;
    row.installDate = info.InstallDateText;
    row.image = info.ImageIndex;
    rows_.push_back(std::move(row));
  }
}

std::optional<ForceHandover> ForceMatch::Next(int selectedRow) const {
  ForceHandover handover;
  const int row = rows_.size() == 1 ? 0 : selectedRow;
  if (row >= 0 && row < static_cast<int>(rows_.size())) {
    // The list may have been rebuilt since the rows were filled: an index
    // that now names another program must not be uninstalled.
    const TSoftInfo* record = RecordOf(row);
    if (!record || CaptionOf(*record) != rows_[row].caption) return std::nullopt;
    handover.jobs.push_back(std::to_wstring(rows_[row].index));
  }
  if (!handover.jobs.empty()) {
    handover.mode = JobMode::Uninstall;
    return handover;
  }
  if (file_.empty()) return std::nullopt;
  handover.jobs.push_back(file_);
  handover.mode = JobMode::Forced;
  return handover;
}

const TSoftInfo* ForceMatch::RecordOf(int row) const {
  if (!software_ || row < 0 || row >= static_cast<int>(rows_.size())) return nullptr;
  const int index = rows_[row].index;
  return index < static_cast<int>(software_->size()) ? software_->at(index).get() : nullptr;
}

}  // namespace varnel
