// SPDX-License-Identifier: MIT
// Copies rows of a frame into its picture, with one instantiation for each kind of source pixel.
#pragma once

#include "pipeline/pixels/PackedIterators.h"
#include "pipeline/pixels/PixelFormats.h"

#include <type_traits>

namespace Vistrel {

/// Copies one channel into indices. T is the source element, Iterator walks over a row of them.
template <typename T, int shift, typename Iterator>
class ThreadableCopyGray
{
public:
    static void copyRows(const PixelFormat&, const RawImage& raw, const PictureTarget& target, std::size_t row,
                         std::size_t end)
    {
        const std::size_t rowSpacing = raw.width * sizeof(T);
        Kernels::PixelRun run;
        run.source = raw.data + row * rowSpacing;
        run.target = target.bits + row * raw.width;
        run.count = (end - row) * raw.width;
        run.stores = target.stores;
        run.shift = shift;
        if constexpr (sizeof(T) == 1) {
            Kernels::copyBytes(run);
        } else if constexpr (std::is_pointer_v<Iterator>) {
            Kernels::shiftToGray(run);
        } else {
            run.count = raw.width;
            run.end = frameEnd(raw);
            run.ahead = rowSpacing; // packed rows have gaps between them, where the processor's own look-ahead ends
            for (; row < end; ++row, run.source += rowSpacing, run.target += raw.width) {
                if constexpr (std::is_same_v<Iterator, Gray10PackedIterator<Packedp>>)
                    Kernels::packed10ToGray(run);
                else
                    Kernels::packed10NoSwapToGray(run);
            }
        }
    }
};

/// Copies colour into three or four bytes a pixel, red first. `channels` elements of T make a pixel.
template <typename T, int channels, int shift, typename Iterator>
class ThreadableCopyColor
{
public:
    static void copyRows(const PixelFormat& format, const RawImage& raw, const PictureTarget& target, std::size_t row,
                         std::size_t end)
    {
        Kernels::PixelRun run;
        run.source = raw.data + row * raw.width * sizeof(T) * channels;
        run.pixelBytes = target.pixelBytes;
        run.target = target.bits + row * raw.width * run.pixelBytes;
        run.count = (end - row) * raw.width;
        run.stores = target.stores;
        run.shift = shift;
        run.reversed = !format.isRedFirst;
        if constexpr (std::is_same_v<Iterator, Color30Iterator>)
            Kernels::fields30ToColor(run);
        else if constexpr (sizeof(T) == 2)
            Kernels::words3ToColor(run);
        else if constexpr (channels == 4)
            Kernels::bytes4ToColor(run);
        else
            Kernels::bytes3ToColor(run);
    }
};

} // namespace Vistrel
