// SPDX-License-Identifier: MIT
// Writes lines to the standard error stream.
#include "platform/ErrorStream.h"

#include <cstdio>

#if defined(_WIN32)
#include <string>
#include <windows.h>
#endif

namespace Vistrel {

void writeErrorLine(const char* line) noexcept
{
#if defined(_WIN32)
    if (_fileno(stderr) < 0) {
        try {
            OutputDebugStringA((std::string(line) + '\n').c_str());
        } catch (...) {
            OutputDebugStringA(line);
        }
        return;
    }
#endif
    std::fprintf(stderr, "%s\n", line); // in one call, so that lines do not mix
}

} // namespace Vistrel
