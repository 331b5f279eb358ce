// SPDX-License-Identifier: MIT
// Measures the main window: live frames beside a bare surface, commands.
#include "Shown.h"

#include <benchmark/benchmark.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtCore/QTimer>
#include <QtGui/QMouseEvent>
#include <QtWidgets/QAction>
#include <QtWidgets/QToolBar>

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Vistrel;
using namespace Bench;
using std::chrono::milliseconds;

constexpr QSize windowSize(1280, 960);

/// One iteration is a round of frames in a main window and one on a bare surface of the same size. Only one of the two
/// exists at a time, so that no timer of the other takes part, and each allocates its memory anew.
void live(benchmark::State& state, std::size_t width, std::size_t height, Format format, const QPoint& pointed)
{
    constexpr int warmUp = 20;
    constexpr int count = 60;
    constexpr int interval = 16;
    Frames frames(3, width, height, format);
    const QSize area = ShownWindow(windowSize).surface->size();
    std::vector<double> inWindow;
    std::vector<double> bare;
    bool isGood = true;
    const auto show = [&](Shown&& shown, std::vector<double>& costs) {
        shown.surface->setActivePixel(pointed);
        isGood = isGood && shown.showFrames(frames, warmUp, 1) >= 0;
        costs.push_back(shown.showFrames(frames, count, interval));
        isGood = isGood && costs.back() >= 0 && shown.surface->size() == area;
    };
    for (bool isWindowFirst = true; state.KeepRunning(); isWindowFirst = !isWindowFirst) {
        const auto start = Clock::now();
        if (isWindowFirst)
            show(ShownWindow(windowSize), inWindow);
        show(ShownSurface(area), bare);
        if (!isWindowFirst)
            show(ShownWindow(windowSize), inWindow);
        if (!isGood)
            return state.SkipWithError("a frame was not painted, or the areas differ");
        state.SetIterationTime(1e-3 * millisecondsSince(start));
    }
    state.counters["window_cpu_ms_per_frame"] = quantile(inWindow, 0.5);
    state.counters["bare_cpu_ms_per_frame"] = quantile(bare, 0.5);
    state.counters["overhead_percent"] = 100 * (medianRatio(inWindow, bare) - 1);
}

void click(QWidget& button)
{
    const QPoint place = button.rect().center();
    for (const auto& [type, buttons] :
         {std::pair(QEvent::MouseButtonPress, Qt::LeftButton), std::pair(QEvent::MouseButtonRelease, Qt::NoButton)})
        QCoreApplication::postEvent(
            &button, new QMouseEvent(type, place, button.mapToGlobal(place), Qt::LeftButton, buttons, Qt::NoModifier));
}

/// One iteration is a click on Start, which must end with Stop enabled, and one on Stop for the way back.
void start(benchmark::State& state, milliseconds startTakes, bool isLive)
{
    Frames frames(3, 4096, 3072, RGB8);
    ShownWindow shown(windowSize);
    shown.source->startTakes = startTakes;
    const auto* const bar = shown.window->findChild<QToolBar*>(QStringLiteral("acquisitionToolBar"));
    auto* const startAction = shown.window->findChild<QAction*>(QStringLiteral("actionStart"));
    auto* const stopAction = shown.window->findChild<QAction*>(QStringLiteral("actionStop"));
    QWidget* const startButton = bar ? bar->widgetForAction(startAction) : nullptr;
    QWidget* const stopButton = bar ? bar->widgetForAction(stopAction) : nullptr;
    if (!startButton || !stopButton)
        return state.SkipWithError("there is no button");
    if (shown.showFrames(frames, 20, 1) < 0)
        return state.SkipWithError("a frame was not painted");

    QEventLoop loop;
    QTimer watchdog;
    watchdog.setInterval(10000);
    watchdog.callOnTimeout(&loop, [&] { loop.exit(1); });
    const QAction* awaited = nullptr;
    Clock::time_point enabled;
    for (QAction* const action : {startAction, stopAction}) {
        QObject::connect(action, &QAction::changed, &loop, [&, action] {
            if (action != awaited || !action->isEnabled())
                return;
            awaited = nullptr;
            enabled = Clock::now();
            loop.quit();
        });
    }
    const auto clickAndAwait = [&](QWidget& button, const QAction* action) {
        awaited = action;
        watchdog.start();
        click(button);
        return loop.exec() == 0;
    };
    QTimer ticks;
    ticks.setTimerType(Qt::PreciseTimer);
    ticks.callOnTimeout(&loop, [&] { shown.source->push(frames.next()); });
    if (isLive)
        ticks.start(33);

    std::vector<double> toStart;
    std::vector<double> toEnabled;
    while (state.KeepRunning()) {
        const auto clicked = Clock::now();
        if (!clickAndAwait(*startButton, stopAction))
            return state.SkipWithError("Stop was not enabled");
        toStart.push_back(Milliseconds(shown.source->entered - clicked).count());
        toEnabled.push_back(Milliseconds(enabled - shown.source->returned).count());
        state.SetIterationTime(1e-3 * millisecondsSince(clicked));
        if (!clickAndAwait(*stopButton, startAction))
            return state.SkipWithError("Start was not enabled");
        // Shifts the next click to another moment between two frames.
        const auto next = Clock::now() + milliseconds(20 + 7 * (toStart.size() % 5));
        waitUntil([&] { return Clock::now() >= next; });
    }
    state.counters["click_to_start_median_ms"] = quantile(toStart, 0.5);
    state.counters["click_to_start_p90_ms"] = quantile(toStart, 0.9);
    state.counters["return_to_enabled_median_ms"] = quantile(toEnabled, 0.5);
    state.counters["return_to_enabled_p90_ms"] = quantile(toEnabled, 0.9);
}

template <typename... Arguments>
void add(const std::string& name, benchmark::IterationCount iterations, Arguments&&... arguments)
{
    benchmark::RegisterBenchmark(name.c_str(), std::forward<Arguments>(arguments)...)
        ->Iterations(iterations)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace

void registerWindow()
{
    const QPoint nowhere(-1, -1);
    const QPoint somewhere(300, 200);
    for (const auto& [width, height] : {std::pair(4096, 3072), std::pair(640, 480)}) {
        for (const Format format : {Mono8, RGB8}) {
            const std::string shape =
                std::string(formatName(format)) + '/' + std::to_string(width) + 'x' + std::to_string(height);
            add("window/" + shape, 6, live, width, height, format, nowhere);
            add("window/pointed/" + shape, 6, live, width, height, format, somewhere);
        }
    }
    add("command/start", 40, start, milliseconds(0), false);
    add("command/start/live", 40, start, milliseconds(0), true);
    add("command/start/slow", 40, start, milliseconds(40), false);
}
