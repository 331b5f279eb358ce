// SPDX-License-Identifier: MIT
// A file interface that saves frames at full depth.
#include <Vistrel/PngFileInterface.h>

#include "files/ImageFile.h"

#include <Vistrel/FileIO.h>

namespace Vistrel {

PngFileInterface::PngFileInterface()
{
    addFormat(".png", nullptr, "Portable Network Graphics Image");
}

PngFileInterface::~PngFileInterface() = default;

bool PngFileInterface::load(const char* const fileName, FileIO* const image)
{
    return image && imageType(decodedName(fileName)) == ImageType::Png && image->load(fileName);
}

bool PngFileInterface::save(const RawImage& image, const char* const fileName)
{
    return imageType(decodedName(fileName)) == ImageType::Png && FileIO(image).save(fileName);
}

bool PngFileInterface::savesOnThread() const
{
    return true;
}

bool PngFileInterface::saveWide(const RawImage& image, const wchar_t* const fileName)
{
    return imageType(QString::fromWCharArray(fileName)) == ImageType::Png && FileIO(image).save(fileName);
}

} // namespace Vistrel
