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
    Failed = 1,  ///< it returned false or threw
    Aborted = 2, ///< it was dropped before it began
};

/// A queue of commands that call the host's code and may block for ever. Nothing here waits for them, nor does the
/// destructor. Bound to the user-interface thread.
class BusyWork : public QObject
{
    Q_OBJECT

public:
    using Command = std::function<bool()>;
    using Message = std::function<QString()>;

    /// The time that a command may take before it is shown, in milliseconds.
    static constexpr int graceMs = 16;

    /// `keptAlive` is what the commands call. It is released when this object has been deleted and the last command has
    /// returned, on the thread on which the later of the two happens.
    explicit BusyWork(std::shared_ptr<void> keptAlive);
    /// Drops the commands that wait. A command that runs continues.
    ~BusyWork() override;

    /// Runs the command after all earlier ones. An exception of the command is reported with the name `operation`,
    /// which must be a literal. `message` is called when the grace is over. Throws the thread library's error and
    /// queues nothing when no thread can be started.
    void start(const char* operation, Message message, Command command);

    /// Whether a command runs or waits, or has returned but `busyWorkComplete` has not been emitted yet.
    bool isBusy() const { return m_isRunning || !m_waiting.empty(); }

    /// Drops the commands that wait, and emits `busyWorkComplete` for each of them.
    void abortWaiting();

Q_SIGNALS:
    /// A command has been running for longer than the grace.
    void delayed(const QString& message);
    /// A command is over. The next one begins after the slots have run.
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
