// SPDX-License-Identifier: MIT
// Reports failures, each in one line.
#pragma once

#include <exception>
#include <string>
#include <type_traits>
#include <utility>

namespace Vistrel {

/// Writes one line to the sink, or to the standard error stream when there is none. Thread-safe; never throws.
void reportLine(const std::string& line) noexcept;

/// Reports the exception being handled, in one line with the operation's name. Thread-safe.
void reportException(const char* operation) noexcept;

/// Receives the lines instead of the standard error stream; null for the stream.
using ReportSink = void (*)(const std::string& line);
void setReportSink(ReportSink sink) noexcept;

/// Runs `work`. Reports an exception and then returns `failure`. For the library's code; `hostCall` is for the host's.
template <typename Result, typename Work>
Result attempt(const char* operation, Result failure, Work&& work) noexcept
{
    try {
        return std::forward<Work>(work)();
    } catch (...) {
        reportException(operation);
        return failure;
    }
}

/// Runs `work`, which returns nothing. Reports an exception.
template <typename Work>
void attempt(const char* operation, Work&& work) noexcept
{
    static_assert(std::is_void_v<std::invoke_result_t<Work>>, "what failure gives must be named");
    try {
        std::forward<Work>(work)();
    } catch (...) {
        reportException(operation);
    }
}

} // namespace Vistrel
