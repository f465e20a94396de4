#include "controls/dpi.h"

namespace varnel::controls {

UINT DpiOf(HWND window) {
  UINT dpi = window ? GetDpiForWindow(window) : 0;
  if (dpi == 0) dpi = GetDpiForSystem();
  return dpi ? dpi : kBaseDpi;
}

UniqueFont MessageFont(UINT dpi, bool bold, bool underline) {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  LOGFONTW font{};
  if (SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, dpi)) {
    font = metrics.lfMessageFont;
  } else {
    font.lfHeight = -MulDiv(9, static_cast<int>(dpi), 72);
    lstrcpyW(font.lfFaceName, L"Segoe UI");
  }
  if (bold) font.lfWeight = FW_BOLD;
  if (underline) font.lfUnderline = TRUE;
  return UniqueFont(CreateFontIndirectW(&font));
}

int SingleLineEditHeight(HWND edit, UINT dpi) {
  TEXTMETRICW metrics{};
  if (HDC dc = GetDC(edit)) {
    HGDIOBJ old = SelectObject(dc, reinterpret_cast<HFONT>(SendMessageW(edit, WM_GETFONT, 0, 0)));
    if (!GetTextMetricsW(dc, &metrics)) metrics.tmHeight = 0;
    SelectObject(dc, old);
    ReleaseDC(edit, dc);
  }
  if (metrics.tmHeight <= 0) metrics.tmHeight = Scale(16, dpi);
  return metrics.tmHeight + Scale(4, dpi) + 2 * GetSystemMetricsForDpi(SM_CYEDGE, dpi);
}

}  // namespace varnel::controls
