#include "ui/forms/main_form.h"

#include <commctrl.h>
#include <commdlg.h>
#include <shellapi.h>
#include <uxtheme.h>
#include <windowsx.h>

#include <stdexcept>

#include "controls/dpi.h"
#include "core/app_frame.h"
#include "core/data_folder.h"
#include "base/date_time.h"
#include "core/file_version.h"
#include "core/os_name.h"
#include "core/registry_editor.h"
#include "base/text.h"
#include "base/text_file.h"
#include "ui/forms/force_uninstall_form.h"
#include "ui/forms/main_form_ids.h"
#include "ui/forms/private_messages.h"
#include "ui/forms/log_manager_form.h"
#include "ui/forms/powerscan_form.h"
#include "ui/forms/uninstalling_form.h"
#include "ui/language_catalog.h"
#include "ui/restore_launcher.h"
#include "ui/right_menu.h"
#include "ui/row_compare.h"
#include "ui/row_details.h"
#include "ui/soft_commands.h"
#include "ui/timing_trace.h"

namespace varnel::forms {

namespace {

constexpr wchar_t kClassName[] = L"TUninstallForm_Main";
constexpr wchar_t kFormName[] = L"UninstallForm_Main";
constexpr UINT_PTR kGetSoftwareTimer = 1;
constexpr UINT_PTR kSearchSubclass = 1;

const wchar_t* const kCategoryLabels[6] = {
    L"Label_AllProgrames",  L"Label_Toolbar",    L"Label_RecentlyInstalled",
    L"Label_LargeProgrames", L"Label_RarelyUsed", L"Label_WindowsUpdates"};

// An export that cannot be written surfaces as an exception, as any other
// failure of a command does, and lands in the error log.
class EFCreateError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

HICON IconOf(const IconHandle& handle) { return static_cast<HICON>(handle.get()); }

}  // namespace

TUninstallForm_Main::TUninstallForm_Main(Application& app) : app_(app) {
  RegisterClassOnce(kClassName, app.Icon());
  dpi_ = controls::DpiOf(nullptr);
  CreateBase(kClassName, app.Title(), WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, WS_EX_CONTROLPARENT,
             controls::Scale(940, dpi_), controls::Scale(640, dpi_), nullptr);
}

TUninstallForm_Main::~TUninstallForm_Main() {
  inventory_.reset();
  if (search_) RemoveWindowSubclass(search_.Handle(), &SearchProc, kSearchSubclass);
}

void TUninstallForm_Main::SetPeers(TUninstalling_Form& uninstalling, TForceUninstall_Form& force,
                                   TPowerScan_Form& scan, TLogManager_Form& logs) {
  uninstalling_ = &uninstalling;
  force_ = &force;
  scan_ = &scan;
  logs_ = &logs;
}

void TUninstallForm_Main::Show() {
  ShowWindow(hwnd_, SW_SHOWNORMAL);
  UpdateWindow(hwnd_);
}

// FormCreate.
void TUninstallForm_Main::CreateControls() {
  TimingTrace trace(app_.Machine().system);
  firstActivation_ = true;
  DragAcceptFiles(hwnd_, TRUE);
  listStyleFlag_ = true;
  trace.Add(L" Start");
  dpi_ = controls::DpiOf(hwnd_);
  using controls::CreateChild;
  for (int i = 0; i < 6; ++i) {
    DWORD style = BS_AUTORADIOBUTTON | BS_PUSHLIKE | WS_TABSTOP;
    if (i == 0) style |= WS_GROUP;
    categories_[i] = CreateChild(hwnd_, L"BUTTON", L"", style, MainId::CategoryFirst + i);
  }
  search_.Attach(CreateChild(hwnd_, L"EDIT", L"", ES_AUTOHSCROLL | WS_TABSTOP | WS_GROUP,
                             MainId::SearchEdit, WS_EX_CLIENTEDGE));
  SetWindowSubclass(search_.Handle(), &SearchProc, kSearchSubclass,
                    reinterpret_cast<DWORD_PTR>(this));
  searchClear_.Attach(
      CreateChild(hwnd_, L"BUTTON", L"\u00d7", BS_PUSHBUTTON | WS_TABSTOP, MainId::SearchClear));
  searchClear_.Show(false);
  list_.Attach(CreateChild(hwnd_, WC_LISTVIEWW, L"",
                           LVS_REPORT | LVS_SHOWSELALWAYS | LVS_SINGLESEL | LVS_SHAREIMAGELISTS |
                               WS_TABSTOP | WS_GROUP,
                           MainId::List, WS_EX_CLIENTEDGE));
  list_.SetExtendedStyle(LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | LVS_EX_HEADERDRAGDROP,
                         LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
  SetWindowTheme(list_.Handle(), L"Explorer", nullptr);
  uninstall_.Attach(CreateChild(hwnd_, L"BUTTON", L"", BS_DEFPUSHBUTTON | WS_TABSTOP | WS_GROUP,
                                MainId::Uninstall));
  batch_.Attach(CreateChild(hwnd_, L"BUTTON", L"", BS_AUTOCHECKBOX | BS_PUSHLIKE | WS_TABSTOP,
                            MainId::BatchUninstall));
  forceUninstall_.Attach(
      CreateChild(hwnd_, L"BUTTON", L"", BS_PUSHBUTTON | WS_TABSTOP, MainId::ForceUninstall));
  more_.Attach(CreateChild(hwnd_, L"BUTTON", L"", BS_PUSHBUTTON | WS_TABSTOP, MainId::More));
  detailsIcon_.Attach(CreateChild(hwnd_, L"STATIC", L"", SS_ICON | SS_CENTERIMAGE,
                                  MainId::DetailsIcon));
  detailsName_.Attach(CreateChild(hwnd_, L"STATIC", L"", SS_LEFT | SS_ENDELLIPSIS | SS_NOPREFIX,
                                  MainId::DetailsName));
  versionTitle_.Attach(CreateChild(hwnd_, L"STATIC", L"", SS_LEFT, MainId::DetailsVersionTitle));
  version_.Attach(CreateChild(hwnd_, L"STATIC", L"", SS_LEFT | SS_ENDELLIPSIS | SS_NOPREFIX,
                              MainId::DetailsVersion));
  publisherTitle_.Attach(
      CreateChild(hwnd_, L"STATIC", L"", SS_LEFT, MainId::DetailsPublisherTitle));
  publisher_.Attach(CreateChild(hwnd_, L"STATIC", L"", SS_LEFT | SS_ENDELLIPSIS | SS_NOPREFIX,
                                MainId::DetailsPublisher));
  helpTitle_.Attach(CreateChild(hwnd_, L"STATIC", L"", SS_LEFT, MainId::DetailsHelpTitle));
  help_.Attach(CreateChild(hwnd_, L"STATIC", L"",
                           SS_LEFT | SS_NOTIFY | SS_PATHELLIPSIS | SS_NOPREFIX,
                           MainId::DetailsHelp));
  detailsIdle_.Attach(CreateChild(hwnd_, L"STATIC", L"", SS_LEFT, MainId::DetailsIdle));
  bottomInfo_.Attach(CreateChild(hwnd_, L"STATIC", L"", SS_LEFT, MainId::BottomInfo));

  // Icons follow the window's DPI: 16, 32 and 48 pixels at 100 %.
  small_ = controls::ImageList(controls::Scale(16, dpi_), controls::Scale(16, dpi_));
  large_ = controls::ImageList(controls::Scale(32, dpi_), controls::Scale(32, dpi_));
  big48_ = controls::ImageList(controls::Scale(48, dpi_), controls::Scale(48, dpi_));
  // Image 0 stands for a program whose own icon is not known (yet).
  HICON generic = LoadIconW(nullptr, IDI_APPLICATION);
  small_.Add(generic);
  large_.Add(generic);
  big48_.Add(generic);
  list_.SetImageList(small_.Handle(), LVSIL_SMALL);
  list_.SetImageList(large_.Handle(), LVSIL_NORMAL);

  const int widths[MainId::VisibleColumns] = {300, 80, 130};
  for (int c = 0; c < MainId::Columns; ++c) {
    const int width = c < MainId::VisibleColumns ? controls::Scale(widths[c], dpi_) : 0;
    list_.InsertColumn(c, L"", width, c == 1 ? LVCFMT_RIGHT : LVCFMT_LEFT);
  }
  CreateMenus();
  LoadTexts();
  list_.EnableGroups(true);
  list_.InsertGroup(RowGroup::Programs, messages_.groupPrograms);
  list_.InsertGroup(RowGroup::Toolbars, messages_.groupToolbars);
  list_.InsertGroup(RowGroup::WindowsUpdates, messages_.groupUpdates);

  for (int i = 0; i < 6; ++i) controls::Button(categories_[i]).SetChecked(false);
  bottomInfo_.Show(true);
  ApplySearchLook(SearchBoxOnExit(L"", messages_.searchSoftware));
  ApplyDpi();
  UpdateDetails();
  trace.Add(L" Finish");
}

void TUninstallForm_Main::CreateMenus() {
  softMenu_.Add(MainId::MenuUninstall, L"Uninstall");
  softMenu_.Add(MainId::MenuRemoveEntry, L"Remove Entry");
  softMenu_.AddSeparator();
  softMenu_.Add(MainId::MenuRefresh, L"Refresh\tF5");
  controls::PopupMenu style;
  style.Add(MainId::MenuViewIcons, L"Icons");
  style.Add(MainId::MenuViewDetails, L"Details");
  softMenu_.AddSub(std::move(style), L"View Style");
  softMenu_.AddSeparator();
  softMenu_.Add(MainId::MenuOpenFolder, L"Open Directory");
  softMenu_.Add(MainId::MenuViewEntry, L"View Entry");
  softMenu_.Add(MainId::MenuSearchOnline, L"Search Online");
  managerMenu_.Add(MainId::MenuExportList, L"Export Application List");
  managerMenu_.Add(MainId::MenuLogManagement, L"Log Management ");
  managerMenu_.Add(MainId::MenuRestorePoint, L"View Restore Point");
}

void TUninstallForm_Main::LoadTexts() {
  texts_ = std::make_unique<FormTexts>(kFormName, hwnd_);
  FormTexts& t = *texts_;
  for (int i = 0; i < 6; ++i) t.AddWindow(kCategoryLabels[i], ComponentKind::Label, categories_[i]);
  t.AddWindow(L"Label_Uninstall", ComponentKind::Label, uninstall_.Handle());
  t.AddWindow(L"Label_BatchUninstall", ComponentKind::Label, batch_.Handle());
  t.AddWindow(L"Label_ForcedUninstalled", ComponentKind::Label, forceUninstall_.Handle());
  t.AddWindow(L"Label_Manager", ComponentKind::Label, more_.Handle());
  t.AddWindow(L"Label_Details_VersionTitle", ComponentKind::Label, versionTitle_.Handle());
  t.AddWindow(L"Label_Details_PublisherTitle", ComponentKind::Label, publisherTitle_.Handle());
  t.AddWindow(L"Label_Details_HelpInfoTitle", ComponentKind::Label, helpTitle_.Handle());
  t.AddWindow(L"Label_Details_Idle", ComponentKind::Label, detailsIdle_.Handle());
  t.AddListColumns(L"ListView_SoftwareList", list_, MainId::VisibleColumns);
  t.AddMenuItem(L"PopMenu_Uninstall", softMenu_, MainId::MenuUninstall, false);
  t.AddMenuItem(L"PopMenu_RemoveEntry", softMenu_, MainId::MenuRemoveEntry, false);
  t.AddMenuItem(L"PopMenu_Refresh", softMenu_, MainId::MenuRefresh, false);
  t.AddMenuItem(L"PopMenu_ViewStyle", softMenu_, 4, true);
  t.AddMenuItem(L"PopMenu_OpenFolder", softMenu_, MainId::MenuOpenFolder, false);
  t.AddMenuItem(L"PopMenu_ViewEntry", softMenu_, MainId::MenuViewEntry, false);
  t.AddMenuItem(L"PopMenu_SearchOnline", softMenu_, MainId::MenuSearchOnline, false);
  // Items of a submenu are reached by id through the parent menu as well.
  t.AddMenuItem(L"PopMenu_ViewStyle_Icon", softMenu_, MainId::MenuViewIcons, false);
  t.AddMenuItem(L"PopMenu_ViewStyle_Details", softMenu_, MainId::MenuViewDetails, false);
  t.AddMenuItem(L"PopupMenu_Manager_EAL", managerMenu_, MainId::MenuExportList, false);
  t.AddMenuItem(L"PopupMenu_Manager_LM", managerMenu_, MainId::MenuLogManagement, false);
  t.AddMenuItem(L"PopupMenu_Manager_VRP", managerMenu_, MainId::MenuRestorePoint, false);

  const auto language = TranslateForm(app_.Machine(), t);
  auto m = [&](std::wstring_view key) { return CatalogMessage(*language, kFormName, key); };
  messages_.searchSoftware = m(L"M_SearchSoftware");
  messages_.softwareFormat = m(L"M_SoftwareFormat");
  messages_.sureUninstall = m(L"M_SureUninstall");
  messages_.selectProgram = m(L"M_SelectProgram");
  messages_.selectOneItem = m(L"M_SelectOneItem");
  messages_.sureRemoveEntry = m(L"M_SureRemoveEntry");
  messages_.oneItem = m(L"M_OneItem");
  messages_.items = m(L"M_Items");
  messages_.unknownOs = m(L"M_UnknowsOSType");
  messages_.groupPrograms = m(L"M_GroupPrograms");
  messages_.groupToolbars = m(L"M_GroupToolbars");
  messages_.groupUpdates = m(L"M_GroupUpdates");
  messages_.exportLabels = LoadExportLabels(*language);
}

void TUninstallForm_Main::ApplyDpi() {
  font_ = controls::MessageFont(dpi_);
  boldFont_ = controls::MessageFont(dpi_, true);
  linkFont_ = controls::MessageFont(dpi_, false, true);
  for (HWND child = GetWindow(hwnd_, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
    controls::Window(child).SetFont(font_.get());
  detailsName_.SetFont(boldFont_.get());
  UpdateDetails();
  Layout();
}

void TUninstallForm_Main::Layout() {
  if (!list_) return;
  RECT r;
  GetClientRect(hwnd_, &r);
  auto s = [this](int v) { return controls::Scale(v, dpi_); };
  const int m = s(10), left = s(180), button = s(32), gap = s(6);
  const int width = r.right, height = r.bottom;
  for (int i = 0; i < 6; ++i)
    controls::Window(categories_[i]).Move(m, m + i * (button + gap), left - m, button);
  int y = m + 6 * (button + gap) + s(18);
  for (controls::Button* b : {&uninstall_, &batch_, &forceUninstall_, &more_}) {
    b->Move(m, y, left - m, button);
    y += button + gap;
  }
  bottomInfo_.Move(m, height - m - s(20), left - m, s(20));

  const int x = left + m, rowH = s(22), detailsH = s(96);
  const int searchH = controls::SingleLineEditHeight(search_.Handle(), dpi_);
  search_.Move(x, m, width - x - m - searchH - s(4), searchH);
  searchClear_.Move(width - m - searchH, m, searchH, searchH);
  const int listTop = m + searchH + s(8);
  const int listH = height - m - detailsH - s(8) - listTop;
  list_.Move(x, listTop, width - x - m, listH > 0 ? listH : 0);
  FitColumns();

  const int dy = height - m - detailsH;
  detailsIcon_.Move(x, dy + s(4), s(48), s(48));
  const int tx = x + s(60), title = s(90), valueW = width - tx - title - m;
  detailsName_.Move(tx, dy, width - tx - m, rowH);
  versionTitle_.Move(tx, dy + rowH, title, rowH);
  version_.Move(tx + title, dy + rowH, valueW, rowH);
  publisherTitle_.Move(tx, dy + 2 * rowH, title, rowH);
  publisher_.Move(tx + title, dy + 2 * rowH, valueW, rowH);
  helpTitle_.Move(tx, dy + 3 * rowH, title, rowH);
  help_.Move(tx + title, dy + 3 * rowH, valueW, rowH);
  detailsIdle_.Move(x, dy + s(30), width - x - m, rowH);
}

void TUninstallForm_Main::FormActivate() {
  if (!firstActivation_) return;
  firstActivation_ = false;
  SetTimer(hwnd_, kGetSoftwareTimer, 10, nullptr);
  for (UINT message : {0x0049u, 0x0233u, 0x004Au})
    ChangeWindowMessageFilterEx(hwnd_, message, MSGFLT_ALLOW, nullptr);
}

void TUninstallForm_Main::TimerGetSoftware() {
  KillTimer(hwnd_, kGetSoftwareTimer);
  const Platform& platform = app_.Machine();
  TimingTrace trace(platform.system);
  trace.Add(L" Show Start");
  TSoftwareInfo::Options options;
  options.view = this;
  options.displayText1 = messages_.oneItem;
  options.displayText2 = messages_.items;
  options.cacheFile = SoftwareCacheFileName(TAppFrame(platform), true);
  options.uninstallKeys = app_.TakeUninstallKeys();
  // Start-up: the analysis thread's first hand-overs wait for this message loop.
  app_.Dispatcher().SetWakeUp([hwnd = hwnd_] { PostMessageW(hwnd, WM_DRAIN_HANDOVERS, 0, 0); });
  inventory_ = std::make_unique<TSoftwareInfo>(platform, app_.Dispatcher(), std::move(options));
  trace.Add(L" Show Middle");
  ShowCategory(0);
  if (const auto file = ServeRightMenu(platform, app_.Args())) OpenForcedUninstall(*file);
  trace.Add(L" Show End");
}

void TUninstallForm_Main::FormClose() {
  inventory_.reset();
  app_.Dispatcher().SetWakeUp({});
  DestroyWindow(hwnd_);
}

void TUninstallForm_Main::ActivateInstance() {
  if (IsIconic(hwnd_)) ShowWindow(hwnd_, SW_RESTORE);
  ShowWindow(hwnd_, SW_SHOW);
  SetForegroundWindow(hwnd_);
}

int TUninstallForm_Main::ShowSoftwareList(int filter, const std::wstring& search) {
  if (!list_) return -1;
  std::vector<SoftRow> rows;
  if (inventory_)
    rows = SelectRows(inventory_->Items(), filter, search, NowLocal(app_.Machine().system));
  list_.SetRedraw(false);
  list_.DeleteAll();
  rows_.clear();
  list_.SetItemCountHint(static_cast<int>(rows.size()));
  int at = 0;
  for (SoftRow& row : rows) {
    const int index = row.index;
    const int group = row.group;
    rows_.emplace(index, std::move(row));
    list_.InsertCallbackItem(at++, index, group);
  }
  list_.SetRedraw(true);
  FitColumns();
  list_.Invalidate();
  UpdateDetails();
  return filter;
}

// The name column takes what the others leave of the list's client width,
// which loses the scroll bar's room only while there is one; never less
// than 300.
void TUninstallForm_Main::FitColumns() {
  const int rest = list_.Client().right - list_.ColumnWidth(1) - list_.ColumnWidth(2);
  const int least = controls::Scale(300, dpi_);
  list_.SetColumnWidth(0, rest > least ? rest : least);
}

void TUninstallForm_Main::ShowCategory(int button) {
  // A box with the keys in it (F5 there) is emptied as on entering: no placeholder to type into.
  ApplySearchLook(GetFocus() == search_.Handle() ? SearchBoxOnEnter(L"", messages_.searchSoftware)
                                                 : SearchBoxOnExit(L"", messages_.searchSoftware));
  if (!state_.ChooseCategory(button)) {
    if (button >= 0 && button < 6) controls::Button(categories_[button]).SetChecked(true);
    return;
  }
  ShowSoftwareList(state_.Filter(), L"");
  for (int i = 0; i < 6; ++i) controls::Button(categories_[i]).SetChecked(i == state_.Category());
  ShowCount();
  SortList();
}

void TUninstallForm_Main::ShowCount() {
  const int count = list_.Count();
  list_.SetColumnText(0, FormatCount(messages_.softwareFormat, count));
  bottomInfo_.SetText(count == 1 ? messages_.oneItem : FormatCount(messages_.items, count));
}

int CALLBACK TUninstallForm_Main::CompareRows(LPARAM a, LPARAM b, LPARAM self) {
  auto* form = reinterpret_cast<TUninstallForm_Main*>(self);
  try {
    const auto left = form->rows_.find(static_cast<int>(a));
    const auto right = form->rows_.find(static_cast<int>(b));
    if (left == form->rows_.end() || right == form->rows_.end()) return 0;
    const int column = form->state_.SortColumn();
    return varnel::CompareRows(form->app_.Machine().system, column, left->second, right->second,
                               form->state_.Direction(column));
  } catch (...) {
    return 0;
  }
}

void TUninstallForm_Main::SortList() {
  list_.Sort(&TUninstallForm_Main::CompareRows, reinterpret_cast<LPARAM>(this));
  const int column = state_.SortColumn();
  for (int c = 0; c < MainId::VisibleColumns; ++c) {
    // Direction flag set = the comparison negated = descending.
    const int arrow = c != column ? 0 : state_.Direction(c) ? HDF_SORTDOWN : HDF_SORTUP;
    list_.SetSortArrow(c, arrow);
  }
}

const SoftRow* TUninstallForm_Main::RowAt(int item) const {
  if (item < 0) return nullptr;
  const auto it = rows_.find(static_cast<int>(list_.ItemParam(item)));
  return it == rows_.end() ? nullptr : &it->second;
}

const SoftRow* TUninstallForm_Main::SelectedRow() const { return RowAt(list_.Selected()); }

void TUninstallForm_Main::FillDispInfo(NMLVDISPINFOW& info) {
  const auto it = rows_.find(static_cast<int>(info.item.lParam));
  if (it == rows_.end()) return;
  const SoftRow& row = it->second;
  if (info.item.mask & LVIF_TEXT) {
    const int sub = info.item.iSubItem;
    const std::wstring* text = sub == 0 ? &row.caption
                               : sub <= SubItem::Count ? &row.sub[sub - 1]
                                                       : nullptr;
    if (text && info.item.pszText && info.item.cchTextMax > 0)
      lstrcpynW(info.item.pszText, text->c_str(), info.item.cchTextMax);
  }
  if (info.item.mask & LVIF_IMAGE) info.item.iImage = row.image;
}

int TUninstallForm_Main::AddIcons(const IconHandle& small, const IconHandle& large) {
  small_.Add(IconOf(small));
  large_.Add(IconOf(large));
  big48_.Add(IconOf(large));
  return small_.Count() - 1;
}

void TUninstallForm_Main::UpdateRow(int index, const TSoftInfo& info) {
  const auto it = rows_.find(index);
  if (it == rows_.end()) return;
  RefreshRow(it->second, info);
  const int item = list_.FindParam(index);
  if (item < 0) return;
  list_.Update(item);
  if (item == list_.Selected()) UpdateDetails();
}

void TUninstallForm_Main::ApplySearchLook(const SearchBoxLook& look) {
  if (!look.keepText) search_.SetText(look.text);
  searchClear_.Show(look.clearButton);
  searchFontColour_ = look.fontColour;
  if (!searchBrush_ || look.boxColour != searchBoxColour_) {
    searchBoxColour_ = look.boxColour;
    searchBrush_.reset(CreateSolidBrush(searchBoxColour_));
  }
  search_.Invalidate();
}

void TUninstallForm_Main::SearchEnter() {
  ApplySearchLook(SearchBoxOnEnter(search_.Text(), messages_.searchSoftware));
}

void TUninstallForm_Main::SearchExit() {
  ApplySearchLook(SearchBoxOnExit(search_.Text(), messages_.searchSoftware));
}

void TUninstallForm_Main::SearchKeyUp(unsigned key) {
  const SearchBoxLook look = SearchBoxOnKeyUp(search_.Text(), key);
  ApplySearchLook(look);
  searchFontColour_ = SearchColour::Black;
  ShowSoftwareList(state_.Filter(), text::Trim(search_.Text()));
  ShowCount();
  SortList();
}

void TUninstallForm_Main::SearchClear() {
  search_.SetText(L"");
  searchClear_.Show(false);
  ShowSoftwareList(state_.Filter(), L"");
  ShowCount();
  SortList();
}

LRESULT CALLBACK TUninstallForm_Main::SearchProc(HWND hwnd, UINT message, WPARAM wParam,
                                                 LPARAM lParam, UINT_PTR, DWORD_PTR data) {
  if (message == WM_KEYUP) {
    try {
      reinterpret_cast<TUninstallForm_Main*>(data)->SearchKeyUp(static_cast<unsigned>(wParam));
    } catch (...) {
      controls::ReportException(std::current_exception());
    }
  }
  return DefSubclassProc(hwnd, message, wParam, lParam);
}

void TUninstallForm_Main::UpdateDetails() {
  const RowDetails d = DetailsOf(SelectedRow());
  detailsIdle_.Show(d.idlePicture);
  detailsName_.SetText(d.name);
  version_.SetText(d.version);
  publisher_.SetText(d.publisher);
  help_.SetText(d.helpInfo);
  help_.SetFont(d.helpIsLink ? linkFont_.get() : font_.get());
  detailsName_.Show(!d.idlePicture);
  detailsIcon_.Show(!d.idlePicture);
  versionTitle_.Show(d.showVersion);
  version_.Show(d.showVersion);
  publisherTitle_.Show(d.showPublisher);
  publisher_.Show(d.showPublisher);
  helpTitle_.Show(d.showHelpInfo);
  help_.Show(d.showHelpInfo);
  controls::UniqueHicon icon = d.idlePicture ? controls::UniqueHicon() : big48_.Icon(d.image);
  detailsIcon_.SetIcon(icon.get());
  detailsIconHandle_ = std::move(icon);
}

int TUninstallForm_Main::Ask(const std::wstring& text, UINT flags) {
  return MessageBoxW(hwnd_, text.c_str(), controls::Window(hwnd_).Text().c_str(), flags);
}

void TUninstallForm_Main::ContextMenu(int x, int y) {
  const SoftRow* row = SelectedRow();
  const SoftMenuState state = MenuStateFor(app_.Machine(), row);
  softMenu_.Enable(MainId::MenuUninstall, state.uninstall);
  softMenu_.Enable(MainId::MenuOpenFolder, state.openFolder);
  softMenu_.Enable(MainId::MenuSearchOnline, state.searchOnline);
  softMenu_.Enable(MainId::MenuViewEntry, state.viewEntry);
  const bool icons = list_.View() == LV_VIEW_ICON;
  softMenu_.Check(MainId::MenuViewIcons, icons);
  softMenu_.Check(MainId::MenuViewDetails, !icons);
  if (x == -1 && y == -1) {
    // From the keyboard: at the selected row, or the list's corner.
    RECT r = list_.Bounds();
    x = r.left + controls::Scale(24, dpi_);
    y = r.top + controls::Scale(24, dpi_);
    const int item = list_.Selected();
    RECT itemRect{LVIR_BOUNDS, 0, 0, 0};
    if (item >= 0 &&
        SendMessageW(list_.Handle(), LVM_GETITEMRECT, item, reinterpret_cast<LPARAM>(&itemRect))) {
      POINT p{itemRect.left + controls::Scale(24, dpi_), itemRect.bottom};
      ClientToScreen(list_.Handle(), &p);
      x = p.x;
      y = p.y;
    }
  }
  softMenu_.Track(hwnd_, x, y);
}

void TUninstallForm_Main::UninstallClick() {
  std::vector<const SoftRow*> checked;
  if (state_.BatchMode()) {
    for (int i = 0, n = list_.Count(); i < n; ++i)
      if (list_.Checked(i)) checked.push_back(RowAt(i));
  }
  // Every checked row goes in one hand-over: one sequence runs them in turn.
  const std::vector<std::wstring> jobs =
      UninstallJobs(state_.BatchMode(), checked, SelectedRow());
  if (jobs.empty()) {
    Ask(state_.BatchMode() ? messages_.selectOneItem : messages_.selectProgram,
        MB_OK | MB_ICONINFORMATION);
    return;
  }
  if (Ask(messages_.sureUninstall, MB_YESNO | MB_ICONQUESTION) != IDYES) return;
  if (!uninstalling_ || !inventory_) return;
  uninstalling_->SetSoftware(&inventory_->Items());
  uninstalling_->SetJobs(&jobs, JobMode::Uninstall);
  uninstalling_->CenterOver(hwnd_);
  uninstalling_->ShowModal(hwnd_);
  app_.ProcessMessages();
  app_.Dispatcher().WaitAndDrain(std::chrono::milliseconds(10));
  RefreshClick();
}

void TUninstallForm_Main::BatchClick() {
  const bool on = state_.ToggleBatch();
  batch_.SetChecked(on);
  if (on) list_.SetChecked(-1, false);
  list_.SetExtendedStyle(LVS_EX_CHECKBOXES, on ? LVS_EX_CHECKBOXES : 0);
  if (on) list_.SetChecked(-1, false);
}

void TUninstallForm_Main::RemoveEntryClick() {
  const SoftRow* row = SelectedRow();
  if (!row) return;
  const std::wstring indexText = row->sub[SubItem::RecordIndex];
  if (Ask(messages_.sureRemoveEntry, MB_YESNO | MB_ICONQUESTION) != IDYES) return;
  const int index = RecordIndexOf(indexText);
  // The first record is never removed this way, deliberately.
  if (!MayRemoveEntry(index) || !inventory_) return;
  if (inventory_->RemoveSoftwareEntry(index)) RefreshClick();
}

void TUninstallForm_Main::RefreshClick() {
  if (!inventory_) return;
  inventory_->RefreshInventory();
  rows_.clear();
  state_.ResetFilter();
  const int count = list_.Count();
  if (count > 0) list_.DeleteItem(count - 1);
  SortList();
  ShowCategory(state_.Category());
}

void TUninstallForm_Main::ExportListClick() {
  const Platform& platform = app_.Machine();
  std::wstring buffer(32768, L'\0');
  const std::wstring proposed = messages_.exportLabels.saveDlgName;
  lstrcpynW(buffer.data(), proposed.c_str(), static_cast<int>(buffer.size()));
  static const wchar_t kFilter[] = L"Text(*.txt)\0*.txt\0";
  OPENFILENAMEW dialog{};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = hwnd_;
  dialog.lpstrFilter = kFilter;
  dialog.nFilterIndex = 1;
  dialog.lpstrFile = buffer.data();
  dialog.nMaxFile = static_cast<DWORD>(buffer.size());
  dialog.lpstrDefExt = L"txt";
  dialog.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_ENABLESIZING | OFN_NOCHANGEDIR;
  if (!GetSaveFileNameW(&dialog)) return;
  const std::wstring name = ExportFileName(buffer.c_str());
  const std::wstring module = platform.system.ModulePath();
  const auto now = platform.system.ToLocalTime(platform.system.Now()).value_or(LocalDateTime{});
  static const SoftList kNone;
  const std::wstring content =
      ExportListText(inventory_ ? inventory_->Items() : kNone, messages_.exportLabels,
                     GetFileVersionText(platform.system, module, 3), GetOSName(platform.system),
                     now);
  if (!WriteTextFile(platform.files, name, content))
    throw EFCreateError("Cannot create file \"" + text::ToUtf8(name) + "\"");
  ShellExecuteW(hwnd_, L"open", name.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

void TUninstallForm_Main::RestorePointClick() {
  if (!LaunchRestoreTool(app_.Machine())) Ask(messages_.unknownOs, MB_OK | MB_ICONWARNING);
}

void TUninstallForm_Main::OpenForcedUninstall(const std::wstring& file) {
  if (!force_) return;
  std::wstring target;
  if (!file.empty()) {
    const auto found = ForcedUninstallTarget(app_.Machine(), file);
    if (!found) return;
    target = *found;
  }
  force_->SetSoftware(inventory_ ? &inventory_->Items() : nullptr, small_.Handle(),
                      [this] { RefreshClick(); });
  force_->SetFile(target);
  force_->CenterOver(hwnd_);
  force_->ShowModeless();
}

void TUninstallForm_Main::OnCommand(int id, int code, HWND) {
  const Platform& platform = app_.Machine();
  if (id >= MainId::CategoryFirst && id < MainId::CategoryFirst + 6) {
    if (code == BN_CLICKED) ShowCategory(id - MainId::CategoryFirst);
    return;
  }
  switch (id) {
    case MainId::SearchEdit:
      if (code == EN_SETFOCUS) SearchEnter();
      if (code == EN_KILLFOCUS) SearchExit();
      return;
    case MainId::SearchClear:
      SearchClear();
      return;
    case MainId::Uninstall:
    case MainId::MenuUninstall:
      UninstallClick();
      return;
    case MainId::BatchUninstall:
      BatchClick();
      return;
    case MainId::ForceUninstall:
      OpenForcedUninstall(L"");
      return;
    case MainId::More: {
      RECT r = more_.Bounds();
      managerMenu_.Track(hwnd_, r.left, r.bottom);
      return;
    }
    case MainId::DetailsHelp:
      if (code == STN_CLICKED) OpenHelpLink(platform, help_.Text());
      return;
    case MainId::MenuRemoveEntry:
      RemoveEntryClick();
      return;
    case MainId::MenuRefresh:
    case Shortcut::Refresh:
      RefreshClick();
      return;
    case Shortcut::Search:
      search_.Focus();
      search_.SelectAll();
      return;
    case MainId::MenuViewIcons:
      list_.SetView(LV_VIEW_ICON);
      return;
    case MainId::MenuViewDetails:
      list_.SetView(LV_VIEW_DETAILS);
      return;
    case MainId::MenuOpenFolder:
      if (const SoftRow* row = SelectedRow())
        platform.shell.Execute(L"open", row->sub[SubItem::InstallLocation], L"", L"",
                               ShowCmd::Normal);
      return;
    case MainId::MenuViewEntry:
      if (const SoftRow* row = SelectedRow())
        OpenRegistryEditorAt(platform, RegistryKeyOf(*row), L"",
                             row->sub[SubItem::Is64BitView] != L"0");
      return;
    case MainId::MenuSearchOnline:
      if (const SoftRow* row = SelectedRow())
        platform.shell.Execute(L"open", kSearchBrowser, SearchOnlineParameter(row->caption), L"",
                               ShowCmd::Normal);
      return;
    case MainId::MenuExportList:
      ExportListClick();
      return;
    case MainId::MenuLogManagement:
      if (logs_) {
        logs_->CenterOver(hwnd_);
        logs_->ShowModal(hwnd_);
      }
      return;
    case MainId::MenuRestorePoint:
      RestorePointClick();
      return;
    default:
      return;
  }
}

LRESULT TUninstallForm_Main::OnNotify(NMHDR& header) {
  if (header.hwndFrom == list_.Handle()) {
    switch (header.code) {
      case LVN_GETDISPINFOW:
        FillDispInfo(reinterpret_cast<NMLVDISPINFOW&>(header));
        return 0;
      case LVN_COLUMNCLICK: {
        const int column = reinterpret_cast<NMLISTVIEW&>(header).iSubItem;
        if (state_.ClickColumn(column)) SortList();
        return 0;
      }
      case LVN_ITEMCHANGED: {
        const auto& change = reinterpret_cast<NMLISTVIEW&>(header);
        if ((change.uChanged & LVIF_STATE) &&
            ((change.uNewState ^ change.uOldState) & LVIS_SELECTED))
          UpdateDetails();
        return 0;
      }
      case NM_DBLCLK:
        if (SelectedRow()) UninstallClick();
        return 0;
      case LVN_KEYDOWN:
        if (reinterpret_cast<NMLVKEYDOWN&>(header).wVKey == VK_DELETE) UninstallClick();
        return 0;
      default:
        return 0;
    }
  }
  // The sub-item columns stay zero-width.
  if (header.hwndFrom == list_.Header() &&
      (header.code == HDN_BEGINTRACKW || header.code == HDN_DIVIDERDBLCLICKW)) {
    return reinterpret_cast<NMHEADERW&>(header).iItem >= MainId::VisibleColumns ? TRUE : FALSE;
  }
  return 0;
}

void TUninstallForm_Main::OnSize(UINT, int, int) { Layout(); }

void TUninstallForm_Main::OnTimer(UINT_PTR id) {
  if (id == kGetSoftwareTimer) TimerGetSoftware();
}

void TUninstallForm_Main::OnDpiChanged(UINT dpi, const RECT& suggested) {
  dpi_ = dpi;
  BaseWindow::OnDpiChanged(dpi, suggested);
  list_.SetColumnWidth(1, controls::Scale(80, dpi_));
  list_.SetColumnWidth(2, controls::Scale(130, dpi_));
  ApplyDpi();
}

LRESULT TUninstallForm_Main::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CREATE:
      CreateControls();
      return 0;
    case WM_ACTIVATE:
      if (LOWORD(wParam) != WA_INACTIVE) FormActivate();
      if (KeepFocus(wParam, false)) return 0;
      break;
    case WM_ROW_GROUP: {
      const SoftRow* row = RowAt(static_cast<int>(wParam));
      return row ? row->group : 0;
    }
    case WM_DRAIN_HANDOVERS:
      app_.Dispatcher().Drain();
      return 0;
    case WM_ACTIVATE_INSTANCE:
      if (lParam == kActivateLParam && wParam == kActivateWParam) ActivateInstance();
      return 0;
    case WM_GETMINMAXINFO: {
      auto* info = reinterpret_cast<MINMAXINFO*>(lParam);
      info->ptMinTrackSize = {controls::Scale(720, dpi_), controls::Scale(500, dpi_)};
      return 0;
    }
    case WM_CONTEXTMENU:
      if (reinterpret_cast<HWND>(wParam) == list_.Handle()) {
        ContextMenu(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam));
        return 0;
      }
      break;
    case WM_CTLCOLOREDIT:
      if (reinterpret_cast<HWND>(lParam) == search_.Handle()) {
        HDC dc = reinterpret_cast<HDC>(wParam);
        SetTextColor(dc, searchFontColour_);
        SetBkColor(dc, searchBoxColour_);
        return reinterpret_cast<LRESULT>(searchBrush_ ? searchBrush_.get()
                                                      : GetSysColorBrush(COLOR_WINDOW));
      }
      break;
    case WM_CTLCOLORSTATIC:
      if (reinterpret_cast<HWND>(lParam) == help_.Handle() && help_.Text() != L"-") {
        HDC dc = reinterpret_cast<HDC>(wParam);
        SetTextColor(dc, GetSysColor(COLOR_HOTLIGHT));
        SetBkMode(dc, TRANSPARENT);
        return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_BTNFACE));
      }
      break;
    case WM_SETCURSOR:
      if (reinterpret_cast<HWND>(wParam) == help_.Handle() && help_.Text() != L"-") {
        SetCursor(LoadCursorW(nullptr, IDC_HAND));
        return TRUE;
      }
      break;
    case DM_GETDEFID:
      // Enter in the search box searches; elsewhere it uninstalls.
      if (GetFocus() == search_.Handle()) return 0;
      return MAKELRESULT(MainId::Uninstall, DC_HASDEFID);
    case WM_DROPFILES: {
      HDROP drop = reinterpret_cast<HDROP>(wParam);
      std::wstring file(DragQueryFileW(drop, 0, nullptr, 0) + 1, L'\0');
      const UINT length = DragQueryFileW(drop, 0, file.data(), static_cast<UINT>(file.size()));
      DragFinish(drop);
      file.resize(length);
      if (length > 0) OpenForcedUninstall(file);
      return 0;
    }
    case WM_CLOSE:
      FormClose();
      return 0;
    case WM_DESTROY:
      PostQuitMessage(0);
      return 0;
    default:
      break;
  }
  return Default(message, wParam, lParam);
}

}  // namespace varnel::forms
