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

}  // namespace varnel::controls
