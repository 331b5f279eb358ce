// SPDX-License-Identifier: MIT
// The commands and queries that all sources of the viewer have in common.
#pragma once

#include "Playback.h"

/// What the viewer asks its sources beyond the library's interface.
class ViewerSource
{
public:
    virtual ~ViewerSource() = default;

    /// Whether it has failed, which it has reported on the standard error stream. Thread-safe.
    virtual bool hasFailed() const = 0;

    /// Whether it is lost and being looked for. Thread-safe.
    virtual bool isLost() const { return false; }

    /// The age of the last frame when the source is lost or the next frame is overdue; below 0 otherwise. Thread-safe.
    virtual double secondsSilent() const { return -1; }

    /// Counts the frames that were sent to this program.
    struct Received
    {
        std::size_t whole;
        std::size_t lost;          ///< in transmission, partly or completely
        std::size_t withoutBuffer; ///< when all buffers were full
        std::size_t skipped;       ///< complete, but not shown because of a newer one
    };
    /// Nothing for a source that generates its frames. Thread-safe.
    virtual std::optional<Received> received() const { return std::nullopt; }
};

/// A source over one of the library's interfaces. The derived class declares which commands it has.
template <class Interface>
class PlayedSource : public Interface, public ViewerSource
{
public:
    using Length = Playback::Length;

    bool hasFailed() const override { return m_playback.hasFailed(); }

    bool setup() override { return m_playback.setup(); }
    bool cleanup() override { return m_playback.cleanup(); }
    bool trigger() override { return m_playback.trigger(); }
    bool startSingleReverse() override { return m_playback.start(Length::Single, true); }
    bool startReverse() override { return m_playback.start(Length::Endless, true); }
    bool start() override { return m_playback.start(Length::Endless); }
    bool startFixed(std::size_t frames) override { return m_playback.start(Length::Fixed, false, frames); }
    bool startSingle() override { return m_playback.start(Length::Single); }
    bool pause() override { return m_playback.pause(); }
    bool stop() override { return m_playback.stop(); }

    bool canSetup() const override { return !isSetup() && !hasFailed(); }
    bool canSetupMode() const override { return !hasFailed(); }
    bool canCleanup() const override { return isSetup(); }
    bool canTrigger() const override { return isPaused(); }
    bool canStartSingleReverse() const override { return isSetup(); }
    bool canStartReverse() const override { return isSetup() && !isRunningReverse(); }
    bool canStart() const override { return isSetup() && !m_playback.isRunning(Length::Endless, false); }
    bool canStartFixed() const override { return isSetup(); }
    bool canStartSingle() const override { return isSetup(); }
    bool canPause() const override { return isRunning(); }
    bool canStop() const override { return isRunning() || isPaused(); }

    bool isSetup() const override { return m_playback.isSetup(); }
    bool isRunningSingleReverse() const override { return m_playback.isRunning(Length::Single, true); }
    bool isRunningReverse() const override { return m_playback.isRunning(Length::Endless, true); }
    bool isRunning() const override { return m_playback.isRunning(); }
    bool isRunningFixed() const override { return m_playback.isRunning(Length::Fixed, false); }
    bool isRunningSingle() const override { return m_playback.isRunning(Length::Single, false); }
    bool isPaused() const override { return m_playback.isPaused(); }
    bool isStopped() const override { return !isRunning() && !isPaused(); }

    double frameRate() const override { return m_playback.frameRate(); }

protected:
    Playback m_playback{[this] { this->signalAcquisitionStateChange(); }};
};
