// SPDX-License-Identifier: MIT
// Writes numbers by copying images of their characters.
#include "widgets/GlyphImages.h"

#include <QtCore/QString>
#include <QtGui/QFontMetricsF>
#include <QtGui/QImage>
#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Vistrel {

namespace {

constexpr std::string_view characters = "0123456789 ,:RGB"; // the digits first
constexpr std::size_t digitCount = 10;

} // namespace

GlyphImages::GlyphImages(const QFont& font, int pixelSize) : m_pixelSize(pixelSize), m_glyphs(characters.size())
{
    QFont sized(font);
    sized.setPixelSize(pixelSize);
    // Colours at the edges of characters would be those of one background only.
    sized.setStyleStrategy(QFont::StyleStrategy(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    const QFontMetricsF metrics(sized);
    const double ascent = std::ceil(metrics.ascent());
    m_height = static_cast<int>(ascent + std::ceil(metrics.descent()));

    const auto advanceOf = [&](char character) { return metrics.horizontalAdvance(QLatin1Char(character)); };
    double digitAdvance = 0;
    for (const char digit : characters.substr(0, digitCount))
        digitAdvance = std::max(digitAdvance, advanceOf(digit));

    int firstRow = m_height;
    int endRow = 0;
    for (std::size_t i = 0; i < characters.size(); ++i) {
        const double advance = advanceOf(characters[i]);
        Glyph& glyph = m_glyphs[i];
        glyph.width = std::max(static_cast<int>(std::ceil(i < digitCount ? digitAdvance : advance)), 1);
        QImage image(glyph.width, m_height, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setFont(sized);
        painter.drawText(QPointF(std::floor((glyph.width - advance) / 2), ascent), QString(QLatin1Char(characters[i])));
        painter.end();
        for (int y = 0; y < m_height; ++y) {
            const auto* const row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
            for (int x = 0; x < glyph.width; ++x) {
                const auto cover = static_cast<std::uint32_t>(qAlpha(row[x]));
                glyph.pixels[Black].push_back(cover << 24);
                glyph.pixels[White].push_back(cover * 0x01010101u);
                glyph.pixels[BlackOnWhite].push_back(0xFFFFFFFFu - cover * 0x010101u);
                if (cover != 0 && i < digitCount) {
                    firstRow = std::min(firstRow, y);
                    endRow = std::max(endRow, y + 1);
                }
            }
        }
    }
    if (endRow > 0) // the font has digits
        m_digits = {firstRow, endRow - firstRow};
}

const GlyphImages::Glyph& GlyphImages::glyphOf(char character) const
{
    return m_glyphs[character >= '0' && character <= '9' ? static_cast<std::size_t>(character - '0')
                                                         : characters.find(character)];
}

int GlyphImages::widthOf(std::string_view text) const
{
    int width = 0;
    for (const char character : text)
        width += glyphOf(character).width;
    return width;
}

void GlyphImages::write(std::string_view text, Ink ink, const Rows& rows, std::uint32_t* target,
                        std::size_t stride) const
{
    for (const char character : text) {
        const Glyph& glyph = glyphOf(character);
        const auto width = static_cast<std::size_t>(glyph.width);
        const std::uint32_t* source = glyph.pixels[ink].data() + static_cast<std::size_t>(rows.first) * width;
        std::uint32_t* line = target;
        for (int y = 0; y < rows.count; ++y, source += width, line += stride)
            std::memcpy(line, source, width * sizeof *source);
        target += width;
    }
}

} // namespace Vistrel
