// SPDX-License-Identifier: MIT
// The main window and a bare surface, on a camera with the commands and statistics that the window shows.
#pragma once

#include "Measure.h"
#include "Viewer.h"

#include <Vistrel/WindowQt.h>

#include <QtCore/QObject>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

namespace Bench {

/// Offers start, stop and all statistics, which usually change with each query.
class Camera : public PushSource
{
public:
    Camera();

    using PushSource::signalAcquisitionStateChange;

    bool isSetup() const override { return isOpen; }
    bool canStart() const override { return !m_isRunning; }
    bool canStop() const override { return m_isRunning; }
    bool isRunning() const override { return m_isRunning; }
    bool start() override;
    bool stop() override;

    bool activeSetupMode(char* const buffer, std::size_t* const size) const override;
    double frameRate() const override { return 59 + 0.01 * static_cast<double>(asked() % 100); }
    std::size_t framesQueued() const override { return asked() % 10; }
    std::size_t framesFilled() const override { return asked() % 10; }
    std::size_t framesDropped() const override { return asked(); }
    std::size_t framesDelivered() const override { return asked(); }

    std::atomic<bool> isOpen{true};
    bool countsChange = true;
    std::chrono::milliseconds startTakes{0}; // set while no command runs
    Clock::time_point entered;               // of the last start, once it is over
    Clock::time_point returned;

private:
    std::size_t asked() const { return countsChange ? ++m_asked : m_asked; }

    std::atomic<bool> m_isRunning{false};
    mutable std::size_t m_asked = 0; // user-interface thread
};

/// Runs the event loop until a condition is met; false after 10 seconds.
bool waitUntil(const std::function<bool()>& isMet);
/// Handles all events that a new window or another size causes.
void settle();

/// A surface on a stream of pushed frames. It counts how often the surface is painted.
class Shown : public QObject
{
public:
    /// Shows `count` frames: pushes one each `interval` milliseconds, but not before the last was painted. Returns the
    /// processor time per frame; a negative one when a frame was not painted.
    double showFrames(Frames& frames, int count, int interval);

    Camera* source = nullptr;
    Vistrel::Surface* surface = nullptr;
    Vistrel::SurfaceStream* stream = nullptr;
    quint64 paintings = 0;

protected:
    void watch();
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::function<void()> m_painted; // called as each painting begins, when it is set
};

/// The main window with everything in its information bar.
class ShownWindow : public Shown
{
public:
    explicit ShownWindow(const QSize& size);
    ~ShownWindow() override;

    std::unique_ptr<Vistrel::WindowQt> window;
};

class ShownSurface : public Shown
{
public:
    explicit ShownSurface(const QSize& size);

private:
    Camera m_source;
    Vistrel::Surface m_surface;
    Vistrel::SurfaceStream m_stream{&m_surface, &m_source};
};

} // namespace Bench
