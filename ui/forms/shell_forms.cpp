#include "ui/forms/shell_forms.h"

#include "controls/dpi.h"
#include "controls/window.h"

namespace varnel::forms {

namespace {
constexpr int kCloseId = 100;
constexpr int kListId = 101;
constexpr int kDetailId = 102;
}  // namespace

TShellForm::TShellForm(TApplication& app, std::wstring formName, std::wstring labelName)
    : app_(app), formName_(std::move(formName)) {
  const std::wstring className = L"T" + formName_;
  RegisterClassOnce(className, app.Icon());
  const UINT dpi = controls::DpiOf(nullptr);
  CreateBase(className, formName_, WS_OVERLAPPEDWINDOW & ~WS_MAXIMIZEBOX, WS_EX_CONTROLPARENT,
             controls::Scale(480, dpi), controls::Scale(360, dpi), nullptr);
  if (!hwnd_) return;
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

void TShellForm::CenterOver(HWND owner) {
  RECT o{}, me{};
  GetWindowRect(owner, &o);
  GetWindowRect(hwnd_, &me);
  const int width = me.right - me.left, height = me.bottom - me.top;
  const int top = o.top + ((o.bottom - o.top) - height) / 2;
  const int left = o.left + ((o.right - o.left) - width) / 2;
  SetWindowPos(hwnd_, nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void TShellForm::ShowModal(HWND owner) {
  closed_ = false;
  modal_ = true;
  SetWindowLongPtrW(hwnd_, GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(owner));
  EnableWindow(owner, FALSE);
  ShowWindow(hwnd_, SW_SHOW);
  SetForegroundWindow(hwnd_);
  app_.RunUntil(hwnd_, closed_);
  EnableWindow(owner, TRUE);
  modal_ = false;
  if (IsWindow(owner)) SetForegroundWindow(owner);
}

void TShellForm::CloseForm() {
  ShowWindow(hwnd_, SW_HIDE);
  closed_ = true;
}

LRESULT TShellForm::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_COMMAND:
      if (LOWORD(wParam) == kCloseId || LOWORD(wParam) == IDCANCEL) {
        CloseForm();
        return 0;
      }
      break;
    case WM_CLOSE:
      // The windows live until the program ends; closing only hides them.
      CloseForm();
      return 0;
    case WM_SIZE:
      Layout();
      return 0;
    case WM_DPICHANGED: {
      const RECT* r = reinterpret_cast<const RECT*>(lParam);
      SetWindowPos(hwnd_, nullptr, r->left, r->top, r->right - r->left, r->bottom - r->top,
                   SWP_NOZORDER | SWP_NOACTIVATE);
      Layout();
      return 0;
    }
    case DM_GETDEFID:
      return MAKELRESULT(kCloseId, DC_HASDEFID);
    default:
      break;
  }
  return Default(message, wParam, lParam);
}

TUninstalling_Form::TUninstalling_Form(TApplication& app)
    : TShellForm(app, L"Uninstalling_Form", L"Label_Jobs") {}

void TUninstalling_Form::SetJobs(const TSoftList& list, std::vector<int> indexes, int mode) {
  std::vector<std::wstring> names;
  for (int index : indexes) {
    if (index >= 0 && static_cast<std::size_t>(index) < list.size() && list[index])
      names.push_back(list[index]->Name);
  }
  jobs_.SetJobs(std::move(indexes), mode);
  SetLines(names);
}

TForceUninstall_Form::TForceUninstall_Form(TApplication& app)
    : TShellForm(app, L"ForceUninstall_Form", L"Label_File") {}

void TForceUninstall_Form::SetFile(const std::wstring& file) { SetDetail(file); }

TPowerScan_Form::TPowerScan_Form(TApplication& app)
    : TShellForm(app, L"PowerScan_Form", L"Label_Results") {}

TLogManager_Form::TLogManager_Form(TApplication& app)
    : TShellForm(app, L"LogManager_Form", L"Label_Logs") {}

}  // namespace varnel::forms
