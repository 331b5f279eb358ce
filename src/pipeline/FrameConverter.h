// SPDX-License-Identifier: MIT
// From a delivered frame to a complete picture, in recycled memory.
#pragma once

#include "pipeline/CopyPool.h"
#include "pipeline/PixelBlocks.h"

#include <Vistrel/RawImage.h>

#include <QtCore/QVector>
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
    bool demosaicEnabled = false;
    Format filterOverride = Format(0); // pattern bits
    bool rgbOrderReversed = false;
    QVector<unsigned int> palette;
    std::shared_ptr<LockedBitmap> lockedBitmap; // null while none is locked
};

/// One image slot. Immutable once it is published, and shared by reference count; the pixels of a locked bitmap are the
/// one exception. It may be made and end on any thread, also when the application has gone: it holds no pixmap.
struct DisplayFrame
{
    RawImage delivered;                         // as the source gave it
    RawImage effective;                         // the same pixels with the format that they are shown in
    bool underLock = false;                     // the source granted a lock with the frame
    bool swappedShow = false;                   // channels are swapped between `image` and `rendered`
    PixelBlock block;                           // that `image` lies in
    QImage image;                               // converted; null without pixels
    QImage rendered;                            // as it is shown; null without pixels
    std::uint64_t sequence = 0;                 // of the frames converted by a stream, from 1
    std::shared_ptr<LockedBitmap> lockedBitmap; // whose pixels `image` shows, if any
    std::shared_ptr<const void> lent;           // keeps what `delivered` describes from being given back to the source
    bool isDrawn = true;                        // the pixels of `image` are those of `delivered`
};

using DisplayFramePtr = std::shared_ptr<const DisplayFrame>;

/// The format that a frame is shown in: depth, pattern bits only when it is demosaiced, order bits, packing bits.
Format effectiveFormat(Format delivered, const ConversionSettings& settings);

/// Sets the fourth byte of each pixel.
void makeOpaque(std::uint8_t* pixels, std::size_t size);

/// Converts and renders frames into blocks that nobody refers to. Thread-safe.
class FrameConverter
{
public:
    FrameConverter();

    /// The picture of a frame, whose lock the caller holds; null when it cannot be converted. Null data gives a picture
    /// without pixels. Throws `std::bad_alloc`.
    std::shared_ptr<DisplayFrame> convert(const RawImage& delivered, bool underLock,
                                          const ConversionSettings& settings);

    /// The same picture in another palette.
    std::shared_ptr<DisplayFrame> renderAgain(const DisplayFrame& frame, const QVector<unsigned int>& palette);

    /// The picture of `frame`, over a bitmap that was just locked and into which nothing has been drawn yet.
    static std::shared_ptr<DisplayFrame> showLocked(const DisplayFrame& frame, std::shared_ptr<LockedBitmap> bitmap);

    /// Frees the blocks that nobody refers to.
    void releaseMemory() { m_blocks.release(); }

    /// A zeroed bitmap; null when there can be none of that size. `format` is `Mono8`, `RGB8` or `RGBa8`.
    std::shared_ptr<LockedBitmap> makeLockedBitmap(int width, int height, Format format);

private:
    bool convertFree(DisplayFrame& frame);
    bool convertLocked(DisplayFrame& frame, LockedBitmap& bitmap);
    void render(DisplayFrame& frame, const QVector<unsigned int>& palette);
    PixelBlock copyOfLocked(const QImage& image, bool swapped);

    std::shared_ptr<CopyPool> m_pool;
    PixelBlocks m_blocks;
};

} // namespace Vistrel
