#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "controls/handles.h"
#include "controls/list_box.h"
#include "inventory/soft_list.h"
#include "ui/forms/form.h"
#include "ui/forms/form_texts.h"
#include "ui/uninstall_jobs.h"

namespace varnel::forms {

// A plain window of the program with a caption line, a list of lines and a
// Close button; the uninstalling, forced-uninstall, results and log windows
// are built on it until their own work arrives.
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

// Receives the uninstall request of the main window; the uninstall sequence
// itself arrives with its own work.
class TUninstalling_Form : public TShellForm {
 public:
  TUninstalling_Form(TApplication& app, HWND owner);
  void SetJobs(const TSoftList& list, std::vector<int> indexes, int mode);
  const TUninstallJobs& Jobs() const { return jobs_; }

 private:
  TUninstallJobs jobs_;
};

// Opened for a file (a drop, the shell's context menu) or empty.
class TForceUninstall_Form : public TShellForm {
 public:
  TForceUninstall_Form(TApplication& app, HWND owner);
  void SetFile(const std::wstring& file);
};

class TPowerScan_Form : public TShellForm {
 public:
  TPowerScan_Form(TApplication& app, HWND owner);
};

class TLogManager_Form : public TShellForm {
 public:
  TLogManager_Form(TApplication& app, HWND owner);
};

}  // namespace varnel::forms
