// SPDX-License-Identifier: MIT
// The timer by which a stream fetches frames.
#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QMetaObject>
#include <QtCore/QObject>
#include <QtCore/QTimer>

namespace Vistrel {

/// Ticks at a refresh rate, or at that of the primary screen, and less often while the source delivers no frames. Bound
/// to its thread.
class RefreshClock : public QObject
{
    Q_OBJECT

public:
    explicit RefreshClock(QObject* parent);

    bool isRunning() const { return m_timer.isActive(); }
    void setRunning(bool running);

    int intervalMs() const { return m_intervalMs; } ///< while frames are expected
    bool isAutomatic() const { return m_isAutomatic; }
    void setAutomatic(bool automatic); ///< the rate of the present primary screen

    void expectFrame(); ///< ticks at the full rate again
    void pace();        ///< ticks less often when no frame has been expected for a second

public Q_SLOTS:
    void setRate(qreal hertz); ///< zero or less changes nothing

Q_SIGNALS:
    void ticked();
    void intervalChanged(int milliseconds);

private Q_SLOTS:
    void followScreen();

private:
    QTimer m_timer;
    int m_intervalMs = 16;
    QElapsedTimer m_sinceFrame; // since a frame was last expected
    bool m_isAutomatic = false;
    QMetaObject::Connection m_rateConnection;
    QMetaObject::Connection m_screenConnection;
};

} // namespace Vistrel
