#include "ui/language.h"

#include <utility>

#include "core/app_frame.h"
#include "base/text.h"

namespace varnel {

namespace {

constexpr std::wstring_view kFallback = L"English";

// The part of a stored line before its first "=", or the whole bare line.
std::wstring_view KeyOf(std::wstring_view line) {
  return line.substr(0, line.find(L'='));
}

}  // namespace

void HashedLines::Assign(std::vector<std::wstring> lines) {
  lines_ = std::move(lines);
  first_.clear();
  for (std::size_t i = 0; i < lines_.size(); ++i)
    if (lines_[i].find(L'=') != std::wstring::npos)
      first_.try_emplace(text::Upper(KeyOf(lines_[i])), i);
}

void HashedLines::Clear() {
  lines_.clear();
  first_.clear();
}

bool HashedLines::Contains(std::wstring_view key) const {
  return first_.contains(text::Upper(key));
}

std::wstring HashedLines::Value(std::wstring_view key, std::wstring_view defaultValue) const {
  const auto it = first_.find(text::Upper(key));
  if (it == first_.end()) return std::wstring(defaultValue);
  const std::wstring& line = lines_[it->second];
  return line.substr(line.find(L'=') + 1);
}

TLanguage::TLanguage(const Platform& platform, std::wstring_view prefix,
                     std::wstring_view folder)
    : Prefix(prefix), Folder(text::ExcludeTrailingBackslash(folder)), platform_(platform) {
  // An empty folder would turn the pattern into the root of the current drive.
  if (Folder.empty()) return;
  std::vector<FindEntry> entries;
  if (!platform_.files.FindEntries(Folder + L"\\*.lng", entries)) return;
  for (const FindEntry& entry : entries) {
    // The pattern also matches through 8.3 aliases ("x.lngx" as "X~1.LNG").
    if ((entry.attributes & FileAttr::Directory) || !text::EndsWithText(entry.name, L".lng"))
      continue;
    const std::wstring base = entry.name.substr(0, entry.name.size() - 4);
    Files.push_back(base);
    Index = static_cast<int>(Files.size()) - 1;
    SetLanguage(base);
    DisplayNames.push_back(Ini.ReadString(L"Main", L"DisplayName", base));
  }
}

std::wstring TLanguage::ReadLanguageChoice() const {
  const TAppFrame frame(platform_);
  if (frame.UserAppData.empty()) return std::wstring(kFallback);
  TExtIniFile choice;
  choice.LoadFromFile(platform_, frame.UserAppData + L"\\Varnel\\Brightdeck V4\\Main.ini");
  return choice.ReadString(L"Main", L"Language", kFallback);
}

bool TLanguage::SetLanguage(std::wstring_view name) {
  const std::wstring_view chosen = Available(name) ? name : kFallback;
  if (!Available(chosen)) return false;
  Index = IndexOf(chosen);
  Ini.LoadFromFile(platform_, PathOf(chosen));
  Messages.Assign(Ini.ReadSectionValues(Prefix + L"_M"));
  return true;
}

void TLanguage::Translate(ITranslatable& form) const {
  const std::wstring formName = form.Name();
  if (formName.empty()) return;
  const std::wstring section = Prefix + L"_" + formName;
  const std::wstring formKey = formName + L".Caption";
  if (Ini.ValueExists(section, formKey)) form.SetText(Ini.ReadString(section, formKey, {}));

  for (ITranslatable* component : form.Components()) {
    if (!component) continue;
    const ComponentKind kind = component->Kind();
    if (kind == ComponentKind::ReportPart) {
      Translate(*component);
      continue;
    }
    const std::wstring name = component->Name();
    if (name.empty()) continue;
    switch (kind) {
      case ComponentKind::Label:
      case ComponentKind::Button:
      case ComponentKind::GroupBox:
      case ComponentKind::CheckBox:
      case ComponentKind::RadioButton:
      case ComponentKind::MenuItem:
      case ComponentKind::ToolButton:
      case ComponentKind::SpeedButton:
      case ComponentKind::TabSheet:
        component->SetText(Ini.ReadString(section, name + L".Caption", component->Text()));
        break;
      case ComponentKind::ComboBox:
      case ComponentKind::TreeView:
      case ComponentKind::ListView: {
        const wchar_t* list = kind == ComponentKind::ListView ? L".Columns[" : L".Items[";
        const std::size_t count = component->ItemCount();
        for (std::size_t n = 0; n < count; ++n) {
          const std::wstring key = name + list + std::to_wstring(n) + L"].Caption";
          component->SetItemText(n, Ini.ReadString(section, key, component->ItemText(n)));
        }
        break;
      }
      default:
        break;
    }
  }
}

std::wstring TLanguage::ReadString(std::wstring_view section, std::wstring_view key,
                                   std::wstring_view defaultValue) const {
  return Ini.ReadString(section, key, defaultValue);
}

int TLanguage::IndexOf(std::wstring_view name) const {
  for (std::size_t i = 0; i < Files.size(); ++i)
    if (text::SameText(Files[i], name)) return static_cast<int>(i);
  return -1;
}

std::wstring TLanguage::PathOf(std::wstring_view name) const {
  return Folder + L"\\" + std::wstring(name) + L".lng";
}

bool TLanguage::Available(std::wstring_view name) const {
  return IndexOf(name) >= 0 && platform_.files.FileExists(PathOf(name));
}

std::wstring LanguageFolder(ISystem& system) {
  return QueryAppFolder(system) + L"Toolbox_Language";
}

}  // namespace varnel
