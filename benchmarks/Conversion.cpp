// SPDX-License-Identifier: MIT
// Conversion and rendering times, each beside the memory limit of the same bytes in the same run.
#include "Measure.h"

#include "pipeline/Conversion.h"
#include "pipeline/FrameConverter.h"

#include <benchmark/benchmark.h>

#include <QtGui/QPixmap>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <string>

namespace {

using namespace Vistrel;
using namespace Bench;

constexpr std::size_t width = 4096;
constexpr std::size_t height = 3072;
constexpr std::size_t pixelCount = width * height;

/// Copies plain memory on the same threads that convert. Bytes are handed out in small pieces to whoever asks next, as
/// rows are, which measures faster than one piece for each thread.
class MemoryLimit
{
public:
    explicit MemoryLimit(std::size_t bytesMoved)
        : m_pool(CopyPool::shared()), m_source(bytesMoved / 2), m_target(bytesMoved / 2)
    {
    }

    void run()
    {
        constexpr std::size_t piece = 64 * 1024;
        std::atomic<std::size_t> next{0};
        m_pool->run([&](std::size_t, std::size_t) {
            for (std::size_t at; (at = next.fetch_add(piece)) < m_source.size();)
                std::memcpy(m_target.data() + at, m_source.data() + at, std::min(piece, m_source.size() - at));
        });
        benchmark::ClobberMemory();
    }

private:
    std::shared_ptr<CopyPool> m_pool;
    PageMemory m_source;
    PageMemory m_target;
};

template <typename Call>
double time(Call&& call)
{
    const auto start = Clock::now();
    call();
    return millisecondsSince(start);
}

/// Times the case and the limit by turns, so that whatever else the machine does meets both.
template <typename Call>
void measure(benchmark::State& state, double bytesReadPerPixel, double bytesWrittenPerPixel, Call&& call)
{
    const double bytesMoved = (bytesReadPerPixel + bytesWrittenPerPixel) * static_cast<double>(pixelCount);
    MemoryLimit limit(static_cast<std::size_t>(bytesMoved));
    bool good = true;
    for (int warmUp = 0; warmUp < 5; ++warmUp) {
        good = call() && good;
        limit.run();
    }

    std::vector<double> caseTimes;
    std::vector<double> limitTimes;
    for (auto _ : state) {
        caseTimes.push_back(time([&] { good = call() && good; }));
        limitTimes.push_back(time([&] { limit.run(); }));
        state.SetIterationTime(1e-3 * caseTimes.back());
    }
    if (!good)
        state.SkipWithError("the conversion failed");

    const double median = quantile(caseTimes, 0.5);
    const double limitMedian = quantile(limitTimes, 0.5);
    state.counters["median_ms"] = median;
    state.counters["limit_ms"] = limitMedian;
    state.counters["share_of_limit"] = limitMedian / median;
    state.counters["share_of_limit_p10"] = quantile(limitTimes, 0.1) / quantile(caseTimes, 0.1);
    state.counters["gigabytes_per_s"] = 1e-6 * bytesMoved / median;
}

/// What a frame costs to read: of a packed row only the first five eighths hold pixels.
double bytesRead(Format format)
{
    return (format & formatPackingMask) != 0 ? 1.25 : static_cast<double>(bytesPerPixel(format));
}

double bytesConverted(Format format)
{
    return targetKind(format) == 32 ? 4 : 1;
}

void convert(benchmark::State& state, Format format)
{
    Frames frames(2, width, height, format);
    const auto pool = CopyPool::shared();
    QImage target;
    PixelBuffer buffer;
    measure(state, bytesRead(format), bytesConverted(format),
            [&] { return convertFrame(*pool, target, buffer, frames.next()); });
}

QVector<unsigned int> invertedPalette()
{
    auto palette = grayRamp();
    std::reverse(palette.begin(), palette.end());
    return palette;
}

/// The toolkit's way from a converted image to a picture: a copy with its palette, then a fresh pixmap.
void renderByToolkit(benchmark::State& state, Format format, const QVector<unsigned int>& palette)
{
    Frames frames(1, width, height, format);
    QImage target;
    PixelBuffer buffer;
    if (!convertFrame(*CopyPool::shared(), target, buffer, frames.next()))
        return state.SkipWithError("the conversion failed");
    measure(state, bytesConverted(format), 4,
            [&] { return !QPixmap::fromImage(imageForRender(target, palette, false)).isNull(); });
}

/// The stream's way from a delivered frame to a picture. The previous picture stays in use meanwhile, as on a surface.
void convertAndRender(benchmark::State& state, Format format, const ConversionSettings& settings)
{
    Frames frames(2, width, height, format);
    FrameConverter converter;
    std::shared_ptr<DisplayFrame> shown;
    const bool lookedUp = targetKind(format) == 8 && !settings.palette.isEmpty();
    measure(state, bytesRead(format) + (lookedUp ? 1 : 0), bytesConverted(format) + (lookedUp ? 4 : 0), [&] {
        shown = converter.convert(frames.next(), true, settings);
        return shown && !shown->pixmap.isNull();
    });
}

/// The rendering alone of a converted frame in another palette.
void renderAgain(benchmark::State& state)
{
    Frames frames(1, width, height, Mono8);
    FrameConverter converter;
    const auto converted = converter.convert(frames.next(), true, {});
    if (!converted)
        return state.SkipWithError("the conversion failed");
    const auto palette = invertedPalette();
    std::shared_ptr<DisplayFrame> shown;
    measure(state, 1, 4, [&] {
        shown = converter.renderAgain(*converted, palette);
        return shown && !shown->pixmap.isNull();
    });
}

template <typename... Arguments>
void add(const std::string& name, Arguments&&... arguments)
{
    benchmark::RegisterBenchmark(name.c_str(), std::forward<Arguments>(arguments)...)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace

void registerConversions()
{
    for (const Format format : {Mono8, Mono10, Mono12, Mono14, Mono16, Mono10p, Mono10p_NoSwap, RGB8, RGBa8, RGB12,
                                RGB14, RGB16, RGB10p32, BayerRG8, BayerRG12})
        add(std::string("convert/") + formatName(format), convert, format);

    add("render/toolkit/gray", renderByToolkit, Mono8, QVector<unsigned int>());
    add("render/toolkit/palette", renderByToolkit, Mono8, invertedPalette());
    add("render/toolkit/color", renderByToolkit, RGB8, QVector<unsigned int>());
    add("render/palette", renderAgain);

    ConversionSettings palette;
    palette.palette = invertedPalette();
    add("convert_and_render/gray", convertAndRender, Mono8, ConversionSettings());
    add("convert_and_render/palette", convertAndRender, Mono8, palette);
    add("convert_and_render/color", convertAndRender, RGB8, ConversionSettings());
}
