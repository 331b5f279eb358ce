// SPDX-License-Identifier: MIT
// The thread that fetches a source's frames and converts them.
#pragma once

#include "pipeline/FrameConverter.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace boost {
class thread;
}

namespace Vistrel {

class AbstractAcquisitionInterface;
class FrameLender;

/// Holds the newest complete picture of a stream and, while it runs, renews it on a thread of its own.
///
/// Locks: a frame lock of the source, then a locked bitmap's pixels, then the copy pool, then one of the two mutexes
/// here, which are never held together nor across a call into the host.
class StreamWorker
{
public:
    /// `converted` is called on the worker's thread whenever there is another front picture. It must not call back.
    StreamWorker(AbstractAcquisitionInterface* source, std::function<void()> converted);
    /// Waits for a fetch or conversion that is under way.
    ~StreamWorker();

    /// Starts the thread and returns when it runs; a second start does nothing.
    void start();
    void stop();
    /// Stops without waiting: when the source is being asked for a frame, or the frame converted, the worker and
    /// `keptAlive` live on until that is over, and are let go on the worker's thread.
    static void leave(std::shared_ptr<StreamWorker> worker, std::shared_ptr<void> keptAlive);

    /// Asks for one fetch. Requests that come while a fetch is under way are served together by one more.
    void request();
    /// Asks for a fetch and waits until one that began after this call has been dealt with.
    void requestAndWait();

    DisplayFramePtr front() const; ///< the newest complete picture, or null
    ConversionSettings settings() const;
    std::uint64_t framesConverted() const { return m_framesConverted.load(); }

    /// Changes settings; a frame that is being converted is converted again with the new ones.
    template <typename Change>
    void changeSettings(Change&& change)
    {
        const std::lock_guard<std::mutex> guard(m_imageMutex);
        change(m_settings);
        ++m_settingsVersion;
    }

    /// Converts the front picture again with the current settings, under the source's lock for it. `lockRequired` says
    /// that it must not be done without one even if the frame came without. False when it was not done.
    bool convertFrontAgain(bool lockRequired);
    /// Renders the front picture again in the current palette.
    bool renderFrontAgain();
    /// Locks a new, zeroed bitmap, which the front picture then shows; false, and none locked, when it cannot be.
    bool lockBitmap(int width, int height, Format format);

    /// Forgets the front picture and frees the memory of all pictures, as soon as nobody refers to it. Until frames are
    /// accepted again the source is asked for none, and one that it delivers, or has delivered, is dropped.
    void clear();
    void acceptFrames();

private:
    struct Snapshot
    {
        DisplayFramePtr front;
        ConversionSettings settings;
        std::uint64_t version;
    };

    void work();
    void serve();
    void convertDelivered(const RawImage& delivered, const std::shared_ptr<const void>& lent, bool underLock,
                          std::uint64_t clearCount, const LockedBitmap* bitmap);
    std::shared_ptr<DisplayFrame> tryConvert(const RawImage& delivered, bool underLock,
                                             const ConversionSettings& settings);
    Snapshot snapshot() const;
    bool replaceFront(const Snapshot& before, DisplayFramePtr frame);

    AbstractAcquisitionInterface* const m_source;
    FrameLender* const m_lender; // the source, if it is one
    const std::function<void()> m_converted;
    FrameConverter m_converter;
    std::unique_ptr<boost::thread> m_thread;

    mutable std::mutex m_imageMutex; // guards the picture and what the conversion reads
    DisplayFramePtr m_front;
    ConversionSettings m_settings;
    std::uint64_t m_settingsVersion = 0;
    std::uint64_t m_clearCount = 0;
    bool m_isAccepting = true;

    std::mutex m_handshakeMutex; // guards requests and their completion
    std::condition_variable m_handshakeCondition;
    std::uint64_t m_requested = 0;
    std::uint64_t m_served = 0; // of the requests, all up to this one
    bool m_started = false;
    bool m_isServing = false;
    std::pair<std::shared_ptr<StreamWorker>, std::shared_ptr<void>> m_left; // this worker and what it keeps, once left

    std::atomic<bool> m_running{false}; // set and cleared under the handshake mutex
    std::atomic<std::uint64_t> m_framesConverted{0};
};

} // namespace Vistrel
