// SPDX-License-Identifier: MIT
// Runs the commands of a window one after the other, on a thread of their own.
#pragma once

#include "base/DetachableThread.h"

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>

#include <deque>
#include <functional>
#include <memory>

namespace Vistrel {

/// What became of a command.
enum class BusyWorkResult {
    Succeeded = 0,
    Failed = 1,  ///< it said so, or threw
    Aborted = 2, ///< it was dropped before it began
};

/// A queue of commands into the host's code, which may block for as long as they like: nothing here waits for them, the
/// destructor neither. Bound to the user-interface thread.
class BusyWork : public QObject
{
    Q_OBJECT

public:
    using Command = std::function<bool()>;
    using Message = std::function<QString()>;

    /// How long a command may take before anything is shown of it, in milliseconds.
    static constexpr int graceMs = 16;

    /// `keptAlive` is what the commands call. It is let go when this object is gone and the last command has returned,
    /// on the thread on which that happens last.
    explicit BusyWork(std::shared_ptr<void> keptAlive);
    /// Commands that wait are dropped; one that runs goes on by itself.
    ~BusyWork() override;

    /// Runs the command when all before it have been completed. `operation` names it where its exception is reported
    /// and must be a literal. `message` is asked for when the grace is over. Throws the thread library's error, with
    /// nothing queued, when there can be no thread.
    void start(const char* operation, Message message, Command command);

    /// Whether a command runs or waits, or has returned and its completion was not announced yet.
    bool isBusy() const { return m_isRunning || !m_waiting.empty(); }

    /// Drops the commands that wait, and announces each as aborted.
    void abortWaiting();

Q_SIGNALS:
    /// A command has been running for longer than the grace.
    void delayed(const QString& message);
    /// One command is over; `isBusy()` tells whether others wait. The next one begins after the slots have run.
    void busyWorkComplete(Vistrel::BusyWorkResult result);

private Q_SLOTS:
    void finish();
    void runNext();

private:
    struct Work
    {
        const char* operation;
        Message message;
        Command command;
    };
    struct Worker;

    std::shared_ptr<void> m_keptAlive;
    std::shared_ptr<Worker> m_worker; // null until the first command
    DetachableThread m_thread;        // runs the worker
    std::deque<Work> m_waiting;
    Message m_message; // of the command that runs
    QTimer m_grace;
    bool m_isRunning = false;
};

} // namespace Vistrel

Q_DECLARE_METATYPE(Vistrel::BusyWorkResult)
