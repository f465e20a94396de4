#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"

namespace varnel {

// "Error_Log.txt" beside the executable.
std::wstring ErrorLogFileName(ISystem& system);

// The eight lines of one report, the last one empty.
std::vector<std::wstring> ErrorReportLines(const Platform& platform,
                                           std::wstring_view exceptionType,
                                           std::wstring_view message);

// Appends one report to the error log. Every file error is swallowed, so
// logging can never fail a second time; false only tells a test it did.
bool AppendErrorReport(const Platform& platform, std::wstring_view exceptionType,
                       std::wstring_view message) noexcept;

}  // namespace varnel
