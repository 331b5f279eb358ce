// SPDX-License-Identifier: MIT
// Reads grey pictures of more than 8 bits a pixel, whose lower bits Qt would drop.
#pragma once

#include <Vistrel/Format.h>

#include <QtGui/QImage>

/// Reads a binary PGM file whose maximum is above 255 into unscaled words (Format_Grayscale16), and stores the format
/// with just enough bits for the maximum. Null for any other file, also an incomplete one.
QImage readDeepPgm(const QString& fileName, Vistrel::Format* format);
