// SPDX-License-Identifier: MIT
// Compares a demosaiced picture with the photograph that the mosaic was made from, beside OpenCV's.
#include "Measure.h"
#include "Peers.h"

#include "pipeline/frames/Conversion.h"

#include <benchmark/benchmark.h>

#include <QtCore/QFileInfo>
#include <QtGui/QImage>

#include <cmath>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace Vistrel;
using namespace Bench;

constexpr int border = 4; // pixels at the edges; not compared, because there is no common rule for them

/// Halves the size, because most files store colours at half the resolution of grey levels.
QImage photograph(const QString& path)
{
    const QImage whole(path);
    return whole.scaled(whole.size() / 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_RGBX8888);
}

/// The sites that a camera with the pattern BayerRG sees.
std::vector<std::uint8_t> mosaic(const QImage& picture)
{
    std::vector<std::uint8_t> sites;
    for (int y = 0; y < picture.height(); ++y) {
        const uchar* const row = picture.constScanLine(y);
        for (int x = 0; x < picture.width(); ++x)
            sites.push_back(row[4 * x + x % 2 + y % 2]);
    }
    return sites;
}

/// Peak signal-to-noise ratio of all channels together, in decibels.
double likeness(const QImage& picture, const std::uint8_t* pixels)
{
    double squares = 0;
    double channels = 0;
    for (int y = border; y < picture.height() - border; ++y) {
        const uchar* const row = picture.constScanLine(y);
        const std::uint8_t* const other = pixels + static_cast<std::ptrdiff_t>(y) * picture.width() * 4;
        for (int x = border * 4; x < (picture.width() - border) * 4; ++x) {
            if (x % 4 == 3)
                continue;
            squares += (row[x] - other[x]) * (row[x] - other[x]);
            ++channels;
        }
    }
    return 10 * std::log10(255.0 * 255.0 * channels / squares);
}

void compare(benchmark::State& state, const QString& path)
{
    const QImage picture = photograph(path);
    if (picture.isNull())
        return state.SkipWithError("the photograph cannot be read");
    const auto sites = mosaic(picture);
    const RawImage frame{sites.data(), static_cast<std::size_t>(picture.width()),
                         static_cast<std::size_t>(picture.height()), BayerRG8, nullptr};
    const auto pool = CopyPool::shared();
    QImage ours;
    PixelBuffer buffer;
    while (state.KeepRunning()) {
        const auto start = Clock::now();
        if (!convertFrame(*pool, ours, buffer, frame))
            return state.SkipWithError("the conversion failed");
        state.SetIterationTime(1e-3 * millisecondsSince(start));
    }
    const double psnr = likeness(picture, ours.constBits());
    state.counters["psnr_db"] = psnr;
    for (const Peer& peer : conversionPeers(BayerRG8)) {
        std::vector<std::uint8_t> theirs(buffer.size());
        peer.convert(frame, theirs.data());
        const double theirPsnr = likeness(picture, theirs.data());
        state.counters[peer.name + "_psnr_db"] = theirPsnr;
        state.counters["psnr_gain_db"] = psnr - theirPsnr;
    }
}

} // namespace

void registerMosaics()
{
    for (const char* const name :
         {"aitzgorri_by_Aitzol_Berasategi", "analogpattern_by_Peter_Nerlich", "Bridge_by_Sander_Klootwijk",
          "Dragonfly_by_Bolly", "free_by_Peter_Nerlich", "friends_by_Aitzol_Berasategi", "greentock_by_Peter_Nerlich",
          "life_by_Aitzol_Berasategi", "picosdeeuropa_by_Aitzol_Berasategi", "Picture_0B_by_freespace",
          "Picture_1A_by_freespace", "seeding_by_Clements_Engelhardt", "sunset_by_Aitzol_Berasategi",
          "Wine_by_Jakkub_Mede"}) {
        const QString path = QStringLiteral("/usr/share/backgrounds/%1.jpg").arg(QLatin1String(name));
        if (!QFileInfo::exists(path)) {
            std::cerr << "The photographs of Debian's package lomiri-wallpapers-16.04 are not here: cases left out.\n";
            return;
        }
        const std::string shortName(name, std::strstr(name, "_by_"));
        benchmark::RegisterBenchmark(("mosaic/" + shortName).c_str(), compare, path)
            ->Iterations(1)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
}
