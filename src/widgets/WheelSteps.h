// SPDX-License-Identifier: MIT
// The zoom steps that the turns of a wheel ask for.
#pragma once

#include <QtCore/QElapsedTimer>

class QWheelEvent;

namespace Vistrel {

/// A turn by a notch or more is one step, whatever its size, and so is a smaller one that stands alone. Smaller turns
/// in one direction that follow each other within 200 ms, as touchpads and fine wheels send them, are a step for each
/// notch that they add up to; the first of them is ahead with its step.
class WheelSteps
{
public:
    /// 1 for a step forwards, away from the user, -1 for one backwards, 0 for none.
    int take(const QWheelEvent& event);

private:
    QElapsedTimer m_clock;
    qint64 m_lastTurn = 0; // ms
    int m_direction = 0;   // of the series; 0 before the first
    int m_sum = 0;         // towards the next step; negative while the first one is not paid for
};

} // namespace Vistrel
