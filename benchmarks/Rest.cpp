// SPDX-License-Identifier: MIT
// Measures a window while no frame comes.
#include "Shown.h"

#include <benchmark/benchmark.h>

#include <QtCore/QEventLoop>
#include <QtCore/QTimer>

#include <memory>

#include <sys/resource.h>

namespace {

using namespace Vistrel;
using namespace Bench;

constexpr QSize windowSize(1280, 960);
constexpr int settlingMs = 1500;
constexpr int watchedMs = 4000;

void wait(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

/// The number of times that threads of this process have gone to sleep.
double sleeps()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_nvcsw);
}

enum class Source { closed, setUp, running };

void rest(benchmark::State& state, bool inWindow, Source source)
{
    Frames frames(3, 4096, 3072, RGB8);
    std::unique_ptr<Shown> shown;
    if (inWindow)
        shown = std::make_unique<ShownWindow>(windowSize);
    else
        shown = std::make_unique<ShownSurface>(windowSize);
    shown->source->countsChange = false;
    if (shown->showFrames(frames, 20, 1) < 0)
        return state.SkipWithError("a frame was not painted");
    if (source == Source::running)
        shown->source->start();
    shown->source->isOpen = source != Source::closed;
    shown->source->signalAcquisitionStateChange();

    std::vector<double> loads;
    std::vector<double> wakings;
    while (state.KeepRunning()) {
        wait(settlingMs);
        const double cpu = processCpuMilliseconds();
        const double sleepsBefore = sleeps();
        const auto start = Clock::now();
        wait(watchedMs);
        const double elapsed = millisecondsSince(start);
        loads.push_back(100 * (processCpuMilliseconds() - cpu) / elapsed);
        wakings.push_back(1e3 * (sleeps() - sleepsBefore) / elapsed);
        state.SetIterationTime(1e-3 * elapsed);
    }
    state.counters["cpu_percent"] = quantile(loads, 0.5);
    state.counters["wakeups_per_s"] = quantile(wakings, 0.5);
}

void add(const char* name, bool inWindow, Source source)
{
    benchmark::RegisterBenchmark(name, rest, inWindow, source)
        ->Iterations(2)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace

void registerRest()
{
    add("rest/surface/closed", false, Source::closed);
    add("rest/surface/set_up", false, Source::setUp);
    add("rest/window/closed", true, Source::closed);
    add("rest/window/set_up", true, Source::setUp);
    add("rest/window/running", true, Source::running);
}
