// SPDX-License-Identifier: MIT
// The zoom steps that the turns of a wheel ask for.
#include "widgets/WheelSteps.h"

#include <QtGui/QWheelEvent>

#include <algorithm>

namespace Vistrel {

namespace {

constexpr int notch = QWheelEvent::DefaultDeltasPerStep;
constexpr qint64 seriesMs = 200;

} // namespace

int WheelSteps::take(const QWheelEvent& event)
{
    const int turn = std::clamp(event.angleDelta().y(), -notch, notch);
    if (turn == 0)
        return 0;
    const int direction = turn > 0 ? 1 : -1;
    const int size = turn * direction;
    if (!m_clock.isValid())
        m_clock.start();
    // A busy user interface gets events late, so that they seem to follow each other more slowly than they were sent.
    const qint64 now = event.timestamp() ? static_cast<qint64>(event.timestamp()) : m_clock.elapsed();
    const qint64 pause = now - m_lastTurn;
    const bool isContinued = direction == m_direction && pause >= 0 && pause <= seriesMs;
    m_lastTurn = now;
    m_direction = direction;
    if (!isContinued || size == notch) {
        m_sum = size - notch;
        return direction;
    }
    m_sum += size;
    if (m_sum < notch)
        return 0;
    m_sum -= notch;
    return direction;
}

} // namespace Vistrel
