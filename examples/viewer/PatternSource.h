// SPDX-License-Identifier: MIT
// A moving test picture in any pixel format: a source that is asked for its frames.
#pragma once

#include "PlayedSource.h"
#include "RecentFrames.h"

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <QtCore/QSize>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

/// Offers every command; runs at first. The setup modes are pixel formats; a change of mode does not end a run. In
/// reverse, the motion runs backwards.
class PatternSource : public PlayedSource<Vistrel::AbstractAcquisitionInterface>
{
public:
    PatternSource(Vistrel::Format format, const QSize& size, double fps);
    ~PatternSource() override;

    bool setup() override;
    bool setupMode(const char* const name) override;
    bool cleanup() override;
    bool activeSetupMode(char* const buffer, std::size_t* const size) const override;

    std::size_t framesDropped() const override { return m_dropped; }
    std::size_t framesDelivered() const override { return m_recent.delivered(); }

    /// Waits for the next frame if it is due within a few milliseconds. Frames that were not asked for in time are
    /// skipped.
    bool getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock) override;
    Vistrel::ScopedLock getFrameLock(const Vistrel::RawImage& image) override { return m_recent.lock(image); }

private:
    class Pattern;

    void addMode(Vistrel::Format format, const char* description);
    void drawPattern();

    const QSize m_size;
    const double m_fps;
    std::vector<Vistrel::Format> m_formats; // of the setup modes, in their order
    std::atomic<std::size_t> m_mode{0};
    std::atomic<std::size_t> m_dropped{0};
    RecentFrames m_recent;
    std::mutex m_mutex;
    std::shared_ptr<Pattern> m_pattern; // guarded by the mutex; null after a clean-up

    // Used only by the fetching thread.
    qint64 m_number = -1; // of the frame delivered last
    std::uint64_t m_runNumber = 0;
    Playback::Clock::time_point m_runStart;
    qint64 m_runFrames = 0; // frames of the run so far
};
