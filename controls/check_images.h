#pragma once

#include <windows.h>

#include "controls/handles.h"

namespace varnel::controls {

// The state images of a tree with three-state check boxes, `size` pixels
// square: 0 no box, 1 unchecked, 2 checked, 3 partly checked. Drawn by the
// visual style of `themed` when it has one, else by the classic frame painter.
UniqueImageList MakeCheckImages(HWND themed, int size);

}  // namespace varnel::controls
