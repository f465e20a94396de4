#include "core/wow64.h"

namespace varnel {

bool IsWow64(ISystem& system) { return system.IsWow64(); }

void SetFsRedirection(ISystem& system, bool disable) {
  // A missing switch is not an error for any caller: 32-bit Windows has
  // nothing to redirect.
  (void)system.SetFsRedirection(disable);
}

}  // namespace varnel
