// SPDX-License-Identifier: MIT
// Reads grey pictures of more than 8 bits a pixel, of which the toolkit would drop the lower ones.
#pragma once

#include <Vistrel/Format.h>

#include <QtGui/QImage>

/// Reads a binary PGM file whose maximum is above 255 into words as they are (Format_Grayscale16), and the format that
/// has just enough bits for the maximum. Null for any other file, also one that is cut short.
QImage readDeepPgm(const QString& fileName, Vistrel::Format* format);
