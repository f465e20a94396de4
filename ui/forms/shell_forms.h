#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "controls/handles.h"
#include "controls/list_box.h"
#include "ui/forms/form.h"
#include "ui/forms/form_texts.h"

namespace varnel::forms {

// A plain window of the program with a caption line, a list of lines and a
// Close button; the results window is built on it until its own work arrives.
class TShellForm : public Form {
 public:
  // `formName` is the layout name ("Uninstalling_Form"), the class is "T" + it.
  TShellForm(TApplication& app, std::wstring formName, std::wstring labelName, HWND owner);
  ~TShellForm() override;

 protected:
  void SetLines(const std::vector<std::wstring>& lines);
  void SetDetail(std::wstring_view text);
  void OnCommand(int id, int code, HWND control) override;
  void OnSize(UINT type, int width, int height) override;
  void OnDpiChanged(UINT dpi, const RECT& suggested) override;
  LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  void Layout();

  std::wstring formName_;
  HWND label_ = nullptr;
  HWND detail_ = nullptr;
  controls::ListBox lines_;
  HWND close_ = nullptr;
  controls::UniqueFont font_;
  std::unique_ptr<TFormTexts> texts_;
};

// The leftovers found, one line each, until the results window has its own work.
class TPowerScan_Form : public TShellForm {
 public:
  TPowerScan_Form(TApplication& app, HWND owner);
  void SetResults(const std::vector<std::wstring>& lines) { SetLines(lines); }
};

}  // namespace varnel::forms
