// SPDX-License-Identifier: MIT
// Reads images from files that may be malformed, and writes them completely or not at all.
#pragma once

#include "files/ImageParts.h"
#include "pipeline/frames/PixelBlocks.h"

#include <QtCore/QFile>
#include <QtCore/QString>
#include <QtGui/QImage>

namespace Vistrel {

/// Decodes a name in the local encoding. Null for null, and for bytes that are no text in it: Qt would open another
/// file.
QString decodedName(const char* fileName);

/// The type that the name's suffix stands for.
ImageType imageType(const QString& fileName);

/// Reads one image file. Checks the sizes that it states before it allocates memory. Throws `std::bad_alloc`, as do all
/// functions here.
class ImageFileReader
{
public:
    /// Returns the image in the file; null when the file is incomplete, is not of its suffix's type, or states more
    /// pixels than a file of its length can hold. The image's only text is the name of the frame's format.
    QImage read(const QString& fileName);

    /// Applies the file's extra bytes to a frame. Returns false when they do not fit it.
    bool applyExtras(PixelBuffer& frame);

private:
    QFile m_file;
    std::vector<ImageParts::Part> m_extras;
};

struct ImageOptions
{
    int quality = -1;     ///< of JPEG, 0 to 100; -1 is Qt's default, here and below
    int compression = -1; ///< of PNG, 0 (none) to 100
    PixelBuffer extras;   ///< of PNG: stored for `applyExtras`, which exclusive-ors them; zeros take no space
};

/// Writes the image, and its text fields if the type has them. Returns false and keeps an older file on failure.
bool writeImage(QImage image, const QString& fileName, const ImageOptions& options);

} // namespace Vistrel
