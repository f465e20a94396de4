#include "ui/forms/log_manager_form.h"

#include <shellapi.h>

#include "controls/dpi.h"
#include "ui/forms/form_ids.h"
#include "ui/language_catalog.h"

namespace varnel::forms {

namespace {

namespace Id = LogManagerId;
constexpr wchar_t kFormName[] = L"LogManager_Form";
// Delete All asks under Delete's key with a default of its own, so a language
// file that has the key gives both buttons Delete's question. Kept so.
constexpr wchar_t kSureDeleteKey[] = L"M_SureDelSelect";
constexpr wchar_t kSureDeleteAllDefault[] =
    L"Are you sure to delete all files? The deletion CANNOT be restored.";
constexpr int kBackupColumns = 4;

void SetCell(controls::ListView& list, int item, int column, const std::wstring& text) {
  std::wstring buffer(text);
  LVITEMW cell{};
  cell.iSubItem = column;
  cell.pszText = buffer.data();
  SendMessageW(list.Handle(), LVM_SETITEMTEXTW, item, reinterpret_cast<LPARAM>(&cell));
}

}  // namespace

TLogManager_Form::TLogManager_Form(Application& app, HWND owner) : Form(app) {
  const UINT dpi = controls::DpiOf(owner);
  if (!Create(kFormName, controls::Scale(600, dpi), controls::Scale(620, dpi), owner,
              WS_OVERLAPPEDWINDOW & ~(WS_MAXIMIZEBOX | WS_MINIMIZEBOX)))
    return;
  CreateControls();
  LoadTexts();
  ApplyDpi();
}

TLogManager_Form::~TLogManager_Form() = default;

void TLogManager_Form::CreateControls() {
  using controls::CreateChild;
  title_.Attach(CreateChild(hwnd_, L"STATIC", L"Varnel Uninstall Log File List",
                            SS_LEFT | SS_NOPREFIX, Id::Title));
  info_.Attach(CreateChild(hwnd_, L"STATIC", L"You can view all the uninstall log files below.",
                           SS_LEFT | SS_NOPREFIX, Id::Info));
  list_.Attach(CreateChild(hwnd_, WC_LISTVIEWW, L"",
                           LVS_ICON | LVS_AUTOARRANGE | LVS_SINGLESEL | LVS_SHOWSELALWAYS |
                               WS_TABSTOP | WS_GROUP,
                           Id::List, WS_EX_CLIENTEDGE));
  list_.SetExtendedStyle(LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER,
                         LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
  open_.Attach(CreateChild(hwnd_, L"BUTTON", L"Open", BS_PUSHBUTTON | WS_TABSTOP | WS_GROUP,
                           Id::Open));
  delete_.Attach(CreateChild(hwnd_, L"BUTTON", L"Delete", BS_PUSHBUTTON | WS_TABSTOP, Id::Delete));
  deleteAll_.Attach(
      CreateChild(hwnd_, L"BUTTON", L"Delete All", BS_PUSHBUTTON | WS_TABSTOP, Id::DeleteAll));
  backupsLabel_.Attach(CreateChild(hwnd_, L"STATIC", L"Backups of deleted items",
                                   SS_LEFT | SS_NOPREFIX, Id::BackupsLabel));
  backupList_.Attach(CreateChild(hwnd_, WC_LISTVIEWW, L"",
                                 LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS | WS_TABSTOP |
                                     WS_GROUP,
                                 Id::Backups, WS_EX_CLIENTEDGE));
  backupList_.SetExtendedStyle(LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER,
                               LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
  const wchar_t* columns[kBackupColumns] = {L"Backup", L"Created", L"Items", L"Size"};
  for (int c = 0; c < kBackupColumns; ++c)
    backupList_.InsertColumn(c, columns[c], 100, c >= 2 ? LVCFMT_RIGHT : LVCFMT_LEFT);
  room_.Attach(CreateChild(hwnd_, L"STATIC", L"", SS_LEFT | SS_NOPREFIX, Id::Room));
  restore_.Attach(CreateChild(hwnd_, L"BUTTON", L"Restore", BS_PUSHBUTTON | WS_TABSTOP | WS_GROUP,
                              Id::Restore));
  deleteBackup_.Attach(
      CreateChild(hwnd_, L"BUTTON", L"Delete", BS_PUSHBUTTON | WS_TABSTOP, Id::DeleteBackup));
  cancel_.Attach(CreateChild(hwnd_, L"BUTTON", L"Cancel", BS_PUSHBUTTON | WS_TABSTOP, Id::Cancel));
}

void TLogManager_Form::LoadTexts() {
  texts_ = std::make_unique<FormTexts>(kFormName, hwnd_);
  FormTexts& t = *texts_;
  t.AddWindow(L"Label_Title", ComponentKind::Label, title_.Handle());
  t.AddWindow(L"Label_Info", ComponentKind::Label, info_.Handle());
  t.AddWindow(L"Button_Open", ComponentKind::Button, open_.Handle());
  t.AddWindow(L"Button_Delete", ComponentKind::Button, delete_.Handle());
  t.AddWindow(L"Button_DeleteAll", ComponentKind::Button, deleteAll_.Handle());
  t.AddWindow(L"Button_Cancel", ComponentKind::Button, cancel_.Handle());
  t.AddWindow(L"Label_Backups", ComponentKind::Label, backupsLabel_.Handle());
  t.AddListColumns(L"ListView_Backup", backupList_, kBackupColumns);
  t.AddWindow(L"Button_Restore", ComponentKind::Button, restore_.Handle());
  t.AddWindow(L"Button_DeleteBackup", ComponentKind::Button, deleteBackup_.Handle());
  const auto language = TranslateForm(app_.Machine(), t);
  auto m = [&](std::wstring_view key) { return CatalogMessage(*language, kFormName, key); };
  sureDelete_ = m(kSureDeleteKey);
  sureDeleteAll_ =
      language->ReadString(t.Section() + L"_M", kSureDeleteKey, kSureDeleteAllDefault);
  sureRestore_ = m(L"M_SureRestore");
  sureDeleteBackup_ = m(L"M_SureDelBackup");
  BackupListTexts texts;
  texts.Room = m(L"M_BackupRoom");
  texts.NoBackups = m(L"M_NoBackups");
  texts.OneRestored = m(L"M_OneRestored");
  texts.Restored = m(L"M_Restored");
  texts.NotRestored = m(L"M_NotRestored");
  texts.Missing = m(L"M_BackupMissing");
  backups_ = std::make_unique<BackupList>(app_.Machine(), std::move(texts));
}

void TLogManager_Form::ApplyDpi() {
  const UINT dpi = controls::DpiOf(hwnd_);
  font_ = controls::MessageFont(dpi);
  // The title a size above the message font.
  LOGFONTW title{};
  GetObjectW(font_.get(), sizeof title, &title);
  title.lfHeight = title.lfHeight * 4 / 3;
  title.lfWeight = FW_BOLD;
  titleFont_.reset(CreateFontIndirectW(&title));
  title_.SetFont(titleFont_.get());
  for (HWND c : {info_.Handle(), list_.Handle(), open_.Handle(), delete_.Handle(),
                 deleteAll_.Handle(), cancel_.Handle(), backupList_.Handle(), room_.Handle(),
                 restore_.Handle(), deleteBackup_.Handle()})
    controls::Window(c).SetFont(font_.get());
  const int size = controls::Scale(32, dpi);
  icons_ = controls::ImageList(size, size);
  SHFILEINFOW file{};
  if (SHGetFileInfoW(L".log", FILE_ATTRIBUTE_NORMAL, &file, sizeof file,
                     SHGFI_USEFILEATTRIBUTES | SHGFI_ICON | SHGFI_LARGEICON) &&
      file.hIcon) {
    controls::UniqueHicon owned(file.hIcon);
    icons_.Add(owned.get());
  } else {
    icons_.Add(LoadIconW(nullptr, IDI_APPLICATION));
  }
  list_.SetImageList(icons_.Handle(), LVSIL_NORMAL);
  list_.SetIconSpacing(controls::Scale(90, dpi), controls::Scale(90, dpi));
  backupsLabel_.SetFont(titleFont_.get());
  const int widths[kBackupColumns] = {150, 150, 70, 100};
  for (int c = 0; c < kBackupColumns; ++c)
    backupList_.SetColumnWidth(c, controls::Scale(widths[c], dpi));
  Layout();
}

void TLogManager_Form::Layout() {
  if (!cancel_) return;
  const UINT dpi = controls::DpiOf(hwnd_);
  auto s = [dpi](int v) { return controls::Scale(v, dpi); };
  RECT r;
  GetClientRect(hwnd_, &r);
  const int width = r.right - s(32);
  title_.Move(s(16), s(14), width, s(26));
  info_.Move(s(16), s(42), width, s(20));
  // The logs above with their buttons, the backups below with theirs and Cancel.
  const int w = s(96), gap = s(8), h = s(28);
  const int bottom = r.bottom - s(44);
  const int backupsHeight = (bottom - s(68)) * 2 / 5;
  const int backupsTop = bottom - s(12) - backupsHeight;
  const int labelTop = backupsTop - s(30);
  const int logButtons = labelTop - s(12) - h;
  list_.Move(s(16), s(68), width, logButtons - s(10) - s(68));
  int x = r.right - s(16) - w;
  for (controls::Button* b : {&deleteAll_, &delete_, &open_}) {
    b->Move(x, logButtons, w, h);
    x -= w + gap;
  }
  backupsLabel_.Move(s(16), labelTop, width, s(24));
  backupList_.Move(s(16), backupsTop, width, backupsHeight);
  x = r.right - s(16) - w;
  for (controls::Button* b : {&cancel_, &deleteBackup_, &restore_}) {
    b->Move(x, bottom, w, h);
    x -= w + gap;
  }
  room_.Move(s(16), bottom + s(6), x + w - s(16) - s(8), s(20));
}

// Lists the log folder's files afresh at every showing.
void TLogManager_Form::OnShow() {
  open_.Enable(false);
  delete_.Enable(false);
  list_.SetRedraw(false);
  list_.DeleteAll();
  logs_ = ListUninstallLogs(app_.Machine());
  for (std::size_t i = 0; i < logs_.size(); ++i)
    list_.InsertItem(static_cast<int>(i), logs_[i].name, 0, static_cast<LPARAM>(i));
  list_.SetRedraw(true);
  list_.Invalidate();
  deleteAll_.Enable(!logs_.empty());
  FillBackups();
  lastFocus_ = list_.Handle();
}

void TLogManager_Form::FillBackups() {
  backups_->Refresh();
  backupList_.SetRedraw(false);
  backupList_.DeleteAll();
  for (std::size_t i = 0; i < backups_->Count(); ++i) {
    const BackupRow row = backups_->Row(i);
    const int item =
        backupList_.InsertItem(static_cast<int>(i), row.id, -1, static_cast<LPARAM>(i));
    SetCell(backupList_, item, 1, row.created);
    SetCell(backupList_, item, 2, row.items);
    SetCell(backupList_, item, 3, row.size);
  }
  backupList_.SetRedraw(true);
  backupList_.Invalidate();
  room_.SetText(backups_->RoomLine());
  BackupSelectionChanged();
}

void TLogManager_Form::BackupSelectionChanged() {
  const bool selected = backups_->CanAct(backupList_.Selected());
  restore_.Enable(selected);
  deleteBackup_.Enable(selected);
}

void TLogManager_Form::RestoreClick() {
  const int selected = backupList_.Selected();
  if (!backups_->CanAct(selected) || !Ask(sureRestore_)) return;
  const std::optional<std::wstring> report = backups_->Restore(selected);
  if (!report) return;
  MessageBoxW(hwnd_, report->c_str(), controls::Window(hwnd_).Text().c_str(),
              MB_OK | MB_ICONINFORMATION);
  FillBackups();
}

void TLogManager_Form::DeleteBackupClick() {
  const int selected = backupList_.Selected();
  if (!backups_->CanAct(selected) || !Ask(sureDeleteBackup_)) return;
  backups_->Delete(selected);
  FillBackups();
}

const SavedLog* TLogManager_Form::SelectedLog() const {
  const int item = list_.Selected();
  if (item < 0) return nullptr;
  const auto index = static_cast<std::size_t>(list_.ItemParam(item));
  return index < logs_.size() ? &logs_[index] : nullptr;
}

void TLogManager_Form::SelectionChanged() {
  const bool selected = list_.Selected() >= 0;
  open_.Enable(selected);
  delete_.Enable(selected);
  deleteAll_.Enable(list_.Count() > 0);
}

void TLogManager_Form::OpenClick() {
  if (const SavedLog* log = SelectedLog())
    app_.Machine().shell.Execute(L"open", log->path, L"", L"", ShowCmd::Normal);
}

bool TLogManager_Form::Ask(const std::wstring& text) {
  return MessageBoxW(hwnd_, text.c_str(), controls::Window(hwnd_).Text().c_str(),
                     MB_YESNO | MB_ICONQUESTION) == IDYES;
}

void TLogManager_Form::DeleteClick() {
  const int item = list_.Selected();
  const SavedLog* log = SelectedLog();
  if (!log || !Ask(sureDelete_)) return;
  // A log that cannot go now goes at the next restart; either way it leaves the list.
  DeleteUninstallLog(app_.Machine(), log->path);
  list_.DeleteItem(item);
  open_.Enable(false);
  delete_.Enable(false);
  if (list_.Count() == 0) deleteAll_.Enable(false);
}

void TLogManager_Form::DeleteAllClick() {
  if (!Ask(sureDeleteAll_)) return;
  list_.SetRedraw(false);
  for (int item = 0, n = list_.Count(); item < n; ++item) {
    const auto index = static_cast<std::size_t>(list_.ItemParam(item));
    if (index < logs_.size()) DeleteUninstallLog(app_.Machine(), logs_[index].path);
  }
  list_.DeleteAll();
  list_.SetRedraw(true);
  list_.Invalidate();
  SelectionChanged();
}

void TLogManager_Form::OnCommand(int id, int, HWND) {
  switch (id) {
    case Id::Open:
      OpenClick();
      return;
    case Id::Delete:
      DeleteClick();
      return;
    case Id::DeleteAll:
      DeleteAllClick();
      return;
    case Id::Restore:
      RestoreClick();
      return;
    case Id::DeleteBackup:
      DeleteBackupClick();
      return;
    case Id::Cancel:
    case IDCANCEL:
      Close();
      return;
    default:
      return;
  }
}

LRESULT TLogManager_Form::OnNotify(NMHDR& header) {
  if (header.hwndFrom == backupList_.Handle()) {
    if (header.code == LVN_ITEMCHANGED) {
      const auto& change = reinterpret_cast<NMLISTVIEW&>(header);
      if ((change.uChanged & LVIF_STATE) &&
          ((change.uNewState ^ change.uOldState) & LVIS_SELECTED))
        BackupSelectionChanged();
    }
    return header.code == LVN_BEGINLABELEDITW ? TRUE : 0;
  }
  if (header.hwndFrom != list_.Handle()) return 0;
  switch (header.code) {
    case LVN_ITEMCHANGED: {
      const auto& change = reinterpret_cast<NMLISTVIEW&>(header);
      if ((change.uChanged & LVIF_STATE) &&
          ((change.uNewState ^ change.uOldState) & LVIS_SELECTED))
        SelectionChanged();
      return 0;
    }
    case NM_DBLCLK:
      OpenClick();
      return 0;
    case LVN_BEGINLABELEDITW:
      return TRUE;  // read-only
    default:
      return 0;
  }
}

void TLogManager_Form::OnSize(UINT, int, int) { Layout(); }

void TLogManager_Form::OnDpiChanged(UINT dpi, const RECT& suggested) {
  Form::OnDpiChanged(dpi, suggested);
  ApplyDpi();
}

LRESULT TLogManager_Form::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == DM_GETDEFID) {
    if (IsWindowEnabled(open_.Handle())) return MAKELRESULT(Id::Open, DC_HASDEFID);
    return MAKELRESULT(Id::Cancel, DC_HASDEFID);
  }
  return Form::HandleMessage(message, wParam, lParam);
}

}  // namespace varnel::forms
