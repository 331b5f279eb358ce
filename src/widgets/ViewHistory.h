// SPDX-License-Identifier: MIT
// The places that a view was at before its jumps.
#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QPointF>

#include <deque>

namespace Vistrel {

struct ViewPlace
{
    bool isFit = false;
    double scaling = 1;
    QPointF centre; // image pixels

    /// Whether both show the same in a view of any size.
    bool isSame(const ViewPlace& other) const;
};

/// Keeps a limited number of places, the newest on top.
class ViewHistory
{
public:
    enum class Move { Jump, Step }; ///< steps that follow each other within a second are one jump

    bool isEmpty() const { return m_places.empty(); }
    /// Adds the place before a move that changed it.
    void add(const ViewPlace& before, Move move);
    /// Removes the newest place. There must be one.
    ViewPlace take();

private:
    std::deque<ViewPlace> m_places;
    QElapsedTimer m_lastStep; // invalid when another move came after it
};

} // namespace Vistrel
