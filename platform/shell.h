#pragma once

#include <cstdint>
#include <string_view>

namespace varnel {

namespace ShowCmd {
constexpr int Hide = 0;
constexpr int Normal = 1;
constexpr int Maximize = 3;
}  // namespace ShowCmd

class IShell {
 public:
  virtual ~IShell() = default;
  // ShellExecuteW with no owner window; returns its result (> 32 is success).
  virtual std::intptr_t Execute(std::wstring_view verb, std::wstring_view file,
                                std::wstring_view parameters, std::wstring_view directory,
                                int show) = 0;
  // Starts the file and waits, without time-out, until it is idle for input.
  virtual bool ExecuteAndWaitIdle(std::wstring_view verb, std::wstring_view file, int show) = 0;
};

}  // namespace varnel
