#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace varnel::testing_support {

// One machine to run a contract case against, with a scratch folder and a
// scratch registry key of its own that it removes afterwards.
class World {
 public:
  virtual ~World() = default;
  virtual Platform Get() = 0;
  // Absolute folder without trailing "\", created empty.
  virtual std::wstring Scratch() const = 0;
  // A key path under HKCU and HKLM\Software that belongs to this world only.
  virtual std::wstring KeyName() const = 0;
  // A class name under HKEY_CLASSES_ROOT that belongs to this world only.
  virtual std::wstring ClassKey() const = 0;
};

struct Backend {
  std::string name;
  std::function<std::unique_ptr<World>()> make;
};

std::vector<Backend> AllBackends();

}  // namespace varnel::testing_support
