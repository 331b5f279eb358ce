// SPDX-License-Identifier: MIT
// Frames as images that keep every bit of them, and back.
#include "files/FrameImage.h"

#include "pipeline/PackedIterators.h"

#include <QtCore/QString>

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>

namespace Vistrel {

namespace {

using Byte = std::uint8_t;
using Word = std::uint16_t;

constexpr int bandRows = 64; // of an image whose pixels are converted

QString formatField()
{
    return QStringLiteral("Vistrel Format");
}

// Only 10-bit formats with packing bits have a name.
std::uint32_t packing(Format format)
{
    return format & formatPackingMask;
}

bool hasSpareBits(Format format)
{
    return packing(format) != 0 || formatDepth(format) == 30;
}

// In images the first channel is red.
bool isReversed(Format format)
{
    const bool bgr = (format & formatOrderMask) == OrderBGR;
    return bgr == (formatDepth(format) == 30);
}

std::size_t frameBytes(const RawImage& raw)
{
    return raw.width * bytesPerPixel(raw.format) * raw.height;
}

QImage::Format imageFormat(Format format)
{
    if (isMonochrome(format))
        return formatDepth(format) == 8 ? QImage::Format_Grayscale8 : QImage::Format_Grayscale16;
    switch (formatDepth(format)) {
    case 24:
        return QImage::Format_RGB888;
    case 32:
        return QImage::Format_RGBA8888;
    default:
        return QImage::Format_RGBX64;
    }
}

// The closest of the formats that `imageFormat` gives, for an image from whatever file.
QImage::Format sampleKind(const QImage& image)
{
    switch (image.format()) {
    case QImage::Format_Grayscale16:
        return QImage::Format_Grayscale16;
    case QImage::Format_RGBX64:
    case QImage::Format_RGBA64:
        return QImage::Format_RGBX64;
    default:
        if (image.hasAlphaChannel())
            return QImage::Format_RGBA8888;
        return image.depth() <= 8 && image.allGray() ? QImage::Format_Grayscale8 : QImage::Format_RGB888;
    }
}

Format closestFormat(QImage::Format kind)
{
    switch (kind) {
    case QImage::Format_Grayscale8:
        return Mono8;
    case QImage::Format_Grayscale16:
        return Mono16;
    case QImage::Format_RGBX64:
        return RGB16;
    case QImage::Format_RGBA8888:
        return RGBa8;
    default:
        return RGB8;
    }
}

// Rows ----------------------------------------------------------------------------------------------------------------

// Copies pixels whose red and blue may change places; what a target has besides is left alone.
template <typename Sample>
void copyChannels(const Sample* source, std::size_t sourceStep, Sample* target, std::size_t targetStep,
                  std::size_t count, std::size_t channels, bool reversed)
{
    for (; count > 0; --count, source += sourceStep, target += targetStep) {
        for (std::size_t channel = 0; channel < channels; ++channel)
            target[channel] = source[reversed && channel < 3 ? 2 - channel : channel];
    }
}

template <std::uint32_t swap>
void unpack(const Byte* source, const Byte* end, Word* target, std::size_t width)
{
    Gray10PackedIterator<swap> pixel(source, end);
    for (std::size_t x = 0; x < width; ++x, ++pixel)
        target[x] = pixel.fullDepth();
}

// The inverse, into zeroed bytes; false when a sample has more than ten bits.
bool pack(const Word* source, std::size_t width, Byte* target, const Byte* end, bool swap)
{
    for (std::size_t x = 0; x < width; x += 4, target += 5) {
        std::uint64_t word = 0;
        for (std::size_t i = 0; i < 4 && x + i < width; ++i) {
            if (source[x + i] > 0x3FF)
                return false;
            word |= std::uint64_t{source[x + i]} << (54 - 10 * i);
        }
        for (std::size_t i = 0; i < 8 && target + i < end; ++i)
            target[i] = static_cast<Byte>(target[i] | word >> 8 * (swap ? 7 - i : i));
    }
    return true;
}

void unpack30(const Byte* source, Word* target, std::size_t width, bool reversed)
{
    Color30Iterator pixel(source);
    for (std::size_t x = 0; x < width; ++x, ++pixel, target += 4) {
        for (unsigned channel = 0; channel < 3; ++channel)
            target[channel] = static_cast<Word>(*pixel >> 10 * (reversed ? 2 - channel : channel) & 0x3FF);
    }
}

bool pack30(const Word* source, Byte* target, std::size_t width, bool reversed)
{
    for (std::size_t x = 0; x < width; ++x, source += 4, target += 4) {
        std::uint32_t word = 0;
        for (unsigned channel = 0; channel < 3; ++channel) {
            if (source[channel] > 0x3FF)
                return false;
            word |= std::uint32_t{source[channel]} << 10 * (reversed ? 2 - channel : channel);
        }
        std::memcpy(target, &word, sizeof word);
    }
    return true;
}

void rowFromFrame(const RawImage& raw, std::size_t row, QImage& image)
{
    const std::size_t rowBytes = raw.width * bytesPerPixel(raw.format);
    const Byte* const source = raw.data + row * rowBytes;
    uchar* const target = image.scanLine(static_cast<int>(row));
    const auto words = reinterpret_cast<Word*>(target);
    const bool reversed = isReversed(raw.format);
    if (packing(raw.format) == Packedp)
        return unpack<Packedp>(source, packedFrameEnd(raw), words, raw.width);
    if (packing(raw.format) == PackedNoSwap)
        return unpack<PackedNoSwap>(source, packedFrameEnd(raw), words, raw.width);
    if (isMonochrome(raw.format))
        std::memcpy(target, source, rowBytes);
    else if (formatDepth(raw.format) == 30)
        unpack30(source, words, raw.width, reversed);
    else if (bytesPerPixel(raw.format) == 6)
        copyChannels<Word>(reinterpret_cast<const Word*>(source), 3, words, 4, raw.width, 3, reversed);
    else {
        const std::size_t channels = image.format() == QImage::Format_RGBA8888 ? 4 : 3;
        copyChannels<Byte>(source, bytesPerPixel(raw.format), target, channels, raw.width, channels, reversed);
    }
}

bool rowFromImage(const uchar* source, QImage::Format kind, std::size_t row, const RawImage& raw, PixelBuffer& pixels)
{
    const std::size_t rowBytes = raw.width * bytesPerPixel(raw.format);
    Byte* const target = pixels.data() + row * rowBytes;
    const auto words = reinterpret_cast<const Word*>(source);
    const bool reversed = isReversed(raw.format);
    if (packing(raw.format) != 0)
        return pack(words, raw.width, target, packedFrameEnd(raw), packing(raw.format) == Packedp);
    if (formatDepth(raw.format) == 30)
        return pack30(words, target, raw.width, reversed);
    if (isMonochrome(raw.format))
        std::memcpy(target, source, rowBytes);
    else if (bytesPerPixel(raw.format) == 6)
        copyChannels<Word>(words, 4, reinterpret_cast<Word*>(target), 3, raw.width, 3, reversed);
    else {
        const std::size_t channels = kind == QImage::Format_RGBA8888 ? 4 : 3;
        copyChannels<Byte>(source, channels, target, bytesPerPixel(raw.format), raw.width, channels, reversed);
    }
    return true;
}

// Frames --------------------------------------------------------------------------------------------------------------

// The samples of the image alone, as pixels of this kind; false when they do not fit the format.
bool layOut(const QImage& image, QImage::Format kind, Format format, PixelBuffer& pixels, RawImage& raw)
{
    raw.width = static_cast<std::size_t>(image.width());
    raw.height = static_cast<std::size_t>(image.height());
    raw.format = format;
    pixels.assign(frameBytes(raw), 0);
    raw.data = pixels.data();
    // A fourth channel beside 16-bit ones is passed over in place: the toolkit would multiply by it.
    const bool isReady = kind == QImage::Format_RGBX64 || image.format() == kind;
    for (int top = 0; top < image.height(); top += bandRows) {
        const int rows = std::min(bandRows, image.height() - top);
        const QImage band = isReady ? image : image.copy(0, top, image.width(), rows).convertToFormat(kind);
        if (band.isNull())
            throw std::bad_alloc();
        for (int row = 0; row < rows; ++row) {
            const int y = top + row;
            if (!rowFromImage(band.constScanLine(isReady ? y : row), kind, static_cast<std::size_t>(y), raw, pixels))
                return false;
        }
    }
    return true;
}

bool hasNoAlpha(const RawImage& raw)
{
    std::size_t pixel = 0;
    while (pixel < raw.width * raw.height && raw.data[4 * pixel + 3] == 0)
        ++pixel;
    return pixel == raw.width * raw.height;
}

} // namespace

QImage imageFromFrame(const RawImage& raw, PixelBuffer& extras)
{
    QImage::Format kind = imageFormat(raw.format);
    if (kind == QImage::Format_RGBA8888 && hasNoAlpha(raw))
        kind = QImage::Format_RGB888;
    QImage image(static_cast<int>(raw.width), static_cast<int>(raw.height), kind);
    if (image.isNull())
        return {};
    if (kind == QImage::Format_RGBX64)
        image.fill(Qt::black); // for the fourth word of each pixel
    for (std::size_t row = 0; row < raw.height; ++row)
        rowFromFrame(raw, row, image);
    image.setText(formatField(), QLatin1String(formatName(raw.format)));
    extras.clear();
    if (hasSpareBits(raw.format)) {
        RawImage bare;
        if (!layOut(image, kind, raw.format, extras, bare))
            return {};
        std::transform(extras.begin(), extras.end(), raw.data, extras.begin(), std::bit_xor<Byte>());
    }
    return image;
}

bool frameFromImage(const QImage& image, const std::function<bool(PixelBuffer&)>& applyExtras, PixelBuffer& pixels,
                    RawImage& raw)
{
    if (image.isNull())
        return false;
    const QImage::Format kind = sampleKind(image);
    PixelBuffer bytes;
    RawImage frame;
    Format named = Format(0);
    const bool isNamed = formatFromName(image.text(formatField()).toLatin1().constData(), &named) &&
                         (imageFormat(named) == kind ||
                          (imageFormat(named) == QImage::Format_RGBA8888 && kind == QImage::Format_RGB888));
    if (!isNamed || !layOut(image, kind, named, bytes, frame) || (hasSpareBits(named) && !applyExtras(bytes)))
        layOut(image, kind, closestFormat(kind), bytes, frame);
    pixels.swap(bytes);
    raw = frame;
    return true;
}

} // namespace Vistrel
