// SPDX-License-Identifier: MIT
// Reports failures, each in one line.
#include "base/Log.h"

#include "platform/ErrorStream.h"

#include <algorithm>
#include <atomic>

namespace Vistrel {

namespace {

std::atomic<ReportSink> reportSink{nullptr};

} // namespace

void setReportSink(ReportSink sink) noexcept
{
    reportSink.store(sink);
}

void reportLine(const std::string& line) noexcept
{
    if (const ReportSink sink = reportSink.load()) {
        sink(line);
        return;
    }
    writeErrorLine(line.c_str());
}

void reportException(const char* operation) noexcept
{
    try {
        const std::string prefix = std::string("Vistrel: ") + operation + ": ";
        try {
            throw;
        } catch (const std::exception& exception) {
            const char* const what = exception.what();
            std::string line = prefix + (what ? what : "unknown exception");
            std::replace_if(
                line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
            reportLine(line);
        } catch (...) {
            reportLine(prefix + "unknown exception");
        }
    } catch (...) {
        writeErrorLine("Vistrel: out of memory");
    }
}

} // namespace Vistrel
