// SPDX-License-Identifier: MIT
// Measures painting on screens with several device pixels a logical one.
#include "Measure.h"
#include "Turns.h"

#include <Vistrel/Surface.h>

#include <benchmark/benchmark.h>

#include <QtGui/QImage>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Vistrel;
using namespace Bench;

constexpr QSize viewSize(1280, 960);
constexpr double ratios[] = {1.0, 1.5, 2.0};

QImage noise(QImage::Format format)
{
    QImage image(4096, 3072, format);
    std::uint32_t state = 1;
    for (int y = 0; y < image.height(); ++y) {
        uchar* const line = image.scanLine(y);
        for (int i = 0; i < image.bytesPerLine(); ++i)
            line[i] = static_cast<uchar>((state = state * 1664525u + 1013904223u) >> 24);
    }
    return image;
}

/// Paints the same picture for screens of each ratio by turns.
void paint(benchmark::State& state, QImage::Format format, double zoom)
{
    Surface surface;
    surface.resize(viewSize);
    surface.setPixmap(QPixmap::fromImage(noise(format), Qt::NoFormatConversion));
    if (zoom > 0)
        surface.setScaling(zoom);
    std::vector<Contender> screens;
    for (const double ratio : ratios) {
        auto screen = std::make_shared<QImage>((QSizeF(viewSize) * ratio).toSize(), QImage::Format_RGB32);
        screen->setDevicePixelRatio(ratio);
        screen->fill(0);
        Contender contender;
        contender.name = std::to_string(qRound(100 * ratio));
        contender.call = [&surface, screen] {
            surface.render(screen.get());
            return true;
        };
        screens.push_back(contender);
    }
    if (!runByTurns(state, screens))
        return;
    for (std::size_t i = 0; i < screens.size(); ++i) {
        state.counters["ms_at_" + screens[i].name] = quantile(screens[i].elapsed, 0.5);
        state.counters["pixel_cost_at_" + screens[i].name] =
            medianRatio(screens[i].cpu, screens[0].cpu) / (ratios[i] * ratios[i]);
    }
}

void add(const char* name, QImage::Format format, double zoom)
{
    benchmark::RegisterBenchmark(name, paint, format, zoom)
        ->Iterations(40)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace

void registerRatios()
{
    add("paint/Mono8/fit", QImage::Format_Grayscale8, 0);
    add("paint/RGB8/fit", QImage::Format_RGBX8888, 0);
    add("paint/Mono8/100", QImage::Format_Grayscale8, 1);
    add("paint/RGB8/100", QImage::Format_RGBX8888, 1);
    add("paint/Mono8/800", QImage::Format_Grayscale8, 8);
    add("paint/RGB8/800", QImage::Format_RGBX8888, 8);
}
