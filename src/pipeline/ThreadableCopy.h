// SPDX-License-Identifier: MIT
// Copies of frames into targets, each pixel format an instantiation of its own, rows shared out between threads.
#pragma once

#include "pipeline/PackedIterators.h"
#include "pipeline/RowKernels.h"

#include <Vistrel/RawImage.h>

#include <QtGui/QImage>

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace Vistrel {

/// Monochrome of more than 8 bits into indices, in rows without gaps. T is the source element, Iterator what walks
/// along a row of them.
template <typename T, int shift, typename Iterator>
class ThreadableCopyGray
{
public:
    ThreadableCopyGray(const RawImage& raw, QImage& target)
        : m_raw(raw), m_target(target.bits()), m_stores(RowKernels::storesFor(raw.width * raw.height))
    {
    }

    /// Rows below `end`. Several threads may copy rows at once.
    void copyRows(std::size_t row, std::size_t end)
    {
        std::uint8_t* target = m_target + row * m_raw.width;
        const std::size_t rowSpacing = m_raw.width * sizeof(T);
        const std::uint8_t* source = m_raw.data + row * rowSpacing;
        if constexpr (std::is_pointer_v<Iterator>) {
            RowKernels::shiftToGray(source, target, (end - row) * m_raw.width, shift, m_stores);
        } else {
            constexpr bool swapped = std::is_same_v<Iterator, Gray10PackedIterator<Packedp>>;
            // Packed rows have gaps between them, where the processor's own look-ahead ends.
            for (; row < end; ++row, source += rowSpacing, target += m_raw.width)
                RowKernels::packed10ToGray(source, packedFrameEnd(m_raw), target, m_raw.width, swapped, rowSpacing,
                                           m_stores);
        }
    }

private:
    const RawImage m_raw;
    std::uint8_t* const m_target;
    const RowKernels::Stores m_stores;
};

/// Colour into three or four bytes a pixel, in rows without gaps. T is the source element, `channels` of which make a
/// pixel.
template <typename T, int channels, int shift, typename Iterator>
class ThreadableCopyColor
{
public:
    ThreadableCopyColor(const RawImage& raw, QImage& target)
        : m_raw(raw),
          m_target(target.bits()),
          m_pixelBytes(target.format() == QImage::Format_RGBX8888 ? 4 : 3),
          m_reversed(((raw.format & formatOrderMask) == OrderBGR) == fields),
          m_stores(RowKernels::storesFor(raw.width * raw.height * m_pixelBytes))
    {
    }

    void copyRows(std::size_t row, std::size_t end)
    {
        const std::uint8_t* const source = m_raw.data + row * m_raw.width * sizeof(T) * channels;
        std::uint8_t* const target = m_target + row * m_raw.width * m_pixelBytes;
        const std::size_t count = (end - row) * m_raw.width;
        if constexpr (fields)
            RowKernels::fields30ToColor(source, target, count, m_reversed, m_pixelBytes, m_stores);
        else if constexpr (sizeof(T) == 2)
            RowKernels::words3ToColor(source, target, count, shift, m_reversed, m_pixelBytes, m_stores);
        else if constexpr (channels == 4)
            RowKernels::bytes4ToColor(source, target, count, m_reversed, m_pixelBytes, m_stores);
        else
            RowKernels::bytes3ToColor(source, target, count, m_reversed, m_pixelBytes, m_stores);
    }

private:
    static constexpr bool fields = std::is_same_v<Iterator, Color30Iterator>;

    const RawImage m_raw;
    std::uint8_t* const m_target;
    const std::size_t m_pixelBytes;
    const bool m_reversed; // in the BGR order the first channel is red and goes first; in 30-bit words it goes last
    const RowKernels::Stores m_stores;
};

} // namespace Vistrel
