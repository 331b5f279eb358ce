// SPDX-License-Identifier: MIT
// Paints a picture at any scale without interpolation.
#include "widgets/PictureSampler.h"

#include "pipeline/pixels/Kernels.h"
#include "widgets/SurfaceGeometry.h"

#include <QtGui/QPainter>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace Vistrel {

namespace {

constexpr int bandHeight = 16; // lines; few enough to stay in the cache until they are painted

// The format of the lines into which a picture's pixels are sampled.
QImage::Format lineFormat(const QImage& picture)
{
    switch (picture.format()) {
    case QImage::Format_Grayscale8:
    case QImage::Format_RGBX8888:
        return QImage::Format_RGB32;
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB:
    case QImage::Format_Indexed8:
        return picture.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32;
    default:
        return picture.format();
    }
}

template <std::size_t pixelBytes>
void samplePixels(const uchar* row, const std::vector<int>& columns, uchar* line)
{
    for (const int column : columns) {
        std::memcpy(line, row + pixelBytes * static_cast<std::size_t>(column), pixelBytes);
        line += pixelBytes;
    }
}

} // namespace

// Writes the pixels of `m_columns` of a row. `next` is the row that is sampled next.
void PictureSampler::sample(const QImage& picture, int row, int next, uchar* line)
{
    const uchar* const pixels = picture.constScanLine(row);
    const uchar* const ahead = picture.constScanLine(next);
    auto* const colors = reinterpret_cast<std::uint32_t*>(line);
    const std::size_t count = m_columns.size();
    const auto sampleColors = [&](std::uint32_t* sampled) {
        Kernels::sampleColor(reinterpret_cast<const std::uint32_t*>(pixels),
                             reinterpret_cast<const std::uint32_t*>(ahead), m_columns.data(), count, sampled);
    };
    switch (picture.format()) {
    case QImage::Format_Grayscale8:
        return Kernels::sampleGray(pixels, ahead, m_columns.data(), count, colors);
    case QImage::Format_RGBX8888: {
        m_samples.resize(count);
        sampleColors(m_samples.data());
        Kernels::PixelRun run;
        run.source = reinterpret_cast<const std::uint8_t*>(m_samples.data());
        run.target = line;
        run.count = count;
        run.reversed = true;
        run.pixelBytes = 4;
        return Kernels::bytes4ToColor(run);
    }
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB:
    case QImage::Format_Indexed8:
        for (std::size_t i = 0; i < count; ++i)
            colors[i] = picture.pixel(m_columns[i], row);
        return;
    default:
        break;
    }
    switch (picture.depth()) {
    case 8:
        return samplePixels<1>(pixels, m_columns, line);
    case 16:
        return samplePixels<2>(pixels, m_columns, line);
    case 24:
        return samplePixels<3>(pixels, m_columns, line);
    case 32:
        return sampleColors(colors);
    default:
        return samplePixels<8>(pixels, m_columns, line);
    }
}

void PictureSampler::draw(QPainter& painter, const QImage& picture, const SurfaceGeometry& geometry, const QRect& drawn)
{
    if (drawn.isEmpty())
        return;
    const int width = drawn.width();
    const int height = drawn.height();
    m_columns.resize(static_cast<std::size_t>(width));
    for (int x = 0; x < width; ++x)
        m_columns[static_cast<std::size_t>(x)] = geometry.sampledColumn(drawn.left() + x);
    const auto rowAt = [&](int y) { return geometry.sampledRow(drawn.top() + y); };

    const QImage::Format format = lineFormat(picture);
    const bool isFullSize =
        m_columns.back() - m_columns.front() == width - 1 && rowAt(height - 1) - rowAt(0) == height - 1;
    if (isFullSize && picture.depth() >= 8 && picture.format() != QImage::Format_RGBX8888) {
        // Copied. The paint engine is not exact past 65,536 pixels.
        QImage part(picture.constScanLine(rowAt(0)) + std::ptrdiff_t{m_columns.front()} * picture.depth() / 8, width,
                    height, picture.bytesPerLine(), picture.format());
        part.setColorTable(picture.colorTable());
        painter.drawImage(drawn.topLeft(), part);
        return;
    }

    if (m_lines.width() < width || m_lines.format() != format) {
        m_lines = QImage(width, bandHeight, format);
        if (m_lines.isNull())
            return;
    }
    const auto lineBytes = static_cast<std::size_t>(width * m_lines.depth() / 8);
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
                std::memcpy(line, line - stride, lineBytes);
            else
                sample(picture, row, next, line);
            before = row;
        }
        painter.drawImage(QPoint(drawn.left(), drawn.top() + band), m_lines, QRect(0, 0, width, lineCount));
    }
}

} // namespace Vistrel
