// SPDX-License-Identifier: MIT
// Pixel memory that is recycled from frame to frame.
#pragma once

#include <boost/align/aligned_allocator.hpp>
#include <boost/core/noinit_adaptor.hpp>

#include <QtGui/QImage>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Vistrel {

/// Starts at a cache line. New bytes are not initialised: they are about to be overwritten, and a page that is not
/// written to costs nothing.
using PixelBuffer =
    std::vector<std::uint8_t, boost::noinit_adaptor<boost::alignment::aligned_allocator<std::uint8_t, 64>>>;

/// Shared by everything that shows or reads the pixels; free for another frame when nothing refers to it.
using PixelBlock = std::shared_ptr<PixelBuffer>;

/// Gives out blocks. The last reference to a block returns it, on any thread. Blocks may outlive the list. Thread-safe.
class PixelBlocks
{
public:
    PixelBlocks();
    ~PixelBlocks();

    /// Returns a block of `bytes` bytes that nothing else refers to: a free one of that size, else a new, uninitialised
    /// one. Throws `std::bad_alloc`.
    PixelBlock take(std::size_t bytes);

    /// Frees the free blocks, and the others as soon as nothing refers to them.
    void release();

private:
    struct FreeList;
    std::shared_ptr<FreeList> m_free;
};

/// Returns an image over the block's bytes, without a copy or padding between rows. The image and its copies keep a
/// reference to the block. Read only: writing to the image, or painting on it, makes a copy.
QImage imageOver(const PixelBlock& block, QSize size, QImage::Format format);

/// The same for indices into colours, but not read only, because Qt would copy the pixels as it takes the colours: for
/// the library alone, which writes to no image.
QImage indicesOver(const PixelBlock& block, QSize size, const QVector<QRgb>& colors);

} // namespace Vistrel
