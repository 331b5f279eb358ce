// SPDX-License-Identifier: MIT
// Writes numbers by copying images of their characters.
#pragma once

#include <QtGui/QFont>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Vistrel {

/// The characters of pixel values and coordinates at one size: digits, space, comma, colon, R, G and B. All digits have
/// the same width. Lengths are in pixels of the image that is written to.
class GlyphImages
{
public:
    enum Ink { Black, White, BlackOnWhite }; ///< the first two on transparent ground; premultiplied

    /// Rows of the line of text that are written.
    struct Rows
    {
        int first;
        int count;
    };

    GlyphImages(const QFont& font, int pixelSize);

    int pixelSize() const { return m_pixelSize; }
    int widthOf(std::string_view text) const;
    Rows line() const { return {0, m_height}; }
    Rows digits() const { return m_digits; } ///< those that digits touch

    /// Replaces pixels from `target` on, which are `stride` pixels a row: `rows` of the text.
    void write(std::string_view text, Ink ink, const Rows& rows, std::uint32_t* target, std::size_t stride) const;

private:
    struct Glyph
    {
        int width = 0;
        std::array<std::vector<std::uint32_t>, 3> pixels; // by ink, row after row
    };

    const Glyph& glyphOf(char character) const;

    int m_pixelSize;
    int m_height;
    Rows m_digits{0, 0};
    std::vector<Glyph> m_glyphs;
};

} // namespace Vistrel
