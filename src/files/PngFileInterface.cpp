// SPDX-License-Identifier: MIT
// A file interface that saves frames at full depth.
#include <Vistrel/PngFileInterface.h>

#include "files/PictureFile.h"

#include <Vistrel/FileIO.h>

namespace Vistrel {

PngFileInterface::PngFileInterface()
{
    addFormat(".png", nullptr, "Portable Network Graphics Image");
}

PngFileInterface::~PngFileInterface() = default;

bool PngFileInterface::load(const char* const fileName, FileIO* const image)
{
    return image && pictureType(decodedName(fileName)) == PictureType::Png && image->load(fileName);
}

bool PngFileInterface::save(const RawImage& image, const char* const fileName)
{
    return pictureType(decodedName(fileName)) == PictureType::Png && FileIO(image).save(fileName);
}

bool PngFileInterface::savesOnThread() const
{
    return true;
}

bool PngFileInterface::saveWide(const RawImage& image, const wchar_t* const fileName)
{
    return pictureType(QString::fromWCharArray(fileName)) == PictureType::Png && FileIO(image).save(fileName);
}

} // namespace Vistrel
