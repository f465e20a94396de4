#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/system.h"

namespace varnel {

// Start-up timing lines, "hh:mm:ss zzz" and a suffix; kept in memory only,
// for a debugger's eyes.
class TimingTrace {
 public:
  explicit TimingTrace(ISystem& system) : system_(system) {}
  void Add(std::wstring_view suffix);
  const std::vector<std::wstring>& Lines() const { return lines_; }

 private:
  ISystem& system_;
  std::vector<std::wstring> lines_;
};

}  // namespace varnel
