#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "controls/button.h"
#include "controls/handles.h"
#include "controls/label.h"
#include "inventory/soft_list.h"
#include "ui/forms/form.h"
#include "ui/forms/form_texts.h"
#include "uninstall/uninstall_sequence.h"
#include "uninstall/uninstall_view.h"

namespace varnel::forms {

class TPowerScan_Form;

// The uninstalling window: the steps of UninstallSequence as lines with
// markers, the mode choice, Cancel and "Powerful Scan".
class TUninstalling_Form : public Form, public IUninstallView {
 public:
  TUninstalling_Form(Application& app, HWND owner);
  ~TUninstalling_Form() override;

  // The results window the scan fills and shows.
  void SetResultsWindow(TPowerScan_Form* results) { results_ = results; }
  // The software list the job indexes point into; it must outlive the showing.
  void SetSoftware(const SoftList* list);
  // Record indexes as decimal text (mode 0) or a file path (mode 1); a
  // missing list changes nothing.
  void SetJobs(const std::vector<std::wstring>* jobs, int mode);
  const std::vector<std::wstring>& Jobs() const;

  // IUninstallView
  void SetStep(int step) override;
  std::wstring Caption(StepLine line) const override;
  void SetCaption(StepLine line, std::wstring_view text) override;
  void HideUninstallMarker() override;
  void EnableScan() override;
  void ProcessMessages() override;
  void ShowMessage(std::wstring_view text) override;
  bool AdvancedChosen() const override { return advanced_; }
  void CloseWindow() override;

 protected:
  void OnShow() override;
  void OnClose() override;
  void OnCommand(int id, int code, HWND control) override;
  void OnSize(UINT type, int width, int height) override;
  void OnTimer(UINT_PTR id) override;
  void OnDpiChanged(UINT dpi, const RECT& suggested) override;
  LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  static constexpr int kSteps = 3;

  void CreateControls();
  UninstallTexts LoadTexts();
  void Layout();
  void CancelClick();
  void ScanClick();
  void StandardClick();
  void AdvancedClick();
  void ShowScanStep(bool show);
  // Starts or stops the frame timer as the running markers need it.
  void Animate();
  HWND StepLabel(StepLine line) const;

  std::unique_ptr<UninstallSequence> sequence_;
  TPowerScan_Form* results_ = nullptr;
  const SoftList* software_ = nullptr;
  bool advanced_ = false;
  bool busy_ = false;  // the sequence or the scan runs
  bool running_[kSteps] = {};
  bool reached_[kSteps] = {};
  bool dark_[kSteps] = {};
  int frame_ = 0;

  controls::Label modeLabel_;
  controls::Button standardChoice_, advancedChoice_, scan_, cancel_;
  HWND markers_[kSteps] = {};
  controls::Label restorePoint_, regBackup_, restoreInfo_, uninstalling_, uninstallInfo_,
      powerScan_, powerScanInfo_;
  controls::UniqueFont font_, boldFont_;
  std::unique_ptr<FormTexts> texts_;
};

}  // namespace varnel::forms
