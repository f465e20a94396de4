#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "controls/list_view.h"
#include "controls/menu.h"
#include "ui/language.h"

namespace varnel::forms {

// A window as the language table sees it: its caption and the texts of the
// controls it owns, by their layout names.
class FormTexts : public ITranslatable {
 public:
  FormTexts(std::wstring name, HWND form) : name_(std::move(name)), form_(form) {}

  // Controls whose text is their window text (labels, buttons).
  void AddWindow(std::wstring name, ComponentKind kind, HWND control);
  void AddMenuItem(std::wstring name, controls::PopupMenu& menu, UINT item, bool byPosition);
  void AddListColumns(std::wstring name, controls::ListView list, std::size_t count);

  // The section the texts live in, prefix included.
  std::wstring Section() const { return L"Uninstaller_" + name_; }
  // Gives every control its built-in English text from the catalog.
  void ApplyDefaults();

  std::wstring Name() const override { return name_; }
  ComponentKind Kind() const override { return ComponentKind::Form; }
  std::wstring Text() const override;
  void SetText(std::wstring_view text) override;
  std::vector<ITranslatable*> Components() const override;

 private:
  std::wstring name_;
  HWND form_;
  std::vector<std::unique_ptr<ITranslatable>> components_;
};

// Builds the window's language table (the user's choice from the language
// folder beside the program), translates `texts` and returns the table for
// the window's message look-ups.
std::unique_ptr<TLanguage> TranslateForm(const Platform& platform, FormTexts& texts);

}  // namespace varnel::forms
