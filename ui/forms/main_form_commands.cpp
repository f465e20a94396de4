#include "ui/forms/main_form.h"

#include <commctrl.h>
#include <commdlg.h>
#include <shellapi.h>

#include <stdexcept>

#include "base/text.h"
#include "base/text_file.h"
#include "controls/dpi.h"
#include "core/file_version.h"
#include "core/os_name.h"
#include "core/registry_editor.h"
#include "ui/forms/log_manager_form.h"
#include "ui/forms/main_form_ids.h"
#include "ui/forms/private_messages.h"
#include "ui/forms/uninstalling_form.h"
#include "ui/restore_launcher.h"
#include "ui/soft_commands.h"

namespace varnel::forms {

namespace {

// An export that cannot be written surfaces as an exception, as any other
// failure of a command does, and lands in the error log.
class EFCreateError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace

void TUninstallForm_Main::OnCommand(int id, int code, HWND) {
  const Platform& platform = app_.Machine();
  if (id >= MainId::CategoryFirst && id < MainId::CategoryFirst + 6) {
    if (code == BN_CLICKED) ShowCategory(id - MainId::CategoryFirst);
    return;
  }
  if (search_.OnCommand(id, code)) return;
  switch (id) {
    case MainId::Uninstall:
    case MainId::MenuUninstall:
      UninstallClick();
      return;
    case MainId::BatchUninstall:
      BatchClick();
      return;
    case MainId::ForceUninstall:
      OpenForcedUninstall(L"");
      return;
    case MainId::More: {
      RECT r = more_.Bounds();
      managerMenu_.Track(hwnd_, r.left, r.bottom);
      return;
    }
    case MainId::DetailsHelp:
      if (code == STN_CLICKED) OpenHelpLink(platform, help_.Text());
      return;
    case MainId::MenuRemoveEntry:
      RemoveEntryClick();
      return;
    case MainId::MenuRefresh:
    case Shortcut::Refresh:
      RefreshClick();
      return;
    case Shortcut::Search:
      search_.Focus();
      search_.SelectAll();
      return;
    case MainId::MenuViewIcons:
      list_.SetView(LV_VIEW_ICON);
      return;
    case MainId::MenuViewDetails:
      list_.SetView(LV_VIEW_DETAILS);
      return;
    case MainId::MenuOpenFolder:
      if (const SoftRow* row = SelectedRow())
        platform.shell.Execute(L"open", row->sub[SubItem::InstallLocation], L"", L"",
                               ShowCmd::Normal);
      return;
    case MainId::MenuViewEntry:
      if (const SoftRow* row = SelectedRow())
        OpenRegistryEditorAt(platform, RegistryKeyOf(*row), L"",
                             row->sub[SubItem::Is64BitView] != L"0");
      return;
    case MainId::MenuSearchOnline:
      if (const SoftRow* row = SelectedRow())
        platform.shell.Execute(L"open", kSearchBrowser, SearchOnlineParameter(row->caption), L"",
                               ShowCmd::Normal);
      return;
    case MainId::MenuExportList:
      ExportListClick();
      return;
    case MainId::MenuLogManagement:
      if (logs_) {
        logs_->CenterOver(hwnd_);
        logs_->ShowModal(hwnd_);
      }
      return;
    case MainId::MenuRestorePoint:
      RestorePointClick();
      return;
    default:
      return;
  }
}

LRESULT TUninstallForm_Main::OnNotify(NMHDR& header) {
  if (header.hwndFrom == list_.Handle()) {
    switch (header.code) {
      case LVN_GETDISPINFOW:
        FillDispInfo(reinterpret_cast<NMLVDISPINFOW&>(header));
        return 0;
      case LVN_COLUMNCLICK: {
        const int column = reinterpret_cast<NMLISTVIEW&>(header).iSubItem;
        if (state_.ClickColumn(column)) SortList();
        return 0;
      }
      case LVN_ITEMCHANGED: {
        const auto& change = reinterpret_cast<NMLISTVIEW&>(header);
        if ((change.uChanged & LVIF_STATE) &&
            ((change.uNewState ^ change.uOldState) & LVIS_SELECTED))
          UpdateDetails();
        return 0;
      }
      case NM_CUSTOMDRAW:
        return DrawGrid(reinterpret_cast<NMLVCUSTOMDRAW&>(header));
      case NM_DBLCLK:
        // On a row or beside the rows alike: without a selection the
        // uninstall asks for one, in batch mode it takes the checked rows.
        UninstallClick();
        return 0;
      case LVN_KEYDOWN:
        if (reinterpret_cast<NMLVKEYDOWN&>(header).wVKey == VK_DELETE) UninstallClick();
        return 0;
      default:
        return 0;
    }
  }
  return 0;
}

int TUninstallForm_Main::Ask(const std::wstring& text, UINT flags) {
  return MessageBoxW(hwnd_, text.c_str(), controls::Window(hwnd_).Text().c_str(), flags);
}

void TUninstallForm_Main::ContextMenu(int x, int y) {
  const SoftRow* row = SelectedRow();
  const SoftMenuState state = MenuStateFor(app_.Machine(), row);
  softMenu_.Enable(MainId::MenuUninstall, state.uninstall);
  softMenu_.Enable(MainId::MenuOpenFolder, state.openFolder);
  softMenu_.Enable(MainId::MenuSearchOnline, state.searchOnline);
  softMenu_.Enable(MainId::MenuViewEntry, state.viewEntry);
  const bool icons = list_.View() == LV_VIEW_ICON;
  softMenu_.Check(MainId::MenuViewIcons, icons);
  softMenu_.Check(MainId::MenuViewDetails, !icons);
  if (x == -1 && y == -1) {
    // From the keyboard: at the selected row, or the list's corner.
    RECT r = list_.Bounds();
    x = r.left + controls::Scale(24, dpi_);
    y = r.top + controls::Scale(24, dpi_);
    const int item = list_.Selected();
    RECT itemRect{LVIR_BOUNDS, 0, 0, 0};
    if (item >= 0 &&
        SendMessageW(list_.Handle(), LVM_GETITEMRECT, item, reinterpret_cast<LPARAM>(&itemRect))) {
      POINT p{itemRect.left + controls::Scale(24, dpi_), itemRect.bottom};
      ClientToScreen(list_.Handle(), &p);
      x = p.x;
      y = p.y;
    }
  }
  softMenu_.Track(hwnd_, x, y);
}

void TUninstallForm_Main::UninstallClick() {
  std::vector<const SoftRow*> checked;
  if (state_.BatchMode()) {
    for (int i = 0, n = list_.Count(); i < n; ++i)
      if (list_.Checked(i)) checked.push_back(RowAt(i));
  }
  // Every checked row goes in one hand-over: one sequence runs them in turn.
  const std::vector<std::wstring> jobs =
      UninstallJobs(state_.BatchMode(), checked, SelectedRow());
  if (jobs.empty()) {
    Ask(state_.BatchMode() ? messages_.selectOneItem : messages_.selectProgram,
        MB_OK | MB_ICONINFORMATION);
    return;
  }
  if (Ask(messages_.sureUninstall, MB_YESNO | MB_ICONQUESTION) != IDYES) return;
  if (!uninstalling_ || !inventory_) return;
  uninstalling_->SetSoftware(&inventory_->Items());
  uninstalling_->SetJobs(&jobs, JobMode::Uninstall);
  uninstalling_->CenterOver(hwnd_);
  uninstalling_->ShowModal(hwnd_);
  app_.ProcessMessages();
  app_.Dispatcher().WaitAndDrain(std::chrono::milliseconds(10));
  RefreshClick();
}

void TUninstallForm_Main::BatchClick() {
  const bool on = state_.ToggleBatch();
  batch_.SetChecked(on);
  if (on) list_.SetChecked(-1, false);
  list_.SetExtendedStyle(LVS_EX_CHECKBOXES, on ? LVS_EX_CHECKBOXES : 0);
  if (on) list_.SetChecked(-1, false);
}

void TUninstallForm_Main::RemoveEntryClick() {
  const SoftRow* row = SelectedRow();
  if (!row) return;
  const std::wstring indexText = row->sub[SubItem::RecordIndex];
  if (Ask(messages_.sureRemoveEntry, MB_YESNO | MB_ICONQUESTION) != IDYES) return;
  const int index = RecordIndexOf(indexText);
  // The first record is never removed this way, deliberately.
  if (!MayRemoveEntry(index) || !inventory_) return;
  if (inventory_->RemoveSoftwareEntry(index)) RefreshClick();
}

void TUninstallForm_Main::RefreshClick() {
  if (!inventory_) return;
  inventory_->RefreshInventory();
  rows_.clear();
  state_.ResetFilter();
  const int count = list_.Count();
  if (count > 0) list_.DeleteItem(count - 1);
  SortList();
  ShowCategory(state_.Category());
}

void TUninstallForm_Main::ExportListClick() {
  const Platform& platform = app_.Machine();
  std::wstring buffer(32768, L'\0');
  const std::wstring proposed = messages_.exportLabels.saveDlgName;
  lstrcpynW(buffer.data(), proposed.c_str(), static_cast<int>(buffer.size()));
  static const wchar_t kFilter[] = L"Text(*.txt)\0*.txt\0";
  OPENFILENAMEW dialog{};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = hwnd_;
  dialog.lpstrFilter = kFilter;
  dialog.nFilterIndex = 1;
  dialog.lpstrFile = buffer.data();
  dialog.nMaxFile = static_cast<DWORD>(buffer.size());
  dialog.lpstrDefExt = L"txt";
  dialog.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_ENABLESIZING | OFN_NOCHANGEDIR;
  if (!GetSaveFileNameW(&dialog)) return;
  const std::wstring name = ExportFileName(buffer.c_str());
  const std::wstring module = platform.system.ModulePath();
  const auto now = platform.system.ToLocalTime(platform.system.Now()).value_or(LocalDateTime{});
  static const SoftList kNone;
  const std::wstring content =
      ExportListText(inventory_ ? inventory_->Items() : kNone, messages_.exportLabels,
                     GetFileVersionText(platform.system, module, 3), GetOSName(platform.system),
                     now);
  if (!WriteTextFile(platform.files, name, content))
    throw EFCreateError("Cannot create file \"" + text::ToUtf8(name) + "\"");
  ShellExecuteW(hwnd_, L"open", name.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

void TUninstallForm_Main::RestorePointClick() {
  if (!LaunchRestoreTool(app_.Machine())) Ask(messages_.unknownOs, MB_OK | MB_ICONWARNING);
}

}  // namespace varnel::forms
