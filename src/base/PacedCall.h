// SPDX-License-Identifier: MIT
// Folds requests from any thread into calls on one thread at a limited rate.
#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QMetaObject>
#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <functional>
#include <memory>
#include <vector>

namespace Vistrel {

/// Makes a requested call from the event loop of its thread. The first request after a pause is served at once; those
/// that come within the interval are served by one call at its end. The last request is always served, and the event
/// loop runs between two calls. Bound to its thread, except for `request`.
class PacedCall : public QObject
{
    Q_OBJECT

public:
    static constexpr int defaultIntervalMs = 16;

    /// The call may delete this object.
    explicit PacedCall(std::function<void()> call);
    /// Drops pending requests. Other threads may be requesting meanwhile.
    ~PacedCall() override;

    void setInterval(int milliseconds) { m_intervalMs = milliseconds; }

    /// Thread-safe while this object lives.
    void request() { request(*m_gate, false); }

    /// Requests a call for each emission of `signal`, on any thread.
    template <typename Sender, typename Signal>
    void follow(const Sender* sender, Signal signal)
    {
        // A queued connection would post every emission. A direct one to this object could call it while it is
        // destroyed on another thread; the gate outlives every emission.
        m_followed.push_back(connect(sender, signal, [gate = m_gate] { request(*gate, true); }));
    }

    /// Drops pending requests. Returns whether a followed signal made one of them.
    bool drop();
    /// Disconnects all followed signals and drops pending requests.
    void stop();

private Q_SLOTS:
    void arrive();
    void make();

private:
    struct Gate;
    static void request(Gate& gate, bool isFollowed);

    const std::function<void()> m_call;
    const std::shared_ptr<Gate> m_gate;
    std::vector<QMetaObject::Connection> m_followed;
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_due = 0; // the earliest time of the next call, in milliseconds of the clock
    int m_intervalMs = defaultIntervalMs;
};

} // namespace Vistrel
