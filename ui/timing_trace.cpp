#include "ui/timing_trace.h"

#include <cwchar>

namespace varnel {

void TimingTrace::Add(std::wstring_view suffix) {
  const auto t = system_.ToLocalTime(system_.Now()).value_or(LocalDateTime{});
  wchar_t stamp[32];
  std::swprintf(stamp, 32, L"%02d:%02d:%02d %03d", t.hour, t.minute, t.second, t.millisecond);
  lines_.push_back(stamp + std::wstring(suffix));
}

}  // namespace varnel
