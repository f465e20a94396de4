#include "core/registry_editor.h"

#include <string>

#include "base/text.h"
#include "core/wow64.h"

namespace varnel {

namespace {

constexpr int kFoldSteps = 20;
constexpr std::uint32_t kSettleMs = 100;

WindowId StartEditor(const Platform& platform, bool use64) {
  // The 64-bit editor lives behind the redirected system folder, and the
  // switch is per thread, so start and find it here.
  if (use64) SetFsRedirection(platform.system, true);
  (void)platform.shell.ExecuteAndWaitIdle(L"open", L"regedit.exe", ShowCmd::Maximize);
  const WindowId editor = platform.windows.FindTopWindow(L"RegEdit_RegEdit");
  if (use64) SetFsRedirection(platform.system, false);
  return editor;
}

}  // namespace

bool OpenRegistryEditorAt(const Platform& platform, std::wstring_view key,
                          std::wstring_view valueName, bool use64) {
  IWindowSteering& windows = platform.windows;
  WindowId editor = windows.FindTopWindow(L"RegEdit_RegEdit");
  if (editor == 0) editor = StartEditor(platform, use64);
  if (editor == 0) return false;

  windows.Show(editor, ShowCmd::Maximize);
  windows.BringToFront(editor);

  // Fold the tree back to its root, then walk down: a "\" unfolds the
  // selected node, other characters drive the tree's incremental search.
  if (const WindowId tree = windows.FindChild(editor, L"SysTreeView32"); tree != 0) {
    for (int i = 0; i < kFoldSteps; ++i) windows.SendKeyDown(tree, VirtualKey::Left);
    platform.system.SleepMs(kSettleMs);
    std::wstring path(key);
    if (path.empty() || path.front() != L'\\') path.insert(0, 1, L'\\');
    windows.BringToFront(tree);
    windows.Focus(tree);
    for (const wchar_t c : path) {
      if (c == L'\\') {
        windows.SendKeyDown(tree, VirtualKey::Right);
        platform.system.SleepMs(kSettleMs);
      } else {
        windows.SendChar(tree, c);
      }
    }
  }

  if (const WindowId list = windows.FindChild(editor, L"SysListView32"); list != 0) {
    windows.BringToFront(list);
    windows.Focus(list);
    platform.system.SleepMs(kSettleMs);
    windows.SendKeyDown(list, VirtualKey::Home);
    for (const wchar_t c : text::Upper(valueName)) windows.SendChar(list, c);
  }
  return true;
}

}  // namespace varnel
