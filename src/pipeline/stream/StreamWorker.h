// SPDX-License-Identifier: MIT
// The thread that fetches a source's frames and converts them.
#pragma once

#include "base/DetachableThread.h"
#include "pipeline/stream/PictureStore.h"

#include <Vistrel/ScopedLock.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace Vistrel {

class AbstractAcquisitionInterface;
class FrameLender;
class ImperativeAcquisitionInterface;

/// Fetches a source's frames on a thread of its own and makes pictures of them. Calls the source with no mutex held.
///
/// Locks: a frame lock of the source, then those of `PictureStore`. The mutex here is held beside none of them.
class StreamWorker
{
public:
    /// `converted` is called on the worker's thread when there is another front, or when a change of settings is owed.
    /// It must not call back.
    StreamWorker(AbstractAcquisitionInterface* source, std::function<void()> converted);
    /// Waits for a fetch or conversion that is under way.
    ~StreamWorker();

    /// Starts the thread and returns when it runs; a second start does nothing.
    void start();
    void stop();
    /// Stops without waiting: when the source is being asked for a frame, or the frame converted, the worker and
    /// `keptAlive` live on until that is over, and are let go on the thread that is done last.
    static void detach(std::shared_ptr<StreamWorker> worker, std::shared_ptr<void> keptAlive);

    /// Asks for one fetch. Requests that come while a fetch is under way are served together by one more.
    void request();
    /// Asks for a fetch and waits until one that began after this call has been dealt with.
    void requestAndWait();

    PictureStore& pictures() { return m_pictures; }
    std::size_t framesPushed() const; ///< ever, to the source; 0 when it is no push source

    /// What a change of settings has done to the front.
    enum class Renewal { None, Rendered, Converted };

    /// Sets a stage. Of the front, the first stage that the change touches and those after it are repeated; while a
    /// newer frame is being converted, that is owed.
    template <typename T>
    Renewal setStage(std::shared_ptr<const T> stage)
    {
        return setStage(T::place, std::move(stage));
    }
    /// Repeats what is owed, unless a frame is being converted. To be called after every call of `converted`.
    Renewal renewIfOwed();
    /// While false, no change asks the source for a lock, and a conversion is owed. Called on the thread that changes
    /// settings.
    void setSourceAskable(bool askable) { m_isSourceAskable = askable; }

private:
    void work();
    bool end(DetachableThread& thread);
    void serve(std::uint64_t fetch);
    void lookAtPushed();

    Renewal setStage(Stage::Place place, std::shared_ptr<const Stage> stage);
    Renewal renewFront();
    bool convertAgain(const DisplayFramePtr& shown);
    bool pauseFetching(std::uint64_t sinceFetch);
    void resumeFetching();

    AbstractAcquisitionInterface* const m_source;
    FrameLender* const m_lender;                              // the source, if it is one
    const ImperativeAcquisitionInterface* const m_pushSource; // the source, if it is one
    std::size_t m_framesPushed = 0;                           // to it, when it was looked at last
    const std::function<void()> m_converted;
    PictureStore m_pictures;

    std::mutex m_handshakeMutex; // guards requests and their completion
    std::condition_variable m_handshakeCondition;
    std::uint64_t m_requested = 0;
    std::uint64_t m_served = 0;  // of the requests, all up to this one
    std::uint64_t m_fetches = 0; // begun
    bool m_isServing = false;
    bool m_isPaused = false; // the front's pixels, which came without a lock, are being read
    DetachableThread m_thread;

    bool m_isSourceAskable = true;
    std::atomic<bool> m_running{false}; // set and cleared under the handshake mutex
};

} // namespace Vistrel
