#pragma once

#include <windows.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "controls/button.h"
#include "controls/handles.h"
#include "controls/label.h"
#include "controls/tree_view.h"
#include "leftovers/image_list.h"
#include "leftovers/results_tree.h"
#include "ui/forms/form.h"
#include "ui/forms/form_texts.h"
#include "uninstall/check_tree.h"
#include "uninstall/leftover_deletion.h"

namespace varnel::forms {

// "Powerful Scan": the leftovers found as a tree with three-state check
// boxes; Delete removes what stays checked. The checks and the deletion are
// CheckTree's and LeftoverDeletion's; the window shows them.
class TPowerScan_Form : public Form, public IResultsTree, private IDeletionProgress {
 public:
  TPowerScan_Form(Application& app, HWND owner);
  ~TPowerScan_Form() override;

  // Empties the tree before a scan fills it.
  void ClearResults();
  bool Empty() const { return model_.Count() == 0; }
  // The node images the scan appends branch and file icons to.
  IImageList* Images();
  // Install folders of the programs that stay: never deleted from.
  void SetOtherProgramFolders(std::vector<std::wstring> folders) {
    otherFolders_ = std::move(folders);
  }

  // IResultsTree
  TreeNodeId AddNode(TreeNodeId parent, const std::wstring& caption, int image, int stateIndex,
                     std::unique_ptr<TMyTreeData> data) override;

 protected:
  void OnShow() override;
  void OnClose() override;
  void OnCommand(int id, int code, HWND control) override;
  LRESULT OnNotify(NMHDR& header) override;
  void OnSize(UINT type, int width, int height) override;
  void OnDpiChanged(UINT dpi, const RECT& suggested) override;
  LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  class NodeImages;

  void CreateControls();
  void LoadTexts();
  void ApplyDpi();
  void Layout();
  // The tree view takes the model's states; Delete follows them.
  void ShowStates();
  void TreeMouseDown(POINT at);
  void SelectAllClick();
  void DeleteClick();
  void CancelClick();
  void Busy(bool deleting);
  static LRESULT CALLBACK TreeProcedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam,
                                        UINT_PTR id, DWORD_PTR self);

  // IDeletionProgress
  void SetCaption(std::wstring_view text) override;
  void SetPosition(int percent) override;
  void ProcessMessages() override;

  CheckTree model_;
  std::vector<HTREEITEM> items_;  // per model node
  std::unique_ptr<NodeImages> images_;
  std::vector<std::wstring> otherFolders_;
  std::atomic<bool> cancel_{false};
  bool deleting_ = false;
  bool filling_ = false;  // our own expands are not the user's

  DeletionTexts deletionTexts_;
  std::wstring sureDelete_, deleteFinish_, selectAll_, deselectAll_;

  controls::Label title_, deletePath_;
  controls::TreeView tree_;
  HWND progress_ = nullptr;
  controls::Button delete_, cancelButton_, selectAllButton_;
  controls::UniqueImageList checks_;
  controls::UniqueFont font_, titleFont_;
  std::unique_ptr<FormTexts> texts_;
};

}  // namespace varnel::forms
