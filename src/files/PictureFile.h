// SPDX-License-Identifier: MIT
// Images of the toolkit in files, read with suspicion and written whole or not at all.
#pragma once

#include "files/PictureParts.h"
#include "pipeline/frames/PixelBlocks.h"

#include <QtCore/QFile>
#include <QtCore/QString>
#include <QtGui/QImage>

namespace Vistrel {

/// Null when the name is null, or not text in the local encoding and so would name another file.
QString decodedName(const char* fileName);

/// What the name's suffix says.
PictureType pictureType(const QString& fileName);

/// Reads one image file. A claim is checked before memory is taken for it. Throws `std::bad_alloc`, as all here does.
class PictureReader
{
public:
    /// The image in the file; null when it is not whole, not of its suffix's type, or claims more pixels than a file of
    /// its length can hold. Its only text is the name of the frame's format.
    QImage read(const QString& fileName);

    /// Changes a frame by the extra bytes that the file has for it. False when they are those of another frame.
    bool applyExtras(PixelBuffer& frame);

private:
    QFile m_file;
    std::vector<PictureParts::Part> m_extras;
};

struct PictureOptions
{
    int quality = -1;     ///< of JPEG, 0 to 100; -1 is the toolkit's own, here and below
    int compression = -1; ///< of PNG, 0 (none) to 100
    PixelBuffer extras; ///< of PNG: kept beside the pixels, for `applyExtras`, which exclusive-ors them; zeros are free
};

/// Writes the image, with its text fields where the type has them. False, and an older file unchanged, on failure.
bool writePicture(QImage image, const QString& fileName, const PictureOptions& options);

} // namespace Vistrel
