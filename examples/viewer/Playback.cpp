// SPDX-License-Identifier: MIT
// The state of a source: what its commands change, the frames of its run, and its frame rate.
#include "Playback.h"

namespace {

constexpr std::size_t rateFrames = 32; // over which the frame rate is measured

} // namespace

Playback::Playback(std::function<void()> stateChanged) : m_stateChanged(std::move(stateChanged)) {}

// Commands ------------------------------------------------------------------------------------------------------------

bool Playback::change(const std::function<bool()>& command)
{
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_state == State::Failed || !command())
            return false;
        m_isTriggered = m_isTriggered && m_state == State::Paused;
        ++m_number;
        m_changed.notify_all();
    }
    m_stateChanged();
    return true;
}

bool Playback::setup()
{
    return change([this] {
        m_state = State::Stopped;
        return true;
    });
}

bool Playback::cleanup()
{
    return change([this] {
        m_state = State::CleanedUp;
        return true;
    });
}

bool Playback::start(Length length, bool isReverse, std::size_t frames)
{
    return change([&] {
        if (m_state == State::CleanedUp || frames == 0)
            return false;
        m_state = State::Running;
        m_length = length;
        m_isReverse = isReverse;
        m_left = frames;
        m_made = 0;
        m_recent.clear();
        return true;
    });
}

bool Playback::pause()
{
    return change([this] {
        if (m_state != State::Running)
            return false;
        m_state = State::Paused;
        return true;
    });
}

bool Playback::trigger()
{
    return change([this] { return m_isTriggered = m_state == State::Paused; });
}

bool Playback::stop()
{
    return change([this] {
        if (m_state == State::CleanedUp)
            return false;
        m_state = State::Stopped;
        return true;
    });
}

void Playback::fail()
{
    change([this] {
        m_state = State::Failed;
        return true;
    });
}

void Playback::close()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_isClosing = true;
    m_changed.notify_all();
}

// State ---------------------------------------------------------------------------------------------------------------

bool Playback::hasFailed() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_state == State::Failed;
}

bool Playback::isSetup() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_state != State::CleanedUp && m_state != State::Failed;
}

bool Playback::isRunning() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_state == State::Running;
}

bool Playback::isRunning(Length length, bool isReverse) const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_state == State::Running && m_length == length && m_isReverse == isReverse;
}

bool Playback::isPaused() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_state == State::Paused;
}

double Playback::frameRate() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_state != State::Running || m_recent.size() < 2)
        return 0;
    const std::chrono::duration<double> time = m_recent.back().first - m_recent.front().first;
    return double(m_recent.back().second - m_recent.front().second) / time.count();
}

// Frames --------------------------------------------------------------------------------------------------------------

std::optional<Playback::Run> Playback::run() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return wantsFrame() ? std::optional<Run>({m_number, m_isReverse}) : std::nullopt;
}

std::optional<Playback::Run> Playback::waitForRun()
{
    std::unique_lock<std::mutex> guard(m_mutex);
    m_changed.wait(guard, [this] { return isOver() || wantsFrame(); });
    return isOver() ? std::nullopt : std::optional<Run>({m_number, m_isReverse});
}

bool Playback::waitUntil(Clock::time_point time, const Run& run)
{
    std::unique_lock<std::mutex> guard(m_mutex);
    return !m_changed.wait_until(guard, time, [&] { return m_isClosing || m_number != run.number; });
}

bool Playback::finishFrame(const Run& run, std::size_t made)
{
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_number != run.number || !wantsFrame())
            return false;
        m_isTriggered = false;
        m_made += made;
        m_recent.emplace_back(Clock::now(), m_made);
        if (m_recent.size() > rateFrames)
            m_recent.pop_front();
        if (m_length == Length::Endless || --m_left > 0)
            return true;
        m_state = State::Stopped;
    }
    m_stateChanged();
    return true;
}
