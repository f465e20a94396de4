#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace varnel {

enum class ComponentKind {
  Form,
  Label,
  Button,
  GroupBox,
  CheckBox,
  RadioButton,
  MenuItem,
  ToolButton,
  SpeedButton,
  TabSheet,
  ComboBox,
  TreeView,
  ListView,
  ReportPart,  // a report tab or report content: translated as a form of its own
  Other,
};

// What the language table needs of a window and its controls; the windows
// implement it, so the table stays free of the windowing API.
class ITranslatable {
 public:
  virtual ~ITranslatable() = default;

  virtual std::wstring Name() const = 0;
  virtual ComponentKind Kind() const = 0;
  // The caption of a form, menu item or button, the text of the others.
  virtual std::wstring Text() const = 0;
  virtual void SetText(std::wstring_view text) = 0;

  // Combo items, tree nodes in node-index order, or list columns.
  virtual std::size_t ItemCount() const { return 0; }
  virtual std::wstring ItemText(std::size_t) const { return {}; }
  virtual void SetItemText(std::size_t, std::wstring_view) {}

  // The components a form or report part owns, not their children's.
  virtual std::vector<ITranslatable*> Components() const { return {}; }
};

}  // namespace varnel
