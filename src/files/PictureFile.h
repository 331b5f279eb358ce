// SPDX-License-Identifier: MIT
// Images of the toolkit in files, read with suspicion and written whole or not at all.
#pragma once

#include <QtCore/QString>
#include <QtGui/QImage>

namespace Vistrel {

enum class PictureType { Unknown, Png, Jpeg, Bmp };

/// What the suffix of a name in the local 8-bit encoding says; `Unknown` for null, too. Throws `std::bad_alloc`, as the
/// others do.
PictureType pictureType(const char* fileName);
PictureType pictureType(const QString& fileName);

/// The image in the file; null when it is not whole, not of its suffix's type, or claims more pixels than a file of its
/// length can hold. The claim is checked before memory is taken.
QImage readPicture(const char* fileName);

/// Writes the image, with its text fields where the type has them. False, and an older file untouched, on failure.
bool writePicture(const QImage& image, const char* fileName);
/// The same, with a quality from 0 to 100 where the type has one; -1 is the toolkit's own.
bool writePicture(const QImage& image, const QString& fileName, int quality);

} // namespace Vistrel
