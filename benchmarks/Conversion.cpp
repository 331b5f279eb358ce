// SPDX-License-Identifier: MIT
// Conversion and rendering times, each beside a plain copy of the same bytes and beside the peers.
#include "Measure.h"
#include "Peers.h"
#include "Turns.h"

#include "pipeline/frames/ColorPalette.h"
#include "pipeline/frames/Conversion.h"
#include "pipeline/frames/FrameConverter.h"
#include "pipeline/pixels/ColorTables.h"

#include <benchmark/benchmark.h>

#include <QtGui/QPixmap>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Vistrel;
using namespace Bench;

constexpr Size full{4096, 3072};

/// Copies plain memory on the threads that convert, which take small pieces as they take rows.
class PlainCopy
{
public:
    explicit PlainCopy(std::size_t bytesMoved)
        : m_pool(CopyPool::shared()), m_source(bytesMoved / 2), m_target(bytesMoved / 2)
    {
    }

    bool run()
    {
        constexpr std::size_t piece = 64 * 1024;
        const std::size_t size = m_source.size();
        m_pool->runRows((size + piece - 1) / piece, 2 * piece, [&](std::size_t first, std::size_t end) {
            const std::size_t from = first * piece;
            std::memcpy(m_target.data() + from, m_source.data() + from, std::min(end * piece, size) - from);
        });
        benchmark::ClobberMemory();
        return true;
    }

private:
    std::shared_ptr<CopyPool> m_pool;
    PageMemory m_source;
    PageMemory m_target;
};

/// Times the case, its peers and, where the case moves bytes, a plain copy of as many.
void measure(benchmark::State& state, double bytesMoved, const std::function<bool()>& call,
             std::vector<Contender> peers = {})
{
    std::vector<Contender> contenders{{{}, call, {}, {}}};
    const std::size_t peerCount = peers.size();
    std::move(peers.begin(), peers.end(), std::back_inserter(contenders));
    std::optional<PlainCopy> copy;
    if (bytesMoved > 0) {
        copy.emplace(static_cast<std::size_t>(bytesMoved));
        contenders.push_back({"copy", [&] { return copy->run(); }, {}, {}});
    }
    if (!runByTurns(state, contenders))
        return;

    const Contender& ours = contenders.front();
    std::vector<const Contender*> others;
    for (std::size_t i = 1; i <= peerCount; ++i)
        others.push_back(&contenders[i]);
    reportTimes(state, ours, others);
    reportTimesFaster(state, ours, others);
    if (!copy)
        return;
    const auto& copyTimes = contenders.back().elapsed;
    const double median = quantile(ours.elapsed, 0.5);
    state.counters["copy_ms"] = quantile(copyTimes, 0.5);
    state.counters["times_copy"] = quantile(copyTimes, 0.5) / median;
    state.counters["times_copy_p10"] = quantile(copyTimes, 0.1) / quantile(ours.elapsed, 0.1);
    state.counters["gigabytes_per_s"] = 1e-6 * bytesMoved / median;
}

/// The bytes of a frame that are read: only the first five eighths of a packed row contain pixels.
double bytesRead(Format format)
{
    return (format & formatPackingMask) != 0 ? 1.25 : static_cast<double>(bytesPerPixel(format));
}

std::size_t bytesConverted(Format format)
{
    return targetKind(format) == 32 ? 4 : 1;
}

bool isMosaic(Format format)
{
    return (format & formatPatternMask) != 0;
}

/// Whether two conversions made the same picture, with the tolerance of `Peer`.
bool isSame(const QImage& ours, const PageMemory& theirs)
{
    const bool isColored = ours.depth() == 32;
    const std::uint8_t* const pixels = ours.constBits();
    for (std::size_t i = 0; i < theirs.size(); ++i) {
        if ((!isColored || i % 4 != 3) && std::abs(pixels[i] - theirs.data()[i]) > 1)
            return false;
    }
    return true;
}

void convert(benchmark::State& state, Format format, const Size& size)
{
    const std::size_t pixelCount = size.width * size.height;
    Frames frames(2, size.width, size.height, format);
    const auto pool = CopyPool::shared();
    QImage target;
    PixelBuffer buffer;
    const auto conversions = conversionPeers(format);
    std::vector<Contender> peers;
    std::vector<PageMemory> targets;
    for (const Peer& peer : conversions) {
        const PageMemory& pixels = targets.emplace_back(pixelCount * bytesConverted(format));
        const auto run = [&peer, &frames, data = pixels.data()](const RawImage& frame) { peer.convert(frame, data); };
        const RawImage& frame = frames.next();
        run(frame);
        // Mosaics are interpolated in another way.
        if (!convertFrame(*pool, target, buffer, frame) || (!isMosaic(format) && !isSame(target, pixels)))
            return state.SkipWithError(("the picture of " + peer.name + " is another").c_str());
        peers.push_back({peer.name,
                         [run, &frames] {
                             run(frames.next());
                             return true;
                         },
                         {},
                         {}});
    }
    const double bytesMoved = bytesRead(format) + static_cast<double>(bytesConverted(format));
    measure(
        state, bytesMoved * static_cast<double>(pixelCount),
        [&] { return convertFrame(*pool, target, buffer, frames.next()); }, std::move(peers));
}

/// A small frame on all threads, beside one thread.
void convertSmall(benchmark::State& state, Format format)
{
    Frames frames(2, 640, 480, format);
    const auto pool = CopyPool::shared();
    CopyPool single(1);
    QImage target;
    PixelBuffer buffer;
    measure(state, 0, [&] { return convertFrame(*pool, target, buffer, frames.next()); },
            {{"one_thread", [&] { return convertFrame(single, target, buffer, frames.next()); }, {}, {}}});
}

QVector<unsigned int> invertedPalette()
{
    auto palette = grayRamp();
    std::reverse(palette.begin(), palette.end());
    return palette;
}

/// Renders a converted frame, beside Qt's way: a copy with its palette, then a new pixmap.
void render(benchmark::State& state, Format format, const QVector<unsigned int>& palette, double bytesMovedPerPixel)
{
    Frames frames(1, full.width, full.height, format);
    FrameConverter converter;
    const auto converted = converter.convert(frames.next(), true, {});
    if (!converted)
        return state.SkipWithError("the conversion failed");
    ConversionSettings settings;
    settings.stages.set(Stage::Palette, std::make_shared<const ColorPalette>(palette));
    std::shared_ptr<DisplayFrame> shown;
    measure(state, bytesMovedPerPixel * static_cast<double>(full.width * full.height),
            [&] {
                shown = converter.renderAgain(*converted, settings);
                return shown != nullptr;
            },
            {{"toolkit",
              [&] { return !QPixmap::fromImage(imageForRender(converted->image, palette, false)).isNull(); },
              {},
              {}}});
}

/// Makes a picture of a delivered frame as the stream does, while the previous picture is in use, as on a surface.
void convertAndRender(benchmark::State& state, Format format, const ConversionSettings& settings)
{
    Frames frames(2, full.width, full.height, format);
    FrameConverter converter;
    std::shared_ptr<DisplayFrame> shown;
    const bool isLookedUp = targetKind(format) == 8 && settings.stages.get<ColorPalette>();
    const double bytesMoved =
        bytesRead(format) + static_cast<double>(bytesConverted(format)) + (isLookedUp ? 1 + 4 : 0);
    measure(state, bytesMoved * static_cast<double>(full.width * full.height), [&] {
        shown = converter.convert(frames.next(), true, settings);
        return shown && converter.render(*shown, settings);
    });
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

void registerConversions()
{
    for (const Format format : {Mono8, Mono10, Mono12, Mono14, Mono16, Mono10p, Mono10p_NoSwap, RGB8, RGBa8, RGB12,
                                RGB14, RGB16, RGB10p32, BayerRG8, BayerRG12, BayerRG16})
        add(std::string("convert/") + formatName(format), 60, convert, format, full);
    for (const Format format : {Mono8, Mono12, RGB8, BayerRG8}) {
        add(std::string("convert/small/") + formatName(format), 2000, convertSmall, format);
        for (const Size& size : sizes)
            add("convert/" + text(format, size), 40, convert, format, size);
    }

    const auto palette = invertedPalette();
    add("render/gray", 40, render, Mono8, QVector<unsigned int>(), 0);
    add("render/palette", 40, render, Mono8, palette, 1 + 4);
    add("render/color", 40, render, RGB8, QVector<unsigned int>(), 0);

    ConversionSettings lookedUp;
    lookedUp.stages.set(Stage::Palette, std::make_shared<const ColorPalette>(palette));
    add("convert_and_render/gray", 60, convertAndRender, Mono8, ConversionSettings());
    add("convert_and_render/palette", 60, convertAndRender, Mono8, lookedUp);
    add("convert_and_render/color", 60, convertAndRender, RGB8, ConversionSettings());
}
