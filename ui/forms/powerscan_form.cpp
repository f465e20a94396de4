#include "ui/forms/powerscan_form.h"

#include <shellapi.h>
#include <windowsx.h>

#include "controls/check_images.h"
#include "controls/dpi.h"
#include "controls/exception_sink.h"
#include "core/protected_places.h"
#include "ui/forms/form_ids.h"
#include "ui/language_catalog.h"
#include "uninstall/backup.h"
#include "uninstall/deletion_guard.h"

namespace varnel::forms {

namespace {

namespace Id = PowerScanId;
constexpr wchar_t kFormName[] = L"PowerScan_Form";
constexpr UINT_PTR kTreeSubclass = 1;

IconHandle Owned(HICON icon) {
  return icon ? IconHandle(icon, [](void* h) { DestroyIcon(static_cast<HICON>(h)); }) : nullptr;
}

IconHandle StockIcon(SHSTOCKICONID id) {
  SHSTOCKICONINFO info{};
  info.cbSize = sizeof info;
  if (SUCCEEDED(SHGetStockIconInfo(id, SHGSI_ICON | SHGSI_SMALLICON, &info)) && info.hIcon)
    return Owned(info.hIcon);
  return Owned(CopyIcon(LoadIconW(nullptr, IDI_APPLICATION)));
}

}  // namespace

// The node images: the four the scan counts on (registry group, key, value,
// file group), then what it appends. The icons are kept, so that the list
// can be drawn again at another scale.
class TPowerScan_Form::NodeImages : public IImageList {
 public:
  static constexpr std::size_t kFixed = 4;

  NodeImages() {
    for (SHSTOCKICONID id : {SIID_SERVER, SIID_FOLDER, SIID_DOCNOASSOC, SIID_DRIVEFIXED})
      icons_.push_back(StockIcon(id));
  }
  HIMAGELIST Handle() const { return list_.get(); }
  void Rebuild(int size) {
    list_.reset(ImageList_Create(size, size, ILC_COLOR32 | ILC_MASK, 16, 64));
    for (const auto& icon : icons_) ImageList_ReplaceIcon(list_.get(), -1, Hicon(icon));
  }
  // Back to the fixed images before a new scan.
  void Reset() {
    icons_.resize(kFixed);
    ImageList_SetImageCount(list_.get(), kFixed);
  }

  int Count() const override { return static_cast<int>(icons_.size()); }
  IconHandle Icon(int index) const override {
    return index >= 0 && index < Count() ? icons_[static_cast<std::size_t>(index)] : nullptr;
  }
  int Add(const IconHandle& icon) override {
    if (!icon || ImageList_ReplaceIcon(list_.get(), -1, Hicon(icon)) < 0) return -1;
    icons_.push_back(icon);
    return Count() - 1;
  }

 private:
  static HICON Hicon(const IconHandle& icon) { return static_cast<HICON>(icon.get()); }

  std::vector<IconHandle> icons_;
  controls::UniqueImageList list_;
};

TPowerScan_Form::TPowerScan_Form(Application& app, HWND owner)
    : Form(app), images_(std::make_unique<NodeImages>()) {
  const UINT dpi = controls::DpiOf(owner);
  if (!Create(kFormName, controls::Scale(600, dpi), controls::Scale(460, dpi), owner,
              WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_MAXIMIZEBOX))
    return;
  CreateControls();
  LoadTexts();
  ApplyDpi();
}

TPowerScan_Form::~TPowerScan_Form() {
  if (tree_) RemoveWindowSubclass(tree_.Handle(), &TPowerScan_Form::TreeProcedure, kTreeSubclass);
}

void TPowerScan_Form::CreateControls() {
  using controls::CreateChild;
  title_.Attach(CreateChild(hwnd_, L"STATIC", L"Found leftover items. Please select to delete.",
                            SS_LEFT | SS_NOPREFIX, Id::Title));
  tree_.Attach(CreateChild(hwnd_, WC_TREEVIEWW, L"",
                           TVS_HASBUTTONS | TVS_HASLINES | TVS_LINESATROOT | TVS_SHOWSELALWAYS |
                               WS_VSCROLL | WS_HSCROLL | WS_TABSTOP | WS_GROUP,
                           Id::Tree, WS_EX_CLIENTEDGE));
  SetWindowSubclass(tree_.Handle(), &TPowerScan_Form::TreeProcedure, kTreeSubclass,
                    reinterpret_cast<DWORD_PTR>(this));
  deletePath_.Attach(CreateChild(hwnd_, L"STATIC", L"",
                                 SS_LEFTNOWORDWRAP | SS_PATHELLIPSIS | SS_NOPREFIX, Id::DeletePath));
  progress_ = CreateChild(hwnd_, PROGRESS_CLASSW, L"", 0, Id::Progress);
  SendMessageW(progress_, PBM_SETRANGE32, 0, 100);
  selectAllButton_.Attach(CreateChild(hwnd_, L"BUTTON", L"Select All",
                                      BS_PUSHBUTTON | WS_TABSTOP | WS_GROUP, Id::SelectAll));
  delete_.Attach(CreateChild(hwnd_, L"BUTTON", L"Delete", BS_PUSHBUTTON | WS_TABSTOP, Id::Delete));
  cancelButton_.Attach(
      CreateChild(hwnd_, L"BUTTON", L"Cancel", BS_PUSHBUTTON | WS_TABSTOP, Id::Cancel));
  deletePath_.Show(false);
  ShowWindow(progress_, SW_HIDE);
}

// FormCreate: the window's texts and its eight messages.
void TPowerScan_Form::LoadTexts() {
  texts_ = std::make_unique<FormTexts>(kFormName, hwnd_);
  FormTexts& t = *texts_;
  t.AddWindow(L"Label_UninstallScanTitle", ComponentKind::Label, title_.Handle());
  t.AddWindow(L"Label_DeletePath", ComponentKind::Label, deletePath_.Handle());
  t.AddWindow(L"Button_Delete", ComponentKind::Button, delete_.Handle());
  t.AddWindow(L"Button_Cancel", ComponentKind::Button, cancelButton_.Handle());
  t.AddWindow(L"Button_SelectAll", ComponentKind::Button, selectAllButton_.Handle());
  const auto language = TranslateForm(app_.Machine(), t);
  auto m = [&](std::wstring_view key) { return CatalogMessage(*language, kFormName, key); };
  sureDelete_ = m(L"M_SureDeleteItems");
  deletionTexts_.Deleting = m(L"M_Deleting");
  deleteFinish_ = m(L"M_DeleteFinish");
  selectAll_ = m(L"M_SelectAll");
  deselectAll_ = m(L"M_DeselectAll");
  deletionTexts_.Option = m(L"M_Option");
  deletionTexts_.PowerfulScan = m(L"M_PowerfulScan");
  deletionTexts_.DateTime = m(L"M_DateTime");
}

void TPowerScan_Form::ApplyDpi() {
  const UINT dpi = controls::DpiOf(hwnd_);
  font_ = controls::MessageFont(dpi);
  titleFont_ = controls::MessageFont(dpi, true);
  title_.SetFont(titleFont_.get());
  for (HWND c : {tree_.Handle(), deletePath_.Handle(), selectAllButton_.Handle(),
                 delete_.Handle(), cancelButton_.Handle()})
    controls::Window(c).SetFont(font_.get());
  const int size = GetSystemMetricsForDpi(SM_CXSMICON, dpi);
  auto checks = controls::MakeCheckImages(tree_.Handle(), size);
  tree_.SetImageList(checks.get(), TVSIL_STATE);
  checks_ = std::move(checks);
  images_->Rebuild(size);
  tree_.SetImageList(images_->Handle(), TVSIL_NORMAL);
  Layout();
}

void TPowerScan_Form::Layout() {
  if (!cancelButton_) return;
  const UINT dpi = controls::DpiOf(hwnd_);
  auto s = [dpi](int v) { return controls::Scale(v, dpi); };
  RECT r;
  GetClientRect(hwnd_, &r);
  const int width = r.right - s(32);
  const int buttonTop = r.bottom - s(44);
  title_.Move(s(16), s(14), width, s(22));
  deletePath_.Move(s(16), buttonTop - s(52), width, s(18));
  controls::Window(progress_).Move(s(16), buttonTop - s(30), width, s(18));
  // The progress lines take room from the tree only while they show.
  const int treeBottom = deleting_ ? buttonTop - s(60) : buttonTop - s(12);
  tree_.Move(s(16), s(42), width, treeBottom - s(42));
  selectAllButton_.Move(s(16), buttonTop, s(120), s(28));
  cancelButton_.Move(r.right - s(16) - s(96), buttonTop, s(96), s(28));
  delete_.Move(r.right - s(16) - s(96) - s(8) - s(96), buttonTop, s(96), s(28));
}

void TPowerScan_Form::ClearResults() {
  tree_.Clear();
  items_.clear();
  model_.Clear();
  images_->Reset();
}

IImageList* TPowerScan_Form::Images() { return images_.get(); }

TreeNodeId TPowerScan_Form::AddNode(TreeNodeId parent, const std::wstring& caption, int image,
                                    int stateIndex, std::unique_ptr<TMyTreeData> data) {
  const TreeNodeId id = model_.AddNode(parent, caption, image, stateIndex, std::move(data));
  const int index = CheckTree::IndexOf(id);
  const int up = model_.At(index).parent;
  items_.push_back(tree_.Insert(up >= 0 ? items_[static_cast<std::size_t>(up)] : TVI_ROOT,
                                caption, image, model_.At(index).state, index));
  return id;
}

// FormShow.
void TPowerScan_Form::OnShow() {
  if (IsZoomed(hwnd_) || IsIconic(hwnd_)) ShowWindow(hwnd_, SW_RESTORE);
  cancel_ = false;
  Busy(false);
  selectAllButton_.SetText(selectAll_);
  filling_ = true;
  for (int root : model_.Roots()) tree_.Expand(items_[static_cast<std::size_t>(root)]);
  filling_ = false;
  if (!items_.empty()) tree_.Select(items_.front());
  ShowStates();
  lastFocus_ = tree_.Handle();
}

void TPowerScan_Form::ShowStates() {
  for (int i = 0; i < model_.Count(); ++i) {
    const HTREEITEM item = items_[static_cast<std::size_t>(i)];
    if (tree_.State(item) != model_.At(i).state) tree_.SetState(item, model_.At(i).state);
  }
  delete_.Enable(!deleting_ && model_.DeleteEnabled());
}

void TPowerScan_Form::TreeMouseDown(POINT at) {
  if (deleting_) return;
  bool onBox = false;
  const HTREEITEM item = tree_.HitTest(at, onBox);
  const int node = item ? static_cast<int>(tree_.Param(item)) : -1;
  if (model_.MouseDown(node, onBox)) ShowStates();
}

void TPowerScan_Form::SelectAllClick() {
  if (deleting_) return;
  selectAllButton_.SetText(model_.SelectAll(selectAllButton_.Text(), selectAll_, deselectAll_));
  ShowStates();
}

void TPowerScan_Form::Busy(bool deleting) {
  deleting_ = deleting;
  SendMessageW(progress_, PBM_SETPOS, deleting ? 0 : 100, 0);
  ShowWindow(progress_, deleting ? SW_SHOW : SW_HIDE);
  deletePath_.SetText(deleting ? deletionTexts_.Deleting : L"");
  deletePath_.Show(deleting);
  // Cancel stays: it stops the deletion at the next item.
  selectAllButton_.Enable(!deleting);
  tree_.Enable(!deleting);
  Layout();
  ShowStates();
  if (deleting) cancelButton_.Focus();
}

void TPowerScan_Form::DeleteClick() {
  if (deleting_ || !model_.DeleteEnabled()) return;
  const std::wstring caption = controls::Window(hwnd_).Text();
  if (MessageBoxW(hwnd_, sureDelete_.c_str(), caption.c_str(), MB_YESNO | MB_ICONQUESTION) !=
      IDYES)
    return;
  Busy(true);
  // The run works on a copy: Cancel closes the window, which lets the tree go.
  const std::vector<LeftoverRoot> findings = model_.Findings();
  const Platform& machine = app_.Machine();
  // Without a backup folder every item is listed as skipped: nothing goes unsaved.
  const auto backup = Backup::Begin(machine);
  DeletionGuard guard(machine, ProtectedPlaces(machine, otherFolders_), backup.get());
  LeftoverDeletion deletion(machine, guard, deletionTexts_);
  const DeletionResult result = deletion.Run(findings, *this, cancel_);
  if (!result.cancelled) {
    tree_.SetRedraw(false);
    ClearResults();
    tree_.SetRedraw(true);
  }
  Busy(false);
  if (!result.cancelled) MessageBoxW(hwnd_, deleteFinish_.c_str(), caption.c_str(), MB_OK);
  Close();
}

// Cancel and the close box: stops a running deletion and lets the records go.
void TPowerScan_Form::CancelClick() {
  cancel_ = true;
  Close();
  ClearResults();
}

void TPowerScan_Form::OnClose() { CancelClick(); }

void TPowerScan_Form::SetCaption(std::wstring_view text) { deletePath_.SetText(text); }

void TPowerScan_Form::SetPosition(int percent) {
  SendMessageW(progress_, PBM_SETPOS, static_cast<WPARAM>(percent), 0);
}

void TPowerScan_Form::ProcessMessages() {
  app_.ProcessMessages();
  app_.Dispatcher().Drain();
}

void TPowerScan_Form::OnCommand(int id, int, HWND) {
  switch (id) {
    case Id::SelectAll:
      SelectAllClick();
      return;
    case Id::Delete:
      DeleteClick();
      return;
    case Id::Cancel:
    case IDCANCEL:
      CancelClick();
      return;
    default:
      return;
  }
}

LRESULT TPowerScan_Form::OnNotify(NMHDR& header) {
  if (header.hwndFrom != tree_.Handle()) return 0;
  switch (header.code) {
    case TVN_ITEMEXPANDINGW:
      if (!filling_) model_.ExpandedOrCollapsed();
      return FALSE;
    case TVN_KEYDOWN: {
      // Space toggles the focused node, as a click on its box does.
      if (reinterpret_cast<NMTVKEYDOWN&>(header).wVKey != VK_SPACE || deleting_) return 0;
      if (HTREEITEM item = tree_.Selected()) {
        model_.Toggle(static_cast<int>(tree_.Param(item)));
        ShowStates();
      }
      return TRUE;
    }
    default:
      return 0;
  }
}

// The tree's own handling comes first (a click on an expand button expands
// and sets the mark), then the click is taken as a check-box click.
LRESULT CALLBACK TPowerScan_Form::TreeProcedure(HWND hwnd, UINT message, WPARAM wParam,
                                                LPARAM lParam, UINT_PTR, DWORD_PTR self) {
  if (message != WM_LBUTTONDOWN) return DefSubclassProc(hwnd, message, wParam, lParam);
  const LRESULT result = DefSubclassProc(hwnd, message, wParam, lParam);
  try {
    reinterpret_cast<TPowerScan_Form*>(self)->TreeMouseDown(
        {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
  } catch (...) {
    controls::ReportException(std::current_exception());
  }
  return result;
}

void TPowerScan_Form::OnSize(UINT, int, int) { Layout(); }

void TPowerScan_Form::OnDpiChanged(UINT dpi, const RECT& suggested) {
  Form::OnDpiChanged(dpi, suggested);
  ApplyDpi();
}

LRESULT TPowerScan_Form::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_SYSCOMMAND:
      if ((wParam & 0xFFF0) == SC_CLOSE) {
        CancelClick();
        return 0;
      }
      break;
    case DM_GETDEFID:
      if (IsWindowEnabled(delete_.Handle())) return MAKELRESULT(Id::Delete, DC_HASDEFID);
      return MAKELRESULT(Id::Cancel, DC_HASDEFID);
    default:
      break;
  }
  return Form::HandleMessage(message, wParam, lParam);
}

}  // namespace varnel::forms
