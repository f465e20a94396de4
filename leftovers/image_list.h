#pragma once

#include "platform/shell.h"

namespace varnel {

// The icons of a list or tree control, as the scan and its driver use them.
class IImageList {
 public:
  virtual ~IImageList() = default;
  virtual int Count() const = 0;
  // The icon at `index`; empty when there is none.
  virtual IconHandle Icon(int index) const = 0;
  // Appends the icon and returns its index, -1 when it could not be added.
  virtual int Add(const IconHandle& icon) = 0;
};

}  // namespace varnel
