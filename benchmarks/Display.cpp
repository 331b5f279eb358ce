// SPDX-License-Identifier: MIT
// Measures the complete stream: frames a second, latency, gaps of the user interface, memory.
#include "Measure.h"
#include "Viewer.h"

#include "pipeline/frames/FrameConverter.h"
#include "pipeline/frames/MosaicFilter.h"

#include <benchmark/benchmark.h>

#include <QtCore/QEventLoop>
#include <QtCore/QTimer>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <malloc.h>

namespace {

using namespace Vistrel;
using namespace Bench;

struct Shape
{
    std::size_t width;
    std::size_t height;
    Format format;
};

std::string text(const Shape& shape)
{
    return Bench::text(shape.format, {shape.width, shape.height});
}

bool isMosaic(Format format)
{
    return (format & formatPatternMask) != 0;
}

/// A window that shows frames of one shape and has shown some already.
struct Warm
{
    explicit Warm(const Shape& shape) : frames(3, shape.width, shape.height, shape.format)
    {
        viewer.stream->setBayerDemosaicEnabled(isMosaic(shape.format));
        good = viewer.showFrames(frames, 20).good;
    }

    Frames frames;
    Viewer viewer;
    bool good = false;
};

/// Median time of a conversion as in the stream, after the same pause as between the frames of a paced run.
double conversionTime(Frames& frames, int pause)
{
    ConversionSettings settings;
    settings.stages.set(Stage::Mosaic, std::make_shared<const MosaicFilter>(true));
    FrameConverter converter;
    std::shared_ptr<DisplayFrame> shown; // in use during the next conversion, as on a surface
    std::vector<double> times;
    for (int i = 0; i < 60; ++i) {
        QEventLoop loop;
        QTimer::singleShot(pause, Qt::PreciseTimer, &loop, &QEventLoop::quit);
        loop.exec();
        const auto start = Clock::now();
        shown = converter.convert(frames.next(), true, settings);
        converter.render(*shown, settings);
        times.push_back(millisecondsSince(start));
    }
    return quantile(times, 0.5);
}

/// One iteration is one frame, and all of them make one run.
void show(benchmark::State& state, const Shape& shape, int pause)
{
    Warm warm(shape);
    while (state.KeepRunningBatch(state.max_iterations)) {
        const auto count = static_cast<std::size_t>(state.max_iterations);
        const Viewer::Run run = warm.viewer.showFrames(warm.frames, count, pause);
        if (!warm.good || !run.good)
            return state.SkipWithError("a frame was not painted");
        state.SetIterationTime(1e-3 * run.milliseconds);
        if (pause == 0) {
            state.counters["frames_per_s"] = 1e3 * static_cast<double>(count) / run.milliseconds;
        } else {
            const double conversion = conversionTime(warm.frames, pause);
            state.counters["conversion_median_ms"] = conversion;
            state.counters["beyond_conversion_ms"] = quantile(run.beginnings, 0.5) - conversion;
        }
        state.counters["cpu_ms_per_frame"] = run.cpuMilliseconds / static_cast<double>(count);
        state.counters["paint_median_ms"] = quantile(run.paintings, 0.5);
        state.counters["to_paint_median_ms"] = quantile(run.beginnings, 0.5);
        state.counters["latency_median_ms"] = quantile(run.latencies, 0.5);
        state.counters["latency_p99_ms"] = quantile(run.latencies, 0.99);
    }
}

/// The times between the ticks of a timer of the user interface that is due every millisecond.
class Ticks : public QTimer
{
public:
    Ticks()
    {
        setTimerType(Qt::PreciseTimer);
        callOnTimeout(this, [this] {
            const auto now = Clock::now();
            m_gaps.push_back(Milliseconds(now - m_last).count());
            m_last = now;
        });
    }

    /// Runs the event loop for `milliseconds` and returns the gaps.
    std::vector<double> watch(int milliseconds)
    {
        QEventLoop loop;
        QTimer::singleShot(milliseconds, Qt::PreciseTimer, &loop, &QEventLoop::quit);
        m_gaps.clear();
        m_last = Clock::now();
        start(1);
        loop.exec();
        stop();
        m_gaps.push_back(millisecondsSince(m_last)); // cut short by the end of the watch
        return m_gaps;
    }

private:
    Clock::time_point m_last;
    std::vector<double> m_gaps;
};

constexpr int watched = 2000; // milliseconds

/// Watches the ticks without a stream, and then while `busy` keeps one busy.
void gaps(benchmark::State& state, const Shape& shape, const std::function<bool(Warm&)>& busy)
{
    while (state.KeepRunning()) {
        Ticks ticks;
        const auto quiet = ticks.watch(watched);
        Warm warm(shape);
        if (!warm.good || !busy(warm))
            return state.SkipWithError("the stream does not run");
        const quint64 converted = warm.viewer.stream->framesConverted();
        const auto start = Clock::now();
        const auto gapsSeen = ticks.watch(watched);
        const double seconds = 1e-3 * millisecondsSince(start);
        state.SetIterationTime(seconds);
        state.counters["conversions_per_s"] =
            static_cast<double>(warm.viewer.stream->framesConverted() - converted) / seconds;
        state.counters["longest_gap_ms"] = quantile(gapsSeen, 1);
        state.counters["p99_gap_ms"] = quantile(gapsSeen, 0.99);
        state.counters["no_stream_longest_gap_ms"] = quantile(quiet, 1);
        state.counters["no_stream_p99_gap_ms"] = quantile(quiet, 0.99);
    }
}

/// Counts the allocations and page faults of frames of unchanged size, once the stream is warm.
void memory(benchmark::State& state, const Shape& shape, bool palette)
{
    const SmallPages smallPages;
    malloc_trim(0); // releases the memory of the previous cases
    Warm warm(shape);
    if (palette) {
        QVector<unsigned int> inverted(256);
        for (unsigned level = 0; level < 256; ++level)
            inverted[static_cast<int>(level)] = 0xFFFFFFFFu - level * 0x010101u;
        warm.viewer.stream->setColorPalette(inverted);
        warm.good = warm.viewer.showFrames(warm.frames, 20).good && warm.good;
    }
    while (state.KeepRunningBatch(state.max_iterations)) {
        const auto count = static_cast<std::size_t>(state.max_iterations);
        const double resident = residentKibibytes();
        const Viewer::Run run = warm.viewer.showFrames(warm.frames, count);
        const double residentAfter = residentKibibytes();
        if (!warm.good || !run.good)
            return state.SkipWithError("a frame was not painted");
        state.SetIterationTime(1e-3 * run.milliseconds);
        state.counters["page_faults"] = static_cast<double>(run.pageFaults);
        state.counters["large_allocations"] = static_cast<double>(run.largeAllocations);
        state.counters["rss_before_MiB"] = resident / 1024;
        state.counters["rss_after_MiB"] = residentAfter / 1024;
        state.counters["rss_growth_KiB"] = residentAfter - resident;
    }
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

void registerDisplay()
{
    for (const Shape& shape :
         {Shape{4096, 3072, Mono8}, Shape{4096, 3072, RGB8}, Shape{1920, 1080, Mono8}, Shape{1920, 1080, RGB8}}) {
        add("display/back_to_back/" + text(shape), 300, show, shape, 0);
        add("display/paced/" + text(shape), 150, show, shape, 15);
    }

    const Shape small{640, 480, Mono8};
    add("gap/source_blocks", 1, gaps, small, [](Warm& warm) { return warm.viewer.source.block(); });
    for (const Format format : {Mono8, RGB8, BayerRG8}) {
        const Shape large{6000, 4000, format};
        add("gap/converting/" + text(large), 1, gaps, large, [](Warm& warm) {
            warm.viewer.source.runFreely(&warm.frames);
            return true;
        });
    }

    const Shape full{4096, 3072, Mono8};
    for (const Format format : {Mono8, RGB8, BayerRG8}) {
        const Shape shape{full.width, full.height, format};
        add("memory/" + text(shape), 300, memory, shape, false);
    }
    add("memory/palette/" + text(full), 300, memory, full, true);
    add("memory/" + text(small), 10000, memory, small, false);
}
