#include "ui/forms/shell_forms.h"

#include "controls/dpi.h"
#include "controls/window.h"

namespace varnel::forms {

namespace {
constexpr int kCloseId = 100;
constexpr int kListId = 101;
constexpr int kDetailId = 102;
}  // namespace

TShellForm::TShellForm(TApplication& app, std::wstring formName, std::wstring labelName,
                       HWND owner)
    : Form(app), formName_(std::move(formName)) {
  const UINT dpi = controls::DpiOf(owner);
  if (!Create(formName_, controls::Scale(480, dpi), controls::Scale(360, dpi), owner,
              WS_OVERLAPPEDWINDOW & ~WS_MAXIMIZEBOX))
    return;
  label_ = controls::CreateChild(hwnd_, L"STATIC", L"", SS_LEFT, 0);
  detail_ = controls::CreateChild(hwnd_, L"STATIC", L"", SS_LEFT | SS_PATHELLIPSIS, kDetailId);
  lines_.Attach(controls::CreateChild(hwnd_, L"LISTBOX", L"",
                                      WS_VSCROLL | WS_TABSTOP | LBS_NOINTEGRALHEIGHT, kListId,
                                      WS_EX_CLIENTEDGE));
  close_ = controls::CreateChild(hwnd_, L"BUTTON", L"Close", BS_DEFPUSHBUTTON | WS_TABSTOP,
                                 kCloseId);
  texts_ = std::make_unique<TFormTexts>(formName_, hwnd_);
  texts_->AddWindow(std::move(labelName), ComponentKind::Label, label_);
  texts_->AddWindow(L"Button_Close", ComponentKind::Button, close_);
  TranslateForm(app.Machine(), *texts_);
  Layout();
}

TShellForm::~TShellForm() = default;

void TShellForm::Layout() {
  if (!close_) return;
  const UINT dpi = controls::DpiOf(hwnd_);
  font_ = controls::MessageFont(dpi);
  for (HWND c : {label_, detail_, lines_.Handle(), close_}) controls::Window(c).SetFont(font_.get());
  RECT r;
  GetClientRect(hwnd_, &r);
  auto s = [dpi](int v) { return controls::Scale(v, dpi); };
  const int w = r.right - s(24);
  controls::Window(label_).Move(s(12), s(12), w, s(20));
  controls::Window(detail_).Move(s(12), s(34), w, s(20));
  lines_.Move(s(12), s(58), w, r.bottom - s(58) - s(52));
  controls::Window(close_).Move(r.right - s(12) - s(96), r.bottom - s(40), s(96), s(28));
}

void TShellForm::SetLines(const std::vector<std::wstring>& lines) {
  lines_.Clear();
  for (const auto& line : lines) lines_.Add(line);
}

void TShellForm::SetDetail(std::wstring_view text) { controls::Window(detail_).SetText(text); }

void TShellForm::OnCommand(int id, int, HWND) {
  if (id == kCloseId || id == IDCANCEL) Close();
}

void TShellForm::OnSize(UINT, int, int) { Layout(); }

void TShellForm::OnDpiChanged(UINT dpi, const RECT& suggested) {
  Form::OnDpiChanged(dpi, suggested);
  Layout();
}

LRESULT TShellForm::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == DM_GETDEFID) return MAKELRESULT(kCloseId, DC_HASDEFID);
  return Form::HandleMessage(message, wParam, lParam);
}

TPowerScan_Form::TPowerScan_Form(TApplication& app, HWND owner)
    : TShellForm(app, L"PowerScan_Form", L"Label_Results", owner) {}

}  // namespace varnel::forms
