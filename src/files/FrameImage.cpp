// SPDX-License-Identifier: MIT
// Converts frames to images without loss of any bit, and back.
#include "files/FrameImage.h"

#include "pipeline/pixels/PixelFormats.h"

#include <QtCore/QString>

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <vector>

namespace Vistrel {

namespace {

using Byte = std::uint8_t;
using Word = std::uint16_t;

constexpr int bandRows = 64; // of an image whose pixels are converted

QString formatField()
{
    return QStringLiteral("Vistrel Format");
}

std::size_t frameBytes(const RawImage& raw)
{
    return raw.width * bytesPerPixel(raw.format) * raw.height;
}

QImage::Format imageFormat(const PixelFormat& format)
{
    switch (format.layout->samples) {
    case 1:
        return format.bits == 8 ? QImage::Format_Grayscale8 : QImage::Format_Grayscale16;
    case 3:
        return format.bits == 8 ? QImage::Format_RGB888 : QImage::Format_RGBX64;
    default:
        return QImage::Format_RGBA8888;
    }
}

// The closest of the formats that `imageFormat` returns, for an image from any file.
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

// Copies pixels and exchanges red and blue if `reversed`; leaves further samples of the target unchanged.
template <typename Source, typename Target>
void copySamples(const Source* source, std::size_t sourceStep, Target* target, std::size_t targetStep,
                 std::size_t count, std::size_t samples, bool reversed)
{
    for (; count > 0; --count, source += sourceStep, target += targetStep) {
        for (std::size_t i = 0; i < samples; ++i)
            target[i] = static_cast<Target>(source[reversed && i < 3 ? 2 - i : i]);
    }
}

// Copies between rows of a frame and rows of an image, in which the first of three samples is red.
class RowCopy
{
public:
    RowCopy(const PixelFormat& format, QImage::Format kind, std::size_t width)
        : m_layout(*format.layout),
          m_reversed(m_layout.samples > 1 && !format.isRedFirst),
          m_hasWords(kind == QImage::Format_Grayscale16 || kind == QImage::Format_RGBX64),
          m_step(kind == QImage::Format_RGBX64 || kind == QImage::Format_RGBA8888
                     ? 4
                     : std::min<std::size_t>(m_layout.samples, 3)),
          m_samples(m_layout.samples * width)
    {
    }

    void fromFrame(const RawImage& raw, std::size_t row, uchar* target)
    {
        m_layout.unpack(raw, row, 0, raw.width, m_samples.data());
        const std::size_t samples = std::min(m_layout.samples, m_step);
        if (m_hasWords)
            copySamples(m_samples.data(), m_layout.samples, reinterpret_cast<Word*>(target), m_step, raw.width, samples,
                        m_reversed);
        else
            copySamples(m_samples.data(), m_layout.samples, target, m_step, raw.width, samples, m_reversed);
    }

    bool toFrame(const uchar* source, const RawImage& raw, Byte* row)
    {
        const std::size_t samples = std::min(m_layout.samples, m_step);
        if (m_hasWords)
            copySamples(reinterpret_cast<const Word*>(source), m_step, m_samples.data(), m_layout.samples, raw.width,
                        samples, m_reversed);
        else
            copySamples(source, m_step, m_samples.data(), m_layout.samples, raw.width, samples, m_reversed);
        return m_layout.pack(raw, m_samples.data(), row);
    }

private:
    const PixelLayout& m_layout;
    const bool m_reversed;
    const bool m_hasWords;       // in the image
    const std::size_t m_step;    // samples from one pixel of the image to the next
    std::vector<Word> m_samples; // of a row; those that the image does not have stay 0
};

// Frames --------------------------------------------------------------------------------------------------------------

// Writes only the samples of the image, read as pixels of this kind. False when they do not fit the format.
bool layOut(const QImage& image, QImage::Format kind, const PixelFormat& format, PixelBuffer& pixels, RawImage& raw)
{
    raw.width = static_cast<std::size_t>(image.width());
    raw.height = static_cast<std::size_t>(image.height());
    raw.format = format.code;
    pixels.assign(frameBytes(raw), 0);
    raw.data = pixels.data();
    // The fourth of 16-bit channels is skipped without a conversion, in which Qt would multiply by it.
    RowCopy copy(format, kind, raw.width);
    const std::size_t rowBytes = raw.width * format.layout->bytesPerPixel;
    const bool isReady = kind == QImage::Format_RGBX64 || image.format() == kind;
    for (int top = 0; top < image.height(); top += bandRows) {
        const int rows = std::min(bandRows, image.height() - top);
        const QImage band = isReady ? image : image.copy(0, top, image.width(), rows).convertToFormat(kind);
        if (band.isNull())
            throw std::bad_alloc();
        for (int row = 0; row < rows; ++row) {
            const int y = top + row;
            if (!copy.toFrame(band.constScanLine(isReady ? y : row), raw,
                              pixels.data() + static_cast<std::size_t>(y) * rowBytes))
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
    const PixelFormat& format = *findFormat(raw.format);
    QImage::Format kind = imageFormat(format);
    if (kind == QImage::Format_RGBA8888 && hasNoAlpha(raw))
        kind = QImage::Format_RGB888;
    QImage image(static_cast<int>(raw.width), static_cast<int>(raw.height), kind);
    if (image.isNull())
        return {};
    if (kind == QImage::Format_RGBX64)
        image.fill(Qt::black); // for the fourth word of each pixel
    RowCopy copy(format, kind, raw.width);
    for (std::size_t row = 0; row < raw.height; ++row)
        copy.fromFrame(raw, row, image.scanLine(static_cast<int>(row)));
    image.setText(formatField(), QLatin1String(format.name));
    extras.clear();
    if (format.layout->hasSpareBits) {
        RawImage bare;
        if (!layOut(image, kind, format, extras, bare))
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
    Format code = Format(0);
    const PixelFormat* const named =
        formatFromName(image.text(formatField()).toLatin1().constData(), &code) ? findFormat(code) : nullptr;
    const bool isOfKind = named && (imageFormat(*named) == kind ||
                                    (imageFormat(*named) == QImage::Format_RGBA8888 && kind == QImage::Format_RGB888));
    if (!isOfKind || !layOut(image, kind, *named, bytes, frame) || (named->layout->hasSpareBits && !applyExtras(bytes)))
        layOut(image, kind, *findFormat(closestFormat(kind)), bytes, frame);
    pixels.swap(bytes);
    raw = frame;
    return true;
}

} // namespace Vistrel
