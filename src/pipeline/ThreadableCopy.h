// SPDX-License-Identifier: MIT
// Copies of frames into targets, each pixel format an instantiation of its own, rows shared out between threads.
#pragma once

#include "pipeline/PackedIterators.h"
#include "pipeline/RowKernels.h"

#include <Vistrel/RawImage.h>

#include <QtGui/QImage>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace Vistrel {

/// The top eight bits of a channel of 8 + shift bits; bits above are lost.
template <int shift>
constexpr std::uint8_t reduced(std::uint32_t value)
{
    return static_cast<std::uint8_t>(value >> shift);
}

/// Monochrome of more than 8 bits into indices. T is the source element, Iterator what walks along a row of them.
template <typename T, int shift, typename Iterator>
class ThreadableCopyGray
{
public:
    ThreadableCopyGray(const RawImage& raw, QImage& target)
        : m_raw(raw),
          m_target(target.bits()),
          m_targetStride(static_cast<std::size_t>(target.bytesPerLine())),
          m_width8(raw.width / 8 * 8)
    {
    }

    /// Every participant runs this on the same object and takes the next row until there is none left.
    void run()
    {
        for (std::size_t row = m_nextRow.fetch_add(1); row < m_raw.height; row = m_nextRow.fetch_add(1))
            copyRow(row);
    }

private:
    void copyRow(std::size_t row)
    {
        std::uint8_t* const target = m_target + row * m_targetStride;
        if constexpr (std::is_pointer_v<Iterator>) {
            const std::uint8_t* const source = m_raw.data + row * m_raw.width * sizeof(T);
            RowKernels::shiftToGray(source, target, m_raw.width, shift);
        } else {
            copyPacked(Iterator(m_raw.data + row * m_raw.width * sizeof(T), packedFrameEnd(m_raw)), target);
        }
    }

    void copyPacked(Iterator source, std::uint8_t* target)
    {
        constexpr bool swapped = std::is_same_v<Iterator, Gray10PackedIterator<Packedp>>;
        std::size_t x = RowKernels::packed10ToGray(source.pointer(), source.end(), target, m_raw.width, swapped);
        source.skipGroups(x);
        for (; x < m_width8; x += 8)
            for (std::size_t i = 0; i < 8; ++i, ++source)
                target[x + i] = *source;
        for (; x < m_raw.width; ++x, ++source)
            target[x] = *source;
    }

    std::atomic<std::size_t> m_nextRow{0};
    const RawImage m_raw;
    std::uint8_t* const m_target;
    const std::size_t m_targetStride;
    const std::size_t m_width8; // width rounded down to a multiple of 8
};

/// Colour into three or four bytes a pixel. T is the source element, `channels` of which make a pixel.
template <typename T, int channels, int shift, typename Iterator>
class ThreadableCopyColor
{
public:
    ThreadableCopyColor(const RawImage& raw, QImage& target)
        : m_raw(raw),
          m_target(target.bits()),
          m_targetStride(static_cast<std::size_t>(target.bytesPerLine())),
          m_width8(raw.width / 8 * 8)
    {
        const bool isBgr = (raw.format & formatOrderMask) == OrderBGR;
        const bool fourBytes = target.format() == QImage::Format_RGBX8888;
        if (isBgr)
            m_copyRow = fourBytes ? &ThreadableCopyColor::copyRow4<true> : &ThreadableCopyColor::copyRow3<true>;
        else
            m_copyRow = fourBytes ? &ThreadableCopyColor::copyRow4<false> : &ThreadableCopyColor::copyRow3<false>;
    }

    void run()
    {
        for (std::size_t row = m_nextRow.fetch_add(1); row < m_raw.height; row = m_nextRow.fetch_add(1)) {
            const std::uint8_t* const source = m_raw.data + row * m_raw.width * sizeof(T) * channels;
            (this->*m_copyRow)(source, m_target + row * m_targetStride);
        }
    }

private:
    static constexpr bool fields = std::is_same_v<Iterator, Color30Iterator>;

    // In the BGR order the first channel is red and goes first; the 30-bit word has it the other way round.
    template <bool isBgr>
    static constexpr bool reversed = fields ? isBgr : !isBgr;

    template <bool isBgr>
    void copyRow4(const std::uint8_t* source, std::uint8_t* target)
    {
        if constexpr (fields)
            RowKernels::fields30ToRgbx(source, target, m_raw.width, reversed<isBgr>);
        else if constexpr (sizeof(T) == 2)
            RowKernels::words3ToRgbx(source, target, m_raw.width, shift, reversed<isBgr>);
        else if constexpr (channels == 4)
            RowKernels::bytes4ToRgbx(source, target, m_raw.width, reversed<isBgr>);
        else
            RowKernels::bytes3ToRgbx(source, target, m_raw.width, reversed<isBgr>);
    }

    template <bool isBgr>
    void copyRow3(const std::uint8_t* source, std::uint8_t* target)
    {
        const auto* element = source;
        std::size_t x = 0;
        for (; x < m_width8; x += 8)
            for (std::size_t i = 0; i < 8; ++i, element += sizeof(T) * channels, target += 3)
                copyPixel<isBgr>(element, target);
        for (; x < m_raw.width; ++x, element += sizeof(T) * channels, target += 3)
            copyPixel<isBgr>(element, target);
    }

    template <bool isBgr>
    static void copyPixel(const std::uint8_t* source, std::uint8_t* target)
    {
        constexpr std::size_t first = reversed<isBgr> ? 2 : 0;
        if constexpr (fields) {
            const std::uint32_t word = *Color30Iterator(source);
            target[first] = reduced<shift>(word);
            target[1] = reduced<shift>(word >> 10);
            target[2 - first] = reduced<shift>(word >> 20);
        } else {
            T element[3] = {};
            std::memcpy(element, source, sizeof element); // which need not be aligned
            target[first] = reduced<shift>(element[0]);
            target[1] = reduced<shift>(element[1]);
            target[2 - first] = reduced<shift>(element[2]);
        }
    }

    std::atomic<std::size_t> m_nextRow{0};
    const RawImage m_raw;
    std::uint8_t* const m_target;
    const std::size_t m_targetStride;
    const std::size_t m_width8; // width rounded down to a multiple of 8
    void (ThreadableCopyColor::*m_copyRow)(const std::uint8_t*, std::uint8_t*);
};

} // namespace Vistrel
