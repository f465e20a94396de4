#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "controls/base_window.h"
#include "controls/handles.h"
#include "controls/list_box.h"
#include "inventory/soft_list.h"
#include "ui/forms/application.h"
#include "ui/forms/form_texts.h"
#include "ui/uninstall_jobs.h"

namespace varnel::forms {

// A plain window of the program with a caption line, a list of lines and a
// Close button; the uninstalling, forced-uninstall, results and log windows
// are built on it until their own work arrives.
class TShellForm : public controls::BaseWindow<TShellForm> {
 public:
  // `formName` is the layout name ("Uninstalling_Form"), the class is "T" + it.
  TShellForm(TApplication& app, std::wstring formName, std::wstring labelName);
  ~TShellForm() override;

  // Centred over `owner`; returns when the window is closed (hidden).
  void ShowModal(HWND owner);
  void CenterOver(HWND owner);
  bool Modal() const { return modal_; }

  LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam);

 protected:
  void SetLines(const std::vector<std::wstring>& lines);
  void SetDetail(std::wstring_view text);
  TApplication& app_;

 private:
  void Layout();
  void CloseForm();

  std::wstring formName_;
  HWND label_ = nullptr;
  HWND detail_ = nullptr;
  controls::ListBox lines_;
  HWND close_ = nullptr;
  controls::UniqueFont font_;
  std::unique_ptr<TFormTexts> texts_;
  bool modal_ = false;
  bool closed_ = false;
};

// Receives the uninstall request of the main window; the uninstall sequence
// itself arrives with its own work.
class TUninstalling_Form : public TShellForm {
 public:
  explicit TUninstalling_Form(TApplication& app);
  void SetJobs(const TSoftList& list, std::vector<int> indexes, int mode);
  const TUninstallJobs& Jobs() const { return jobs_; }

 private:
  TUninstallJobs jobs_;
};

// Opened for a file (a drop, the shell's context menu) or empty.
class TForceUninstall_Form : public TShellForm {
 public:
  explicit TForceUninstall_Form(TApplication& app);
  void SetFile(const std::wstring& file);
};

class TPowerScan_Form : public TShellForm {
 public:
  explicit TPowerScan_Form(TApplication& app);
};

class TLogManager_Form : public TShellForm {
 public:
  explicit TLogManager_Form(TApplication& app);
};

}  // namespace varnel::forms
