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

/// Monochrome of more than 8 bits into indices. T is the source element, Iterator what walks along a row of them.
template <typename T, int shift, typename Iterator>
class ThreadableCopyGray
{
public:
    ThreadableCopyGray(const RawImage& raw, QImage& target)
        : m_raw(raw), m_target(target.bits()), m_targetStride(static_cast<std::size_t>(target.bytesPerLine()))
    {
    }

    /// Several threads may copy rows at once.
    void copyRow(std::size_t row)
    {
        std::uint8_t* const target = m_target + row * m_targetStride;
        if constexpr (std::is_pointer_v<Iterator>) {
            const std::uint8_t* const source = m_raw.data + row * m_raw.width * sizeof(T);
            RowKernels::shiftToGray(source, target, m_raw.width, shift);
        } else {
            constexpr bool swapped = std::is_same_v<Iterator, Gray10PackedIterator<Packedp>>;
            const std::size_t rowSpacing = m_raw.width * sizeof(T);
            // Packed rows have gaps between them, where the processor's own look-ahead ends.
            RowKernels::packed10ToGray(m_raw.data + row * rowSpacing, packedFrameEnd(m_raw), target, m_raw.width,
                                       swapped, rowSpacing);
        }
    }

private:
    const RawImage m_raw;
    std::uint8_t* const m_target;
    const std::size_t m_targetStride;
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
          m_pixelBytes(target.format() == QImage::Format_RGBX8888 ? 4 : 3),
          m_reversed(((raw.format & formatOrderMask) == OrderBGR) == fields)
    {
    }

    void copyRow(std::size_t row)
    {
        const std::uint8_t* const source = m_raw.data + row * m_raw.width * sizeof(T) * channels;
        std::uint8_t* const target = m_target + row * m_targetStride;
        if constexpr (fields)
            RowKernels::fields30ToColor(source, target, m_raw.width, m_reversed, m_pixelBytes);
        else if constexpr (sizeof(T) == 2)
            RowKernels::words3ToColor(source, target, m_raw.width, shift, m_reversed, m_pixelBytes);
        else if constexpr (channels == 4)
            RowKernels::bytes4ToColor(source, target, m_raw.width, m_reversed, m_pixelBytes);
        else
            RowKernels::bytes3ToColor(source, target, m_raw.width, m_reversed, m_pixelBytes);
    }

private:
    static constexpr bool fields = std::is_same_v<Iterator, Color30Iterator>;

    const RawImage m_raw;
    std::uint8_t* const m_target;
    const std::size_t m_targetStride;
    const std::size_t m_pixelBytes;
    const bool m_reversed; // in the BGR order the first channel is red and goes first; in 30-bit words it goes last
};

} // namespace Vistrel
