#pragma once

#include "inventory/soft_info.h"
#include "platform/shell.h"

namespace varnel {

// The list control and its image lists, as the analysis sees them. Called on
// the GUI thread only.
class IInventoryView {
 public:
  virtual ~IInventoryView() = default;
  // Adds the small icon to the small list and the large one to the large
  // list (they stay index-aligned); returns the small list's count minus one.
  virtual int AddIcons(const IconHandle& small, const IconHandle& large) = 0;
  // Repaints the row that shows record `index`.
  virtual void UpdateRow(int index, const TSoftInfo& info) = 0;
};

}  // namespace varnel
