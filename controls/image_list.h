#pragma once

#include <windows.h>

#include <commctrl.h>

#include "controls/handles.h"

namespace varnel::controls {

// An owned image list with alpha. Its cells may be taller than the icons
// they hold (`iconSize` square): a list view's rows are as tall as its small
// images, so taller cells give taller rows, with each icon centred in its
// cell rather than stretched.
class ImageList {
 public:
  ImageList() = default;
  ImageList(int width, int height, int iconSize = 0)
      : list_(ImageList_Create(width, height, ILC_COLOR32 | ILC_MASK, 16, 64)),
        width_(width),
        height_(height),
        iconSize_(iconSize > 0 ? iconSize : width) {}

  HIMAGELIST Handle() const { return list_.get(); }
  int Add(HICON icon);
  int Count() const { return list_ ? ImageList_GetImageCount(list_.get()) : 0; }
  // A new icon the caller owns.
  UniqueHicon Icon(int index) const {
    return UniqueHicon(list_ ? ImageList_GetIcon(list_.get(), index, ILD_NORMAL) : nullptr);
  }
  // Empties the list and gives it a new cell and icon size; the handle
  // stays, so whoever shares it keeps a valid one.
  void Resize(int width, int height, int iconSize = 0);

 private:
  UniqueImageList list_;
  int width_ = 0, height_ = 0, iconSize_ = 0;
};

}  // namespace varnel::controls
