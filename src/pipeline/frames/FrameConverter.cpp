// SPDX-License-Identifier: MIT
// From a delivered frame to a complete picture, in recycled memory.
#include "pipeline/frames/FrameConverter.h"

#include "base/LentMemory.h"
#include "pipeline/frames/ColorPalette.h"
#include "pipeline/frames/Conversion.h"

#include <algorithm>
#include <utility>

namespace Vistrel {

namespace {

std::size_t imageBytes(const QImage& image)
{
    return static_cast<std::size_t>(image.bytesPerLine()) * static_cast<std::size_t>(image.height());
}

// Mosaics are not demosaiced into a locked bitmap.
Stages stagesInto(const std::shared_ptr<LockedBitmap>& bitmap, Stages stages)
{
    if (bitmap)
        stages.set(Stage::Mosaic, nullptr);
    return stages;
}

} // namespace

bool needsConversion(const DisplayFrame& frame, const ConversionSettings& settings)
{
    const Stages now = stagesInto(settings.lockedBitmap, settings.stages);
    const Stages before = stagesInto(settings.lockedBitmap, frame.stages);
    return frame.delivered.data && frame.isDrawn && now.convertOtherwise(before, frame.delivered.format);
}

bool needsPalette(const DisplayFrame& frame, const ConversionSettings& settings)
{
    return frame.stages.get<ColorPalette>() != settings.stages.get<ColorPalette>() && !frame.rendered.isNull() &&
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
    frame->stages = settings.stages;
    const Stages stages = stagesInto(settings.lockedBitmap, settings.stages);
    frame->effective.format = stages.format(delivered.format);
    if (!isConvertible(frame->effective))
        return nullptr;
    const bool isConverted =
        settings.lockedBitmap ? convertLocked(*frame, stages, settings.lockedBitmap) : convertFree(*frame, stages);
    return isConverted ? frame : nullptr;
}

bool FrameConverter::convertFree(DisplayFrame& frame, const Stages& stages)
{
    const RawImage& raw = frame.effective;
    const int kind = targetKind(raw.format);
    frame.block = m_blocks.take(raw.width * raw.height * (kind == 32 ? 4 : 1));
    QImage target;
    if (!prepareTarget(target, *frame.block, raw.width, raw.height, kind))
        return false;
    fillTarget(*m_pool, target, raw, stages);
    frame.image = imageOver(frame.block, target.size(), target.format());
    return !frame.image.isNull();
}

bool FrameConverter::convertLocked(DisplayFrame& frame, const Stages& stages,
                                   const std::shared_ptr<LockedBitmap>& locked)
{
    LockedBitmap& bitmap = *locked;
    const RawImage& raw = frame.effective;
    if (raw.data == bitmap.description.data) {
        // The host drew into the bitmap: only the description can be wrong.
        if (raw.width != bitmap.description.width || raw.height != bitmap.description.height ||
            formatDepth(raw.format) != formatDepth(bitmap.description.format))
            return false;
        frame.swappedShow = isColor(raw.format) && (raw.format & formatOrderMask) != OrderBGR;
    } else if (fitsTarget(bitmap.target, raw)) {
        fillTarget(*m_pool, bitmap.target, raw, stages);
    } else {
        return false;
    }
    frame.lockedBitmap = locked;
    frame.block = bitmap.block;
    frame.image = imageOver(frame.block, bitmap.target.size(), bitmap.target.format());
    return !frame.image.isNull();
}

std::shared_ptr<DisplayFrame> FrameConverter::renderAgain(const DisplayFrame& frame, const ConversionSettings& settings)
{
    auto again = std::make_shared<DisplayFrame>(frame);
    if (!again->isDrawn)
        again->effective = again->lockedBitmap->description; // the bitmap is seen from now on
    return render(*again, settings) ? again : nullptr;
}

std::shared_ptr<DisplayFrame> FrameConverter::showLocked(const DisplayFrame& frame,
                                                         std::shared_ptr<LockedBitmap> bitmap)
{
    auto shown = std::make_shared<DisplayFrame>(frame);
    shown->block = bitmap->block;
    shown->image = imageOver(bitmap->block, bitmap->target.size(), bitmap->target.format());
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

// The picture of a locked bitmap is a copy, because the bitmap changes. Any other picture is a view of the converted
// pixels if Qt's paint engine takes them without a conversion.
bool FrameConverter::render(DisplayFrame& frame, const ConversionSettings& settings)
{
    const auto palette = settings.stages.get<ColorPalette>();
    frame.stages.set(Stage::Palette, palette);
    const QImage& image = frame.image;
    if (image.isNull()) {
        frame.rendered = QImage();
    } else if (image.format() == QImage::Format_Indexed8 && palette && !palette->isGray()) {
        const PixelBlock shown = m_blocks.take(imageBytes(image) * 4);
        palette->lookUp(*m_pool, image, *shown);
        frame.rendered = imageOver(shown, image.size(), QImage::Format_RGB32);
    } else {
        const PixelBlock shown = frame.lockedBitmap ? copyOfLocked(image, frame.swappedShow) : frame.block;
        frame.rendered =
            imageOver(shown, image.size(),
                      image.format() == QImage::Format_Indexed8 ? QImage::Format_Grayscale8 : image.format());
    }
    return image.isNull() == frame.rendered.isNull();
}

// The copy is opaque, whatever the host has drawn.
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
