// SPDX-License-Identifier: MIT
// Sizes and writes the labels of single pixels.
#include "widgets/PixelLabels.h"

#include "widgets/SurfaceGeometry.h"

#include <QtGui/QFontDatabase>
#include <QtGui/QFontInfo>
#include <QtGui/QImage>

#include <algorithm>

namespace Vistrel {

namespace {

constexpr double slack = 1.125;           // a cell is larger than its box by more than this factor
constexpr double leastBareSide = 32;      // logical pixels
constexpr double leastBareColorSide = 48; // three lines
constexpr int labelMargin = 4;            // logical pixels, on both sides together
constexpr int separatorIndent = 5;
constexpr std::uint32_t black = 0xFF000000;
constexpr std::uint32_t white = 0xFFFFFFFF;

std::uint32_t* pixelsAt(QImage& image, int x, int y)
{
    return reinterpret_cast<std::uint32_t*>(image.scanLine(y)) + x;
}

std::size_t strideOf(const QImage& image)
{
    return static_cast<std::size_t>(image.bytesPerLine()) / sizeof(std::uint32_t);
}

void fill(QImage& image, const QRect& area, std::uint32_t color)
{
    for (int y = area.top(); y <= area.bottom(); ++y)
        std::fill_n(pixelsAt(image, area.left(), y), area.width(), color);
}

// Black where it has more contrast than white. The squares stand for the gamma of the screen.
GlyphImages::Ink inkOn(QRgb color)
{
    const int luminance =
        (2126 * qRed(color) * qRed(color) + 7152 * qGreen(color) * qGreen(color) + 722 * qBlue(color) * qBlue(color)) /
        10000;
    constexpr int equal = 118 * 118;
    return luminance >= equal ? GlyphImages::Black : GlyphImages::White;
}

bool isSame(const PixelLabels::Conditions& one, const PixelLabels::Conditions& other)
{
    return one.pixelValues == other.pixelValues && one.imageSize == other.imageSize && one.isColor == other.isColor &&
           one.largest == other.largest && qFuzzyCompare(one.ratio, other.ratio) &&
           one.dotsPerInch == other.dotsPerInch && one.side == other.side;
}

} // namespace

PixelLabels::PixelLabels()
    : m_font(QFontDatabase::systemFont(QFontDatabase::SmallestReadableFont)),
      m_basePointSize(QFontInfo(m_font).pointSize())
{
}

// Sizes ---------------------------------------------------------------------------------------------------------------

void PixelLabels::measure(const Conditions& conditions)
{
    Conditions relevant = conditions;
    if (relevant.pixelValues == PixelValues::WithPosition)
        relevant.side = 0;
    if (m_glyphs && isSame(relevant, m_conditions))
        return;
    m_conditions = relevant;
    m_margin = qRound(labelMargin * relevant.ratio);
    if (areBoxes())
        measureBox();
    else
        measureBare();
}

int PixelLabels::basePixelSize(int pointSize) const
{
    return std::max(qRound(pointSize * m_conditions.dotsPerInch / 72.0 * m_conditions.ratio), 1);
}

void PixelLabels::setPixelSize(int pixelSize)
{
    if (!m_glyphs || m_glyphs->pixelSize() != pixelSize)
        m_glyphs = std::make_unique<const GlyphImages>(m_font, pixelSize);
}

// Finds the largest font in which the box of any pixel fits a cell at the largest zoom.
void PixelLabels::measureBox()
{
    const std::uint32_t largest = m_conditions.largest;
    const PixVal widest{!m_conditions.isColor, largest, m_conditions.isColor, largest, largest, largest};
    const QSize& size = m_conditions.imageSize;
    for (int pointSize = std::max(m_basePointSize, 1); pointSize > 0; --pointSize) {
        setPixelSize(basePixelSize(pointSize));
        const int lineHeight = m_glyphs->line().count;
        const auto widthOf = [this](const std::string& text) { return m_glyphs->widthOf(text); };
        m_position = QSize(widthOf(positionText({size.width() - 1, size.height() - 1})), lineHeight);
        m_value = QSize(0, lineHeight * lineCount());
        for (int line = 0; line < lineCount(); ++line)
            m_value.setWidth(std::max(m_value.width(), widthOf(valueText(widest, line))));
        m_position += QSize(m_margin, m_margin);
        m_value += QSize(m_margin, m_margin);
        if (fit(SurfaceGeometry::scalingMax() * m_conditions.ratio))
            break;
    }
}

// Finds the font in which any value fits a cell.
void PixelLabels::measureBare()
{
    const std::string widest = std::to_string(m_conditions.largest);
    const double room = m_conditions.side;
    int pixelSize = basePixelSize(std::max(m_basePointSize, 1));
    for (;;) {
        setPixelSize(pixelSize);
        const int gap = (m_glyphs->widthOf("0") + 2) / 3; // between the values of neighbours
        const double needed = std::max(m_glyphs->widthOf(widest) + gap, lineCount() * lineDistance());
        if (needed <= room || pixelSize <= 1)
            return;
        pixelSize = std::clamp(static_cast<int>(pixelSize * room / needed), 1, pixelSize - 1);
    }
}

int PixelLabels::lineDistance() const
{
    return m_glyphs->digits().count * 4 / 3;
}

// The side of a cell that is just too small.
double PixelLabels::limit() const
{
    const double ratio = m_conditions.ratio;
    constexpr double rounding = 1e-6;
    if (!areBoxes())
        return (m_conditions.isColor ? leastBareColorSide : leastBareSide) * ratio - rounding;
    const double width = std::max(m_position.width(), m_value.width()) * slack;
    const double height = (m_position.height() * 2 + m_value.height()) * slack;
    return std::max({width, height, SurfaceGeometry::scalingMax() / 10 * ratio});
}

QSize PixelLabels::boxSize() const
{
    return {std::max(m_position.width(), m_value.width()), m_position.height() + m_value.height()};
}

int PixelLabels::stripHeight() const
{
    return areBoxes() ? boxSize().height() : m_glyphs->digits().count;
}

int PixelLabels::stripTop(int strip, int cellHeight) const
{
    const int height = (stripCount() - 1) * lineDistance() + stripHeight();
    return (cellHeight - height) / 2 + strip * lineDistance();
}

// Texts ---------------------------------------------------------------------------------------------------------------

const std::string& PixelLabels::positionText(const QPoint& pixel)
{
    m_text = ' ';
    m_text += std::to_string(pixel.x());
    m_text += ", ";
    m_text += std::to_string(pixel.y());
    m_text += ' ';
    return m_text;
}

const std::string& PixelLabels::valueText(const PixVal& value, int line)
{
    m_text.clear();
    if (areBoxes())
        m_text += ' ';
    if (areBoxes() && m_conditions.isColor)
        m_text.append(1, "RGB"[line]).append(": ");
    const std::uint32_t channels[] = {value.r, value.g, value.b};
    m_text += std::to_string(m_conditions.isColor ? channels[line] : value.value);
    if (areBoxes())
        m_text += ' ';
    return m_text;
}

// Writing -------------------------------------------------------------------------------------------------------------

void PixelLabels::write(const QPoint& pixel, const PixVal& value, QRgb shown, int strip, int left, int cellWidth,
                        QImage& target)
{
    if (areBoxes())
        return writeBox(pixel, value, left + (cellWidth - boxSize().width()) / 2, target);
    const std::string& text = valueText(value, strip);
    const int indent = (cellWidth - m_glyphs->widthOf(text)) / 2;
    if (indent >= 0)
        m_glyphs->write(text, inkOn(shown), m_glyphs->digits(), pixelsAt(target, left + indent, 0), strideOf(target));
}

void PixelLabels::writeBox(const QPoint& pixel, const PixVal& value, int left, QImage& target)
{
    const int thickness = std::max(qRound(m_conditions.ratio), 1);
    const QRect box(QPoint(left, 0), boxSize());
    fill(target, box, black);
    fill(target, box.adjusted(thickness, thickness, -thickness, -thickness), white);
    const auto centred = [&](int width) { return left + (box.width() - width) / 2; };
    const auto write = [&](const std::string& text, int x, int y) {
        m_glyphs->write(text, GlyphImages::BlackOnWhite, m_glyphs->line(), pixelsAt(target, x, y), strideOf(target));
    };
    const std::string& position = positionText(pixel);
    write(position, centred(m_glyphs->widthOf(position)), m_margin / 2);

    const int dottedWidth = m_position.width() - 2 * qRound(separatorIndent * m_conditions.ratio);
    for (int x = 0; x < dottedWidth; x += 3 * thickness)
        fill(target, {centred(dottedWidth) + x, m_position.height(), thickness, thickness}, black);

    const int top = m_position.height() + m_margin / 2;
    for (int line = 0; line < lineCount(); ++line) {
        const std::string& text = valueText(value, line);
        const int x = centred(m_conditions.isColor ? m_value.width() - m_margin : m_glyphs->widthOf(text));
        write(text, x, top + line * m_glyphs->line().count);
    }
}

} // namespace Vistrel
