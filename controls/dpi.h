#pragma once

#include <windows.h>

#include "controls/handles.h"

namespace varnel::controls {

constexpr UINT kBaseDpi = 96;

inline int Scale(int value, UINT dpi) { return MulDiv(value, static_cast<int>(dpi), kBaseDpi); }
// The window's own DPI, the system's before it has one.
UINT DpiOf(HWND window);
// The system's message font at `dpi`; `bold` and `underline` for the
// details panel's name and link.
UniqueFont MessageFont(UINT dpi, bool bold = false, bool underline = false);
// Height of a one-line edit with a client edge that fits its font with a
// little room: the edit draws its text at the top, so a taller box leaves
// the text high in it.
int SingleLineEditHeight(HWND edit, UINT dpi);

}  // namespace varnel::controls
