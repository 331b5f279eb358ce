// SPDX-License-Identifier: MIT
// Holds the newest picture of a stream, and the settings with which pictures are made.
#pragma once

#include "pipeline/frames/FrameConverter.h"
#include "pipeline/stream/Refusals.h"

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

namespace Vistrel {

/// A frame as it came from the source, whose lock the caller holds.
struct Delivery
{
    RawImage raw;
    bool underLock = false;
    std::shared_ptr<const void> lent;
    std::array<std::shared_ptr<LockedBitmap>, 2> bitmaps; // into which the source may have drawn it meanwhile
    std::shared_ptr<const void> memory;                   // the library's own that it lies in, if any
    std::uint64_t fetch = 0;
    std::uint64_t clearCount = 0;
};

/// Holds the front: the newest complete picture of a stream. Thread-safe.
///
/// Locks: a locked bitmap's pixels, then the copy pool, then the mutex here. It is not held across a conversion.
class PictureStore
{
public:
    DisplayFramePtr front() const; ///< null without one
    ConversionSettings settings() const;
    /// The stage that is set, or one that does nothing.
    template <typename T>
    std::shared_ptr<const T> stage() const
    {
        const std::shared_ptr<const T> set = settings().stages.template get<T>();
        return set ? set : std::make_shared<const T>();
    }
    std::uint64_t framesConverted() const;
    Refusals& refusals() { return m_refusals; } ///< why frames are not shown

    // A frame, on the thread that fetches.
    /// Names the bitmaps into which the source may draw. False while no frame is accepted.
    bool beginFetch(Delivery& delivery);
    /// To be called when the source has delivered. What is cleared from then on drops the frame. False while no frame
    /// is accepted.
    bool endFetch(Delivery& delivery);
    /// Converts the frame and makes it the front, unless it was cleared or cannot be converted. Returns whether there
    /// is another front, or a change of settings was left to be done.
    bool convert(const Delivery& delivery);

    // A change of settings, on the thread that shows pictures.
    /// Sets a stage. False when a newer frame is being converted: the change is then owed.
    bool setStage(Stage::Place place, std::shared_ptr<const Stage> stage);
    void oweChange();
    /// Whether a change is owed and no frame is being converted. It is not owed any more.
    bool takeOwedChange();
    /// The front, if its frame would be converted otherwise with the settings as they are; else null.
    DisplayFramePtr outdated() const;
    /// Converts the front's frame again. The caller keeps the source from changing its pixels. False when there is
    /// another front by now, or the conversion fails.
    bool convertAgain(const DisplayFramePtr& shown);
    /// Shows the front in the palette that is set. False when nothing changes.
    bool renderAgain();

    /// Locks a new, zeroed bitmap, which the front then shows. False, and none is locked, when it cannot be made.
    bool lockBitmap(int width, int height, Format format);
    /// Locks none; the front stays.
    void unlockBitmap();

    /// Drops the front, and every frame that is delivered until frames are accepted again. Frees the memory of all
    /// pictures as soon as nothing refers to it.
    void clear();
    void acceptFrames();
    /// Drops every frame from here on; the front stays.
    void refuseFrames();

private:
    enum class Outcome { Front, Dropped, Cleared, OtherTarget };

    Outcome tryDelivered(const Delivery& delivery);
    Outcome makeFront(std::shared_ptr<DisplayFrame> frame, const Delivery& delivery);
    std::shared_ptr<DisplayFrame> tryConvert(const RawImage& delivered, bool underLock,
                                             const ConversionSettings& before);
    bool replaceFront(const DisplayFramePtr& before, DisplayFramePtr frame);
    void exchangeBitmap(std::shared_ptr<LockedBitmap>& bitmap);

    FrameConverter m_converter;
    Refusals m_refusals;

    mutable std::mutex m_imageMutex; // guards all below
    DisplayFramePtr m_front;
    ConversionSettings m_settings;
    std::shared_ptr<LockedBitmap> m_unlocked; // since the last fetch began: the source may still hold a frame in it
    std::uint64_t m_framesConverted = 0;
    std::uint64_t m_clearCount = 0;
    bool m_isConverting = false; // a frame newer than the front
    bool m_isChangeOwed = false; // settings changed while one was being converted
    bool m_isAccepting = true;
};

} // namespace Vistrel
