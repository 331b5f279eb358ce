// SPDX-License-Identifier: MIT
// Paints a picture at any scale without interpolation.
#include "widgets/PictureSampler.h"

#include "pipeline/pixels/Kernels.h"
#include "widgets/SurfaceGeometry.h"

#include <hwy/base.h>
#include <hwy/cache_control.h>

#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Vistrel {

namespace {

constexpr int bandHeight = 16; // lines that stay in the cache until they are painted

bool isWholeTranslation(const QTransform& transform)
{
    return transform.type() <= QTransform::TxTranslate && transform.dx() == std::floor(transform.dx()) &&
           transform.dy() == std::floor(transform.dy());
}

std::uint32_t sampled(std::uint8_t level)
{
    return 0xFF000000u | level * 0x010101u;
}

std::uint32_t sampled(std::uint32_t color)
{
    return color;
}

// Meanwhile the row that is sampled next comes into the cache. The processor foresees it only within a page.
template <typename Pixel>
void sampleRow(const uchar* row, const uchar* next, const std::vector<int>& columns, std::uint32_t* HWY_RESTRICT line)
{
    const auto* const pixels = reinterpret_cast<const Pixel*>(row);
    const auto* const ahead = reinterpret_cast<const Pixel*>(next);
    const int* const column = columns.data();
    const std::size_t count = columns.size();
    constexpr std::size_t few = 4; // seldom farther apart than a cache line
    std::size_t x = 0;
    for (; x + few <= count; x += few) {
        hwy::Prefetch(ahead + column[x]);
        for (std::size_t i = x; i < x + few; ++i)
            line[i] = sampled(pixels[column[i]]);
    }
    for (; x < count; ++x)
        line[x] = sampled(pixels[column[x]]);
}

} // namespace

bool PictureSampler::draw(QPainter& painter, const QImage& picture, const SurfaceGeometry& geometry,
                          const QRect& needed)
{
    const bool isGray = picture.format() == QImage::Format_Grayscale8;
    const bool isSwapped = picture.format() == QImage::Format_RGBX8888;
    const bool isFullSize = geometry.isFullSize();
    if ((!isGray && !isSwapped && !isFullSize && picture.format() != QImage::Format_RGB32) ||
        painter.device()->devicePixelRatioF() != 1.0 || !isWholeTranslation(painter.deviceTransform()))
        return false;

    const QRect drawn = geometry.sampledRect() & needed;
    if (drawn.isEmpty())
        return true;
    const int width = drawn.width();
    const int height = drawn.height();
    const auto columnAt = [&](int x) { return geometry.sampledColumn(drawn.left() + x); };
    const auto rowAt = [&](int y) { return geometry.sampledRow(drawn.top() + y); };
    if (isFullSize && !isSwapped) { // copied
        painter.drawImage(drawn.topLeft(), picture, QRect(columnAt(0), rowAt(0), width, height));
        return true;
    }

    if (m_lines.width() < width) {
        m_lines = QImage(width, bandHeight, QImage::Format_RGB32);
        if (m_lines.isNull())
            return false;
    }

    const auto pixelCount = static_cast<std::size_t>(width);
    m_columns.resize(pixelCount);
    for (int x = 0; x < width; ++x)
        m_columns[static_cast<std::size_t>(x)] = columnAt(x);
    m_samples.resize(isSwapped ? pixelCount : 0);

    const auto sample = [&](int row, int next, uchar* line) {
        const uchar* pixels = picture.constScanLine(row);
        const uchar* const ahead = picture.constScanLine(next);
        auto* const shown = reinterpret_cast<std::uint32_t*>(line);
        if (isGray)
            return sampleRow<std::uint8_t>(pixels, ahead, m_columns, shown);
        if (!isSwapped)
            return sampleRow<std::uint32_t>(pixels, ahead, m_columns, shown);
        if (isFullSize) {
            pixels += std::size_t{4} * static_cast<std::size_t>(m_columns.front());
        } else {
            sampleRow<std::uint32_t>(pixels, ahead, m_columns, m_samples.data());
            pixels = reinterpret_cast<const uchar*>(m_samples.data());
        }
        Kernels::PixelRun run;
        run.source = pixels;
        run.target = line;
        run.count = pixelCount;
        run.reversed = true;
        run.pixelBytes = 4;
        Kernels::bytes4ToColor(run);
    };
    const std::size_t stride = static_cast<std::size_t>(m_lines.bytesPerLine());
    int next = rowAt(0);
    for (int band = 0; band < height; band += bandHeight) {
        const int lineCount = std::min(bandHeight, height - band);
        uchar* line = m_lines.bits();
        int before = -1;
        for (int y = band; y < band + lineCount; ++y, line += stride) {
            const int row = next;
            next = rowAt(std::min(y + 1, height - 1));
            if (row == before)
                std::memcpy(line, line - stride, pixelCount * 4);
            else
                sample(row, next, line);
            before = row;
        }
        painter.drawImage(QPoint(drawn.left(), drawn.top() + band), m_lines, QRect(0, 0, width, lineCount));
    }
    return true;
}

} // namespace Vistrel
