// SPDX-License-Identifier: MIT
// Runs one job on all processors at once.
#pragma once

#include "pipeline/pixels/Kernels.h"

#include <algorithm>
#include <atomic>
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

/// A pool of threads that splits conversions by rows. Runs are serialised between the streams that share a pool.
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

    /// The pool of the process: created for the first user, destroyed with the last.
    static std::shared_ptr<CopyPool> shared();

    std::size_t participants() const { return m_participants; }

    /// Runs the job on every participant, the calling thread being number 0, and returns when all have returned. An
    /// exception thrown by any of them is rethrown here, after all have returned.
    void run(const Job& job);

    /// Calls `rows(first, end)` until all rows below `height` are done, each once: a participant that is ready takes
    /// the next rows, at least `fewest`. `bytesPerRow` counts the bytes read and written, or those that a plain copy
    /// would move in the time that a row takes. The calling thread does small frames alone, and does not wait for a
    /// worker that wakes when no row is left. Streamed stores are visible after the return.
    template <typename Rows>
    void runRows(std::size_t height, std::size_t bytesPerRow, Rows&& rows, std::size_t fewest = 1)
    {
        runPieces(height, std::max(fewest, piece / bytesPerRow), height * bytesPerRow, true, rows);
    }

    /// The same without waiting for another run: while there is one, the calling thread does all rows alone.
    template <typename Rows>
    void runRowsAtOnce(std::size_t height, std::size_t bytesPerRow, Rows&& rows)
    {
        runPieces(height, std::max<std::size_t>(1, piece / bytesPerRow), height * bytesPerRow, false, rows);
    }

private:
    // Measured on two processors: waking a worker costs the caller 15 to 20 us, and the worker starts 20 us later, or
    // much later on a busy machine. Frames of 640 x 480, up to 3 MB, take 10 to 200 us on one thread, hardly less on
    // two.
    static constexpr std::size_t smallestShared = std::size_t{4} << 20;
    // Measured at 1280 x 960 in colour: twice as fast as single rows, with which the participants compete for cache
    // lines and pages. From 64 KiB to 1 MiB there is little difference, but large pieces waste fewer prefetched bytes.
    static constexpr std::size_t piece = std::size_t{512} << 10;

    template <typename Rows>
    void runPieces(std::size_t height, std::size_t few, std::size_t bytes, bool waits, Rows&& rows)
    {
        std::atomic<std::size_t> next{0};
        const auto job = [&](std::size_t, std::size_t) {
            for (std::size_t row; (row = next.fetch_add(few)) < height;)
                rows(row, std::min(row + few, height));
            Kernels::flushStores();
        };
        if (bytes < smallestShared)
            job(0, 1);
        else
            run(std::cref(job), false, waits); // allocates no memory
    }

    void run(const Job& job, bool byEveryWorker, bool waits);
    void startWorkers();
    void work(std::size_t number);

    const std::size_t m_participants;
    std::mutex m_runMutex; // held for a whole run

    std::mutex m_stateMutex; // guards all below
    std::condition_variable m_jobPosted;
    std::condition_variable m_allDone;
    const Job* m_job = nullptr;
    std::uint64_t m_runNumber = 0; // a worker takes part in each run at most once
    std::size_t m_awaited = 0;     // workers that have not begun the current run but must
    std::size_t m_inside = 0;      // workers that have begun it and not returned
    std::exception_ptr m_exception;
    bool m_running = true;

    std::vector<std::unique_ptr<boost::thread>> m_workers; // filled by the first run
};

} // namespace Vistrel
