// SPDX-License-Identifier: MIT
// From raw frames to images that can be painted, and back.
#include "pipeline/frames/Conversion.h"

#include "pipeline/pixels/ColorTables.h"
#include "pipeline/pixels/Demosaic.h"
#include "pipeline/pixels/PixelFormats.h"

#include <algorithm>
#include <cstring>

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

bool isMosaic(const PixelFormat& format)
{
    return (format.code & formatPatternMask) != 0;
}

QImage imageOver(uchar* bytes, std::size_t width, std::size_t height, const TargetLayout& layout)
{
    return QImage(bytes, static_cast<int>(width), static_cast<int>(height),
                  static_cast<int>(width * layout.bytesPerPixel), layout.format);
}

// Makes the image over four bytes and accesses none of them: the check of a size must not allocate memory.
bool hasTarget(std::size_t width, std::size_t height, const TargetLayout& layout)
{
    static uchar nothing[4] = {};
    return hasPixelBytes(width, height, layout.bytesPerPixel) && !imageOver(nothing, width, height, layout).isNull();
}

} // namespace

bool isConvertible(const RawImage& raw)
{
    const PixelFormat* const format = findFormat(raw.format);
    return format && isReadable(raw) && (!isMosaic(*format) || std::min(raw.width, raw.height) >= smallestMosaic) &&
           hasTarget(raw.width, raw.height, targetLayout(targetKind(raw.format)));
}

int targetKind(Format format)
{
    const PixelFormat* const found = findFormat(format);
    return found && found->conversion.isColor ? 32 : 8;
}

bool prepareTarget(QImage& target, PixelBuffer& buffer, std::size_t width, std::size_t height, int kind)
{
    const TargetLayout layout = targetLayout(kind);
    if (!hasTarget(width, height, layout))
        return false;
    const std::size_t size = width * layout.bytesPerPixel * height;
    if (buffer.size() != size) {
        target = QImage(); // its pixels are about to be freed
        buffer.clear();
        buffer.shrink_to_fit();
        buffer.resize(size);
    }
    target = imageOver(buffer.data(), width, height, layout);
    return true;
}

bool fitsTarget(const QImage& target, const RawImage& raw)
{
    const bool isOfKind = targetKind(raw.format) == 8
                              ? target.format() == QImage::Format_Indexed8
                              : target.format() == QImage::Format_RGBX8888 ||
                                    (target.format() == QImage::Format_RGB888 && isColor(raw.format));
    return isOfKind && static_cast<std::size_t>(target.width()) == raw.width &&
           static_cast<std::size_t>(target.height()) == raw.height &&
           static_cast<std::size_t>(target.bytesPerLine()) == raw.width * static_cast<std::size_t>(target.depth()) / 8;
}

void fillTarget(CopyPool& pool, QImage& target, const RawImage& raw, const Stages& stages)
{
    const PixelFormat& format = *findFormat(raw.format);
    const PictureConversion& conversion = format.conversion;
    const std::size_t pixelBytes = static_cast<std::size_t>(target.depth()) / 8;
    // Streamed pixels would have to be fetched back into the cache.
    const Kernels::Stores stores =
        stages.changesRows() ? Kernels::Stores::Cached : Kernels::storesFor(raw.width * raw.height * pixelBytes);
    const PictureTarget picture = {target.bits(), pixelBytes, stores};
    pool.runRows(
        raw.height, conversion.weight * raw.width * (format.layout->bytesPerPixel + pixelBytes),
        [&](std::size_t row, std::size_t end) {
            conversion.rows(format, raw, picture, row, end);
            stages.changeRows(raw, picture, row, end);
        },
        conversion.fewestRows);
}

bool convertFrame(CopyPool& pool, QImage& target, PixelBuffer& targetBuffer, const RawImage& raw)
{
    if (!raw.data || !isConvertible(raw) ||
        !prepareTarget(target, targetBuffer, raw.width, raw.height, targetKind(raw.format)))
        return false;
    fillTarget(pool, target, raw);
    return true;
}

bool rawFromImage(CopyPool& pool, const QImage& source, PixelBuffer& buffer, QImage& image, RawImage& raw)
{
    if (source.isNull())
        return false;
    QImage work = source;
    if (work.format() != QImage::Format_Indexed8 && work.format() != QImage::Format_RGB888 &&
        work.format() != QImage::Format_RGBX8888) {
        // By grey levels: without that step, Qt numbers the levels in the order in which it finds them.
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

} // namespace Vistrel
