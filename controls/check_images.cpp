#include "controls/check_images.h"

#include <uxtheme.h>
#include <vssym32.h>

namespace varnel::controls {

namespace {

void CloseTheme(HTHEME theme) { CloseThemeData(theme); }
using UniqueTheme = win32::UniqueAny<HTHEME, &CloseTheme>;

struct Look {
  int themeState;    // CBS_*; 0 draws nothing
  UINT classicState;  // DFCS_*
};
constexpr Look kLooks[] = {
    {0, 0},
    {CBS_UNCHECKEDNORMAL, DFCS_BUTTONCHECK},
    {CBS_CHECKEDNORMAL, DFCS_BUTTONCHECK | DFCS_CHECKED},
    {CBS_MIXEDNORMAL, DFCS_BUTTON3STATE | DFCS_CHECKED},
};

}  // namespace

UniqueImageList MakeCheckImages(HWND themed, int size) {
  UniqueImageList images(ImageList_Create(size, size, ILC_COLOR24, 4, 0));
  if (!images) return images;
  UniqueTheme theme(IsAppThemed() ? OpenThemeData(themed, L"BUTTON") : nullptr);
  HDC screen = GetDC(nullptr);
  UniqueDc dc(CreateCompatibleDC(screen));
  for (const Look& look : kLooks) {
    UniqueBitmap bitmap(CreateCompatibleBitmap(screen, size, size));
    if (!dc || !bitmap) break;
    HGDIOBJ old = SelectObject(dc.get(), bitmap.get());
    RECT r{0, 0, size, size};
    FillRect(dc.get(), &r, GetSysColorBrush(COLOR_WINDOW));
    // A little room around the box, as a check box button has.
    InflateRect(&r, -size / 8, -size / 8);
    if (look.themeState != 0) {
      if (!theme || FAILED(DrawThemeBackground(theme.get(), dc.get(), BP_CHECKBOX,
                                               look.themeState, &r, nullptr)))
        DrawFrameControl(dc.get(), &r, DFC_BUTTON, look.classicState | DFCS_FLAT);
    }
    SelectObject(dc.get(), old);
    ImageList_Add(images.get(), bitmap.get(), nullptr);
  }
  ReleaseDC(nullptr, screen);
  return images;
}

}  // namespace varnel::controls
