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

/// Starts at a cache line. Growing leaves new bytes uninitialised: they are about to be overwritten, and a page that
/// nobody writes to costs nothing.
using PixelBuffer =
    std::vector<std::uint8_t, boost::noinit_adaptor<boost::alignment::aligned_allocator<std::uint8_t, 64>>>;

/// Shared by everything that shows or reads the pixels; free for another frame when nobody refers to it.
using PixelBlock = std::shared_ptr<PixelBuffer>;

/// Hands out blocks and takes them back when their last reference goes, on whatever thread. Blocks outlive the list.
/// Thread-safe.
class PixelBlocks
{
public:
    PixelBlocks();
    ~PixelBlocks();

    /// A block of `bytes` bytes that nobody else refers to; recycled when one of that size is free, else new and
    /// uninitialised. Throws `std::bad_alloc`.
    PixelBlock take(std::size_t bytes);

    /// Frees what is free, and what is not as soon as nobody refers to it.
    void release();

private:
    struct FreeList;
    std::shared_ptr<FreeList> m_free;
};

/// An image over the block's bytes, not copied, whose rows follow each other without gaps. The block stays referred to
/// while the image or any copy of it lives. Read only: whoever writes to the image, or paints on it, gets a copy.
QImage imageOver(const PixelBlock& block, QSize size, QImage::Format format);

} // namespace Vistrel
