// SPDX-License-Identifier: MIT
// A thread that can be detached while the host blocks it.
#pragma once

#include <array>
#include <functional>
#include <memory>

namespace Vistrel {

/// Owns at most one thread. The destructor joins it, unless it has been detached because the host blocks it. Reentrant.
class DetachableThread
{
public:
    /// What a detached thread keeps until its work returns; it releases the second first.
    using Needs = std::array<std::shared_ptr<void>, 2>;

    DetachableThread() = default;
    DetachableThread(const DetachableThread&) = delete;
    DetachableThread& operator=(const DetachableThread&) = delete;
    /// Waits until the work has returned.
    ~DetachableThread();

    void swap(DetachableThread& other) noexcept { m_state.swap(other.m_state); }

    /// Starts a thread for the work and returns when it runs. There must be none yet, and the work must not throw.
    /// Throws the thread library's error when no thread can be started.
    void start(std::function<void()> work);

    /// Detaches the thread, which releases `needs` when its work has returned. If it has already, this releases them.
    void detach(Needs needs) noexcept;

private:
    struct State;

    std::shared_ptr<State> m_state; // shared with the thread; null when there is none
};

} // namespace Vistrel
