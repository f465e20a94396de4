#pragma once

#ifdef _WIN32

#include <algorithm>
#include <chrono>
#include <functional>
#include <thread>

#include "tests/platform/contract_fixture.h"

namespace varnel::testing_support {

// What only the real machine can show: the same worlds as the contract
// suite, restricted to the Win32 backend.
inline std::vector<Backend> Win32Only() {
  std::vector<Backend> all = AllBackends();
  std::erase_if(all, [](const Backend& b) { return b.name != "win32"; });
  return all;
}

// Things another process does happen later; give them a few seconds.
inline bool Eventually(const std::function<bool()>& condition,
                       std::chrono::milliseconds limit = std::chrono::seconds(15)) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return true;
}

}  // namespace varnel::testing_support

#endif
