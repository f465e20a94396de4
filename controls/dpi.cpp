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

}  // namespace varnel::controls
