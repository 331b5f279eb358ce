// SPDX-License-Identifier: MIT
// One frame that can be loaded from an image file and saved to one.
#include <Vistrel/FileIO.h>

#include "base/Log.h"
#include "files/FrameImage.h"
#include "files/ImageFile.h"
#include "pipeline/frames/Conversion.h"
#include "pipeline/pixels/ColorTables.h"
#include "pipeline/pixels/PixelFormats.h"

#include <utility>

namespace Vistrel {

namespace {

constexpr std::size_t longestName = 1 << 16;
constexpr int jpegQuality = 95;
constexpr int fastest = 11; // of 100: the first of nine steps that compresses

// In 8 bits a channel. A mosaic is not demosaiced, because interpolated pixels were not measured.
bool saveConverted(RawImage raw, const QString& fileName)
{
    if (isMonochrome(raw.format))
        raw.format = Format(raw.format & ~formatPatternMask);
    CopyPool pool(1);
    PixelBuffer pixels;
    QImage image;
    if (!convertFrame(pool, image, pixels, raw))
        return false;
    image = image.copy(); // Qt's BMP writer reads rows up to a multiple of four bytes
    if (image.format() == QImage::Format_Indexed8)
        image.setColorTable(grayRamp());
    ImageOptions options;
    options.quality = jpegQuality;
    return writeImage(std::move(image), fileName, options);
}

// The low bits of deep samples are noise, which a slower compression hardly makes smaller.
bool saveWhole(const RawImage& raw, const QString& fileName)
{
    ImageOptions options;
    options.compression = fastest;
    QImage image = imageFromFrame(raw, options.extras);
    return writeImage(std::move(image), fileName, options);
}

QString wideName(std::wstring_view fileName)
{
    if (fileName.size() > longestName)
        return {};
    return QString::fromWCharArray(fileName.data(), static_cast<int>(fileName.size()));
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

    bool load(const QString& fileName)
    {
        ImageFileReader file;
        PixelBuffer newPixels;
        RawImage newFrame;
        const auto applyExtras = [&file](PixelBuffer& bytes) { return file.applyExtras(bytes); };
        if (!frameFromImage(file.read(fileName), applyExtras, newPixels, newFrame))
            return false;
        replace(newPixels, newFrame);
        return true;
    }

    bool save(const QString& fileName) const
    {
        const ImageType type = imageType(fileName);
        if (!frame.data || type == ImageType::Unknown)
            return false;
        return type == ImageType::Png ? saveWhole(frame, fileName) : saveConverted(frame, fileName);
    }

    PixelBuffer pixels; // a complete frame, also after the last packed pixel
    RawImage frame;     // describes the pixels; null data without a frame
};

FileIO::FileIO() : m_data(new PrivateData) {}

FileIO::FileIO(const RawImage& image) : FileIO()
{
    setData(image);
}

FileIO::~FileIO() = default;

bool FileIO::hasData() const
{
    return m_data->frame.data != nullptr;
}

bool FileIO::setData(const RawImage& image)
{
    if (!image.data || !isReadable(image))
        return false;
    RawImage plain = image;
    plain.format = plainFormat(image.format);
    return attempt("FileIO::setData", false, [&] {
        PixelBuffer pixels(image.data, frameEnd(plain));
        pixels.resize(image.width * bytesPerPixel(image.format) * image.height, 0);
        m_data->replace(pixels, plain);
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
    return attempt("FileIO::load", false, [&] { return m_data->load(decodedName(fileName)); });
}

bool FileIO::load(std::wstring_view fileName)
{
    return attempt("FileIO::load", false, [&] { return m_data->load(wideName(fileName)); });
}

bool FileIO::save(const char* const fileName) const
{
    return attempt("FileIO::save", false, [&] { return m_data->save(decodedName(fileName)); });
}

bool FileIO::save(std::wstring_view fileName) const
{
    return attempt("FileIO::save", false, [&] { return m_data->save(wideName(fileName)); });
}

} // namespace Vistrel
