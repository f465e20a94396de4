#include "ui/forms/uninstalling_form.h"

#include <algorithm>

#include "controls/dpi.h"
#include "controls/step_marker.h"
#include "leftovers/scan_driver.h"
#include "ui/forms/form_ids.h"
#include "ui/forms/powerscan_form.h"
#include "ui/language_catalog.h"

namespace varnel::forms {

namespace {

namespace Id = UninstallingId;
constexpr wchar_t kFormName[] = L"Uninstalling_Form";
constexpr UINT_PTR kStartTimer = 1;  // Timer_Uninstall
constexpr UINT_PTR kFrameTimer = 2;  // the running markers
constexpr UINT kStartDelayMs = 100;
constexpr UINT kFrameMs = 500;
constexpr COLORREF kDark = 0x333333;
constexpr COLORREF kLight = 0x999999;

// Width of a control's text in its own font.
int TextWidth(HWND control) {
  const std::wstring text = controls::Window(control).Text();
  SIZE size{};
  if (HDC dc = GetDC(control)) {
    HGDIOBJ old =
        SelectObject(dc, reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)));
    if (!GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size)) size.cx = 0;
    SelectObject(dc, old);
    ReleaseDC(control, dc);
  }
  return size.cx;
}

// While it lives, Cancel stops the sequence or the scan; whatever ends
// them, Cancel closes the window afterwards.
class BusyScope {
 public:
  explicit BusyScope(bool& busy) : busy_(busy) { busy_ = true; }
  ~BusyScope() { busy_ = false; }
  BusyScope(const BusyScope&) = delete;
  BusyScope& operator=(const BusyScope&) = delete;

 private:
  bool& busy_;
};

}  // namespace

TUninstalling_Form::TUninstalling_Form(Application& app, HWND owner) : Form(app) {
  const UINT dpi = controls::DpiOf(owner);
  if (!Create(kFormName, controls::Scale(540, dpi), controls::Scale(400, dpi), owner,
              WS_POPUPWINDOW | WS_CAPTION | WS_DLGFRAME))
    return;
  CreateControls();
  sequence_ = std::make_unique<UninstallSequence>(app.Machine(), *this, LoadTexts());
  Layout();
}

TUninstalling_Form::~TUninstalling_Form() = default;

void TUninstalling_Form::CreateControls() {
  using controls::CreateChild;
  modeLabel_.Attach(CreateChild(hwnd_, L"STATIC", L"Uninstall Mode:",
                                SS_LEFT | SS_CENTERIMAGE | SS_NOPREFIX, Id::ModeLabel));
  standardChoice_.Attach(CreateChild(hwnd_, L"BUTTON", L"Standard",
                                     BS_AUTORADIOBUTTON | WS_TABSTOP | WS_GROUP, Id::Standard));
  advancedChoice_.Attach(
      CreateChild(hwnd_, L"BUTTON", L"Advanced", BS_AUTORADIOBUTTON, Id::Advanced));
  for (int i = 0; i < kSteps; ++i)
    markers_[i] = CreateChild(hwnd_, L"STATIC", L"", SS_OWNERDRAW, Id::MarkerFirst + i);
  auto label = [&](int id, const wchar_t* text, DWORD style) {
    return controls::Label(CreateChild(hwnd_, L"STATIC", text, SS_NOPREFIX | style, id));
  };
  // Centred in their line, so that they stand level with their markers.
  const DWORD line = SS_LEFTNOWORDWRAP | SS_ENDELLIPSIS | SS_CENTERIMAGE;
  restorePoint_ = label(Id::RestorePointCaption, L"", line);
  regBackup_ = label(Id::RegBackupCaption, L"", line);
  restoreInfo_ = label(Id::RestorePointInfo,
                       L"Create a restore point here and you can undo the changes if something "
                       L"unexpected happened.",
                       SS_LEFT);
  uninstalling_ = label(Id::UninstallingCaption, L"", line);
  uninstallInfo_ = label(Id::UninstallingInfo,
                         L"Built-in uninstall by using the application's uninstaller.", SS_LEFT);
  powerScan_ = label(Id::PowerScanCaption, L"Powerful Scan", line);
  powerScanInfo_ = label(Id::PowerScanInfo,
                         L"Scan for leftover items in the Registry and on the hard drive.", SS_LEFT);
  scan_.Attach(CreateChild(hwnd_, L"BUTTON", L"Powerful Scan", BS_PUSHBUTTON | WS_TABSTOP | WS_GROUP,
                           Id::Scan));
  cancel_.Attach(
      CreateChild(hwnd_, L"BUTTON", L"Cancel", BS_PUSHBUTTON | WS_TABSTOP, Id::Cancel));
  scan_.Enable(false);
}

UninstallTexts TUninstalling_Form::LoadTexts() {
  texts_ = std::make_unique<FormTexts>(kFormName, hwnd_);
  FormTexts& t = *texts_;
  t.AddWindow(L"Label_UninstallMode", ComponentKind::Label, modeLabel_.Handle());
  t.AddWindow(L"Label_Standard", ComponentKind::Label, standardChoice_.Handle());
  t.AddWindow(L"Label_Advanced", ComponentKind::Label, advancedChoice_.Handle());
  t.AddWindow(L"Label_CreateSystemRestorePoint", ComponentKind::Label, restorePoint_.Handle());
  t.AddWindow(L"Label_CreateRegBackup", ComponentKind::Label, regBackup_.Handle());
  t.AddWindow(L"Label_CreateRestore_Info", ComponentKind::Label, restoreInfo_.Handle());
  t.AddWindow(L"Label_Uninstalling", ComponentKind::Label, uninstalling_.Handle());
  t.AddWindow(L"Label_StdCall_Info", ComponentKind::Label, uninstallInfo_.Handle());
  t.AddWindow(L"Label_PowerScanning", ComponentKind::Label, powerScan_.Handle());
  t.AddWindow(L"Label_PowerscanInfo", ComponentKind::Label, powerScanInfo_.Handle());
  t.AddWindow(L"Button_Scan", ComponentKind::Button, scan_.Handle());
  t.AddWindow(L"Button_Cancel", ComponentKind::Button, cancel_.Handle());
  const auto language = TranslateForm(app_.Machine(), t);
  auto m = [&](std::wstring_view key) { return CatalogMessage(*language, kFormName, key); };
  UninstallTexts texts;
  texts.NoLeftFind = m(L"M_NoLeftFind");
  texts.CreateRestorePoint = m(L"M_CreateRestorePoint");
  texts.CreateRegBackup = m(L"M_CreateRegBackup");
  texts.StandardUninstall = m(L"M_StandardUninstall");
  texts.CreateRPFinish = m(L"M_CreateRPFinish");
  texts.CreateRBFinish = m(L"M_CreateRBFinish");
  texts.Uninstalling = m(L"M_Uninstalling");
  texts.UninstallFinish = m(L"M_UninstallFinish");
  texts.Operation = m(L"M_Operation");
  texts.DateTime = m(L"M_DateTime");
  texts.ForcedUninstall = m(L"M_ForcedUninstall");
  texts.RemoveInBrowser = m(L"M_RemoveInBrowser");
  return texts;
}

void TUninstalling_Form::Layout() {
  if (!cancel_) return;
  const UINT dpi = controls::DpiOf(hwnd_);
  font_ = controls::MessageFont(dpi);
  boldFont_ = controls::MessageFont(dpi, true);
  for (HWND c : {modeLabel_.Handle(), standardChoice_.Handle(), advancedChoice_.Handle(),
                 restoreInfo_.Handle(), uninstallInfo_.Handle(), powerScanInfo_.Handle(),
                 scan_.Handle(), cancel_.Handle()})
    controls::Window(c).SetFont(font_.get());
  for (HWND c : {restorePoint_.Handle(), regBackup_.Handle(), uninstalling_.Handle(),
                 powerScan_.Handle()})
    controls::Window(c).SetFont(boldFont_.get());
  auto s = [dpi](int v) { return controls::Scale(v, dpi); };
  RECT r;
  GetClientRect(hwnd_, &r);
  const int left = s(16), text = s(48), width = r.right - text - s(16);
  // The mode row follows its texts, which a language file may make longer;
  // a radio button is its box, a gap and its text.
  const int box = GetSystemMetricsForDpi(SM_CXMENUCHECK, dpi) + s(6);
  const int labelWidth = TextWidth(modeLabel_.Handle()) + s(4);
  const int standardWidth = box + TextWidth(standardChoice_.Handle()) + s(4);
  const int advancedWidth = box + TextWidth(advancedChoice_.Handle()) + s(4);
  const int standardLeft = left + std::max(s(124), labelWidth + s(8));
  const int advancedLeft = standardLeft + std::max(s(136), standardWidth + s(16));
  modeLabel_.Move(left, s(14), standardLeft - left - s(4), s(24));
  standardChoice_.Move(standardLeft, s(14), standardWidth, s(24));
  advancedChoice_.Move(advancedLeft, s(14), advancedWidth, s(24));
  // Each step: its marker level with its caption line, the description
  // below the caption lines.
  const int marker = s(20), line = s(22), below = s(25);
  int y = s(58);
  controls::Window(markers_[0]).Move(left, y, marker, marker);
  restorePoint_.Move(text, y, width, s(20));
  regBackup_.Move(text, y + line, width, s(20));
  restoreInfo_.Move(text, y + line + below, width, s(36));
  y += s(92);
  controls::Window(markers_[1]).Move(left, y, marker, marker);
  uninstalling_.Move(text, y, width, s(20));
  uninstallInfo_.Move(text, y + below, width, s(36));
  y += s(60);
  controls::Window(markers_[2]).Move(left, y, marker, marker);
  powerScan_.Move(text, y, width, s(20));
  powerScanInfo_.Move(text, y + below, width, s(36));
  const int buttonTop = r.bottom - s(44);
  cancel_.Move(r.right - s(16) - s(100), buttonTop, s(100), s(28));
  scan_.Move(r.right - s(16) - s(100) - s(8) - s(130), buttonTop, s(130), s(28));
}

void TUninstalling_Form::SetSoftware(const SoftList* list) {
  software_ = list;
  if (sequence_) sequence_->SetSoftware(list);
}

void TUninstalling_Form::SetJobs(const std::vector<std::wstring>* jobs, int mode) {
  if (sequence_) sequence_->SetJobs(jobs, mode);
}

const std::vector<std::wstring>& TUninstalling_Form::Jobs() const {
  static const std::vector<std::wstring> kNone;
  return sequence_ ? sequence_->Jobs() : kNone;
}

// FormShow.
void TUninstalling_Form::OnShow() {
  if (!sequence_) return;
  advanced_ = LoadModeChoice(app_.Machine());
  standardChoice_.SetChecked(!advanced_);
  advancedChoice_.SetChecked(advanced_);
  standardChoice_.Enable(true);
  advancedChoice_.Enable(true);
  for (int i = 0; i < kSteps; ++i) dark_[i] = false;
  sequence_->Prepare();
  scan_.Enable(false);
  ShowScanStep(advanced_);
  busy_ = true;
  SetTimer(hwnd_, kStartTimer, kStartDelayMs, nullptr);
  lastFocus_ = cancel_.Handle();
}

void TUninstalling_Form::ShowScanStep(bool show) {
  powerScan_.Show(show);
  powerScanInfo_.Show(show);
  scan_.Show(show);
}

void TUninstalling_Form::StandardClick() {
  advanced_ = false;
  ShowScanStep(false);
  reached_[2] = false;
  running_[2] = false;
  controls::Window(markers_[2]).Invalidate();
  Animate();
}

void TUninstalling_Form::AdvancedClick() {
  advanced_ = true;
  ShowScanStep(true);
  reached_[2] = IsWindowEnabled(scan_.Handle()) != FALSE;
  controls::Window(markers_[2]).Invalidate();
}

void TUninstalling_Form::OnTimer(UINT_PTR id) {
  if (id == kFrameTimer) {
    ++frame_;
    for (int i = 0; i < kSteps; ++i)
      if (running_[i]) controls::Window(markers_[i]).Invalidate();
    return;
  }
  if (id != kStartTimer) return;
  KillTimer(hwnd_, kStartTimer);
  BusyScope busy(busy_);
  sequence_->Run();
}

// Cancel, Escape and the close box alike: while the sequence or the scan
// runs they stop it (a running uninstaller is left running); after that
// they close the window.
void TUninstalling_Form::CancelClick() {
  if (busy_ && sequence_) {
    sequence_->Cancel();
    return;
  }
  CloseWindow();
}

void TUninstalling_Form::OnClose() { CancelClick(); }

void TUninstalling_Form::ScanClick() {
  if (!sequence_ || busy_ || !results_) return;
  standardChoice_.Enable(false);
  advancedChoice_.Enable(false);
  scan_.Enable(false);
  cancel_.Focus();
  lastFocus_ = cancel_.Handle();
  results_->ClearResults();
  {
    BusyScope busy(busy_);
    ScanDriver driver(app_.Machine(), app_.Filter(), [this] { ProcessMessages(); });
    sequence_->Scan(driver, nullptr, *results_, results_->Images());
  }
  running_[2] = false;
  controls::Window(markers_[2]).Invalidate();
  Animate();
  if (results_->Empty()) {
    if (!sequence_->Cancelled()) ShowMessage(sequence_->Texts().NoLeftFind);
    CloseWindow();
    return;
  }
  const RECT bounds = controls::Window(hwnd_).Bounds();
  CloseWindow();
  results_->SetOtherProgramFolders(sequence_->OtherProgramFolders());
  results_->MoveTo(bounds.left, bounds.top);
  results_->ShowModeless();
}

void TUninstalling_Form::OnCommand(int id, int code, HWND) {
  switch (id) {
    case Id::Cancel:
    case IDCANCEL:
      CancelClick();
      return;
    case Id::Scan:
      ScanClick();
      return;
    case Id::Standard:
      if (code == BN_CLICKED) StandardClick();
      return;
    case Id::Advanced:
      if (code == BN_CLICKED) AdvancedClick();
      return;
    default:
      return;
  }
}

void TUninstalling_Form::OnSize(UINT, int, int) { Layout(); }

void TUninstalling_Form::OnDpiChanged(UINT dpi, const RECT& suggested) {
  Form::OnDpiChanged(dpi, suggested);
  Layout();
}

LRESULT TUninstalling_Form::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_DRAWITEM: {
      const auto& item = *reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
      const int step = static_cast<int>(item.CtlID) - Id::MarkerFirst;
      if (step < 0 || step >= kSteps) break;
      const auto look = running_[step]   ? controls::MarkerLook::Running
                        : reached_[step] ? controls::MarkerLook::Reached
                                         : controls::MarkerLook::None;
      controls::PaintStepMarker(item, look, frame_);
      return TRUE;
    }
    case WM_CTLCOLORSTATIC: {
      const int id = GetDlgCtrlID(reinterpret_cast<HWND>(lParam));
      int step = -1;
      if (id >= Id::RestorePointCaption && id <= Id::RestorePointInfo) step = 0;
      if (id == Id::UninstallingCaption || id == Id::UninstallingInfo) step = 1;
      if (id == Id::PowerScanCaption || id == Id::PowerScanInfo) step = 2;
      if (step < 0) break;
      HDC dc = reinterpret_cast<HDC>(wParam);
      SetTextColor(dc, dark_[step] ? kDark : kLight);
      SetBkColor(dc, GetSysColor(COLOR_BTNFACE));
      return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_BTNFACE));
    }
    case DM_GETDEFID:
      return MAKELRESULT(Id::Cancel, DC_HASDEFID);
    default:
      break;
  }
  return Form::HandleMessage(message, wParam, lParam);
}

void TUninstalling_Form::Animate() {
  bool any = false;
  for (bool running : running_) any = any || running;
  if (any) {
    SetTimer(hwnd_, kFrameTimer, kFrameMs, nullptr);
  } else {
    KillTimer(hwnd_, kFrameTimer);
  }
}

// SetStep: 0..2 start that step's marker and draw its lines dark; 3 starts
// the scan's marker; any other value hides every marker.
void TUninstalling_Form::SetStep(int step) {
  if (step < 0 || step > 3) {
    for (int i = 0; i < kSteps; ++i) running_[i] = reached_[i] = false;
  } else {
    const int line = step == 3 ? 2 : step;
    for (int i = 0; i < kSteps; ++i) running_[i] = step != 2 && i == line;
    reached_[line] = true;
    if (step <= 2)
      for (int i = 0; i < kSteps; ++i) dark_[i] = i == step;
  }
  for (HWND marker : markers_) controls::Window(marker).Invalidate();
  for (HWND label : {restorePoint_.Handle(), regBackup_.Handle(), restoreInfo_.Handle(),
                     uninstalling_.Handle(), uninstallInfo_.Handle(), powerScan_.Handle(),
                     powerScanInfo_.Handle()})
    InvalidateRect(label, nullptr, TRUE);
  Animate();
}

HWND TUninstalling_Form::StepLabel(StepLine line) const {
  switch (line) {
    case StepLine::RestorePoint:
      return restorePoint_.Handle();
    case StepLine::RegBackup:
      return regBackup_.Handle();
    case StepLine::Uninstalling:
      return uninstalling_.Handle();
    case StepLine::PowerScanning:
      return powerScan_.Handle();
  }
  return nullptr;
}

std::wstring TUninstalling_Form::Caption(StepLine line) const {
  return controls::Window(StepLabel(line)).Text();
}

void TUninstalling_Form::SetCaption(StepLine line, std::wstring_view text) {
  controls::Window(StepLabel(line)).SetText(text);
}

void TUninstalling_Form::HideUninstallMarker() {
  running_[1] = false;
  controls::Window(markers_[1]).Invalidate();
  Animate();
}

void TUninstalling_Form::EnableScan() {
  scan_.Enable(true);
  if (advanced_) {
    reached_[2] = true;
    controls::Window(markers_[2]).Invalidate();
    scan_.Focus();
    lastFocus_ = scan_.Handle();
  }
}

void TUninstalling_Form::ProcessMessages() {
  app_.ProcessMessages();
  app_.Dispatcher().Drain();
}

void TUninstalling_Form::ShowMessage(std::wstring_view text) {
  MessageBoxW(hwnd_, std::wstring(text).c_str(), controls::Window(hwnd_).Text().c_str(),
              MB_OK);
}

void TUninstalling_Form::CloseWindow() {
  KillTimer(hwnd_, kStartTimer);
  for (int i = 0; i < kSteps; ++i) running_[i] = false;
  Animate();
  Close();
}

}  // namespace varnel::forms
