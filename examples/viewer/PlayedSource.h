// SPDX-License-Identifier: MIT
// The commands and queries that every source of the viewer carries out by its playback.
#pragma once

#include "Playback.h"

/// What the viewer asks its sources beyond the library's interface.
class ViewerSource
{
public:
    virtual ~ViewerSource() = default;

    /// Whether it is not set up by its own failure, which it has told on the standard error stream. Thread-safe.
    virtual bool hasFailed() const = 0;

    /// Whether it has gone and is looked for. Thread-safe.
    virtual bool isLost() const { return false; }

    /// How old the last frame is when the source is lost or the next one is overdue; below 0 otherwise. Thread-safe.
    virtual double secondsSilent() const { return -1; }

    /// What became of the frames that were sent to this program.
    struct Received
    {
        std::size_t whole;
        std::size_t lost;          ///< on the wire, in part or altogether
        std::size_t withoutBuffer; ///< when all buffers were full
        std::size_t skipped;       ///< of the whole ones: not shown, for there was a newer one
    };
    /// Nothing for a source that makes its frames itself. Thread-safe.
    virtual std::optional<Received> received() const { return std::nullopt; }
};

/// A source over one of the library's interfaces. It says itself which of the commands it has.
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
