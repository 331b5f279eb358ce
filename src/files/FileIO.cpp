// SPDX-License-Identifier: MIT
// One frame that can be loaded from an image file and saved to one.
#include <Vistrel/FileIO.h>

#include "base/Report.h"
#include "files/FrameImage.h"
#include "files/PictureFile.h"
#include "pipeline/Conversion.h"
#include "pipeline/PackedIterators.h"

namespace Vistrel {

namespace {

// Eight bits a channel. A mosaic stays as it is: interpolated pixels are no measured ones.
bool saveConverted(RawImage raw, const char* fileName)
{
    if (isMonochrome(raw.format))
        raw.format = Format(raw.format & ~formatPatternMask);
    CopyPool pool(1);
    PixelBuffer pixels;
    QImage image;
    if (!convertFrame(pool, image, pixels, raw))
        return false;
    image = image.copy(); // the toolkit's BMP writer reads rows up to a multiple of four bytes
    if (image.format() == QImage::Format_Indexed8)
        image.setColorTable(grayRamp());
    return writePicture(image, fileName);
}

} // namespace

struct FileIO::PrivateData
{
    void replace(PixelBuffer& newPixels, const RawImage& newFrame)
    {
        pixels.swap(newPixels);
        frame = newFrame;
        frame.data = pixels.data();
    }

    PixelBuffer pixels; // a whole frame, also behind the last packed row
    RawImage frame;     // over the pixels; null data without a frame
};

FileIO::FileIO() : m_data(new PrivateData) {}

FileIO::FileIO(const RawImage& image) : FileIO()
{
    setData(image);
}

FileIO::~FileIO()
{
    delete m_data;
}

bool FileIO::hasData() const
{
    return m_data->frame.data != nullptr;
}

bool FileIO::setData(const RawImage& image)
{
    if (!image.data || !formatName(image.format) || !isReadable(image))
        return false;
    return hostCall("FileIO::setData", false, [&] {
        const std::size_t size = image.width * bytesPerPixel(image.format) * image.height;
        const std::uint8_t* const end =
            (image.format & formatPackingMask) != 0 ? packedFrameEnd(image) : image.data + size;
        PixelBuffer pixels(image.data, end);
        pixels.resize(size, 0);
        m_data->replace(pixels, image);
        return true;
    });
}

bool FileIO::getData(RawImage& image) const
{
    if (hasData())
        image = m_data->frame;
    return hasData();
}

bool FileIO::load(const char* const fileName)
{
    return hostCall("FileIO::load", false, [&] {
        PixelBuffer pixels;
        RawImage frame;
        if (!frameFromImage(readPicture(fileName), pixels, frame))
            return false;
        m_data->replace(pixels, frame);
        return true;
    });
}

bool FileIO::save(const char* const fileName) const
{
    return hostCall("FileIO::save", false, [&] {
        const PictureType type = pictureType(fileName);
        if (!hasData() || type == PictureType::Unknown)
            return false;
        return type == PictureType::Png ? writePicture(imageFromFrame(m_data->frame), fileName)
                                        : saveConverted(m_data->frame, fileName);
    });
}

} // namespace Vistrel
