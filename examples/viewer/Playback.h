// SPDX-License-Identifier: MIT
// The state of a source: what its commands change, the frames of its run, and its frame rate.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

/// Commands change the state; the thread that makes the frames asks whether one is wanted and reports each one made.
/// Thread-safe. Not set up at first.
class Playback
{
public:
    using Clock = std::chrono::steady_clock;
    enum class Length { Endless, Fixed, Single };

    /// The run that a frame belongs to. Each command begins a new one.
    struct Run
    {
        std::uint64_t number;
        bool isReverse;
    };

    /// `stateChanged` is called after each change of state, on the thread that made it.
    explicit Playback(std::function<void()> stateChanged);

    // Commands: true on success.
    bool setup(); ///< leaves it set up and stopped, whatever it was before
    bool cleanup();
    /// Begins a new run, which may replace a running one. `frames` is the length of a fixed run.
    bool start(Length length, bool isReverse = false, std::size_t frames = 1);
    bool pause();
    bool trigger(); ///< lets one frame through while paused
    bool stop();

    void fail();  ///< permanently: later commands fail
    void close(); ///< ends the waits, before the source is destroyed

    bool hasFailed() const;
    bool isSetup() const; ///< stopped, paused or running
    bool isRunning() const;
    bool isRunning(Length length, bool isReverse) const;
    bool isPaused() const;
    double frameRate() const; ///< recent frames a second; 0 unless running

    /// The run, if it wants a frame now.
    std::optional<Run> run() const;
    /// Waits until a frame is wanted. Returns nothing after `close` or `fail`.
    std::optional<Run> waitForRun();
    /// Waits while the run continues; returns false when it has ended.
    bool waitUntil(Clock::time_point time, const Run& run);
    /// Counts a frame that is ready to be shown; returns false when it is no longer wanted. `made` counts the frames
    /// since the last one, including skipped ones. A fixed or single run ends with its last frame.
    bool finishFrame(const Run& run, std::size_t made = 1);

private:
    enum class State { CleanedUp, Stopped, Paused, Running, Failed };

    bool change(const std::function<bool()>& command);
    bool wantsFrame() const { return m_state == State::Running || m_isTriggered; }
    bool isOver() const { return m_isClosing || m_state == State::Failed; }

    const std::function<void()> m_stateChanged;
    mutable std::mutex m_mutex; // guards all below
    std::condition_variable m_changed;
    State m_state = State::CleanedUp;
    Length m_length = Length::Endless;
    bool m_isReverse = false;
    bool m_isTriggered = false; // only while paused
    bool m_isClosing = false;
    std::size_t m_left = 0; // frames of a fixed or single run
    std::uint64_t m_number = 0;
    std::size_t m_made = 0;                                         // since the start
    std::deque<std::pair<Clock::time_point, std::size_t>> m_recent; // when how many were made, the newest last
};
