// SPDX-License-Identifier: MIT
// Measures zooming and dragging in the main window, beside Qt's own painting.
#include "Shown.h"

#include <Vistrel/SurfaceScrollArea.h>

#include <benchmark/benchmark.h>

#include <QtCore/QCoreApplication>
#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>
#include <QtGui/QWheelEvent>

#include <functional>
#include <string>
#include <vector>

namespace {

using namespace Vistrel;
using namespace Bench;

constexpr int warmUp = 4; // steps of each block that are not counted
constexpr int blockSize = 24;
constexpr QSize windowSize(1900, 1000);

/// A part of a picture and the place where it is painted.
struct Part
{
    QRectF target;
    QRectF source;
};

/// Paints with Qt alone.
class PlainView : public QWidget
{
public:
    QPixmap pixmap;
    Part part;
    quint64 paintings = 0;

protected:
    void paintEvent(QPaintEvent*) override
    {
        ++paintings;
        QPainter(this).drawPixmap(part.target, pixmap, part.source);
    }
};

/// The mean milliseconds of a repaint, of each block: the steps of a block need not cost the same.
struct Costs
{
    void addBlock()
    {
        cpu.push_back(0);
        elapsed.push_back(0);
    }

    std::vector<double> cpu;
    std::vector<double> elapsed;
};

/// Adds to the last block the time from `provoke`, which must make a widget paint, until all events have been handled.
/// The first steps do not count.
bool timeRepaint(Costs& costs, int step, const quint64& paintings, const std::function<void()>& provoke)
{
    const quint64 before = paintings;
    const double cpu = processCpuMilliseconds();
    const auto start = Clock::now();
    provoke();
    const bool isPainted = waitUntil([&] { return paintings != before; });
    QCoreApplication::processEvents();
    if (step >= warmUp) {
        costs.elapsed.back() += millisecondsSince(start) / (blockSize - warmUp);
        costs.cpu.back() += (processCpuMilliseconds() - cpu) / (blockSize - warmUp);
    }
    return isPainted;
}

/// Zooms in and out by turns.
void turnWheel(Surface& surface, int step)
{
    const QPoint place = surface.rect().center();
    QWheelEvent event(place, surface.mapToGlobal(place), QPoint(), QPoint(0, step % 2 == 0 ? 120 : -120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&surface, &event);
}

void sendMouse(Surface& surface, QEvent::Type type, const QPoint& moved)
{
    const QPoint place = surface.rect().center() + moved;
    QMouseEvent event(type, place, surface.mapToGlobal(place),
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&surface, &event);
}

/// Drags back and forth, never to the same place twice in a row.
void drag(Surface& surface, int step)
{
    constexpr int turn = 10;
    const int moved = step % (2 * turn) < turn ? step % turn : turn - step % turn;
    if (step == 0)
        sendMouse(surface, QEvent::MouseButtonPress, QPoint());
    sendMouse(surface, QEvent::MouseMove, QPoint(7, 5) * (moved + 1));
    if (step == blockSize - 1)
        sendMouse(surface, QEvent::MouseButtonRelease, QPoint(7, 5) * (moved + 1));
}

/// One iteration is a block of steps in a main window and the same steps in a plain view. Only one of the two exists at
/// a time, and each allocates its memory anew.
void interact(benchmark::State& state, Format format, double scaling, void (*send)(Surface& surface, int step))
{
    Frames frames(1, 4096, 3072, format);
    Costs costs;
    Costs plainCosts;
    quint64 paintings = 0;
    while (state.KeepRunning()) {
        const auto start = Clock::now();
        costs.addBlock();
        plainCosts.addBlock();
        std::vector<Part> parts;
        QPixmap pixmap;
        QSize area;
        {
            ShownWindow shown(windowSize);
            Surface& surface = *shown.surface;
            if (shown.showFrames(frames, 1, 1) < 0)
                return state.SkipWithError("the frame was not painted");
            shown.stream->setRefreshEnabled(false); // only the input makes it paint
            shown.window->surfaceScrollArea()->setZoomTo(scaling, QPoint(-1, -1));
            settle();
            pixmap = surface.pixmap();
            area = surface.size();
            for (int step = 0; step < blockSize; ++step) {
                const quint64 before = shown.paintings;
                if (!timeRepaint(costs, step, shown.paintings, [&] { send(surface, step); }))
                    return state.SkipWithError("the window was not painted");
                paintings += shown.paintings - before;
                parts.push_back({surface.scaledRect().intersected(surface.rect()), surface.visibleImageRectF()});
            }
            if (shown.window->size() != windowSize || surface.size() != area)
                return state.SkipWithError("the window has not the size that it was given");
        }
        PlainView plain;
        plain.pixmap = pixmap;
        plain.resize(area);
        plain.show();
        settle();
        for (int step = 0; step < blockSize; ++step) {
            const auto show = [&] {
                plain.part = parts[static_cast<std::size_t>(step)];
                plain.update();
            };
            if (!timeRepaint(plainCosts, step, plain.paintings, show) || plain.size() != area)
                return state.SkipWithError("the plain view was not painted");
        }
        state.SetIterationTime(1e-3 * millisecondsSince(start));
    }
    state.counters["repaint_cpu_ms"] = quantile(costs.cpu, 0.5);
    state.counters["repaint_ms"] = quantile(costs.elapsed, 0.5);
    state.counters["plain_cpu_ms"] = quantile(plainCosts.cpu, 0.5);
    state.counters["plain_ms"] = quantile(plainCosts.elapsed, 0.5);
    state.counters["cpu_ratio"] = medianRatio(costs.cpu, plainCosts.cpu);
    state.counters["ratio"] = medianRatio(costs.elapsed, plainCosts.elapsed);
    state.counters["repaints_per_input"] =
        static_cast<double>(paintings) / static_cast<double>(state.iterations() * blockSize);
}

template <typename... Arguments>
void add(const std::string& name, Arguments&&... arguments)
{
    benchmark::RegisterBenchmark(name.c_str(), interact, std::forward<Arguments>(arguments)...)
        ->Iterations(10)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace

void registerInteraction()
{
    for (const Format format : {Mono8, RGB8}) {
        const std::string name = std::string("/") + formatName(format) + '/';
        for (const int percent : {25, 100, 800}) {
            add("zoom" + name + std::to_string(percent) + "_percent", format, percent / 100.0, turnWheel);
            add("drag" + name + std::to_string(percent) + "_percent", format, percent / 100.0, drag);
        }
        add("drag" + name + "overlay", format, Surface::scalingMax(), drag);
    }
}
