#include "ui/forms/main_form.h"

#include <shellapi.h>

#include "ui/forms/force_uninstall_form.h"
#include "ui/right_menu.h"

namespace varnel::forms {

void TUninstallForm_Main::OpenForcedUninstall(const std::wstring& file) {
  if (!force_) return;
  std::wstring target;
  if (!file.empty()) {
    const auto found = ForcedUninstallTarget(app_.Machine(), file);
    if (!found) return;
    target = *found;
  }
  force_->SetSoftware(inventory_ ? &inventory_->Items() : nullptr, small_.Handle(),
                      [this] { RefreshClick(); });
  force_->SetFile(target);
  force_->CenterOver(hwnd_);
  force_->ShowModeless();
}

// The first file of a drop names the program to uninstall by force.
void TUninstallForm_Main::DropFiles(HDROP drop) {
  std::wstring file(DragQueryFileW(drop, 0, nullptr, 0) + 1, L'\0');
  const UINT length = DragQueryFileW(drop, 0, file.data(), static_cast<UINT>(file.size()));
  DragFinish(drop);
  file.resize(length);
  if (length > 0) OpenForcedUninstall(file);
}

}  // namespace varnel::forms
