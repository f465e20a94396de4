#pragma once

#include <windows.h>

#include <shellapi.h>

#include <exception>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "controls/base_window.h"
#include "controls/button.h"
#include "controls/handles.h"
#include "controls/image_list.h"
#include "controls/label.h"
#include "controls/list_view.h"
#include "controls/menu.h"
#include "controls/search_box.h"
#include "inventory/inventory_view.h"
#include "inventory/software_info.h"
#include "ui/forms/application.h"
#include "ui/forms/form_texts.h"
#include "ui/list_export.h"
#include "ui/main_window_state.h"
#include "ui/software_rows.h"

namespace varnel::forms {

class TUninstalling_Form;
class TForceUninstall_Form;
class TPowerScan_Form;
class TLogManager_Form;

constexpr int kRowHeight = 25;  // pixels at 100 %
constexpr COLORREF kGridColour = 0xE6E6E6;

// The main window: the inventory in one list, six categories, search, sort,
// the details panel and the commands on a program.
class TUninstallForm_Main : public controls::BaseWindow, public IInventoryView {
 public:
  explicit TUninstallForm_Main(Application& app);
  ~TUninstallForm_Main() override;

  // The windows created after this one, which it opens.
  void SetPeers(TUninstalling_Form& uninstalling, TForceUninstall_Form& force,
                TPowerScan_Form& scan, TLogManager_Form& logs);
  void Show();

  // IInventoryView
  int AddIcons(const IconHandle& small, const IconHandle& large) override;
  void UpdateRow(int index, const TSoftInfo& info) override;

 protected:
  void OnCommand(int id, int code, HWND control) override;
  LRESULT OnNotify(NMHDR& header) override;
  void OnSize(UINT type, int width, int height) override;
  void OnTimer(UINT_PTR id) override;
  void OnDpiChanged(UINT dpi, const RECT& suggested) override;
  LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  struct Messages {
    std::wstring searchSoftware, softwareFormat, sureUninstall, selectProgram, selectOneItem,
        sureRemoveEntry, oneItem, items, unknownOs, groupPrograms, groupToolbars, groupUpdates;
    ExportLabels exportLabels;
  };

  // FormCreate and the rest of the start-up.
  void CreateControls();
  void CreateMenus();
  void LoadTexts();
  void Layout();
  void ApplyDpi();
  void SizeImageLists();
  void FormActivate();
  void TimerGetSoftware();
  void FormClose();
  void ActivateInstance();

  // The list.
  int ShowSoftwareList(int filter, const std::wstring& search);
  void ShowCategory(int button);
  void SortList();
  void ShowCount();
  const SoftRow* RowAt(int item) const;
  const SoftRow* SelectedRow() const;
  void FillDispInfo(NMLVDISPINFOW& info);
  LRESULT DrawGrid(NMLVCUSTOMDRAW& draw);
  static int CALLBACK CompareRows(LPARAM a, LPARAM b, LPARAM self);

  // The search box.
  void SearchKeyUp(unsigned key);
  void SearchCleared();
  void ApplySearchLook(const SearchBoxLook& look);

  // Details and commands.
  void UpdateDetails();
  void ContextMenu(int x, int y);
  void UninstallClick();
  void BatchClick();
  void RemoveEntryClick();
  void RefreshClick();
  void ExportListClick();
  void RestorePointClick();
  void OpenForcedUninstall(const std::wstring& file);
  void DropFiles(HDROP drop);
  int Ask(const std::wstring& text, UINT flags);
  void FitColumns();

  Application& app_;
  TUninstalling_Form* uninstalling_ = nullptr;
  TForceUninstall_Form* force_ = nullptr;
  TPowerScan_Form* scan_ = nullptr;
  TLogManager_Form* logs_ = nullptr;

  MainWindowState state_;
  std::unique_ptr<TSoftwareInfo> inventory_;
  std::unordered_map<int, SoftRow> rows_;  // by record index, for the rows shown
  std::exception_ptr sortFailure_;  // the first of a sort, reported once it ends
  Messages messages_;
  bool firstActivation_ = true;
  bool listStyleFlag_ = false;  // consumed by later work on the window

  HWND categories_[6] = {};
  controls::SearchBox search_;
  controls::ListView list_;
  controls::Button uninstall_, batch_, forceUninstall_, more_;
  controls::Label detailsIcon_, detailsName_, versionTitle_, version_, publisherTitle_,
      publisher_, helpTitle_, help_, detailsIdle_, bottomInfo_;
  controls::ImageList small_, large_;
  int rowPadding_ = 0;  // what the list adds to the small images' height
  controls::UniquePen gridPen_;
  controls::UniqueHicon detailsIconHandle_;
  controls::UniqueFont font_, boldFont_, linkFont_;
  controls::PopupMenu softMenu_;
  controls::PopupMenu managerMenu_;
  std::unique_ptr<FormTexts> texts_;
  UINT dpi_ = 96;
};

}  // namespace varnel::forms
