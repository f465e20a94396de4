#include "ui/forms/force_uninstall_form.h"

#include <commdlg.h>
#include <shellapi.h>
#include <windowsx.h>

#include "controls/dpi.h"
#include "core/registry_editor.h"
#include "ui/forms/form_ids.h"
#include "ui/forms/uninstalling_form.h"
#include "ui/language_catalog.h"

namespace varnel::forms {

namespace {

namespace Id = ForceUninstallId;
constexpr wchar_t kFormName[] = L"ForceUninstall_Form";
constexpr wchar_t kMessages[] = L"ForceUninstall_Form";
constexpr int kColumns = 3;

}  // namespace

TForceUninstall_Form::TForceUninstall_Form(Application& app, HWND owner,
                                           TUninstalling_Form& uninstalling)
    : Form(app), uninstalling_(uninstalling), match_(app.Machine()) {
  const UINT dpi = controls::DpiOf(owner);
  if (!Create(kFormName, controls::Scale(560, dpi), controls::Scale(440, dpi), owner,
              WS_OVERLAPPEDWINDOW & ~(WS_MAXIMIZEBOX | WS_MINIMIZEBOX)))
    return;
  CreateControls();
  LoadTexts();
  ApplyDpi();
  DragAcceptFiles(hwnd_, TRUE);
}

TForceUninstall_Form::~TForceUninstall_Form() = default;

void TForceUninstall_Form::CreateControls() {
  using controls::CreateChild;
  title_.Attach(CreateChild(hwnd_, L"STATIC", L"Varnel Forced Uninstaller", SS_LEFT | SS_NOPREFIX,
                            Id::Title));
  subTitle_.Attach(CreateChild(hwnd_, L"STATIC",
                               L"Uninstall programs and clean all leftover items thoroughly.",
                               SS_LEFT | SS_NOPREFIX, Id::SubTitle));
  fileLabel_.Attach(
      CreateChild(hwnd_, L"STATIC", L"File full path:", SS_LEFT | SS_NOPREFIX, Id::FilePathLabel));
  // Read-only: only a path that passed the checks may be handed over.
  file_.Attach(CreateChild(hwnd_, L"EDIT", L"", ES_AUTOHSCROLL | ES_READONLY | WS_TABSTOP,
                           Id::FilePath, WS_EX_CLIENTEDGE));
  browse_.Attach(
      CreateChild(hwnd_, L"BUTTON", L"Browse...", BS_PUSHBUTTON | WS_TABSTOP, Id::Browse));
  nameLabel_.Attach(CreateChild(hwnd_, L"STATIC", L"Program's exact name:", SS_LEFT | SS_NOPREFIX,
                                Id::NameLabel));
  name_.Attach(CreateChild(hwnd_, L"EDIT", L"", ES_AUTOHSCROLL | WS_TABSTOP, Id::Name,
                           WS_EX_CLIENTEDGE));
  search_.Attach(CreateChild(hwnd_, L"BUTTON", L"Search", BS_PUSHBUTTON | WS_TABSTOP, Id::Search));
  list_.Attach(CreateChild(hwnd_, WC_LISTVIEWW, L"",
                           LVS_REPORT | LVS_SHOWSELALWAYS | LVS_SINGLESEL | LVS_SHAREIMAGELISTS |
                               WS_TABSTOP,
                           Id::List, WS_EX_CLIENTEDGE));
  list_.SetExtendedStyle(LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER,
                         LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
  list_.InsertColumn(0, L"Display Name", 260);
  list_.InsertColumn(1, L"Size", 90);
  list_.InsertColumn(2, L"Install Date", 110);
  list_.Show(false);
  hint_ = CreateChild(hwnd_, L"STATIC", L"", SS_ETCHEDFRAME, 0);
  dragInfo_.Attach(CreateChild(hwnd_, L"STATIC",
                               L"You can browse or drag and drop a file here to delete a file or "
                               L"uninstall the file related program. ",
                               SS_LEFT | SS_NOPREFIX, Id::DragInfo));
  nextInfo_.Attach(CreateChild(hwnd_, L"STATIC",
                               L" After you press the \"Next\" button, Varnel Uninstaller will "
                               L"perform the forced uninstall thoroughly.",
                               SS_LEFT | SS_NOPREFIX, Id::NextInfo));
  next_.Attach(CreateChild(hwnd_, L"BUTTON", L"Next>", BS_PUSHBUTTON | WS_TABSTOP | WS_GROUP,
                           Id::Next));
  cancel_.Attach(CreateChild(hwnd_, L"BUTTON", L"Cancel", BS_PUSHBUTTON | WS_TABSTOP, Id::Cancel));
  menu_.Add(Id::MenuUninstall, L"Uninstall");
  menu_.Add(Id::MenuOpenFolder, L"Open Folder");
  menu_.Add(Id::MenuViewEntry, L"View Entry");
}

void TForceUninstall_Form::LoadTexts() {
  texts_ = std::make_unique<FormTexts>(kFormName, hwnd_);
  FormTexts& t = *texts_;
  t.AddWindow(L"Label_Title", ComponentKind::Label, title_.Handle());
  t.AddWindow(L"Label_SubTitle", ComponentKind::Label, subTitle_.Handle());
  t.AddWindow(L"Label_FileFullPath", ComponentKind::Label, fileLabel_.Handle());
  t.AddWindow(L"Button_Browse", ComponentKind::Button, browse_.Handle());
  t.AddWindow(L"Label_ExactName", ComponentKind::Label, nameLabel_.Handle());
  t.AddWindow(L"Button_Serach", ComponentKind::Button, search_.Handle());
  t.AddListColumns(L"ListView_Search", list_, kColumns);
  t.AddWindow(L"Label_DragInfo", ComponentKind::Label, dragInfo_.Handle());
  t.AddWindow(L"Label_NextInfo", ComponentKind::Label, nextInfo_.Handle());
  t.AddWindow(L"Button_Uninstall", ComponentKind::Button, next_.Handle());
  t.AddWindow(L"Button_Cancel", ComponentKind::Button, cancel_.Handle());
  t.AddMenuItem(L"PM_FU_Uninstall", menu_, Id::MenuUninstall, false);
  t.AddMenuItem(L"PM_FU_OpenFolder", menu_, Id::MenuOpenFolder, false);
  t.AddMenuItem(L"PM_FU_ViewEntry", menu_, Id::MenuViewEntry, false);
  const auto language = TranslateForm(app_.Machine(), t);
  selectAgain_ = CatalogMessage(*language, kMessages, L"M_SelectAgain");
  match_.UnknownText = CatalogMessage(*language, kMessages, L"M_Unknown");
}

void TForceUninstall_Form::ApplyDpi() {
  const UINT dpi = controls::DpiOf(hwnd_);
  font_ = controls::MessageFont(dpi);
  LOGFONTW title{};
  GetObjectW(font_.get(), sizeof title, &title);
  title.lfHeight = title.lfHeight * 4 / 3;
  title.lfWeight = FW_BOLD;
  titleFont_.reset(CreateFontIndirectW(&title));
  title_.SetFont(titleFont_.get());
  for (HWND c : {subTitle_.Handle(), fileLabel_.Handle(), file_.Handle(), browse_.Handle(),
                 nameLabel_.Handle(), name_.Handle(), search_.Handle(), list_.Handle(),
                 dragInfo_.Handle(), nextInfo_.Handle(), next_.Handle(), cancel_.Handle()})
    controls::Window(c).SetFont(font_.get());
  list_.SetColumnWidth(0, controls::Scale(260, dpi));
  list_.SetColumnWidth(1, controls::Scale(90, dpi));
  list_.SetColumnWidth(2, controls::Scale(110, dpi));
  Layout();
}

void TForceUninstall_Form::Layout() {
  if (!cancel_) return;
  const UINT dpi = controls::DpiOf(hwnd_);
  auto s = [dpi](int v) { return controls::Scale(v, dpi); };
  RECT r;
  GetClientRect(hwnd_, &r);
  const int left = s(16), width = r.right - s(32);
  const int buttonW = s(96), rowH = s(24), gap = s(8);
  title_.Move(left, s(14), width, s(26));
  subTitle_.Move(left, s(42), width, s(20));
  const int fieldW = width - buttonW - gap;
  fileLabel_.Move(left, s(72), width, s(18));
  file_.Move(left, s(92), fieldW, rowH);
  browse_.Move(left + fieldW + gap, s(91), buttonW, s(26));
  nameLabel_.Move(left, s(124), width, s(18));
  name_.Move(left, s(144), fieldW, rowH);
  search_.Move(left + fieldW + gap, s(143), buttonW, s(26));
  const int buttonTop = r.bottom - s(44);
  const int panelTop = s(180), panelH = buttonTop - s(12) - panelTop;
  list_.Move(left, panelTop, width, panelH);
  controls::Window(hint_).Move(left, panelTop, width, panelH);
  dragInfo_.Move(left + s(12), panelTop + s(16), width - s(24), s(40));
  nextInfo_.Move(left + s(12), panelTop + s(60), width - s(24), s(40));
  cancel_.Move(r.right - s(16) - buttonW, buttonTop, buttonW, s(28));
  next_.Move(r.right - s(16) - 2 * buttonW - gap, buttonTop, buttonW, s(28));
}

void TForceUninstall_Form::SetSoftware(const SoftList* list, HIMAGELIST icons,
                                       std::function<void()> afterUninstall) {
  match_.SetSoftware(list);
  list_.SetImageList(icons, LVSIL_SMALL);
  afterUninstall_ = std::move(afterUninstall);
}

void TForceUninstall_Form::SetFile(const std::wstring& file) {
  match_.Clear();
  if (!file.empty() && !match_.ChooseFile(file)) {
    MessageBoxW(hwnd_, selectAgain_.c_str(), controls::Window(hwnd_).Text().c_str(),
                MB_OK | MB_ICONWARNING);
  }
  ShowMatch();
}

void TForceUninstall_Form::OnShow() { lastFocus_ = browse_.Handle(); }

void TForceUninstall_Form::ShowMatch() {
  file_.SetText(match_.File());
  name_.SetText(match_.Name());
  list_.SetRedraw(false);
  list_.DeleteAll();
  const auto& rows = match_.Rows();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const int item = list_.InsertItem(static_cast<int>(i), rows[i].caption, rows[i].image,
                                      static_cast<LPARAM>(i));
    LVITEMW sub{};
    std::wstring size = rows[i].size, date = rows[i].installDate;
    sub.iSubItem = 1;
    sub.pszText = size.data();
    SendMessageW(list_.Handle(), LVM_SETITEMTEXTW, item, reinterpret_cast<LPARAM>(&sub));
    sub.iSubItem = 2;
    sub.pszText = date.data();
    SendMessageW(list_.Handle(), LVM_SETITEMTEXTW, item, reinterpret_cast<LPARAM>(&sub));
  }
  list_.SetRedraw(true);
  list_.Invalidate();
  const bool shown = match_.ListShown();
  list_.Show(shown);
  for (HWND c : {hint_, dragInfo_.Handle(), nextInfo_.Handle()}) controls::Window(c).Show(!shown);
}

void TForceUninstall_Form::ChooseFile(const std::wstring& path) {
  if (!match_.ChooseFile(path)) {
    MessageBoxW(hwnd_, selectAgain_.c_str(), controls::Window(hwnd_).Text().c_str(),
                MB_OK | MB_ICONWARNING);
    return;
  }
  ShowMatch();
}

void TForceUninstall_Form::BrowseClick() {
  std::wstring buffer(32768, L'\0');
  OPENFILENAMEW dialog{};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = hwnd_;
  dialog.lpstrFilter = L"*.*\0*.*\0";
  dialog.nFilterIndex = 1;
  dialog.lpstrFile = buffer.data();
  dialog.nMaxFile = static_cast<DWORD>(buffer.size());
  // A shortcut comes back as itself: the window resolves it as a dropped one.
  dialog.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_ENABLESIZING | OFN_NOCHANGEDIR |
                 OFN_FILEMUSTEXIST | OFN_NODEREFERENCELINKS;
  if (!GetOpenFileNameW(&dialog)) return;
  ChooseFile(buffer.c_str());
}

void TForceUninstall_Form::SearchClick() {
  match_.SearchByName(name_.Text());
  ShowMatch();
}

void TForceUninstall_Form::NextClick() {
  const auto handover = match_.Next(list_.Selected() >= 0
                                        ? static_cast<int>(list_.ItemParam(list_.Selected()))
                                        : -1);
  if (!handover) {
    MessageBoxW(hwnd_, selectAgain_.c_str(), controls::Window(hwnd_).Text().c_str(),
                MB_OK | MB_ICONWARNING);
    return;
  }
  uninstalling_.SetSoftware(match_.Software());
  uninstalling_.SetJobs(&handover->jobs, handover->mode);
  uninstalling_.CenterOver(hwnd_);
  HWND owner = GetWindow(hwnd_, GW_OWNER);
  Close();
  uninstalling_.ShowModal(owner);
  if (afterUninstall_) afterUninstall_();
}

// Escape in the name box empties it; elsewhere it closes the window.
void TForceUninstall_Form::CancelKey() {
  if (GetFocus() == name_.Handle() && !name_.Text().empty()) {
    name_.SetText(L"");
    return;
  }
  Close();
}

void TForceUninstall_Form::ContextPopup(int x, int y) {
  const bool selected = list_.Selected() >= 0;
  for (UINT id : {Id::MenuUninstall, Id::MenuOpenFolder, Id::MenuViewEntry})
    menu_.Enable(id, selected);
  if (x == -1 && y == -1) {
    RECT r = list_.Bounds();
    x = r.left;
    y = r.top;
  }
  menu_.Track(hwnd_, x, y);
}

void TForceUninstall_Form::OpenFolderClick() {
  const int item = list_.Selected();
  if (const TSoftInfo* info = item < 0 ? nullptr : match_.RecordOf(
                                                       static_cast<int>(list_.ItemParam(item))))
    app_.Machine().shell.Execute(L"open", info->InstallLocation, L"", L"", ShowCmd::Normal);
}

void TForceUninstall_Form::ViewEntryClick() {
  const int item = list_.Selected();
  if (const TSoftInfo* info = item < 0 ? nullptr : match_.RecordOf(
                                                       static_cast<int>(list_.ItemParam(item))))
    OpenRegistryEditorAt(app_.Machine(), info->RootKey + info->KeyPath, L"DisplayName",
                         info->Is64BitView);
}

void TForceUninstall_Form::OnCommand(int id, int, HWND) {
  switch (id) {
    case Id::Browse:
      BrowseClick();
      return;
    case Id::Search:
      SearchClick();
      return;
    case Id::Next:
    case Id::MenuUninstall:
      NextClick();
      return;
    case Id::MenuOpenFolder:
      OpenFolderClick();
      return;
    case Id::MenuViewEntry:
      ViewEntryClick();
      return;
    case Id::Cancel:
      Close();
      return;
    case IDCANCEL:
      CancelKey();
      return;
    default:
      return;
  }
}

LRESULT TForceUninstall_Form::OnNotify(NMHDR& header) {
  if (header.hwndFrom != list_.Handle()) return 0;
  if (header.code == NM_DBLCLK && list_.Selected() >= 0) NextClick();
  return 0;
}

void TForceUninstall_Form::OnSize(UINT, int, int) { Layout(); }

void TForceUninstall_Form::OnDpiChanged(UINT dpi, const RECT& suggested) {
  Form::OnDpiChanged(dpi, suggested);
  ApplyDpi();
}

LRESULT TForceUninstall_Form::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case DM_GETDEFID:
      // Enter in a name box that holds text searches; elsewhere it goes on.
      if (GetFocus() == name_.Handle())
        return name_.Text().empty() ? 0 : MAKELRESULT(Id::Search, DC_HASDEFID);
      return MAKELRESULT(Id::Next, DC_HASDEFID);
    case WM_CONTEXTMENU:
      if (reinterpret_cast<HWND>(wParam) == list_.Handle()) {
        ContextPopup(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam));
        return 0;
      }
      break;
    case WM_DROPFILES: {
      HDROP drop = reinterpret_cast<HDROP>(wParam);
      std::wstring file(DragQueryFileW(drop, 0, nullptr, 0) + 1, L'\0');
      const UINT length = DragQueryFileW(drop, 0, file.data(), static_cast<UINT>(file.size()));
      DragFinish(drop);
      file.resize(length);
      if (length > 0) ChooseFile(file);
      return 0;
    }
    default:
      break;
  }
  return Form::HandleMessage(message, wParam, lParam);
}

}  // namespace varnel::forms
