// SPDX-License-Identifier: MIT
// Measures the complete path from a frame to the screen, beside OpenCV's window.
#include "Measure.h"
#include "Viewer.h"

#include <benchmark/benchmark.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtCore/QProcess>
#include <QtCore/QTextStream>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using namespace Vistrel;
using namespace Bench;

constexpr std::size_t warmUp = 20;
constexpr std::size_t count = 60;

/// The results of each round, per frame.
struct Costs
{
    std::vector<double> cpu; // milliseconds of the whole process
    std::vector<double> elapsed;

    double framesPerSecond() const { return 1e3 / quantile(elapsed, 0.5); }
};

bool showOurs(Costs& costs, Frames& frames, const Size& size)
{
    Viewer viewer;
    // Our window enlarges small frames only on request; the other window always does.
    const double scaling =
        std::min(viewer.width() / static_cast<double>(size.width), viewer.height() / static_cast<double>(size.height));
    if (!viewer.showFrames(frames, 1).good)
        return false;
    viewer.setScaling(scaling);
    if (!viewer.showFrames(frames, warmUp).good || !qFuzzyCompare(viewer.scaling(), scaling))
        return false;
    const Viewer::Run run = viewer.showFrames(frames, count);
    costs.cpu.push_back(run.cpuMilliseconds / static_cast<double>(count));
    costs.elapsed.push_back(run.milliseconds / static_cast<double>(count));
    return run.good;
}

QString openCVWindow()
{
    return QCoreApplication::applicationDirPath() + QLatin1String("/vistrel_bench_opencv");
}

/// In a separate process, because it has its own application object.
bool showOpenCV(Costs& costs, const Size& size, Format format)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QStringList arguments;
    for (const std::size_t number : {size.width, size.height, bytesPerPixel(format), warmUp, count})
        arguments << QString::number(number);
    process.start(openCVWindow(), arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return false;
    double cpu = 0;
    double elapsed = 0;
    QTextStream(process.readAllStandardOutput()) >> cpu >> elapsed;
    costs.cpu.push_back(cpu);
    costs.elapsed.push_back(elapsed);
    return cpu > 0 && elapsed > 0;
}

/// One iteration is a round of frames in our window and one in the other. Only one window exists at a time.
void show(benchmark::State& state, Format format, const Size& size)
{
    Frames frames(3, size.width, size.height, format);
    const bool hasPeer = QFileInfo::exists(openCVWindow());
    Costs ours;
    Costs theirs;
    while (state.KeepRunning()) {
        if (!showOurs(ours, frames, size) || (hasPeer && !showOpenCV(theirs, size, format)))
            return state.SkipWithError("a frame was not painted");
        state.SetIterationTime(1e-3 * ours.elapsed.back());
    }
    state.counters["cpu_ms_per_frame"] = quantile(ours.cpu, 0.5);
    state.counters["frames_per_s"] = ours.framesPerSecond();
    if (!hasPeer)
        return;
    state.counters["opencv_cpu_ms_per_frame"] = quantile(theirs.cpu, 0.5);
    state.counters["opencv_frames_per_s"] = theirs.framesPerSecond();
    state.counters["cpu_ratio"] = medianRatio(ours.cpu, theirs.cpu);
    state.counters["times_faster"] = medianRatio(theirs.elapsed, ours.elapsed);
}

} // namespace

void registerScreen()
{
    for (const Format format : {Mono8, RGB8}) {
        for (const Size& size : sizes)
            benchmark::RegisterBenchmark(("screen/" + text(format, size)).c_str(), show, format, size)
                ->Iterations(5)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
    }
}
