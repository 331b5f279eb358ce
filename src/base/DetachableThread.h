// SPDX-License-Identifier: MIT
// A thread that may be left behind.
#pragma once

#include <array>
#include <functional>
#include <memory>

namespace Vistrel {

/// Owner of at most one thread, which is joined in the end, unless it is left behind while the host holds it up.
/// Reentrant.
class DetachableThread
{
public:
    /// What the thread needs as long as it runs; the second is let go first.
    using Needs = std::array<std::shared_ptr<void>, 2>;

    DetachableThread() = default;
    DetachableThread(const DetachableThread&) = delete;
    DetachableThread& operator=(const DetachableThread&) = delete;
    /// Waits until the work has returned.
    ~DetachableThread();

    void swap(DetachableThread& other) noexcept { m_state.swap(other.m_state); }

    /// Starts a thread for the work, where there is none, and returns when it runs. The work must not throw. Throws the
    /// thread library's error, and starts nothing, when there can be no thread.
    void start(std::function<void()> work);

    /// Gives the thread up. It runs on by itself and lets `needs` go when the work has returned; when it has already,
    /// they go here.
    void leave(Needs needs) noexcept;

private:
    struct State;

    std::shared_ptr<State> m_state; // shared with the thread; null when there is none
};

} // namespace Vistrel
