// SPDX-License-Identifier: MIT
// From a delivered frame to a complete picture, in recycled memory.
#pragma once

#include "pipeline/frames/CopyPool.h"
#include "pipeline/frames/PixelBlocks.h"
#include "pipeline/frames/Stages.h"

#include <Vistrel/RawImage.h>

#include <QtGui/QImage>

#include <cstdint>
#include <memory>
#include <mutex>

namespace Vistrel {

/// A bitmap of the stream that frames are copied into or the host draws into.
struct LockedBitmap
{
    std::mutex pixels; // held while the stream writes or reads the pixels; taken after a frame lock
    PixelBlock block;
    QImage target; // over the block, never shared
    RawImage description;
};

/// The settings of a conversion.
struct ConversionSettings
{
    Stages stages;
    std::shared_ptr<LockedBitmap> lockedBitmap; // null while none is locked
};

/// The picture of one frame. Shared by reference count and immutable once it is published, except for the pixels of a
/// locked bitmap. Owns the pixels that it describes, unless the source does. May be made and destroyed on any thread,
/// also after the application has ended, because it holds no pixmap.
struct DisplayFrame
{
    RawImage delivered;                         // by the source
    RawImage effective;                         // for pixel values: `delivered` in the format that it is shown in
    Stages stages;                              // that made it
    bool underLock = false;                     // the source granted a lock with the frame
    std::uint64_t fetch = 0;                    // the number of the fetch that delivered it
    bool swappedShow = false;                   // channels are swapped between `image` and `rendered`
    PixelBlock block;                           // of `image`
    QImage image;                               // converted; null without pixels
    QImage rendered;                            // as it is shown; null without pixels
    std::uint64_t sequence = 0;                 // the frame's number of those converted by a stream, from 1
    std::shared_ptr<LockedBitmap> lockedBitmap; // with the pixels of `image`, or null
    std::shared_ptr<const void> memory;         // the library's memory that `delivered` points into, or null
    std::shared_ptr<const void> lent;           // keeps `delivered` from being returned to the source
    bool isDrawn = true;                        // the pixels of `image` are those of `delivered`
};

using DisplayFramePtr = std::shared_ptr<const DisplayFrame>;

/// Locks the pixels of a bitmap, which may be null.
std::unique_lock<std::mutex> lockPixels(const std::shared_ptr<LockedBitmap>& bitmap);

/// Sets the fourth byte of each pixel.
void makeOpaque(std::uint8_t* pixels, std::size_t size);

/// Whether a stage has changed that affects the conversion of the frame.
bool needsConversion(const DisplayFrame& frame, const ConversionSettings& settings);
/// Whether the palette has changed and applies to the picture.
bool needsPalette(const DisplayFrame& frame, const ConversionSettings& settings);

/// Converts and renders frames into blocks that nothing refers to. Thread-safe. The caller has locked the pixels of the
/// bitmap in the settings or the picture.
class FrameConverter
{
public:
    FrameConverter();

    /// Converts a frame, whose lock the caller holds; null when it cannot be converted. Null data gives a picture
    /// without pixels. Throws `std::bad_alloc`.
    std::shared_ptr<DisplayFrame> convert(const RawImage& delivered, bool underLock,
                                          const ConversionSettings& settings);
    /// Makes `rendered` from `image`. Returns false when that fails.
    bool render(DisplayFrame& frame, const ConversionSettings& settings);

    /// Returns the same picture in another palette.
    std::shared_ptr<DisplayFrame> renderAgain(const DisplayFrame& frame, const ConversionSettings& settings);

    /// Returns the picture of `frame` over a bitmap that was just locked and is still empty. If the frame was
    /// demosaiced, pixel values are read from the bitmap.
    static std::shared_ptr<DisplayFrame> showLocked(const DisplayFrame& frame, std::shared_ptr<LockedBitmap> bitmap);

    /// Frees the blocks that nothing refers to.
    void releaseMemory() { m_blocks.release(); }

    /// Makes a zeroed bitmap; null when Qt or memory cannot hold one of that size. `format` is `Mono8`, `RGB8` or
    /// `RGBa8`.
    std::shared_ptr<LockedBitmap> makeLockedBitmap(int width, int height, Format format);

private:
    bool convertFree(DisplayFrame& frame, const Stages& stages);
    bool convertLocked(DisplayFrame& frame, const Stages& stages, const std::shared_ptr<LockedBitmap>& bitmap);
    PixelBlock copyOfLocked(const QImage& image, bool swapped);

    std::shared_ptr<CopyPool> m_pool;
    PixelBlocks m_blocks;
};

} // namespace Vistrel
