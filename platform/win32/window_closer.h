#pragma once

#include <cstdint>

#include "platform/window_steering.h"

// Test support: ends a window another program owns the way its user would,
// so a test can let that program save its state and go.
namespace varnel::win32 {

// Asks the window to close and waits until it is gone; false on time-out.
bool CloseWindowAndWait(WindowId window, std::uint32_t timeoutMs);

}  // namespace varnel::win32
