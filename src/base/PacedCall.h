// SPDX-License-Identifier: MIT
// Brings what is announced on any thread, at any rate, to one thread at a rate that it bears.
#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QMetaObject>
#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <functional>
#include <memory>
#include <vector>

namespace Vistrel {

/// Makes a call from the event loop of the thread that it lives on whenever one has been asked for. Requests are folded
/// and paced: the first after a pause is met at once, those that come closer than the interval together at its end. The
/// last one is always met, and the loop turns between two calls. Bound to its thread, but for `request`.
class PacedCall : public QObject
{
    Q_OBJECT

public:
    static constexpr int defaultIntervalMs = 16;

    /// The call may delete this object.
    explicit PacedCall(std::function<void()> call);
    /// What is still asked for is dropped. Requests may be under way on other threads.
    ~PacedCall() override;

    void setInterval(int milliseconds) { m_intervalMs = milliseconds; }

    /// Thread-safe while this object lives.
    void request() { request(*m_gate); }

    /// Asks for a call with each emission of `signal`, on whatever thread `sender` emits it.
    template <typename Sender, typename Signal>
    void follow(const Sender* sender, Signal signal)
    {
        // A queued connection would post every emission. A direct one to this object would not see it go on another
        // thread; the gate outlives every emission.
        m_followed.push_back(connect(sender, signal, [gate = m_gate] { request(*gate); }));
    }

    /// Drops what is still asked for.
    void drop();
    /// Follows nothing any more, and drops what is still asked for.
    void stop();

private Q_SLOTS:
    void arrive();
    void make();

private:
    struct Gate;
    static void request(Gate& gate);

    const std::function<void()> m_call;
    const std::shared_ptr<Gate> m_gate;
    std::vector<QMetaObject::Connection> m_followed;
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_due = 0; // the earliest time of the next call, in milliseconds of the clock
    int m_intervalMs = defaultIntervalMs;
};

} // namespace Vistrel
