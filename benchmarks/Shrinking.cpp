// SPDX-License-Identifier: MIT
// Measures painting by the mean and the maximum of the pixels, beside reading them once.
#include "Measure.h"
#include "Turns.h"

#include "pipeline/frames/CopyPool.h"
#include "pipeline/pixels/ShrinkKernels.h"

#include <Vistrel/Surface.h>

#include <benchmark/benchmark.h>

#include <QtGui/QImage>
#include <QtGui/QPixmap>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace {

using namespace Vistrel;
using namespace Bench;

constexpr Size size = {4096, 3072};

/// Reads all bytes on the threads that shrink.
void readOnce(CopyPool& pool, const QImage& image)
{
    const auto stride = static_cast<std::size_t>(image.bytesPerLine());
    pool.runRows(size.height, stride, [&](std::size_t row, std::size_t end) {
        static thread_local std::uint8_t line[4 * size.width];
        constexpr std::size_t few = 8;
        for (; row < end; row += few)
            ShrinkKernels::maximumOfRows(
                {image.constScanLine(static_cast<int>(row)), stride, std::min(few, end - row), stride}, false, line);
    });
}

/// Fits three pictures by turns into a view of 1280 x 960.
void shrink(benchmark::State& state, Format format)
{
    Frames frames(3, size.width, size.height, format);
    std::vector<QImage> images;
    std::vector<QPixmap> pictures;
    for (int i = 0; i < 3; ++i) {
        const auto* const pixels = static_cast<const uchar*>(frames.next().data);
        images.emplace_back(pixels, int(size.width), int(size.height),
                            format == Mono8 ? QImage::Format_Grayscale8 : QImage::Format_RGBX8888);
        pictures.push_back(QPixmap::fromImage(images.back(), Qt::NoFormatConversion));
    }
    Surface surface;
    surface.resize(1280, 960);
    QImage screen(surface.size(), QImage::Format_RGB32);
    screen.fill(0);
    const std::shared_ptr<CopyPool> pool = CopyPool::shared();
    int turn = 0;
    const auto paint = [&](ShrinkMode mode) {
        return [&, mode] {
            surface.setShrinkMode(mode);
            surface.setPixmap(pictures[std::size_t(++turn % 3)]);
            surface.render(&screen);
            return true;
        };
    };
    std::vector<Contender> contenders = {
        {"mean", paint(ShrinkMode::Mean), {}, {}},
        {"maximum", paint(ShrinkMode::Maximum), {}, {}},
        {"sample", paint(ShrinkMode::Sample), {}, {}},
        {"read", [&] { return readOnce(*pool, images[std::size_t(++turn % 3)]), true; }, {}, {}},
    };
    if (!runByTurns(state, contenders))
        return;
    reportTimes(state, contenders[0], {&contenders[1], &contenders[2], &contenders[3]});
    state.counters["mean_to_read"] = medianRatio(contenders[0].elapsed, contenders[3].elapsed);
    state.counters["maximum_to_read"] = medianRatio(contenders[1].elapsed, contenders[3].elapsed);
}

} // namespace

void registerShrinking()
{
    for (const Format format : {Mono8, RGBa8})
        benchmark::RegisterBenchmark(("shrink/" + text(format, size)).c_str(), shrink, format)
            ->Iterations(60)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
}
