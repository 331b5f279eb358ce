// SPDX-License-Identifier: MIT
// The guard around calls into the host's code.
#pragma once

#include "base/Log.h"

#include <utility>

namespace Vistrel {

/// Whether this thread is inside a `hostCall`.
bool isInHostCall() noexcept;

/// Counts the nested host calls of this thread.
class HostCallScope
{
public:
    HostCallScope() noexcept;
    ~HostCallScope();
    HostCallScope(const HostCallScope&) = delete;
    HostCallScope& operator=(const HostCallScope&) = delete;
};

/// Runs `call`, which enters the host's code. Reports an exception and then returns `failure`.
template <typename Result, typename Call>
Result hostCall(const char* operation, Result failure, Call&& call) noexcept
{
    const HostCallScope scope;
    return attempt(operation, std::move(failure), std::forward<Call>(call));
}

/// Runs `call`, which enters the host's code and returns nothing. Reports an exception.
template <typename Call>
void hostCall(const char* operation, Call&& call) noexcept
{
    const HostCallScope scope;
    attempt(operation, std::forward<Call>(call));
}

} // namespace Vistrel
