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

/// Fetches a source's frames on its own thread and makes pictures of them. Calls the source without a mutex held.
///
/// Locks: a frame lock of the source, then those of `PictureStore`. The mutex here is held together with none of them.
class StreamWorker
{
public:
    /// `converted` is called on the worker's thread when there is another front, or when a change of settings is owed.
    /// It must not call this object.
    StreamWorker(AbstractAcquisitionInterface* source, std::function<void()> converted);
    /// Waits for a running fetch or conversion.
    ~StreamWorker();

    /// Starts the thread and returns when it runs; a second start does nothing.
    void start();
    void stop();
    /// Stops without waiting. A running fetch or conversion keeps the worker and `keptAlive` until it has returned; the
    /// thread that ends last releases them.
    static void detach(std::shared_ptr<StreamWorker> worker, std::shared_ptr<void> keptAlive);

    /// Requests a fetch. All requests that come during a fetch are served by one more.
    void request();
    /// Requests a fetch and waits until one that began after this call has been handled.
    void requestAndWait();

    PictureStore& pictures() { return m_pictures; }
    std::size_t framesPushed() const; ///< to the source since its construction; 0 for a pull source

    /// The effect of a change of settings on the front.
    enum class Renewal { None, Rendered, Converted };

    /// Sets a stage, and repeats the first stage of the front that the change affects and those after it. While a newer
    /// frame is being converted, the change is owed.
    template <typename T>
    Renewal setStage(std::shared_ptr<const T> stage)
    {
        return setStage(T::place, std::move(stage));
    }
    /// Makes an owed change, unless a frame is being converted. Call it after every call of `converted`.
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
    std::size_t m_framesPushed = 0;                           // to it, at the last fetch
    const std::function<void()> m_converted;
    PictureStore m_pictures;

    std::mutex m_handshakeMutex; // guards requests and their completion
    std::condition_variable m_handshakeCondition;
    std::uint64_t m_requested = 0;
    std::uint64_t m_served = 0;  // of the requests, all up to this one
    std::uint64_t m_fetches = 0; // begun
    bool m_isServing = false;
    bool m_isPaused = false; // the front's pixels are being read without a lock
    DetachableThread m_thread;

    bool m_isSourceAskable = true;
    std::atomic<bool> m_running{false}; // set and cleared under the handshake mutex
};

} // namespace Vistrel
