// SPDX-License-Identifier: MIT
// The guard around calls into the host's code.
#pragma once

#include "base/Log.h"

#include <utility>

namespace Vistrel {

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
    return attempt(operation, std::move(failure), std::forward<Call>(call));
}

/// Runs `call`, which enters the host's code and returns nothing; an exception is reported.
template <typename Call>
void hostCall(const char* operation, Call&& call) noexcept
{
    const HostCallScope scope;
    attempt(operation, std::forward<Call>(call));
}

} // namespace Vistrel
