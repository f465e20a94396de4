#include "ui/forms/form_texts.h"

#include "controls/window.h"
#include "ui/key_hints.h"
#include "ui/language_catalog.h"

namespace varnel::forms {

namespace {

class WindowText : public ITranslatable {
 public:
  WindowText(std::wstring name, ComponentKind kind, HWND control)
      : name_(std::move(name)), kind_(kind), control_(control) {}
  std::wstring Name() const override { return name_; }
  ComponentKind Kind() const override { return kind_; }
  std::wstring Text() const override { return control_.Text(); }
  void SetText(std::wstring_view text) override { control_.SetText(text); }

 private:
  std::wstring name_;
  ComponentKind kind_;
  controls::Window control_;
};

class MenuItemText : public ITranslatable {
 public:
  MenuItemText(std::wstring name, controls::PopupMenu& menu, UINT item, bool byPosition)
      : name_(std::move(name)), menu_(menu), item_(item), byPosition_(byPosition) {}
  std::wstring Name() const override { return name_; }
  ComponentKind Kind() const override { return ComponentKind::MenuItem; }
  std::wstring Text() const override { return menu_.Text(item_, byPosition_); }
  void SetText(std::wstring_view text) override {
    menu_.SetText(item_, KeepShortcut(Text(), text), byPosition_);
  }

 private:
  std::wstring name_;
  controls::PopupMenu& menu_;
  UINT item_;
  bool byPosition_;
};

class ListColumnsText : public ITranslatable {
 public:
  ListColumnsText(std::wstring name, controls::ListView list, std::size_t count)
      : name_(std::move(name)), list_(list), count_(count) {}
  std::wstring Name() const override { return name_; }
  ComponentKind Kind() const override { return ComponentKind::ListView; }
  std::wstring Text() const override { return {}; }
  void SetText(std::wstring_view) override {}
  std::size_t ItemCount() const override { return count_; }
  std::wstring ItemText(std::size_t i) const override {
    return list_.ColumnText(static_cast<int>(i));
  }
  void SetItemText(std::size_t i, std::wstring_view text) override {
    list_.SetColumnText(static_cast<int>(i), text);
  }

 private:
  std::wstring name_;
  controls::ListView list_;
  std::size_t count_;
};

}  // namespace

void FormTexts::AddWindow(std::wstring name, ComponentKind kind, HWND control) {
  components_.push_back(std::make_unique<WindowText>(std::move(name), kind, control));
}

void FormTexts::AddMenuItem(std::wstring name, controls::PopupMenu& menu, UINT item,
                             bool byPosition) {
  components_.push_back(std::make_unique<MenuItemText>(std::move(name), menu, item, byPosition));
}

void FormTexts::AddListColumns(std::wstring name, controls::ListView list, std::size_t count) {
  components_.push_back(std::make_unique<ListColumnsText>(std::move(name), list, count));
}

void FormTexts::ApplyDefaults() {
  const std::wstring section = Section();
  SetText(DefaultText(section, name_ + L".Caption"));
  for (const auto& c : components_) {
    if (c->Kind() == ComponentKind::ListView) {
      for (std::size_t n = 0; n < c->ItemCount(); ++n)
        c->SetItemText(n, DefaultText(section, c->Name() + L".Columns[" + std::to_wstring(n) +
                                                   L"].Caption"));
    } else {
      const std::wstring text = DefaultText(section, c->Name() + L".Caption");
      if (!text.empty()) c->SetText(text);
    }
  }
}

std::wstring FormTexts::Text() const { return controls::Window(form_).Text(); }

void FormTexts::SetText(std::wstring_view text) { controls::Window(form_).SetText(text); }

std::vector<ITranslatable*> FormTexts::Components() const {
  std::vector<ITranslatable*> out;
  for (const auto& c : components_) out.push_back(c.get());
  return out;
}

std::unique_ptr<TLanguage> TranslateForm(const Platform& platform, FormTexts& texts) {
  texts.ApplyDefaults();
  auto language =
      std::make_unique<TLanguage>(platform, L"Uninstaller", LanguageFolder(platform.system));
  language->SetLanguage(language->ReadLanguageChoice());
  language->Translate(texts);
  return language;
}

}  // namespace varnel::forms
