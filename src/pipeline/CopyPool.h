// SPDX-License-Identifier: MIT
// Runs one job on all processors at once.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace boost {
class thread;
}

namespace Vistrel {

/// A pool of threads that splits conversions by rows. Runs are serialised: streams that share a pool queue up.
/// Thread-safe.
class CopyPool
{
public:
    /// Called once by each participant with its number, from 0, and the count of participants.
    using Job = std::function<void(std::size_t participant, std::size_t count)>;

    /// 0 participants means one for each processor. No thread is started yet.
    explicit CopyPool(std::size_t participants = 0);
    /// Joins the workers.
    ~CopyPool();
    CopyPool(const CopyPool&) = delete;
    CopyPool& operator=(const CopyPool&) = delete;

    /// The pool of the process: made for the first user, gone with the last.
    static std::shared_ptr<CopyPool> shared();

    std::size_t participants() const { return m_participants; }

    /// Runs the job on every participant, the calling thread being number 0, and returns when all have returned. An
    /// exception thrown by any of them is rethrown here, after all have returned.
    void run(const Job& job);

private:
    void startWorkers();
    void work(std::size_t number);

    const std::size_t m_participants;
    std::mutex m_runMutex; // held for a whole run

    std::mutex m_stateMutex; // guards all below
    std::condition_variable m_jobPosted;
    std::condition_variable m_allDone;
    const Job* m_job = nullptr;
    std::uint64_t m_runNumber = 0; // a worker does each run once
    std::size_t m_unfinished = 0;  // workers that have not returned from the current run
    std::exception_ptr m_exception;
    bool m_running = true;

    std::vector<std::unique_ptr<boost::thread>> m_workers; // filled by the first run
};

} // namespace Vistrel
