#pragma once

#include <windows.h>

#include <commctrl.h>

#include "controls/handles.h"

namespace varnel::controls {

// An owned image list of icons of one size, with alpha.
class ImageList {
 public:
  ImageList() = default;
  ImageList(int width, int height) : list_(ImageList_Create(width, height, ILC_COLOR32 | ILC_MASK, 16, 64)) {}

  HIMAGELIST Handle() const { return list_.get(); }
  int Add(HICON icon) { return list_ ? ImageList_ReplaceIcon(list_.get(), -1, icon) : -1; }
  int Count() const { return list_ ? ImageList_GetImageCount(list_.get()) : 0; }
  // A new icon the caller owns.
  UniqueHicon Icon(int index) const {
    return UniqueHicon(list_ ? ImageList_GetIcon(list_.get(), index, ILD_NORMAL) : nullptr);
  }

 private:
  UniqueImageList list_;
};

}  // namespace varnel::controls
