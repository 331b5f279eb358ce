// SPDX-License-Identifier: MIT
// From raw frames to images that can be painted, and back.
#include "pipeline/Conversion.h"

#include "pipeline/Demosaic.h"
#include "pipeline/ThreadableCopy.h"

#include <cstring>
#include <limits>

namespace Vistrel {

namespace {

struct TargetLayout
{
    QImage::Format format;
    std::size_t bytesPerPixel;
};

TargetLayout targetLayout(int kind)
{
    if (kind == 32)
        return {QImage::Format_RGBX8888, 4};
    if (kind >= 24 && kind <= 48)
        return {QImage::Format_RGB888, 3};
    return {QImage::Format_Indexed8, 1};
}

bool fits(const QImage& target, const RawImage& raw, QImage::Format format, std::size_t bytes)
{
    return !target.isNull() && target.format() == format && static_cast<std::size_t>(target.width()) == raw.width &&
           static_cast<std::size_t>(target.height()) == raw.height &&
           static_cast<std::size_t>(target.bytesPerLine()) == raw.width * bytes;
}

bool fitsGray(const QImage& target, const RawImage& raw)
{
    return fits(target, raw, QImage::Format_Indexed8, 1);
}

bool fitsColor(const QImage& target, const RawImage& raw)
{
    return fits(target, raw, QImage::Format_RGB888, 3) || fits(target, raw, QImage::Format_RGBX8888, 4);
}

template <typename Copy>
bool runCopy(CopyPool& pool, QImage& target, const RawImage& raw)
{
    Copy copy(raw, target);
    const std::size_t rowBytes =
        raw.width * bytesPerPixel(raw.format) + static_cast<std::size_t>(target.bytesPerLine());
    pool.runRows(raw.height, rowBytes, [&copy](std::size_t row, std::size_t end) { copy.copyRows(row, end); });
    return true;
}

bool copyBytes(CopyPool& pool, QImage& target, const RawImage& raw)
{
    std::uint8_t* const bytes = target.bits();
    const auto stores = RowKernels::storesFor(raw.width * raw.height);
    pool.runRows(raw.height, 2 * raw.width, [&](std::size_t row, std::size_t end) {
        RowKernels::copyBytes(raw.data + row * raw.width, bytes + row * raw.width, (end - row) * raw.width, stores);
    });
    return true;
}

bool copyGray(CopyPool& pool, QImage& target, const RawImage& raw)
{
    using Word = unsigned short;
    if (!fitsGray(target, raw))
        return false;
    switch (formatDepth(raw.format)) {
    case 8:
        return copyBytes(pool, target, raw);
    case 10:
        if ((raw.format & formatPackingMask) == Packedp)
            return runCopy<ThreadableCopyGray<Word, 0, Gray10PackedIterator<Packedp>>>(pool, target, raw);
        if ((raw.format & formatPackingMask) == PackedNoSwap)
            return runCopy<ThreadableCopyGray<Word, 0, Gray10PackedIterator<PackedNoSwap>>>(pool, target, raw);
        return runCopy<ThreadableCopyGray<Word, 2, const Word*>>(pool, target, raw);
    case 12:
        return runCopy<ThreadableCopyGray<Word, 4, const Word*>>(pool, target, raw);
    case 14:
        return runCopy<ThreadableCopyGray<Word, 6, const Word*>>(pool, target, raw);
    default:
        return runCopy<ThreadableCopyGray<Word, 8, const Word*>>(pool, target, raw);
    }
}

bool copyColor(CopyPool& pool, QImage& target, const RawImage& raw)
{
    using Byte = unsigned char;
    using Word = unsigned short;
    if (!fitsColor(target, raw))
        return false;
    switch (formatDepth(raw.format)) {
    case 24:
        return runCopy<ThreadableCopyColor<Byte, 3, 0, const Byte*>>(pool, target, raw);
    case 30:
        return runCopy<ThreadableCopyColor<unsigned int, 1, 2, Color30Iterator>>(pool, target, raw);
    case 32:
        return runCopy<ThreadableCopyColor<Byte, 4, 0, const Byte*>>(pool, target, raw);
    case 36:
        return runCopy<ThreadableCopyColor<Word, 3, 4, const Word*>>(pool, target, raw);
    case 42:
        return runCopy<ThreadableCopyColor<Word, 3, 6, const Word*>>(pool, target, raw);
    default:
        return runCopy<ThreadableCopyColor<Word, 3, 8, const Word*>>(pool, target, raw);
    }
}

bool isMosaic(Format format)
{
    return isMonochrome(format) && (format & formatPatternMask) != 0;
}

// A mosaic that can be interpolated.
bool isWholeMosaic(const RawImage& raw)
{
    const std::uint32_t pattern = raw.format & formatPatternMask;
    return pattern >= BayerGB && pattern <= BayerBG && raw.width >= smallestMosaic && raw.height >= smallestMosaic;
}

bool hasPixelBytes(std::size_t width, std::size_t height, std::size_t bytes)
{
    constexpr auto longest = static_cast<std::size_t>(std::numeric_limits<int>::max());
    constexpr auto most = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
    return bytes > 0 && width > 0 && height > 0 && width <= longest && height <= longest && width <= longest / bytes &&
           height <= most / (width * bytes);
}

QImage imageOver(uchar* bytes, std::size_t width, std::size_t height, const TargetLayout& layout)
{
    return QImage(bytes, static_cast<int>(width), static_cast<int>(height),
                  static_cast<int>(width * layout.bytesPerPixel), layout.format);
}

// Asked over no memory to speak of, and none of it touched: what the toolkit cannot hold must cost nothing.
bool hasTarget(std::size_t width, std::size_t height, const TargetLayout& layout)
{
    static uchar nothing[4] = {};
    return hasPixelBytes(width, height, layout.bytesPerPixel) && !imageOver(nothing, width, height, layout).isNull();
}

} // namespace

bool isReadable(const RawImage& raw)
{
    return hasPixelBytes(raw.width, raw.height, bytesPerPixel(raw.format));
}

bool isConvertible(const RawImage& raw)
{
    return isReadable(raw) && (!isMosaic(raw.format) || isWholeMosaic(raw)) &&
           hasTarget(raw.width, raw.height, targetLayout(targetKind(raw.format)));
}

int targetKind(Format format)
{
    return isColor(format) || isMosaic(format) ? 32 : 8;
}

bool prepareTarget(QImage& target, PixelBuffer& buffer, std::size_t width, std::size_t height, int kind)
{
    const TargetLayout layout = targetLayout(kind);
    if (!hasTarget(width, height, layout))
        return false;
    const std::size_t size = width * layout.bytesPerPixel * height;
    if (buffer.size() != size) {
        target = QImage(); // its pixels are about to go
        buffer.clear();
        buffer.shrink_to_fit();
        buffer.resize(size);
    }
    target = imageOver(buffer.data(), width, height, layout);
    return true;
}

bool copyFrame(CopyPool& pool, QImage& target, const RawImage& raw)
{
    if (!raw.data || !isConvertible(raw))
        return false;
    if (isColor(raw.format))
        return copyColor(pool, target, raw);
    return isMosaic(raw.format) ? demosaic(pool, target, raw) : copyGray(pool, target, raw);
}

bool convertFrame(CopyPool& pool, QImage& target, PixelBuffer& targetBuffer, const RawImage& raw)
{
    return raw.data && isConvertible(raw) &&
           prepareTarget(target, targetBuffer, raw.width, raw.height, targetKind(raw.format)) &&
           copyFrame(pool, target, raw);
}

bool rawFromImage(CopyPool& pool, const QImage& source, PixelBuffer& buffer, QImage& image, RawImage& raw)
{
    if (source.isNull())
        return false;
    QImage work = source;
    if (work.format() != QImage::Format_Indexed8 && work.format() != QImage::Format_RGB888 &&
        work.format() != QImage::Format_RGBX8888) {
        // By way of grey levels: the toolkit would otherwise number the levels in the order in which it meets them.
        work = work.isGrayscale()
                   ? work.convertToFormat(QImage::Format_Grayscale8).convertToFormat(QImage::Format_Indexed8)
                   : work.convertToFormat(QImage::Format_RGBX8888);
    }
    if (work.isNull())
        return false;

    const auto width = static_cast<std::size_t>(work.width());
    const auto height = static_cast<std::size_t>(work.height());
    Format format = Mono8;
    if (work.format() == QImage::Format_RGB888)
        format = RGB8;
    else if (work.format() == QImage::Format_RGBX8888)
        format = RGBa8;
    const std::size_t rowBytes = width * bytesPerPixel(format);
    if (static_cast<std::size_t>(work.bytesPerLine()) != rowBytes) {
        PixelBuffer packed(height * rowBytes);
        pool.runRows(height, 2 * rowBytes, [&](std::size_t row, std::size_t end) {
            for (; row < end; ++row)
                std::memcpy(packed.data() + row * rowBytes, work.constScanLine(static_cast<int>(row)), rowBytes);
        });
        const QVector<QRgb> colors = work.colorTable();
        work = QImage(packed.data(), work.width(), work.height(), static_cast<int>(rowBytes), work.format());
        work.setColorTable(colors);
        buffer.swap(packed);
    }
    image = work;
    raw.data = image.constBits();
    raw.width = width;
    raw.height = height;
    raw.format = format;
    return true;
}

QImage imageForRender(const QImage& stored, const QVector<unsigned int>& palette, bool reverseRgb)
{
    if (stored.format() != QImage::Format_Indexed8)
        return reverseRgb ? stored.rgbSwapped() : stored.copy();
    QImage image = stored.copy();
    image.setColorTable(palette.size() == 256 ? palette : grayRamp());
    return image;
}

QVector<unsigned int> grayRamp()
{
    QVector<unsigned int> ramp(256);
    for (unsigned level = 0; level < 256; ++level)
        ramp[static_cast<int>(level)] = 0xFF000000u | level * 0x010101u;
    return ramp;
}

} // namespace Vistrel
