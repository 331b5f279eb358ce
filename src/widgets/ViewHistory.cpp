// SPDX-License-Identifier: MIT
// The places that a view was at before its jumps.
#include "widgets/ViewHistory.h"

#include <cstddef>

namespace Vistrel {

namespace {

constexpr std::size_t mostPlaces = 100;
constexpr qint64 seriesMs = 1000; // the longest time between two steps of one jump

} // namespace

bool ViewPlace::isSame(const ViewPlace& other) const
{
    return isFit == other.isFit && (isFit || (qFuzzyCompare(scaling, other.scaling) && centre == other.centre));
}

void ViewHistory::add(const ViewPlace& before, Move move)
{
    const bool isContinued = move == Move::Step && m_lastStep.isValid() && !m_lastStep.hasExpired(seriesMs);
    if (move == Move::Step)
        m_lastStep.start();
    else
        m_lastStep.invalidate();
    if (isContinued)
        return;
    m_places.push_back(before);
    if (m_places.size() > mostPlaces)
        m_places.pop_front();
}

ViewPlace ViewHistory::take()
{
    const ViewPlace newest = m_places.back();
    m_places.pop_back();
    m_lastStep.invalidate();
    return newest;
}

} // namespace Vistrel
