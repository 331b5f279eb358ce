// SPDX-License-Identifier: MIT
// Writes pixels in the layout of any format.
#pragma once

#include <Vistrel/Format.h>

#include <QtGui/QRgba64>

#include <cstdint>

/// Writes pixel (x, y); `row` is the first byte of the frame's row y. Monochrome formats get the luma, mosaics the
/// channel of the site. A packed row must be at least 16 pixels wide.
void writePixel(std::uint8_t* row, int x, int y, Vistrel::Format format, QRgba64 color);
