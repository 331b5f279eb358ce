// SPDX-License-Identifier: MIT
// From a delivered frame to a complete picture, in recycled memory.
#include "pipeline/frames/FrameConverter.h"

#include "base/LentMemory.h"
#include "pipeline/frames/Conversion.h"
#include "pipeline/pixels/PixelFormats.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Vistrel {

namespace {

std::size_t imageBytes(const QImage& image)
{
    return static_cast<std::size_t>(image.bytesPerLine()) * static_cast<std::size_t>(image.height());
}

bool isGrayRamp(const QVector<unsigned int>& palette)
{
    if (palette.size() != 256)
        return true; // nothing else is shown without a whole palette
    for (unsigned level = 0; level < 256; ++level) {
        if ((palette[static_cast<int>(level)] & 0xFFFFFFu) != level * 0x010101u)
            return false;
    }
    return true;
}

} // namespace

Format effectiveFormat(Format delivered, const ConversionSettings& settings)
{
    std::uint32_t format = delivered & (formatDepthMask | formatLayoutMask);
    if (settings.demosaicEnabled && !settings.lockedBitmap && isMonochrome(delivered))
        format |= settings.filterOverride != 0 ? settings.filterOverride : delivered & formatPatternMask;
    if (settings.rgbOrderReversed)
        format |= (delivered & formatOrderMask) == OrderBGR ? 0x1000u : OrderBGR;
    else
        format |= delivered & formatOrderMask;
    const std::uint32_t packing = delivered & formatPackingMask;
    if (packing == Packedp || packing == PackedNoSwap)
        format |= packing;
    return static_cast<Format>(format);
}

bool needsConversion(const DisplayFrame& frame, const ConversionSettings& settings)
{
    if (!frame.delivered.data || !frame.isDrawn)
        return false;
    const std::uint32_t changed = frame.effective.format ^ effectiveFormat(frame.delivered.format, settings);
    if (isColor(frame.delivered.format))
        return frame.versions.unpack != settings.versions.unpack && (changed & formatOrderMask) != 0;
    return frame.versions.demosaic != settings.versions.demosaic && (changed & formatPatternMask) != 0;
}

bool needsPalette(const DisplayFrame& frame, const ConversionSettings& settings)
{
    return frame.versions.palette != settings.versions.palette && !frame.rendered.isNull() &&
           frame.image.format() == QImage::Format_Indexed8;
}

std::unique_lock<std::mutex> lockPixels(const std::shared_ptr<LockedBitmap>& bitmap)
{
    return bitmap ? std::unique_lock<std::mutex>(bitmap->pixels) : std::unique_lock<std::mutex>();
}

void makeOpaque(std::uint8_t* pixels, std::size_t size)
{
    for (std::size_t i = 3; i < size; i += 4)
        pixels[i] = 0xFF;
}

FrameConverter::FrameConverter() : m_pool(CopyPool::shared()) {}

std::shared_ptr<DisplayFrame> FrameConverter::convert(const RawImage& delivered, bool underLock,
                                                      const ConversionSettings& settings)
{
    auto frame = std::make_shared<DisplayFrame>();
    frame->delivered = delivered;
    frame->effective = delivered;
    frame->underLock = underLock;
    frame->memory = lentMemoryAt(delivered.data);
    if (!delivered.data)
        return frame;
    frame->effective.format = effectiveFormat(delivered.format, settings);
    frame->versions = settings.versions;
    const bool isConverted = settings.lockedBitmap ? convertLocked(*frame, settings.lockedBitmap) : convertFree(*frame);
    return isConverted ? frame : nullptr;
}

bool FrameConverter::convertFree(DisplayFrame& frame)
{
    const RawImage& raw = frame.effective;
    if (!isConvertible(raw))
        return false;
    const std::size_t pixelBytes = targetKind(raw.format) == 32 ? 4 : 1;
    frame.block = m_blocks.take(raw.width * raw.height * pixelBytes);
    QImage target;
    if (!convertFrame(*m_pool, target, *frame.block, raw))
        return false;
    frame.image = imageOver(frame.block, target.width(), target.height(), target.bytesPerLine(), target.format());
    return !frame.image.isNull();
}

bool FrameConverter::convertLocked(DisplayFrame& frame, const std::shared_ptr<LockedBitmap>& locked)
{
    LockedBitmap& bitmap = *locked;
    const RawImage& raw = frame.effective;
    if (raw.data == bitmap.description.data) {
        // The host drew into the bitmap itself: only the description can be wrong.
        if (raw.width != bitmap.description.width || raw.height != bitmap.description.height ||
            formatDepth(raw.format) != formatDepth(bitmap.description.format))
            return false;
        frame.swappedShow = isColor(raw.format) && (raw.format & formatOrderMask) != OrderBGR;
    } else if (!copyFrame(*m_pool, bitmap.target, raw)) {
        return false;
    }
    frame.lockedBitmap = locked;
    frame.block = bitmap.block;
    frame.image = imageOver(frame.block, bitmap.target.width(), bitmap.target.height(), bitmap.target.bytesPerLine(),
                            bitmap.target.format());
    return !frame.image.isNull();
}

std::shared_ptr<DisplayFrame> FrameConverter::renderAgain(const DisplayFrame& frame, const ConversionSettings& settings)
{
    auto again = std::make_shared<DisplayFrame>(frame);
    if (!again->isDrawn)
        again->effective = again->lockedBitmap->description; // what is seen from here on
    return render(*again, settings) ? again : nullptr;
}

std::shared_ptr<DisplayFrame> FrameConverter::showLocked(const DisplayFrame& frame,
                                                         std::shared_ptr<LockedBitmap> bitmap)
{
    auto shown = std::make_shared<DisplayFrame>(frame);
    shown->block = bitmap->block;
    shown->image = imageOver(bitmap->block, bitmap->target.width(), bitmap->target.height(),
                             bitmap->target.bytesPerLine(), bitmap->target.format());
    shown->swappedShow = false;
    shown->isDrawn = false;
    if ((shown->effective.format & formatPatternMask) != 0)
        shown->effective = bitmap->description;
    shown->lockedBitmap = std::move(bitmap);
    return shown;
}

std::shared_ptr<LockedBitmap> FrameConverter::makeLockedBitmap(int width, int height, Format format)
{
    if (width <= 0 || height <= 0)
        return nullptr;
    auto bitmap = std::make_shared<LockedBitmap>();
    bitmap->description.width = static_cast<std::size_t>(width);
    bitmap->description.height = static_cast<std::size_t>(height);
    bitmap->description.format = format;
    bitmap->block = std::make_shared<PixelBuffer>();
    if (!prepareTarget(bitmap->target, *bitmap->block, bitmap->description.width, bitmap->description.height,
                       static_cast<int>(formatDepth(format))))
        return nullptr;
    std::fill(bitmap->block->begin(), bitmap->block->end(), std::uint8_t{0});
    bitmap->description.data = bitmap->block->data();
    registerLentMemory(bitmap->block, bitmap->description.data, bitmap->block->size());
    return bitmap;
}

// A picture of a locked bitmap is a copy, because the bitmap goes on changing; any other is a view of the converted
// pixels wherever the paint engine takes them as they are.
bool FrameConverter::render(DisplayFrame& frame, const ConversionSettings& settings)
{
    const QVector<unsigned int>& palette = settings.palette;
    frame.versions.palette = settings.versions.palette;
    const QImage& image = frame.image;
    const int width = image.width();
    const bool isLocked = frame.lockedBitmap != nullptr;
    if (image.isNull()) {
        frame.rendered = QImage();
    } else if (image.format() == QImage::Format_Indexed8 && !isGrayRamp(palette)) {
        std::array<std::uint32_t, 256> table;
        std::transform(palette.begin(), palette.end(), table.begin(), [](auto entry) { return entry | 0xFF000000u; });
        const PixelBlock shown = m_blocks.take(imageBytes(image) * 4);
        const auto stores = Kernels::storesFor(shown->size());
        const auto rowPixels = static_cast<std::size_t>(width);
        m_pool->runRows(static_cast<std::size_t>(image.height()), 5 * rowPixels, [&](std::size_t row, std::size_t end) {
            auto* const target = reinterpret_cast<std::uint32_t*>(shown->data()) + row * rowPixels;
            Kernels::lookUp(image.constScanLine(static_cast<int>(row)), target, (end - row) * rowPixels, table.data(),
                            stores);
        });
        frame.rendered = imageOver(shown, width, image.height(), width * 4, QImage::Format_RGB32);
    } else {
        const PixelBlock shown = isLocked ? copyOfLocked(image, frame.swappedShow) : frame.block;
        const QImage::Format format =
            image.format() == QImage::Format_Indexed8 ? QImage::Format_Grayscale8 : image.format();
        frame.rendered = imageOver(shown, width, image.height(), image.bytesPerLine(), format);
    }
    return image.isNull() == frame.rendered.isNull();
}

// Opaque, whatever the host has drawn.
PixelBlock FrameConverter::copyOfLocked(const QImage& image, bool swapped)
{
    const PixelBlock copy = m_blocks.take(imageBytes(image));
    const auto stores = Kernels::storesFor(copy->size());
    const auto rowBytes = static_cast<std::size_t>(image.bytesPerLine());
    m_pool->runRows(static_cast<std::size_t>(image.height()), 2 * rowBytes, [&](std::size_t row, std::size_t end) {
        Kernels::PixelRun run;
        run.source = image.constScanLine(static_cast<int>(row));
        run.target = copy->data() + row * rowBytes;
        run.stores = stores;
        run.reversed = swapped;
        run.pixelBytes = static_cast<std::size_t>(image.depth()) / 8;
        run.count = (end - row) * rowBytes / run.pixelBytes;
        if (run.pixelBytes == 4)
            Kernels::bytes4ToColor(run);
        else if (run.pixelBytes == 3)
            Kernels::bytes3ToColor(run);
        else
            Kernels::copyBytes(run);
    });
    return copy;
}

} // namespace Vistrel
