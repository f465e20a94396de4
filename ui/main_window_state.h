#pragma once

#include <array>
#include <string>
#include <string_view>

#include "ui/software_rows.h"

namespace varnel {

// What the main window remembers between clicks: category, filter, sort
// column and the per-column direction flags, batch mode.
class MainWindowState {
 public:
  int Category() const { return category_; }
  int Filter() const { return filter_; }
  int SortColumn() const { return sortColumn_; }
  bool Direction(int column) const { return column >= 0 && column < 3 && directions_[column]; }
  bool BatchMode() const { return batch_ == 1; }

  // True when the list must be refilled for `button` (0..5): the mapped
  // filter differs from the current one, which then becomes current.
  bool ChooseCategory(int button);
  // After a refresh the next category choice always refills.
  void ResetFilter() { filter_ = ListFilter::All; }
  // Makes `column` the sort column and inverts its flag; false for a column
  // outside 0..2.
  bool ClickColumn(int column);
  // Toggles batch mode; true when it became on (every row gets unchecked).
  bool ToggleBatch();

 private:
  int category_ = 0;
  int filter_ = ListFilter::All;
  int sortColumn_ = 0;
  std::array<bool, 3> directions_{true, true, true};
  int batch_ = 0;
};

// The search box's look: the placeholder text stands in the box itself
// while it is idle. Colours are 0x00BBGGRR.
struct SearchBoxLook {
  std::wstring text;
  bool keepText = true;  // false: `text` replaces the box's text
  bool active = false;   // the frame pictures' state
  bool clearButton = false;
  std::uint32_t fontColour = 0;
  std::uint32_t boxColour = 0;
};

namespace SearchColour {
constexpr std::uint32_t ActiveBox = 12368815;
constexpr std::uint32_t IdleFont = 10987426;
constexpr std::uint32_t IdleBox = 7302757;
constexpr std::uint32_t Black = 0;
}  // namespace SearchColour

// A real search: trimmed text that is not empty and not the placeholder.
bool IsSearchText(std::wstring_view text, std::wstring_view placeholder);
SearchBoxLook SearchBoxOnEnter(std::wstring_view text, std::wstring_view placeholder);
SearchBoxLook SearchBoxOnExit(std::wstring_view text, std::wstring_view placeholder);
// Escape empties the box; any other key shows the clear button exactly
// when the box is not empty. `text` is the box's text after the key.
SearchBoxLook SearchBoxOnKeyUp(std::wstring_view text, unsigned key);

// The first column's caption: `format` with "%d" replaced by the row count.
std::wstring FormatCount(std::wstring_view format, int count);

}  // namespace varnel
