// SPDX-License-Identifier: MIT
// Runs one job on all processors at once.
#include "pipeline/frames/CopyPool.h"

#include <boost/thread/thread.hpp>

#include <algorithm>
#include <thread>

namespace Vistrel {

CopyPool::CopyPool(std::size_t participants)
    : m_participants(
          std::max<std::size_t>(1, participants > 0 ? participants : std::size_t{std::thread::hardware_concurrency()}))
{
}

CopyPool::~CopyPool()
{
    {
        const std::lock_guard<std::mutex> state(m_stateMutex);
        m_running = false;
        m_jobPosted.notify_all();
    }
    for (const auto& worker : m_workers)
        worker->join();
}

std::shared_ptr<CopyPool> CopyPool::shared()
{
    // Never destroyed: a stream may end while the process ends.
    struct Shared
    {
        std::mutex mutex;
        std::weak_ptr<CopyPool> pool;
    };
    static Shared& shared = *new Shared;

    const std::lock_guard<std::mutex> guard(shared.mutex);
    std::shared_ptr<CopyPool> pool = shared.pool.lock();
    if (!pool) {
        pool = std::make_shared<CopyPool>();
        shared.pool = pool;
    }
    return pool;
}

void CopyPool::run(const Job& job)
{
    run(job, true, true);
}

void CopyPool::run(const Job& job, bool byEveryWorker, bool waits)
{
    std::unique_lock<std::mutex> run(m_runMutex, std::defer_lock);
    if (waits)
        run.lock();
    else if (!run.try_lock())
        return job(0, 1);
    startWorkers();

    {
        const std::lock_guard<std::mutex> state(m_stateMutex);
        m_job = &job;
        ++m_runNumber;
        m_awaited = byEveryWorker ? m_workers.size() : 0;
        m_exception = nullptr;
        m_jobPosted.notify_all();
    }

    std::exception_ptr exception;
    try {
        job(0, m_workers.size() + 1);
    } catch (...) {
        exception = std::current_exception();
    }

    {
        std::unique_lock<std::mutex> state(m_stateMutex);
        if (!byEveryWorker)
            m_job = nullptr; // no worker begins after this
        m_allDone.wait(state, [this] { return m_awaited == 0 && m_inside == 0; });
        m_job = nullptr;
        if (!exception)
            exception = m_exception;
        m_exception = nullptr;
    }
    if (exception)
        std::rethrow_exception(exception);
}

// If a thread cannot be started, conversions run on fewer threads.
void CopyPool::startWorkers()
{
    if (!m_workers.empty())
        return;
    m_workers.reserve(m_participants); // so that adding a started thread cannot fail
    for (std::size_t number = 1; number < m_participants; ++number) {
        try {
            m_workers.push_back(std::make_unique<boost::thread>([this, number] { work(number); }));
        } catch (const std::exception&) {
            break;
        }
    }
}

void CopyPool::work(std::size_t number)
{
    std::uint64_t lastRun = 0;
    std::unique_lock<std::mutex> state(m_stateMutex);
    for (;;) {
        m_jobPosted.wait(state, [&] { return !m_running || (m_job && m_runNumber != lastRun); });
        if (!m_running)
            return;
        lastRun = m_runNumber;
        if (m_awaited > 0)
            --m_awaited;
        ++m_inside;
        const Job& job = *m_job;
        const std::size_t count = m_workers.size() + 1;
        state.unlock();
        std::exception_ptr exception;
        try {
            job(number, count);
        } catch (...) {
            exception = std::current_exception();
        }
        state.lock();
        if (exception)
            m_exception = exception;
        if (--m_inside == 0 && m_awaited == 0)
            m_allDone.notify_one();
    }
}

} // namespace Vistrel
