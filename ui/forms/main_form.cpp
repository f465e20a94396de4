#include "ui/forms/main_form.h"

#include <commctrl.h>
#include <uxtheme.h>
#include <windowsx.h>

#include "controls/dpi.h"
#include "core/app_frame.h"
#include "core/data_folder.h"
#include "ui/forms/main_form_ids.h"
#include "ui/forms/private_messages.h"
#include "ui/key_hints.h"
#include "ui/language_catalog.h"
#include "ui/right_menu.h"
#include "ui/timing_trace.h"

namespace varnel::forms {

namespace {

constexpr wchar_t kClassName[] = L"TUninstallForm_Main";
constexpr wchar_t kFormName[] = L"UninstallForm_Main";
constexpr UINT_PTR kGetSoftwareTimer = 1;

const wchar_t* const kCategoryLabels[6] = {
    L"Label_AllProgrames",  L"Label_Toolbar",    L"Label_RecentlyInstalled",
    L"Label_LargeProgrames", L"Label_RarelyUsed", L"Label_WindowsUpdates"};

}  // namespace

TUninstallForm_Main::TUninstallForm_Main(Application& app) : app_(app) {
  RegisterClassOnce(kClassName, app.Icon());
  dpi_ = controls::DpiOf(nullptr);
  CreateBase(kClassName, app.Title(), WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, WS_EX_CONTROLPARENT,
             controls::Scale(940, dpi_), controls::Scale(640, dpi_), nullptr);
}

TUninstallForm_Main::~TUninstallForm_Main() { inventory_.reset(); }

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
  controls::SearchBox::Events events;
  events.enter = [this] {
    ApplySearchLook(SearchBoxOnEnter(search_.Text(), messages_.searchSoftware));
  };
  events.exit = [this] {
    ApplySearchLook(SearchBoxOnExit(search_.Text(), messages_.searchSoftware));
  };
  events.keyUp = [this](unsigned key) { SearchKeyUp(key); };
  events.cleared = [this] { SearchCleared(); };
  search_.Create(hwnd_, MainId::SearchEdit, MainId::SearchClear, std::move(events));
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

  small_ = controls::ImageList(1, 1);
  large_ = controls::ImageList(1, 1);
  SizeImageLists();
  // What the list adds to the images' height for a row, measured while it
  // has no groups yet (a row outside every group would not show).
  if (const int row = list_.RowHeight(); row > 0) {
    rowPadding_ = row - controls::Scale(kRowHeight, dpi_);
    if (rowPadding_ != 0) SizeImageLists();
  }
  gridPen_.reset(CreatePen(PS_SOLID, 1, kGridColour));

  const int widths[MainId::VisibleColumns] = {300, 80, 130};
  for (int c = 0; c < MainId::VisibleColumns; ++c)
    list_.InsertColumn(c, L"", controls::Scale(widths[c], dpi_), c == 1 ? LVCFMT_RIGHT : LVCFMT_LEFT);
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
  // Access keys once the captions are in the user's language; the command
  // buttons choose before the categories.
  std::vector<controls::Window> buttons = {uninstall_, batch_, forceUninstall_, more_};
  for (HWND category : categories_) buttons.emplace_back(category);
  std::vector<std::wstring> captions;
  for (const controls::Window& button : buttons) captions.push_back(button.Text());
  const std::vector<std::wstring> keyed = WithAccessKeys(captions);
  for (std::size_t i = 0; i < buttons.size(); ++i) buttons[i].SetText(keyed[i]);
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
  options.onError = [this](std::exception_ptr error) { app_.HandleException(error); };
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

void TUninstallForm_Main::OnTimer(UINT_PTR id) {
  if (id == kGetSoftwareTimer) TimerGetSoftware();
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
    case WM_ROW_RECORD: {
      const SoftRow* row = RowAt(static_cast<int>(wParam));
      return row ? row->index : -1;
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
      if (HBRUSH brush = search_.Colour(reinterpret_cast<HWND>(lParam),
                                        reinterpret_cast<HDC>(wParam)))
        return reinterpret_cast<LRESULT>(brush);
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
      if (search_.HasFocus()) return 0;
      return MAKELRESULT(MainId::Uninstall, DC_HASDEFID);
    case WM_DROPFILES:
      DropFiles(reinterpret_cast<HDROP>(wParam));
      return 0;
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
