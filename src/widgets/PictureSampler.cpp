// SPDX-License-Identifier: MIT
// Paints a picture at any scale without interpolation.
#include "widgets/PictureSampler.h"

#include "pipeline/pixels/Kernels.h"
#include "widgets/SurfaceGeometry.h"

#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Vistrel {

namespace {

constexpr int bandHeight = 16; // lines; few enough to stay in the cache until they are painted

bool isWholeTranslation(const QTransform& transform)
{
    return transform.type() <= QTransform::TxTranslate && transform.dx() == std::floor(transform.dx()) &&
           transform.dy() == std::floor(transform.dy());
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
        const auto sampleColors = [&](std::uint32_t* colors) {
            Kernels::sampleColor(reinterpret_cast<const std::uint32_t*>(pixels),
                                 reinterpret_cast<const std::uint32_t*>(ahead), m_columns.data(), pixelCount, colors);
        };
        if (isGray)
            return Kernels::sampleGray(pixels, ahead, m_columns.data(), pixelCount, shown);
        if (!isSwapped)
            return sampleColors(shown);
        if (isFullSize) {
            pixels += std::size_t{4} * static_cast<std::size_t>(m_columns.front());
        } else {
            sampleColors(m_samples.data());
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
