// SPDX-License-Identifier: MIT
// Pixel memory that is recycled from frame to frame.
#pragma once

#include <QtGui/QImage>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

namespace Vistrel {

/// Leaves new elements uninitialised, so that growing does not touch memory that is about to be overwritten anyway, and
/// aligns to a cache line.
template <typename T>
struct PixelAllocator
{
    using value_type = T;
    static constexpr std::align_val_t alignment{64};

    PixelAllocator() = default;
    template <typename U>
    PixelAllocator(const PixelAllocator<U>&) noexcept
    {
    }

    T* allocate(std::size_t count) { return static_cast<T*>(::operator new(count * sizeof(T), alignment)); }
    void deallocate(T* memory, std::size_t) noexcept { ::operator delete(memory, alignment); }

    template <typename U>
    void construct(U* element) noexcept
    {
        ::new (static_cast<void*>(element)) U;
    }
    template <typename U, typename... Arguments>
    void construct(U* element, Arguments&&... arguments)
    {
        ::new (static_cast<void*>(element)) U(static_cast<Arguments&&>(arguments)...);
    }

    template <typename U>
    bool operator==(const PixelAllocator<U>&) const noexcept
    {
        return true;
    }
    template <typename U>
    bool operator!=(const PixelAllocator<U>&) const noexcept
    {
        return false;
    }
};

using PixelBuffer = std::vector<std::uint8_t, PixelAllocator<std::uint8_t>>;

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

/// An image over the block's bytes, not copied; the block stays referred to while the image or any copy of it lives.
/// Read only: whoever writes to the image, or paints on it, gets a copy of his own.
QImage imageOver(const PixelBlock& block, int width, int height, int bytesPerLine, QImage::Format format);

} // namespace Vistrel
