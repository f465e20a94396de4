#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "controls/button.h"
#include "controls/handles.h"
#include "controls/image_list.h"
#include "controls/label.h"
#include "controls/list_view.h"
#include "ui/forms/form.h"
#include "ui/forms/form_texts.h"
#include "uninstall/backup_list.h"
#include "uninstall/log_manager.h"

namespace varnel::forms {

// The uninstall logs as large icons, to open or delete; below them the
// deletion runs' backups, to restore or delete.
class TLogManager_Form : public Form {
 public:
  TLogManager_Form(Application& app, HWND owner);
  ~TLogManager_Form() override;

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
  void SelectionChanged();
  const SavedLog* SelectedLog() const;
  void OpenClick();
  void DeleteClick();
  void DeleteAllClick();
  bool Ask(const std::wstring& text);
  void FillBackups();
  void BackupSelectionChanged();
  void RestoreClick();
  void DeleteBackupClick();

  std::vector<SavedLog> logs_;  // item parameters index this
  std::wstring sureDelete_, sureDeleteAll_, sureRestore_, sureDeleteBackup_;
  std::unique_ptr<BackupList> backups_;  // rows index this, in list order
  controls::Label title_, info_, backupsLabel_, room_;
  controls::ListView list_, backupList_;
  controls::Button open_, delete_, deleteAll_, cancel_, restore_, deleteBackup_;
  controls::ImageList icons_;
  controls::UniqueFont font_, titleFont_;
  std::unique_ptr<FormTexts> texts_;
};

}  // namespace varnel::forms
