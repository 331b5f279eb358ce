// SPDX-License-Identifier: MIT
// Paints a grey picture at any scale without interpolation.
#include "widgets/PictureSampler.h"

#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Vistrel {

namespace {

constexpr double tie = 1e-6; // a centre on a border belongs to the pixel after it, however the sum was rounded

// Of `length` pixels of the picture, the one in which the centre of a pixel of the target lies.
int pixelAt(int position, double targetStart, double sourceStart, double ratio, int length)
{
    const double place = sourceStart + (position + 0.5 - targetStart) * ratio + tie;
    return std::clamp(static_cast<int>(std::floor(place)), 0, length - 1);
}

int firstCentreFrom(double edge)
{
    return static_cast<int>(std::ceil(edge - 0.5));
}

bool isWholeTranslation(const QTransform& transform)
{
    return transform.type() <= QTransform::TxTranslate && transform.dx() == std::floor(transform.dx()) &&
           transform.dy() == std::floor(transform.dy());
}

void sampleRow(const std::uint8_t* row, const std::vector<int>& columns, std::uint32_t* line)
{
    for (const int column : columns)
        *line++ = 0xFF000000u | row[column] * 0x010101u;
}

} // namespace

bool PictureSampler::draw(QPainter& painter, const QRectF& target, const QImage& picture, const QRectF& source,
                          const QRect& needed)
{
    if (picture.format() != QImage::Format_Grayscale8 || source.size() == target.size() ||
        painter.device()->devicePixelRatioF() != 1.0 || !isWholeTranslation(painter.combinedTransform()))
        return false;

    const int left = std::max(firstCentreFrom(target.left()), needed.left());
    const int top = std::max(firstCentreFrom(target.top()), needed.top());
    const int width = std::min(firstCentreFrom(target.left() + target.width()), needed.right() + 1) - left;
    const int height = std::min(firstCentreFrom(target.top() + target.height()), needed.bottom() + 1) - top;
    if (width <= 0 || height <= 0)
        return true;
    if (m_lines.width() < width || m_lines.height() < height) {
        m_lines = QImage(std::max(width, m_lines.width()), std::max(height, m_lines.height()), QImage::Format_RGB32);
        if (m_lines.isNull())
            return false;
    }

    const double ratioX = source.width() / target.width();
    const double ratioY = source.height() / target.height();
    m_columns.resize(static_cast<std::size_t>(width));
    for (int x = 0; x < width; ++x)
        m_columns[static_cast<std::size_t>(x)] =
            pixelAt(left + x, target.left(), source.left(), ratioX, picture.width());

    std::uint8_t* const lines = m_lines.bits();
    const std::size_t stride = static_cast<std::size_t>(m_lines.bytesPerLine());
    int before = -1;
    for (int y = 0; y < height; ++y) {
        const int row = pixelAt(top + y, target.top(), source.top(), ratioY, picture.height());
        std::uint8_t* const line = lines + static_cast<std::size_t>(y) * stride;
        if (row == before)
            std::memcpy(line, line - stride, static_cast<std::size_t>(width) * 4);
        else
            sampleRow(picture.constScanLine(row), m_columns, reinterpret_cast<std::uint32_t*>(line));
        before = row;
    }
    painter.drawImage(QPoint(left, top), m_lines, QRect(0, 0, width, height));
    return true;
}

} // namespace Vistrel
