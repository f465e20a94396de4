#pragma once

#include <string>

#include "platform/system.h"

namespace varnel {

// The running Windows version as the program names it; empty off NT.
std::wstring GetOSName(ISystem& system);

}  // namespace varnel
