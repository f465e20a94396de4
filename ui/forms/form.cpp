#include "ui/forms/form.h"

#include <string>

namespace varnel::forms {

bool Form::Create(std::wstring_view formName, int width, int height, HWND owner, DWORD style) {
  const std::wstring className = L"T" + std::wstring(formName);
  RegisterClassOnce(className, app_.Icon());
  return CreateBase(className, formName, style, WS_EX_CONTROLPARENT, width, height, owner) !=
         nullptr;
}

void Form::ShowModal(HWND owner) {
  if (!hwnd_ || Modal()) return;
  if (owner && GetWindow(hwnd_, GW_OWNER) != owner)
    SetWindowLongPtrW(hwnd_, GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(owner));
  closed_ = false;
  modalOwner_ = owner ? owner : GetWindow(hwnd_, GW_OWNER);
  if (modalOwner_) EnableWindow(modalOwner_, FALSE);
  OnShow();
  if (!closed_) {
    ShowWindow(hwnd_, SW_SHOW);
    SetForegroundWindow(hwnd_);
    app_.RunUntil(hwnd_, closed_);
  }
  // The loop also ends when the program quits or the window is gone.
  if (modalOwner_ && IsWindow(modalOwner_)) EnableWindow(modalOwner_, TRUE);
  modalOwner_ = nullptr;
}

void Form::ShowModeless() {
  if (!hwnd_) return;
  closed_ = false;
  OnShow();
  if (closed_) return;
  ShowWindow(hwnd_, SW_SHOW);
  SetForegroundWindow(hwnd_);
}

void Form::CenterOver(HWND window) {
  RECT o{}, me{};
  GetWindowRect(window, &o);
  GetWindowRect(hwnd_, &me);
  const int width = me.right - me.left, height = me.bottom - me.top;
  MoveTo(o.left + ((o.right - o.left) - width) / 2, o.top + ((o.bottom - o.top) - height) / 2);
}

void Form::MoveTo(int left, int top) {
  SetWindowPos(hwnd_, nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Form::Close() {
  if (modalOwner_) EnableWindow(modalOwner_, TRUE);
  ShowWindow(hwnd_, SW_HIDE);
  closed_ = true;
}

LRESULT Form::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CLOSE:
      // The windows live until the program ends; closing only hides them.
      OnClose();
      return 0;
    case WM_ACTIVATE:
      if (KeepFocus(wParam, true)) return 0;
      break;
    default:
      break;
  }
  return Default(message, wParam, lParam);
}

}  // namespace varnel::forms
