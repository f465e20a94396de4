#pragma once

#include "platform/system.h"

namespace varnel {

// True when a 64-bit registry view exists beside the default one; callers
// pass it as `use64` to see both views.
bool IsWow64(ISystem& system);

// Per thread. Quietly does nothing where the system has no such switch.
void SetFsRedirection(ISystem& system, bool disable);

}  // namespace varnel
