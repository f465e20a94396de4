#pragma once

#include <windows.h>

// Every message and command id the program defines for itself, in one place
// so that no two can collide; the GUI tests send some of them.
namespace varnel::forms {

// A second start asks the running one to come to the front; the two words
// keep a stray WM_USER message from doing it.
constexpr UINT WM_ACTIVATE_INSTANCE = WM_USER + 0x9F;
constexpr WPARAM kActivateWParam = 0x9B8B;
constexpr LPARAM kActivateLParam = 0x2540;

// Posted to the main window when the analysis thread waits for a hand-over.
constexpr UINT WM_DRAIN_HANDOVERS = WM_APP + 1;

// Main window, wParam a row: answers the row's group id (0 for no row).
// Wine's list view keeps no groups, so tests ask the window instead.
constexpr UINT WM_ROW_GROUP = WM_APP + 2;
// Main window, wParam a row: answers the row's record index (-1 for no row),
// which the list keeps with the row and shows nowhere.
constexpr UINT WM_ROW_RECORD = WM_APP + 3;

// Command ids of the keyboard shortcuts, handled by the main window.
namespace Shortcut {
constexpr UINT Refresh = 0x7F01;
constexpr UINT Search = 0x7F02;
}  // namespace Shortcut

}  // namespace varnel::forms
