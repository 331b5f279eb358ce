// SPDX-License-Identifier: MIT
// The one way to the standard error stream, and the guard around calls into the host.
#pragma once

#include <exception>
#include <string>
#include <utility>

namespace Vistrel {

/// Writes one line to the standard error stream. Thread-safe; never throws.
void reportLine(const std::string& line) noexcept;

/// Reports the exception being handled, on one line with the operation's name.
void reportException(const char* operation) noexcept;

/// Where lines go instead of the standard error stream; null for the stream itself. For tests.
using ReportSink = void (*)(const std::string& line);
void setReportSink(ReportSink sink) noexcept;

/// Whether this thread is inside a `hostCall`.
bool isInHostCall() noexcept;

/// Counts the calls that this thread is inside of.
class HostCallScope
{
public:
    HostCallScope() noexcept;
    ~HostCallScope();
    HostCallScope(const HostCallScope&) = delete;
    HostCallScope& operator=(const HostCallScope&) = delete;
};

/// Runs `call`, which enters the host's code; an exception is reported and gives `failure`.
template <typename Result, typename Call>
Result hostCall(const char* operation, Result failure, Call&& call) noexcept
{
    const HostCallScope scope;
    try {
        return std::forward<Call>(call)();
    } catch (...) {
        reportException(operation);
        return failure;
    }
}

} // namespace Vistrel
