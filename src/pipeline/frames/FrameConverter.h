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

/// What the conversion of a frame depends on besides the frame.
struct ConversionSettings
{
    Stages stages;
    std::shared_ptr<LockedBitmap> lockedBitmap; // null while none is locked
};

/// One image slot. Immutable once it is published, and shared by reference count; the pixels of a locked bitmap are the
/// one exception. It owns what its descriptors point into, unless that is the source's. It may be made and end on any
/// thread, also when the application has gone: it holds no pixmap.
struct DisplayFrame
{
    RawImage delivered;                         // as the source gave it
    RawImage effective;                         // whose values are read: `delivered` in the format that it is shown in
    Stages stages;                              // that it was made with
    bool underLock = false;                     // the source granted a lock with the frame
    std::uint64_t fetch = 0;                    // of a stream's fetches, the one that delivered it
    bool swappedShow = false;                   // channels are swapped between `image` and `rendered`
    PixelBlock block;                           // that `image` lies in
    QImage image;                               // converted; null without pixels
    QImage rendered;                            // as it is shown; null without pixels
    std::uint64_t sequence = 0;                 // of the frames converted by a stream, from 1
    std::shared_ptr<LockedBitmap> lockedBitmap; // whose pixels `image` shows, if any
    std::shared_ptr<const void> memory;         // the library's own that `delivered` points into, if any
    std::shared_ptr<const void> lent;           // keeps what `delivered` describes from being given back to the source
    bool isDrawn = true;                        // the pixels of `image` are those of `delivered`
};

using DisplayFramePtr = std::shared_ptr<const DisplayFrame>;

/// Holds the pixels of a bitmap, if there is one.
std::unique_lock<std::mutex> lockPixels(const std::shared_ptr<LockedBitmap>& bitmap);

/// Sets the fourth byte of each pixel.
void makeOpaque(std::uint8_t* pixels, std::size_t size);

/// Whether a stage has changed since that makes another image of the frame.
bool needsConversion(const DisplayFrame& frame, const ConversionSettings& settings);
/// Whether the palette has changed since, and applies to the picture.
bool needsPalette(const DisplayFrame& frame, const ConversionSettings& settings);

/// Converts and renders frames into blocks that nobody refers to. Thread-safe. Whoever calls holds the pixels of the
/// bitmap that the settings or the picture name.
class FrameConverter
{
public:
    FrameConverter();

    /// The image of a frame, whose lock the caller holds; null when it cannot be converted. Null data gives a picture
    /// without pixels. Throws `std::bad_alloc`.
    std::shared_ptr<DisplayFrame> convert(const RawImage& delivered, bool underLock,
                                          const ConversionSettings& settings);
    /// Makes what is shown of the image. False when that cannot be.
    bool render(DisplayFrame& frame, const ConversionSettings& settings);

    /// The same picture in another palette.
    std::shared_ptr<DisplayFrame> renderAgain(const DisplayFrame& frame, const ConversionSettings& settings);

    /// The picture of `frame`, over a bitmap that was just locked and into which nothing has been drawn yet. Where it
    /// was demosaiced, values are read from the bitmap.
    static std::shared_ptr<DisplayFrame> showLocked(const DisplayFrame& frame, std::shared_ptr<LockedBitmap> bitmap);

    /// Frees the blocks that nobody refers to.
    void releaseMemory() { m_blocks.release(); }

    /// A zeroed bitmap; null when there can be none of that size. `format` is `Mono8`, `RGB8` or `RGBa8`.
    std::shared_ptr<LockedBitmap> makeLockedBitmap(int width, int height, Format format);

private:
    bool convertFree(DisplayFrame& frame, const Stages& stages);
    bool convertLocked(DisplayFrame& frame, const Stages& stages, const std::shared_ptr<LockedBitmap>& bitmap);
    PixelBlock copyOfLocked(const QImage& image, bool swapped);

    std::shared_ptr<CopyPool> m_pool;
    PixelBlocks m_blocks;
};

} // namespace Vistrel
