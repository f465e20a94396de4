#include "ui/language.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "base/text.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

using Lines = std::vector<std::wstring>;

// A window or control that records what the language table set.
class FakeControl : public ITranslatable {
 public:
  FakeControl(std::wstring name, ComponentKind kind, std::wstring text, Lines items = {})
      : text(std::move(text)), items(std::move(items)), name_(std::move(name)), kind_(kind) {}

  std::wstring Name() const override { return name_; }
  ComponentKind Kind() const override { return kind_; }
  std::wstring Text() const override { return text; }
  void SetText(std::wstring_view t) override {
    text = t;
    ++textSets;
  }
  std::size_t ItemCount() const override { return items.size(); }
  std::wstring ItemText(std::size_t i) const override { return items.at(i); }
  void SetItemText(std::size_t i, std::wstring_view t) override {
    items.at(i) = t;
    itemsSet.push_back(i);
  }
  std::vector<ITranslatable*> Components() const override {
    std::vector<ITranslatable*> out;
    for (const auto& c : children) out.push_back(c.get());
    return out;
  }
  FakeControl& Add(std::wstring name, ComponentKind kind, std::wstring t, Lines itemTexts = {}) {
    children.push_back(std::make_unique<FakeControl>(std::move(name), kind, std::move(t),
                                                     std::move(itemTexts)));
    return *children.back();
  }

  std::wstring text;
  Lines items;
  int textSets = 0;
  std::vector<std::size_t> itemsSet;
  std::vector<std::unique_ptr<FakeControl>> children;

 private:
  std::wstring name_;
  ComponentKind kind_;
};

constexpr const wchar_t* kFolder = L"C:\\Program Files\\Varnel\\Toolbox_Language";

class LanguageTest : public testing::Test {
 protected:
  void AddLanguage(std::wstring_view fileName, std::wstring_view content) {
    m.files.AddFile(std::wstring(kFolder) + L"\\" + std::wstring(fileName),
                    "\xEF\xBB\xBF" + text::ToUtf8(content));
  }
  void AddThreeLanguages() {
    AddLanguage(L"English.lng", L"[Main]\nDisplayName=English\n[Uninstaller_M]\nM_Yes=Yes\n");
    AddLanguage(L"Deutsch.lng",
                L"[Main]\nDisplayName = Deutsch (German)\n[Uninstaller_M]\nM_Yes=Ja\n"
                L"m_no = Nein\nbare\n[Uninstaller_Form_M]\nM_Sure=Sicher?\n");
    AddLanguage(L"Zulu.lng", L"[Uninstaller_M]\nM_Yes=Yebo\n");
  }
  mem::MemoryPlatform m;
};

TEST_F(LanguageTest, ScanListsTheFolderInFileSystemOrderAndKeepsTheLastLoaded) {
  AddThreeLanguages();
  m.files.AddFolder(std::wstring(kFolder) + L"\\Folder.lng");
  m.files.AddFile(std::wstring(kFolder) + L"\\readme.txt");
  // Matched by the pattern through its 8.3 alias only.
  m.files.AddFile(std::wstring(kFolder) + L"\\Extra.lngx");
  m.files.SetShortName(std::wstring(kFolder) + L"\\Extra.lngx", L"EXTRA~1.LNG");

  TLanguage language(m.Get(), L"Uninstaller", std::wstring(kFolder) + L"\\");
  EXPECT_EQ(language.Folder, kFolder);
  // The memory file system lists names in upper-case order, as NTFS does.
  EXPECT_EQ(language.Files, (Lines{L"Deutsch", L"English", L"Zulu"}));
  EXPECT_EQ(language.DisplayNames, (Lines{L"Deutsch (German)", L"English", L"Zulu"}));
  EXPECT_EQ(language.Index, 2);
  EXPECT_EQ(language.Messages.Lines(), Lines{L"M_Yes=Yebo"});
}

TEST_F(LanguageTest, SetLanguageLoadsByNameAndFallsBackToEnglish) {
  AddThreeLanguages();
  TLanguage language(m.Get(), L"Uninstaller", kFolder);
  EXPECT_TRUE(language.SetLanguage(L"DEUTSCH"));
  EXPECT_EQ(language.Index, 0);
  EXPECT_EQ(language.Messages.Lines(), (Lines{L"M_Yes=Ja", L"m_no=Nein", L"bare"}));
  EXPECT_EQ(language.Messages.Value(L"M_NO", L"No"), L"Nein");
  EXPECT_FALSE(language.Messages.Contains(L"bare"));
  EXPECT_EQ(language.ReadString(L"Uninstaller_Form_M", L"M_Sure", L"Sure?"), L"Sicher?");

  EXPECT_TRUE(language.SetLanguage(L"Klingon"));
  EXPECT_EQ(language.Index, 1);
  EXPECT_EQ(language.ReadString(L"Uninstaller_Form_M", L"M_Sure", L"Sure?"), L"Sure?");
  // Deleted after the scan: still listed, but English is loaded instead.
  ASSERT_TRUE(language.SetLanguage(L"Zulu"));
  ASSERT_TRUE(m.files.RemoveFile(std::wstring(kFolder) + L"\\Zulu.lng"));
  EXPECT_TRUE(language.SetLanguage(L"Zulu"));
  EXPECT_EQ(language.Index, 1);
  EXPECT_EQ(language.Messages.Value(L"M_Yes", L""), L"Yes");

  // Without English an unknown choice changes nothing.
  ASSERT_TRUE(language.SetLanguage(L"Deutsch"));
  ASSERT_TRUE(m.files.RemoveFile(std::wstring(kFolder) + L"\\English.lng"));
  EXPECT_FALSE(language.SetLanguage(L"Klingon"));
  EXPECT_EQ(language.Index, 0);
  EXPECT_EQ(language.Messages.Value(L"M_Yes", L""), L"Ja");
}

TEST_F(LanguageTest, NoFolderMeansNoLanguageAndBuiltInTexts) {
  TLanguage language(m.Get(), L"Uninstaller", L"C:\\Nowhere");
  EXPECT_TRUE(language.Files.empty() && language.DisplayNames.empty());
  EXPECT_EQ(language.Index, -1);
  EXPECT_FALSE(language.SetLanguage(language.ReadLanguageChoice()));
  FakeControl form(L"Form", ComponentKind::Form, L"Uninstaller");
  FakeControl& combo = form.Add(L"Combo", ComponentKind::ComboBox, L"", {L"One", L"Two"});
  language.Translate(form);
  EXPECT_EQ(form.text, L"Uninstaller");
  EXPECT_EQ(combo.items, (Lines{L"One", L"Two"}));
}

TEST_F(LanguageTest, AWindowLoadsTheSuitesChoiceFromBesideTheProgram) {
  AddThreeLanguages();
  AddLanguage(L"Deutsch.lng", L"[Uninstaller_Main]\nMain.Caption=Deinstallieren\n");
  TLanguage language(m.Get(), L"Uninstaller", LanguageFolder(m.system));
  EXPECT_EQ(language.Folder, kFolder);
  EXPECT_EQ(language.ReadLanguageChoice(), L"English");

  // The suite may keep its settings in UTF-16.
  std::string utf16 = "\xFF\xFE";
  for (const wchar_t c : std::wstring(L"[Main]\r\nLanguage = deutsch\r\n"))
    utf16 += {static_cast<char>(c), '\0'};
  m.files.AddFile(L"C:\\Users\\test\\AppData\\Roaming\\Varnel\\Brightdeck V4\\Main.ini", utf16);
  EXPECT_EQ(language.ReadLanguageChoice(), L"deutsch");
  ASSERT_TRUE(language.SetLanguage(language.ReadLanguageChoice()));
  FakeControl form(L"Main", ComponentKind::Form, L"Uninstaller");
  language.Translate(form);
  EXPECT_EQ(form.text, L"Deinstallieren");

  m.faults.Set(mem::Fault::SpecialFolder);
  EXPECT_EQ(language.ReadLanguageChoice(), L"English");
}

TEST_F(LanguageTest, TranslateSetsEachKindFromItsFormsSection) {
  const std::vector<std::pair<std::wstring, ComponentKind>> simple = {
      {L"Label", ComponentKind::Label},       {L"Button", ComponentKind::Button},
      {L"Group", ComponentKind::GroupBox},    {L"Check", ComponentKind::CheckBox},
      {L"Radio", ComponentKind::RadioButton}, {L"Menu", ComponentKind::MenuItem},
      {L"Tool", ComponentKind::ToolButton},   {L"Speed", ComponentKind::SpeedButton},
      {L"Sheet", ComponentKind::TabSheet}};
  std::wstring file = L"[Uninstaller_Scan]\nScan.Caption=Leftovers\n";
  for (const auto& [name, kind] : simple) file += name + L".Caption=" + name + L"!\n";
  AddLanguage(L"English.lng",
              file + L"Image.Caption=never\n.Caption=nameless\n"
                     L"Combo.Items[0].Caption=Zero\nCombo.Items[1].Caption=One\n"
                     L"Combo.Items[2].Caption=Two\nCombo.Items[3].Caption=Three\n"
                     L"Tree.Items[01].Caption=padded\nTree.Items[1].Caption=Node one\n"
                     L"List.Items[0].Caption=not a column\nList.Columns[1].Caption=Size\n"
                     L"Report_Label.Caption=not here\n"
                     L"[Uninstaller_Report]\nReport.Caption=Report\n"
                     L"Report_Label.Caption=In the report\n");
  TLanguage language(m.Get(), L"Uninstaller", kFolder);

  FakeControl form(L"Scan", ComponentKind::Form, L"Form");
  for (const auto& [name, kind] : simple) form.Add(name, kind, L"old");
  FakeControl& image = form.Add(L"Image", ComponentKind::Other, L"old");
  FakeControl& missing = form.Add(L"Missing", ComponentKind::Button, L"Keep me");
  FakeControl& unnamed = form.Add(L"", ComponentKind::Label, L"unnamed");
  FakeControl& combo = form.Add(L"Combo", ComponentKind::ComboBox, L"", {L"a", L"b", L"c"});
  FakeControl& tree = form.Add(L"Tree", ComponentKind::TreeView, L"", {L"n0", L"n1"});
  FakeControl& list = form.Add(L"List", ComponentKind::ListView, L"", {L"Name", L"Bytes"});
  FakeControl& report = form.Add(L"Report", ComponentKind::ReportPart, L"r");
  FakeControl& inReport = report.Add(L"Report_Label", ComponentKind::Label, L"r-label");

  language.Translate(form);
  EXPECT_EQ(form.text, L"Leftovers");
  for (std::size_t i = 0; i < simple.size(); ++i)
    EXPECT_EQ(form.children[i]->text, simple[i].first + L"!");
  EXPECT_EQ(image.textSets, 0);
  EXPECT_EQ(missing.text, L"Keep me");
  EXPECT_EQ(unnamed.text, L"unnamed");
  // Exactly the three items the combo has; no key beyond them.
  EXPECT_EQ(combo.items, (Lines{L"Zero", L"One", L"Two"}));
  EXPECT_EQ(combo.itemsSet, (std::vector<std::size_t>{0, 1, 2}));
  EXPECT_EQ(tree.items, (Lines{L"n0", L"Node one"}));
  EXPECT_EQ(list.items, (Lines{L"Name", L"Size"}));
  // The report part is a form of its own: its section, not the owner's.
  EXPECT_EQ(report.text, L"Report");
  EXPECT_EQ(inReport.text, L"In the report");
}

TEST_F(LanguageTest, CaptionOnlyWhenItsKeyExistsAndNothingForAnUnnamedForm) {
  AddLanguage(L"English.lng",
              L"[Uninstaller_Main]\nOK.Caption=Fine\nMain.Caption\n"
              L"[Uninstaller_]\n.Caption=Nameless\nOK.Caption=Wrong\n"
              L"[Uninstaller_Part]\nPart.Caption=\n");
  TLanguage language(m.Get(), L"Uninstaller", kFolder);

  // "Main.Caption" is a bare line, not a key: the caption stays.
  FakeControl form(L"Main", ComponentKind::Form, L"Built-in");
  FakeControl& ok = form.Add(L"OK", ComponentKind::Button, L"OK");
  FakeControl& part = form.Add(L"Part", ComponentKind::ReportPart, L"Part text");
  language.Translate(form);
  EXPECT_EQ(form.textSets, 0);
  EXPECT_EQ(ok.text, L"Fine");
  EXPECT_EQ(part.text, L"");  // an existing key with an empty value

  FakeControl nameless(L"", ComponentKind::Form, L"Built-in");
  FakeControl& child = nameless.Add(L"OK", ComponentKind::Button, L"OK");
  language.Translate(nameless);
  EXPECT_EQ(nameless.textSets + child.textSets, 0);
}

}  // namespace
}  // namespace varnel
