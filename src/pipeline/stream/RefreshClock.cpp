// SPDX-License-Identifier: MIT
// The timer by which a stream fetches frames.
#include "pipeline/stream/RefreshClock.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>

#include <algorithm>
#include <limits>

namespace Vistrel {

namespace {

// After the first time without a frame, the source is asked at the second interval: waking two threads at the screen's
// rate costs half a percent of a processor.
constexpr int restAfterMs = 1000;
constexpr int restIntervalMs = 100;

} // namespace

RefreshClock::RefreshClock(QObject* parent) : QObject(parent), m_timer(this)
{
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(m_intervalMs);
    m_sinceFrame.start();
    connect(&m_timer, SIGNAL(timeout()), this, SIGNAL(ticked()));
}

void RefreshClock::setRunning(bool running)
{
    if (!running)
        m_timer.stop();
    else if (!m_timer.isActive())
        m_timer.start();
}

void RefreshClock::setRate(qreal hertz)
{
    if (!(hertz > 0))
        return;
    const double longest = std::numeric_limits<int>::max();
    m_intervalMs = static_cast<int>(std::clamp(1000.0 / hertz, 1.0, longest));
    Q_EMIT intervalChanged(m_intervalMs);
    expectFrame();
}

void RefreshClock::setAutomatic(bool automatic)
{
    const bool wasAutomatic = m_isAutomatic;
    m_isAutomatic = automatic && QGuiApplication::primaryScreen();
    if (!m_isAutomatic) {
        disconnect(m_rateConnection);
        disconnect(m_screenConnection);
        return;
    }
    followScreen();
    if (!wasAutomatic)
        m_screenConnection = connect(qApp, SIGNAL(primaryScreenChanged(QScreen*)), this, SLOT(followScreen()));
}

void RefreshClock::followScreen()
{
    disconnect(m_rateConnection);
    const QScreen* const screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    setRate(screen->refreshRate());
    m_rateConnection = connect(screen, SIGNAL(refreshRateChanged(qreal)), this, SLOT(setRate(qreal)));
}

void RefreshClock::expectFrame()
{
    m_sinceFrame.restart();
    pace();
}

void RefreshClock::pace()
{
    const int interval = m_sinceFrame.hasExpired(restAfterMs) ? std::max(m_intervalMs, restIntervalMs) : m_intervalMs;
    if (interval != m_timer.interval())
        m_timer.setInterval(interval);
}

} // namespace Vistrel
