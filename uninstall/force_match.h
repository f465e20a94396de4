#pragma once

#include <optional>
#include <string>
#include <vector>

#include "inventory/soft_list.h"
#include "platform/platform.h"

namespace varnel {

// One program the forced-uninstall window lists.
struct ForceRow {
  int index = -1;        // the record's index in the software list
  std::wstring caption;  // the name, "(x64)" after a 64-bit entry
  std::wstring size;
  std::wstring installDate;
  int image = 0;
};

// What Next hands to the uninstalling window.
struct ForceHandover {
  std::vector<std::wstring> jobs;
  int mode = 0;  // JobMode
};

// The forced-uninstall window without the window: the file chosen, the
// programs it belongs to (or found by name), and what Next hands over.
class ForceMatch {
 public:
  explicit ForceMatch(const Platform& platform);

  // Names a file without a product name; the language table supplies it.
  std::wstring UnknownText = L"Unknown";

  // The list the indexes point into; it must outlive the matching.
  void SetSoftware(const SoftList* list) { software_ = list; }
  const SoftList* Software() const { return software_; }
  // Forgets the file, the name and the rows (the window opens afresh).
  void Clear();

  // A browsed or dropped file: a ".lnk" or ".ink" shortcut stands for its
  // target. False, changing nothing, when the file does not exist or lies in
  // a folder no program can own; otherwise the file is taken and matched.
  bool ChooseFile(const std::wstring& path);
  // The programs installed in the chosen file's folder; the product name (or
  // the unknown text) when there are none.
  void MatchFile();
  // The programs whose name holds `text`.
  void SearchByName(const std::wstring& text);

  const std::wstring& File() const { return file_; }
  const std::wstring& Name() const { return name_; }
  const std::vector<ForceRow>& Rows() const { return rows_; }
  // The list shows, the drop hint hides.
  bool ListShown() const { return !rows_.empty(); }

  // The one listed program, or the selected one of several, is uninstalled
  // as usual; otherwise the file itself is (forced mode). nullopt when there
  // is neither a program nor a file, or the row's record changed since.
  std::optional<ForceHandover> Next(int selectedRow) const;
  // The row's record; nullptr for a row outside the list.
  const TSoftInfo* RecordOf(int row) const;

 private:
  void Fill(const std::vector<std::wstring>& indexes);

  Platform platform_;
  const SoftList* software_ = nullptr;
  std::wstring file_;
  std::wstring name_;
  std::vector<ForceRow> rows_;
};

}  // namespace varnel
