// SPDX-License-Identifier: MIT
// A thread that can be detached while the host blocks it.
#include "base/DetachableThread.h"

#include <boost/thread/thread.hpp>

#include <future>
#include <mutex>
#include <utility>

namespace Vistrel {

struct DetachableThread::State
{
    boost::thread thread;
    std::mutex mutex; // guards all below
    Needs needs;      // of a detached thread
    bool isOver = false;
};

DetachableThread::~DetachableThread()
{
    if (m_state)
        m_state->thread.join();
}

void DetachableThread::start(std::function<void()> work)
{
    const auto state = std::make_shared<State>();
    std::promise<void> begun;
    const std::future<void> isBegun = begun.get_future();
    state->thread = boost::thread([state, work = std::move(work), begun = std::move(begun)]() mutable {
        begun.set_value();
        work();
        Needs needs; // destroyed after the mutex is released
        const std::lock_guard<std::mutex> guard(state->mutex);
        needs.swap(state->needs);
        state->isOver = true;
    });
    m_state = state;
    isBegun.wait();
}

void DetachableThread::detach(Needs needs) noexcept
{
    const std::shared_ptr<State> state = std::move(m_state);
    if (!state)
        return;
    state->thread.detach();
    const std::lock_guard<std::mutex> guard(state->mutex);
    if (!state->isOver)
        state->needs.swap(needs);
}

} // namespace Vistrel
