#pragma once

#include <windows.h>

#include <string_view>

#include "controls/base_window.h"
#include "ui/forms/application.h"

namespace varnel::forms {

// A window of the program beside the main one: created once and owned by
// the main window (no taskbar button of its own), hidden rather than
// destroyed when closed, and shown either modally or beside its owner.
class Form : public controls::BaseWindow {
 public:
  // Disables `owner`, shows this window owned by it and returns once the
  // window is closed; the loop keeps serving the analysis thread's hand-overs.
  void ShowModal(HWND owner);
  // Shown while the owner stays usable.
  void ShowModeless();
  void CenterOver(HWND window);
  void MoveTo(int left, int top);
  bool Modal() const { return modalOwner_ != nullptr; }
  // Hides the window; a modal show's owner is enabled first, so that the
  // system gives it the activation and the keys back.
  void Close();

 protected:
  explicit Form(Application& app) : app_(app) {}
  // Registers the class "T" + `formName` and creates the hidden window.
  bool Create(std::wstring_view formName, int width, int height, HWND owner, DWORD style);

  // FormShow: every showing, just before the window appears.
  virtual void OnShow() {}
  // The close box, Alt+F4 and the system menu's Close.
  virtual void OnClose() { Close(); }
  LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

  Application& app_;

 private:
  HWND modalOwner_ = nullptr;
  bool closed_ = true;
};

}  // namespace varnel::forms
