#pragma once

#include <windows.h>

#include <commctrl.h>

#include "platform/win32/unique_handle.h"

namespace varnel::controls {

namespace detail {
inline void DeleteGdiObject(HGDIOBJ object) { DeleteObject(object); }
inline void DeleteFontHandle(HFONT font) { DeleteObject(font); }
inline void DeleteBrushHandle(HBRUSH brush) { DeleteObject(brush); }
inline void DeletePenHandle(HPEN pen) { DeleteObject(pen); }
inline void DeleteBitmapHandle(HBITMAP bitmap) { DeleteObject(bitmap); }
inline void DeleteDcHandle(HDC dc) { DeleteDC(dc); }
inline void DestroyWindowHandle(HWND window) { DestroyWindow(window); }
inline void DestroyIconHandle(HICON icon) { DestroyIcon(icon); }
inline void DestroyImageListHandle(HIMAGELIST list) { ImageList_Destroy(list); }
inline void DestroyMenuHandle(HMENU menu) { DestroyMenu(menu); }
inline void DestroyAcceleratorHandle(HACCEL table) { DestroyAcceleratorTable(table); }
}  // namespace detail

using UniqueHwnd = win32::UniqueAny<HWND, &detail::DestroyWindowHandle>;
using UniqueHicon = win32::UniqueAny<HICON, &detail::DestroyIconHandle>;
using UniqueImageList = win32::UniqueAny<HIMAGELIST, &detail::DestroyImageListHandle>;
using UniqueFont = win32::UniqueAny<HFONT, &detail::DeleteFontHandle>;
using UniqueBrush = win32::UniqueAny<HBRUSH, &detail::DeleteBrushHandle>;
using UniquePen = win32::UniqueAny<HPEN, &detail::DeletePenHandle>;
using UniqueBitmap = win32::UniqueAny<HBITMAP, &detail::DeleteBitmapHandle>;
using UniqueDc = win32::UniqueAny<HDC, &detail::DeleteDcHandle>;
using UniqueMenu = win32::UniqueAny<HMENU, &detail::DestroyMenuHandle>;
using UniqueAccel = win32::UniqueAny<HACCEL, &detail::DestroyAcceleratorHandle>;

}  // namespace varnel::controls
