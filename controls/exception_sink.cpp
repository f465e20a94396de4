#include "controls/exception_sink.h"

#include <utility>

namespace varnel::controls {

namespace {
// Process-wide like the window classes it serves; set once by the program.
std::function<void(std::exception_ptr)>& Sink() {
  static std::function<void(std::exception_ptr)> sink;
  return sink;
}
}  // namespace

void SetExceptionSink(std::function<void(std::exception_ptr)> sink) { Sink() = std::move(sink); }

void ReportException(std::exception_ptr error) noexcept {
  try {
    if (Sink()) Sink()(error);
  } catch (...) {
  }
}

}  // namespace varnel::controls
