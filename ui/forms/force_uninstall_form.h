#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <string>

#include "controls/button.h"
#include "controls/edit.h"
#include "controls/handles.h"
#include "controls/label.h"
#include "controls/list_view.h"
#include "controls/menu.h"
#include "inventory/soft_list.h"
#include "ui/forms/form.h"
#include "ui/forms/form_texts.h"
#include "uninstall/force_match.h"

namespace varnel::forms {

class TUninstalling_Form;

// Starts an uninstall from a file: the programs installed beside it (or
// found by name) go to the uninstalling window as usual; with none, the file
// itself does, to be deleted and scanned around.
class TForceUninstall_Form : public Form {
 public:
  TForceUninstall_Form(Application& app, HWND owner, TUninstalling_Form& uninstalling);
  ~TForceUninstall_Form() override;

  // The software list the rows point into, with the main list's small icons
  // (may be null); both must outlive the showing. `afterUninstall` runs once
  // the uninstalling window this one opened has closed.
  void SetSoftware(const SoftList* list, HIMAGELIST icons, std::function<void()> afterUninstall);
  // Empty: the window opens blank. Otherwise the file is taken as if browsed.
  void SetFile(const std::wstring& file);

 protected:
  void OnShow() override;
  void OnCommand(int id, int code, HWND control) override;
  LRESULT OnNotify(NMHDR& header) override;
  void OnSize(UINT type, int width, int height) override;
  void OnDpiChanged(UINT dpi, const RECT& suggested) override;
  LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  void CreateControls();
  void LoadTexts();
  void Layout();
  void ApplyDpi();
  // The logic object's file, name and rows onto the controls.
  void ShowMatch();
  void ChooseFile(const std::wstring& path);
  void BrowseClick();
  void SearchClick();
  void NextClick();
  void CancelKey();
  void ContextPopup(int x, int y);
  void OpenFolderClick();
  void ViewEntryClick();

  TUninstalling_Form& uninstalling_;
  ForceMatch match_;
  std::function<void()> afterUninstall_;
  std::wstring selectAgain_;
  controls::Label title_, subTitle_, fileLabel_, nameLabel_, dragInfo_, nextInfo_;
  controls::Edit file_, name_;
  controls::Button browse_, search_, next_, cancel_;
  controls::ListView list_;
  HWND hint_ = nullptr;
  controls::PopupMenu menu_;
  controls::UniqueFont font_, titleFont_;
  std::unique_ptr<FormTexts> texts_;
};

}  // namespace varnel::forms
