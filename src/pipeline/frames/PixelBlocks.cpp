// SPDX-License-Identifier: MIT
// Pixel memory that is recycled from frame to frame.
#include "pipeline/frames/PixelBlocks.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace Vistrel {

struct PixelBlocks::FreeList
{
    // The picture being made, the one shown and the one shown before, each converted and rendered.
    static constexpr std::size_t capacity = 6;

    std::unique_ptr<PixelBuffer> take(std::size_t bytes, std::uint64_t& handedOutIn)
    {
        std::unique_ptr<PixelBuffer> oldest; // freed after the lock is released
        const std::lock_guard<std::mutex> guard(mutex);
        handedOutIn = generation;
        const auto found = std::find_if(buffers.rbegin(), buffers.rend(),
                                        [bytes](const auto& buffer) { return buffer->size() == bytes; });
        if (found == buffers.rend()) {
            // Another size is in use now: the old blocks are freed one by one.
            if (!buffers.empty()) {
                oldest = std::move(buffers.front());
                buffers.erase(buffers.begin());
            }
            return nullptr;
        }
        std::unique_ptr<PixelBuffer> buffer = std::move(*found);
        buffers.erase(std::next(found).base());
        return buffer;
    }

    void giveBack(std::unique_ptr<PixelBuffer> buffer, std::uint64_t handedOutIn) noexcept
    {
        std::unique_ptr<PixelBuffer> oldest; // freed after the lock is released, as `buffer` is
        const std::lock_guard<std::mutex> guard(mutex);
        if (handedOutIn != generation)
            return;
        if (buffers.size() == capacity) {
            oldest = std::move(buffers.front());
            buffers.erase(buffers.begin());
        }
        buffers.push_back(std::move(buffer)); // within the reserved capacity
    }

    FreeList() { buffers.reserve(capacity); }

    std::mutex mutex;                                  // guards all below
    std::uint64_t generation = 0;                      // counts the releases
    std::vector<std::unique_ptr<PixelBuffer>> buffers; // the one freed last at the end, its pages still warm
};

PixelBlocks::PixelBlocks() : m_free(std::make_shared<FreeList>()) {}

PixelBlocks::~PixelBlocks() = default;

void PixelBlocks::release()
{
    std::vector<std::unique_ptr<PixelBuffer>> freed; // after the lock is released
    freed.reserve(FreeList::capacity);
    const std::lock_guard<std::mutex> guard(m_free->mutex);
    m_free->buffers.swap(freed);
    ++m_free->generation;
}

PixelBlock PixelBlocks::take(std::size_t bytes)
{
    std::uint64_t generation = 0;
    std::unique_ptr<PixelBuffer> buffer = m_free->take(bytes, generation);
    if (!buffer)
        buffer = std::make_unique<PixelBuffer>(bytes);
    const std::weak_ptr<FreeList> freeList = m_free;
    // The deleter has a weak reference: after the list is destroyed, it frees the block.
    return PixelBlock(buffer.release(), [freeList, generation](PixelBuffer* returned) {
        std::unique_ptr<PixelBuffer> owned(returned);
        if (const std::shared_ptr<FreeList> list = freeList.lock())
            list->giveBack(std::move(owned), generation);
    });
}

namespace {

// `Byte` is const for an image that is read only.
template <typename Byte>
QImage viewOf(const PixelBlock& block, QSize size, QImage::Format format)
{
    Byte* const bytes = block->data();
    const int rowBytes = size.width() * (QImage::toPixelFormat(format).bitsPerPixel() / 8);
    auto* const reference = new PixelBlock(block);
    QImage image(
        bytes, size.width(), size.height(), rowBytes, format, [](void* held) { delete static_cast<PixelBlock*>(held); },
        reference);
    if (image.isNull())
        delete reference;
    return image;
}

} // namespace

QImage imageOver(const PixelBlock& block, QSize size, QImage::Format format)
{
    return viewOf<const uchar>(block, size, format);
}

QImage indicesOver(const PixelBlock& block, QSize size, const QVector<QRgb>& colors)
{
    QImage image = viewOf<uchar>(block, size, QImage::Format_Indexed8);
    image.setColorTable(colors);
    return image;
}

} // namespace Vistrel
