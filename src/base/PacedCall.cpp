// SPDX-License-Identifier: MIT
// Folds requests from any thread into calls on one thread at a limited rate.
#include "base/PacedCall.h"

#include <QtCore/QPointer>

#include <algorithm>
#include <mutex>
#include <utility>

namespace Vistrel {

struct PacedCall::Gate
{
    std::mutex mutex;           // guards all below
    PacedCall* owner = nullptr; // null once it is stopped
    bool isPending = false;     // a request has not been served yet
    bool isFollowed = false;    // a followed signal made it
};

PacedCall::PacedCall(std::function<void()> call) : m_call(std::move(call)), m_gate(std::make_shared<Gate>())
{
    m_gate->owner = this;
    m_clock.start();
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, SIGNAL(timeout()), this, SLOT(make()));
}

PacedCall::~PacedCall()
{
    stop();
}

// A call that is already posted then does nothing.
bool PacedCall::drop()
{
    m_timer.stop();
    const std::lock_guard<std::mutex> guard(m_gate->mutex);
    m_gate->isPending = false;
    return std::exchange(m_gate->isFollowed, false);
}

void PacedCall::stop()
{
    for (const QMetaObject::Connection& connection : m_followed)
        disconnect(connection);
    m_followed.clear();
    m_timer.stop();
    const std::lock_guard<std::mutex> guard(m_gate->mutex);
    m_gate->owner = nullptr;
}

void PacedCall::request(Gate& gate, bool isFollowed)
{
    const std::lock_guard<std::mutex> guard(gate.mutex);
    gate.isFollowed = gate.isFollowed || isFollowed;
    if (!gate.owner || gate.isPending)
        return;
    QMetaObject::invokeMethod(gate.owner, "arrive", Qt::QueuedConnection);
    gate.isPending = true;
}

void PacedCall::arrive()
{
    const qint64 remaining = m_due - m_clock.elapsed();
    if (remaining > 0)
        m_timer.start(static_cast<int>(remaining));
    else
        make();
}

void PacedCall::make()
{
    {
        const std::lock_guard<std::mutex> guard(m_gate->mutex);
        if (!m_gate->owner || !std::exchange(m_gate->isPending, false))
            return;
        m_gate->isFollowed = false;
    }
    // The next tick of a steady clock. Counted from the call, requests at the same rate would be served later and
    // later, and one would be skipped in the end.
    const qint64 begin = m_clock.elapsed();
    m_due = (begin < m_due + m_intervalMs ? m_due : begin) + m_intervalMs;
    const QPointer<PacedCall> alive(this);
    const std::function<void()> call = m_call; // the call may delete this object
    call();
    // A request made meanwhile waits for a turn of the event loop, however long this call took.
    if (alive)
        m_due = std::max(m_due, m_clock.elapsed() + 1);
}

} // namespace Vistrel
