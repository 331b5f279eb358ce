// SPDX-License-Identifier: MIT
// Runs the commands of a window one after the other, on a thread of their own.
#include "window/BusyWork.h"

#include "base/HostCall.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace Vistrel {

// Shared with the thread, which may outlive the queue.
struct BusyWork::Worker
{
    void work();

    std::mutex mutex; // guards all below
    std::condition_variable wake;
    BusyWork* owner = nullptr; // null when it has been deleted
    const char* operation = nullptr;
    Command command; // the next one to run, or none
    bool isRunning = false;
    bool success = false; // of the command that returned last
};

void BusyWork::Worker::work()
{
    std::unique_lock<std::mutex> guard(mutex);
    while (true) {
        wake.wait(guard, [this] { return command || !owner; });
        if (!owner)
            return;
        const Command running = std::exchange(command, nullptr);
        isRunning = true;
        guard.unlock();
        const bool result = hostCall(operation, false, running);
        guard.lock();
        success = result;
        isRunning = false;
        // Under the mutex, so that the owner is not deleted meanwhile.
        if (owner)
            QMetaObject::invokeMethod(owner, "finish", Qt::QueuedConnection);
    }
}

BusyWork::BusyWork(std::shared_ptr<void> keptAlive) : m_keptAlive(std::move(keptAlive))
{
    qRegisterMetaType<Vistrel::BusyWorkResult>("Vistrel::BusyWorkResult");
    m_grace.setSingleShot(true);
    m_grace.setTimerType(Qt::PreciseTimer);
    m_grace.setInterval(graceMs);
    connect(&m_grace, &QTimer::timeout, this, [this] { Q_EMIT delayed(m_message ? m_message() : QString()); });
}

BusyWork::~BusyWork()
{
    if (!m_worker)
        return;
    bool isRunning = false;
    {
        const std::lock_guard<std::mutex> guard(m_worker->mutex);
        m_worker->owner = nullptr;
        m_worker->command = nullptr;
        isRunning = m_worker->isRunning;
        m_worker->wake.notify_one();
    }
    if (isRunning)
        m_thread.detach({std::move(m_keptAlive), m_worker});
}

void BusyWork::start(const char* operation, Message message, Command command)
{
    if (!m_worker) {
        auto worker = std::make_shared<Worker>();
        worker->owner = this;
        m_thread.start([one = worker.get()] { one->work(); });
        m_worker = std::move(worker);
    }
    m_waiting.push_back({operation, std::move(message), std::move(command)});
    runNext();
}

void BusyWork::runNext()
{
    if (m_isRunning || m_waiting.empty())
        return;
    Work next = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_isRunning = true;
    m_message = std::move(next.message);
    m_grace.start();
    const std::lock_guard<std::mutex> guard(m_worker->mutex);
    m_worker->operation = next.operation;
    m_worker->command = std::move(next.command);
    m_worker->wake.notify_one();
}

void BusyWork::finish()
{
    bool success = false;
    {
        const std::lock_guard<std::mutex> guard(m_worker->mutex);
        success = m_worker->success;
    }
    m_grace.stop();
    m_isRunning = false;
    // Queued, because a slot may delete this object.
    if (!m_waiting.empty())
        QMetaObject::invokeMethod(this, "runNext", Qt::QueuedConnection);
    Q_EMIT busyWorkComplete(success ? BusyWorkResult::Succeeded : BusyWorkResult::Failed);
}

void BusyWork::abortWaiting()
{
    for (std::size_t count = std::exchange(m_waiting, {}).size(); count > 0; --count)
        Q_EMIT busyWorkComplete(BusyWorkResult::Aborted);
}

} // namespace Vistrel
