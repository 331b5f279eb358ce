// SPDX-License-Identifier: MIT
// Paints a picture smaller, by the mean or the maximum of the pixels that share a device pixel.
#pragma once

#include "pipeline/frames/CopyPool.h"
#include "pipeline/frames/PixelBlocks.h"
#include "pipeline/pixels/ShrinkKernels.h"

#include <Vistrel/ShrinkMode.h>

#include <QtCore/QRect>
#include <QtGui/QImage>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

class QPainter;

namespace Vistrel {

class SurfaceGeometry;

/// Shrinks on the copy pool, or on the calling thread alone while another one uses the pool. Reads the pixels in view,
/// and those alone. Keeps its memory, and the result, for the next call.
class PictureShrinker
{
public:
    /// Draws the device pixels `drawn`, all of which show a picture of the geometry's image size, of any format. The
    /// painter's unit is the device pixel, of which an image pixel has less than one.
    /// The key, which is not 0, identifies the pixels.
    void draw(QPainter& painter, const QImage& picture, qint64 key, const SurfaceGeometry& geometry, const QRect& drawn,
              ShrinkMode mode);

private:
    using Starts = std::vector<int>; // of the columns or rows in each device pixel, and where the last ones end

    // How the columns of a line are combined, alike for all lines. Almost all combined pixels have `few` columns, or
    // one more.
    struct Plan
    {
        void set(const Starts& starts);

        ShrinkKernels::Columns columns;
        std::size_t few = 1;
        std::vector<int> places;
        std::vector<std::uint16_t> wide; // for each channel: 0xFFFF where there is one column more
        std::vector<std::size_t> odd;    // the other combined pixels
    };
    // The memory of one thread.
    struct Scratch
    {
        PixelBuffer lines;
        PixelBuffer pixels;
        PixelBuffer sums;
        PixelBuffer means;
    };
    // Some lines that are made together: those whose channels are put side by side, or one of colours.
    struct Strip;

    void shrink(const QImage& picture);
    void shrinkStrip(const QImage& picture, std::size_t first, Scratch& scratch);
    template <typename Value>
    void combine(const Strip& strip, Scratch& scratch) const;
    void write(const QImage& picture, const Strip& strip, const std::uint8_t* pixels) const;
    std::unique_ptr<Scratch> takeScratch();
    void giveBack(std::unique_ptr<Scratch> scratch);

    std::shared_ptr<CopyPool> m_pool; // once it has been used
    std::mutex m_scratchMutex;
    std::vector<std::unique_ptr<Scratch>> m_scratch; // that no thread uses

    // What `m_shrunk` shows.
    qint64 m_key = 0;
    ShrinkMode m_mode = ShrinkMode::Sample;
    Starts m_columns;
    Starts m_rows;

    Plan m_plan;
    std::vector<std::uint32_t> m_table; // of a picture of levels; empty for grey
    QImage m_shrunk;                    // at least as large as the drawn part
    std::uint8_t* m_line = nullptr;     // its first one, while it is made
    std::size_t m_stride = 0;           // bytes from a line to the next
};

} // namespace Vistrel
