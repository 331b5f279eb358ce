// SPDX-License-Identifier: MIT
// The picture that the pattern source shows.
#pragma once

#include <QtCore/QPoint>
#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtGui/QImage>

#include <array>

/// A still picture and the parts that move over it, 16 bits a channel.
struct TestPicture
{
    QImage still;                  // Format_RGBX64
    QImage ball;                   // Format_RGBA64_Premultiplied; only its opaque pixels count
    QPointF orbitCentre;           // of the ball's centre
    double orbitRadius = 0;        // pixels
    std::array<QImage, 10> digits; // Format_RGBX64, all of one size
    QPoint counter;                // the place of the first of six digits
};

/// Draws the picture in any size; `label` is written into it.
TestPicture drawTestPicture(const QSize& size, const QString& label);
