// SPDX-License-Identifier: MIT
// A window on a stream of pushed frames that notes when each was painted.
#pragma once

#include "Measure.h"

#include <Vistrel/ImperativeAcquisitionInterface.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceStream.h>

#include <QtCore/QEventLoop>
#include <QtCore/QTimer>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <vector>

namespace Bench {

/// A source that is always set up. Its frames are pushed, or made whenever one is fetched.
class PushSource : public Vistrel::ImperativeAcquisitionInterface
{
public:
    PushSource();

    bool isSetup() const override { return true; }
    bool isRunning() const override { return true; }

    /// Pushes a frame and announces it.
    void push(const Vistrel::RawImage& frame);

    /// From now on every fetch finds a frame and announces another: the stream converts without a pause.
    void runFreely(Frames* frames);
    /// From now on a fetch blocks. Runs the event loop until the stream's worker is blocked in one; false when it is
    /// not within 10 seconds.
    bool block();
    /// Ends either of the two above.
    void release();

protected:
    void readyNextFrame() override;

private:
    std::mutex m_mutex; // guards all below
    std::condition_variable m_changed;
    Frames* m_freeRunning = nullptr;
    bool m_blocking = false;
    bool m_blocked = false;
};

class Viewer : public Vistrel::Surface
{
public:
    Viewer();
    ~Viewer() override;

    PushSource source;
    std::optional<Vistrel::SurfaceStream> stream; // destroyed before the source

    struct Run
    {
        bool good = false; // every frame was painted
        double milliseconds = 0;
        double cpuMilliseconds = 0;
        long pageFaults = 0;
        std::size_t largeAllocations = 0;
        std::vector<double> beginnings; // milliseconds from each frame's push to the beginning of its painting
        std::vector<double> latencies;  // and to the end
        std::vector<double> paintings;  // milliseconds that each painting took
    };

    /// Shows `count` frames: pushes each `pause` milliseconds after the previous one was painted, or inside its paint
    /// event for 0.
    Run showFrames(Frames& frames, std::size_t count, int pause = 0);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void pushNext();

    Frames* m_frames = nullptr; // null between runs
    std::size_t m_left = 0;     // frames not pushed yet
    int m_pause = 0;
    bool m_underWay = false; // a frame was pushed and not painted yet
    quint64 m_published = 0; // frames published when it was pushed
    Clock::time_point m_pushed;
    Run m_run;
    QEventLoop m_loop;
    QTimer m_next;
    QTimer m_watchdog;
};

} // namespace Bench
