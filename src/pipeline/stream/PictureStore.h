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
    std::array<std::shared_ptr<LockedBitmap>, 2> bitmaps; // into which the source may have drawn it
    std::shared_ptr<const void> memory;                   // the library's memory that it lies in, or null
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

    // For a frame, on the thread that fetches.
    /// Stores the bitmaps into which the source may draw. Returns false while no frame is accepted.
    bool beginFetch(Delivery& delivery);
    /// Call it when the source has delivered. A later `clear` drops the frame. Returns false while no frame is
    /// accepted.
    bool endFetch(Delivery& delivery);
    /// Converts the frame and makes it the front, unless it was cleared or cannot be converted. Returns whether there
    /// is another front or a change of settings is owed.
    bool convert(const Delivery& delivery);

    // For a change of settings, on the thread that shows pictures.
    /// Sets a stage. Returns false when a newer frame is being converted: the change is then owed.
    bool setStage(Stage::Place place, std::shared_ptr<const Stage> stage);
    void oweChange();
    /// Returns whether a change is owed and no frame is being converted; then it is no longer owed.
    bool takeOwedChange();
    /// Returns the front if the present settings convert its frame differently, else null.
    DisplayFramePtr outdated() const;
    /// Converts the front's frame again. The caller keeps the source from changing its pixels. Returns false when there
    /// is another front, or the conversion fails.
    bool convertAgain(const DisplayFramePtr& shown);
    /// Applies the palette to the front. Returns false when nothing changes.
    bool renderAgain();

    /// Locks a new, zeroed bitmap, which the front then shows. Returns false and locks none when it cannot be made.
    bool lockBitmap(int width, int height, Format format);
    /// Unlocks the bitmap; the front stays.
    void unlockBitmap();

    /// Drops the front, and every frame delivered until frames are accepted again. Frees the memory of all pictures as
    /// soon as nothing refers to it.
    void clear();
    void acceptFrames();
    /// Drops every frame from now on; the front stays.
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
