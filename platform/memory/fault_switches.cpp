#include "platform/memory/memory_platform.h"

namespace varnel::mem {

void FaultSwitches::Set(Fault fault, bool failing) {
  if (failing) {
    always_.insert(fault);
  } else {
    always_.erase(fault);
    remaining_.erase(fault);
  }
}

void FaultSwitches::FailTimes(Fault fault, int count) { remaining_[fault] = count; }

bool FaultSwitches::Fails(Fault fault) {
  if (always_.count(fault)) return true;
  auto it = remaining_.find(fault);
  if (it == remaining_.end() || it->second <= 0) return false;
  --it->second;
  return true;
}

void FaultSwitches::Clear() {
  always_.clear();
  remaining_.clear();
}

}  // namespace varnel::mem
