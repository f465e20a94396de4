#pragma once

#include <exception>
#include <functional>

namespace varnel::controls {

// Where an exception that escapes a window procedure goes: the
// application's one handler. Without one it is dropped, never rethrown
// across the system's callback.
void SetExceptionSink(std::function<void(std::exception_ptr)> sink);
void ReportException(std::exception_ptr error) noexcept;

}  // namespace varnel::controls
