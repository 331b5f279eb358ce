// SPDX-License-Identifier: MIT
// Measures the values of pixels, written over a screen that is full of them.
#include "Viewer.h"

#include "widgets/ImageLayer.h"
#include "widgets/PixelOverlay.h"
#include "widgets/PixelSource.h"

#include <benchmark/benchmark.h>

#include <QtGui/QPainter>

#include <string>
#include <vector>

namespace {

using namespace Vistrel;
using namespace Bench;

constexpr QSize screenSize(3840, 2160); // device pixels

class OpenLock : public AbstractLock
{
};

/// A source whose frames can be read at any time.
class OpenSource : public PushSource
{
public:
    ScopedLock getFrameLock(const RawImage&) override { return {new OpenLock}; }
};

/// The processor time of a call.
template <typename Call>
double cpuOf(Call&& call)
{
    const double before = processCpuMilliseconds();
    call();
    return processCpuMilliseconds() - before;
}

/// One iteration is a frame in which all values are others than before.
void writeValues(benchmark::State& state, Format format, PixelValues values, double ratio)
{
    OpenSource source;
    SharedPixelSource shared;
    Frames frames(8, 400, 300, format);
    QImage screen(screenSize, QImage::Format_RGB32);
    screen.setDevicePixelRatio(ratio);
    PixelOverlay overlay(shared);
    overlay.pixelValues = values;
    ImageLayer layer;
    const QPixmap picture = QPixmap::fromImage(QImage(400, 300, QImage::Format_RGB32));

    SurfaceGeometry geometry;
    geometry.setImageSize(picture.size());
    geometry.setViewSize((QSizeF(screenSize) / ratio).toSize());
    geometry.setGrid(ratio, {0, 0});
    PixelSource shown;
    shown.source = &source;
    shown.raw = frames.next();
    shared.set(shown);
    geometry.setScaling(overlay.smallestScaling(screen, geometry));
    const QRect whole({0, 0}, geometry.viewSize());
    const QRect pixels = geometry.pixelsIn(whole);

    std::vector<double> image, reading, writing;
    while (state.KeepRunning()) {
        shown.raw = frames.next();
        shared.set(shown);
        QPainter painter(&screen);
        image.push_back(cpuOf([&] {
            layer.setPicture(picture, {}, Qt::NoBrush);
            layer.paint(painter, whole, geometry);
        }));
        reading.push_back(cpuOf([&] {
            PixVal value;
            ScopedLock lock;
            shown.lock(lock);
            for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
                for (int x = pixels.left(); x <= pixels.right(); ++x)
                    benchmark::DoNotOptimize(shown.value({x, y}, value));
            }
        }));
        overlay.setPicture(picture);
        writing.push_back(cpuOf([&] { overlay.paint(painter, whole, geometry); }));
        state.SetIterationTime(1e-3 * writing.back());
    }
    state.counters["cells"] = pixels.width() * pixels.height();
    state.counters["image_cpu_ms"] = quantile(image, 0.5);
    state.counters["reading_cpu_ms"] = quantile(reading, 0.5);
    state.counters["values_cpu_ms"] = quantile(writing, 0.5); // with their reading
    state.counters["values_p99_cpu_ms"] = quantile(writing, 0.99);
}

} // namespace

void registerValues()
{
    for (const auto& [name, values] :
         {std::pair("with_position", PixelValues::WithPosition), std::pair("value_only", PixelValues::ValueOnly)}) {
        for (const Format format : {Mono8, Mono16, RGB8, RGB16}) {
            for (const double ratio : {1.0, 1.5, 2.0}) {
                const std::string at = "/ratio_" + std::to_string(ratio).substr(0, 3);
                benchmark::RegisterBenchmark((std::string("values/") + name + '/' + formatName(format) + at).c_str(),
                                             writeValues, format, values, ratio)
                    ->Iterations(100)
                    ->UseManualTime()
                    ->Unit(benchmark::kMillisecond);
            }
        }
    }
}
