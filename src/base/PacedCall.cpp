// SPDX-License-Identifier: MIT
// Brings what is announced on any thread, at any rate, to one thread at a rate that it bears.
#include "base/PacedCall.h"

#include <QtCore/QPointer>

#include <algorithm>
#include <mutex>
#include <utility>

namespace Vistrel {

struct PacedCall::Gate
{
    std::mutex mutex;           // guards all below
    PacedCall* owner = nullptr; // null when it has stopped
    bool isPending = false;     // a call is on its way
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

// What is posted already then finds nothing to do.
void PacedCall::drop()
{
    m_timer.stop();
    const std::lock_guard<std::mutex> guard(m_gate->mutex);
    m_gate->isPending = false;
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

void PacedCall::request(Gate& gate)
{
    const std::lock_guard<std::mutex> guard(gate.mutex);
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
    }
    // The next tick of a steady beat, so that calls asked for at the same rate are not met ever later, and one skipped
    // in the end.
    const qint64 begin = m_clock.elapsed();
    m_due = (begin < m_due + m_intervalMs ? m_due : begin) + m_intervalMs;
    const QPointer<PacedCall> alive(this);
    const std::function<void()> call = m_call; // it may end with this object
    call();
    // What was asked for meanwhile waits for a turn of the loop, however long this one took.
    if (alive)
        m_due = std::max(m_due, m_clock.elapsed() + 1);
}

} // namespace Vistrel
