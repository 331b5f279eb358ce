// SPDX-License-Identifier: MIT
// The thread that fetches a source's frames and converts them.
#pragma once

#include "base/DetachableThread.h"
#include "pipeline/frames/FrameConverter.h"
#include "pipeline/stream/Refusals.h"

#include <Vistrel/ScopedLock.h>

#include <array>
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

/// Holds the newest complete picture of a stream and, while it runs, renews it on a thread of its own.
///
/// Locks: a frame lock of the source, then a locked bitmap's pixels, then the copy pool, then one of the two mutexes
/// here, which are never held together nor across a call into the host.
class StreamWorker
{
public:
    /// `converted` is called on the worker's thread whenever there is another front picture, or a change of settings
    /// has been left to be done. It must not call back.
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

    DisplayFramePtr front() const; ///< the newest complete picture, or null
    ConversionSettings settings() const;
    std::uint64_t framesConverted() const { return m_framesConverted.load(); }
    Refusals& refusals() { return m_refusals; } ///< why frames are not shown
    std::size_t framesPushed() const;           ///< ever, to the source; 0 when it is no push source

    /// What a change of settings has done to the front picture.
    enum class Renewal { None, Rendered, Converted };

    /// The stage that is set, or one that does nothing.
    template <typename T>
    std::shared_ptr<const T> stage() const
    {
        const std::shared_ptr<const T> set = settings().stages.template get<T>();
        return set ? set : std::make_shared<const T>();
    }
    /// Takes another stage, and repeats, of the front picture, the first stage that the change touches and those after
    /// it. While a newer frame is being converted that is left to `renewIfOwed`.
    template <typename T>
    Renewal setStage(std::shared_ptr<const T> stage)
    {
        return setStage(T::place, std::move(stage));
    }
    /// Does what a change has left, now that no frame is being converted. To be called whenever `converted` was.
    Renewal renewIfOwed();
    /// While false, no change asks the source for a lock; what it would convert again is left to `renewIfOwed`. On the
    /// thread that changes settings.
    void setSourceAskable(bool askable) { m_isSourceAskable = askable; }

    /// Locks a new, zeroed bitmap, which the front picture then shows; false, and none locked, when it cannot be.
    bool lockBitmap(int width, int height, Format format);
    /// Locks none; the front picture stays as it is.
    void unlockBitmap();

    /// Forgets the front picture and frees the memory of all pictures, as soon as nobody refers to it. Until frames are
    /// accepted again the source is asked for none, and one that it delivers, or has delivered, is dropped.
    void clear();
    void acceptFrames();

private:
    struct Snapshot
    {
        DisplayFramePtr front;
        ConversionSettings settings;
    };

    // A frame as it came from the source.
    struct Delivery
    {
        RawImage raw;
        ScopedLock lock;
        std::shared_ptr<const void> lent;
        std::array<std::shared_ptr<LockedBitmap>, 2> bitmaps; // into which the source may have drawn it meanwhile
        std::shared_ptr<const void> memory;                   // the library's own that it lies in, if any
        std::uint64_t fetch = 0;
        std::uint64_t clearCount = 0;
    };

    enum class Outcome { Front, Dropped, Cleared, OtherTarget };

    void work();
    bool end(DetachableThread& thread);
    void serve(std::uint64_t fetch);
    Outcome convertDelivered(const Delivery& delivery);
    Outcome makeFront(std::shared_ptr<DisplayFrame> frame, const Delivery& delivery);
    void announce(bool isFront);
    void lookAtPushed();
    std::shared_ptr<DisplayFrame> tryConvert(const RawImage& delivered, bool underLock,
                                             const ConversionSettings& before);
    Snapshot snapshot() const;
    bool replaceFront(const DisplayFramePtr& before, DisplayFramePtr frame);
    void exchangeBitmap(std::shared_ptr<LockedBitmap>& bitmap);

    Renewal setStage(Stage::Place place, std::shared_ptr<const Stage> stage);
    Renewal renewFront();
    bool convertFrontAgain(const DisplayFramePtr& shown);
    bool renderFrontAgain();
    bool pauseFetching(std::uint64_t sinceFetch);
    void resumeFetching();

    AbstractAcquisitionInterface* const m_source;
    FrameLender* const m_lender;                              // the source, if it is one
    const ImperativeAcquisitionInterface* const m_pushSource; // the source, if it is one
    std::size_t m_framesPushed = 0;                           // to it, when it was looked at last
    Refusals m_refusals;
    const std::function<void()> m_converted;
    FrameConverter m_converter;

    mutable std::mutex m_imageMutex; // guards the picture and what the conversion reads
    DisplayFramePtr m_front;
    ConversionSettings m_settings;
    std::shared_ptr<LockedBitmap> m_unlocked; // since the last fetch began: the source may still hold a frame in it
    bool m_isConverting = false;              // a frame newer than the front
    bool m_isChangeOwed = false;              // settings changed while one was being converted
    bool m_isAccepting = true;
    std::uint64_t m_clearCount = 0;

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
    std::atomic<std::uint64_t> m_framesConverted{0};
};

} // namespace Vistrel
