#include "ui/main_window_state.h"

#include "base/text.h"

namespace varnel {

bool MainWindowState::ChooseCategory(int button) {
  const int filter = CategoryFilter(button);
  if (filter < 0) return false;
  category_ = button;
  if (filter == filter_) return false;
  filter_ = filter;
  return true;
}

bool MainWindowState::ClickColumn(int column) {
  if (column < 0 || column >= 3) return false;
  sortColumn_ = column;
  directions_[column] = !directions_[column];
  return true;
}

bool MainWindowState::ToggleBatch() {
  batch_ = batch_ == 0 ? 1 : 0;
  return batch_ == 1;
}

bool IsSearchText(std::wstring_view text, std::wstring_view placeholder) {
  const std::wstring trimmed = text::Trim(text);
  return !trimmed.empty() && !text::SameText(trimmed, placeholder);
}

SearchBoxLook SearchBoxOnEnter(std::wstring_view text, std::wstring_view placeholder) {
  SearchBoxLook look;
  look.active = true;
  look.boxColour = SearchColour::ActiveBox;
  if (IsSearchText(text, placeholder)) {
    look.clearButton = true;
    return look;
  }
  look.keepText = false;
  look.fontColour = SearchColour::Black;
  return look;
}

SearchBoxLook SearchBoxOnExit(std::wstring_view text, std::wstring_view placeholder) {
  SearchBoxLook look;
  if (IsSearchText(text, placeholder)) {
    look.active = true;
    look.clearButton = true;
    look.boxColour = SearchColour::ActiveBox;
    return look;
  }
  look.keepText = false;
  look.text = placeholder;
  look.fontColour = SearchColour::IdleFont;
  look.boxColour = SearchColour::IdleBox;
  return look;
}

SearchBoxLook SearchBoxOnKeyUp(std::wstring_view text, unsigned key) {
  SearchBoxLook look;
  look.active = true;
  look.boxColour = SearchColour::ActiveBox;
  if (key == 27) {
    look.keepText = false;
    return look;
  }
  look.clearButton = !text.empty();
  return look;
}

std::wstring FormatCount(std::wstring_view format, int count) {
  return text::ReplaceAll(format, L"%d", std::to_wstring(count));
}

}  // namespace varnel
