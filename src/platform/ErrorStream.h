// SPDX-License-Identifier: MIT
// Writes lines to the standard error stream.
#pragma once

namespace Vistrel {

/// Writes a line and its end to the standard error stream; in a Windows program without one, such as a program without
/// a console, to the debugger's output. Thread-safe: lines of several threads do not mix.
void writeErrorLine(const char* line) noexcept;

} // namespace Vistrel
