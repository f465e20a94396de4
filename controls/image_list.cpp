#include "controls/image_list.h"

#include "platform/win32/top_down_bitmap.h"

namespace varnel::controls {

namespace {

// `icon` drawn at `size` into the middle of a transparent cell.
UniqueHicon Centred(HICON icon, int size, int width, int height) {
  UniqueHicon sized(static_cast<HICON>(CopyImage(icon, IMAGE_ICON, size, size, 0)));
  ICONINFO info{};
  if (!sized || !GetIconInfo(sized.get(), &info)) return {};
  UniqueBitmap colour(info.hbmColor), mask(info.hbmMask);
  if (!colour || !mask) return {};
  BITMAPINFO format = win32::TopDown32(width, height);
  void* bits = nullptr;
  UniqueBitmap cellColour(CreateDIBSection(nullptr, &format, DIB_RGB_COLORS, &bits, nullptr, 0));
  UniqueBitmap cellMask(CreateBitmap(width, height, 1, 1, nullptr));
  if (!cellColour || !cellMask) return {};
  UniqueDc fromDc(CreateCompatibleDC(nullptr)), toDc(CreateCompatibleDC(nullptr));
  if (!fromDc || !toDc) return {};
  HDC from = fromDc.get(), to = toDc.get();
  const int x = (width - size) / 2, y = (height - size) / 2;
  HGDIOBJ oldFrom = SelectObject(from, colour.get());
  HGDIOBJ oldTo = SelectObject(to, cellColour.get());
  BitBlt(to, x, y, size, size, from, 0, 0, SRCCOPY);
  SelectObject(from, mask.get());
  SelectObject(to, cellMask.get());
  PatBlt(to, 0, 0, width, height, WHITENESS);  // outside the icon: transparent
  BitBlt(to, x, y, size, size, from, 0, 0, SRCCOPY);
  SelectObject(from, oldFrom);
  SelectObject(to, oldTo);
  ICONINFO cell{TRUE, 0, 0, cellMask.get(), cellColour.get()};
  return UniqueHicon(CreateIconIndirect(&cell));
}

}  // namespace

int ImageList::Add(HICON icon) {
  if (!list_) return -1;
  if (iconSize_ != width_ || iconSize_ != height_) {
    if (UniqueHicon cell = Centred(icon, iconSize_, width_, height_))
      return ImageList_ReplaceIcon(list_.get(), -1, cell.get());
  }
  return ImageList_ReplaceIcon(list_.get(), -1, icon);
}

void ImageList::Resize(int width, int height, int iconSize) {
  width_ = width;
  height_ = height;
  iconSize_ = iconSize > 0 ? iconSize : width;
  if (list_) ImageList_SetIconSize(list_.get(), width, height);
}

}  // namespace varnel::controls
