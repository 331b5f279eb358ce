// SPDX-License-Identifier: MIT
// Sizes and writes the labels of single pixels.
#pragma once

#include "widgets/GlyphImages.h"

#include <Vistrel/PixVal.h>
#include <Vistrel/PixelValues.h>

#include <QtCore/QPoint>
#include <QtCore/QRect>
#include <QtGui/QFont>
#include <QtGui/QRgb>

#include <memory>
#include <string>

class QImage;

namespace Vistrel {

/// All lengths are in device pixels. A cell is the device pixels that show one image pixel. A label of `WithPosition`
/// is a box; it fits a cell that is more than an eighth larger than the box of any pixel of the image. Bare values have
/// the largest font, up to that of the boxes, in which every value fits.
class PixelLabels
{
public:
    /// What decides how large the labels are.
    struct Conditions
    {
        PixelValues pixelValues = PixelValues::Off;
        QSize imageSize;
        bool isColor = false;
        std::uint32_t largest = 0; // value of a channel
        double ratio = 1;          // device pixels a logical pixel
        int dotsPerInch = 96;      // logical
        int side = 0;              // of a cell; decides the size of bare values alone
    };

    PixelLabels();

    /// Does nothing when the conditions are those of the last call.
    void measure(const Conditions& conditions);
    bool fit(double side) const { return side > limit(); } ///< a cell's
    /// The smallest whole side that labels fit. It may be larger than that of any zoom.
    int leastSide() const { return static_cast<int>(limit()) + 1; }

    /// A label is written into strips: a box into one, a bare value into one for each line of text.
    int stripCount() const { return areBoxes() ? 1 : lineCount(); }
    int stripHeight() const;
    int stripTop(int strip, int cellHeight) const; ///< from the cell's top
    /// Whether the label replaces all that another label of a cell at the same place has left in a strip.
    bool coversOthers() const { return areBoxes(); }
    /// Writes the label of a cell whose left edge is column `left` of the transparent, premultiplied image `target`. A
    /// bare value is black or white, whichever has more contrast to the colour `shown` of its pixel.
    void write(const QPoint& pixel, const PixVal& value, QRgb shown, int strip, int left, int cellWidth,
               QImage& target);

private:
    bool areBoxes() const { return m_conditions.pixelValues == PixelValues::WithPosition; }
    int lineCount() const { return m_conditions.isColor ? 3 : 1; }
    QSize boxSize() const;
    void writeBox(const QPoint& pixel, const PixVal& value, int left, QImage& target);
    double limit() const;
    int basePixelSize(int pointSize) const;
    void measureBox();
    void measureBare();
    void setPixelSize(int pixelSize);
    int lineDistance() const;
    const std::string& positionText(const QPoint& pixel);
    const std::string& valueText(const PixVal& value, int line);

    QFont m_font;
    int m_basePointSize;
    Conditions m_conditions;
    std::unique_ptr<const GlyphImages> m_glyphs; // null before the first measurement
    int m_margin = 0;
    QSize m_position; // the two parts of a box
    QSize m_value;
    std::string m_text;
};

} // namespace Vistrel
