// SPDX-License-Identifier: MIT
// Where messages go that nobody asked for.
#pragma once

namespace Vistrel {

/// Writes one line, whose end is added, to the standard error stream; in a Windows program that has none, such as one
/// with windows alone, to the debugger's output. Thread-safe: lines of several threads do not mix.
void writeErrorLine(const char* line) noexcept;

} // namespace Vistrel
