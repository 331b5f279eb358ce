// SPDX-License-Identifier: MIT
// What the main window says about its image and source: the information bar, its switches, and copies as text.
#pragma once

#include "window/InfoItems.h"

#include <QtCore/QObject>
#include <QtCore/QTimer>

class QMenu;
class QPoint;

namespace Vistrel {

class Commands;
class InfoBar;
class SurfaceStream;
class ViewModes;
struct Form;

/// Shows the items whose actions are checked and visible. Reads statistics four times a second, and the pixel's value
/// after each frame and each move of the pointer.
class Information : public QObject
{
    Q_OBJECT

public:
    /// The source may be null. The others outlive this object.
    Information(const Form& form, SurfaceStream* stream, const AbstractAcquisitionInterface* source,
                const Commands& commands, ViewModes* viewModes);

    bool isSwitchedOn(InfoItem item) const;
    void setSwitchedOn(InfoItem item, bool isOn);
    void setSetupMode(const QByteArray& name); ///< null: none is active
    void addUserAction(QAction* action);
    void copyPixelValue() const;
    void copyReport();
    void end(); ///< reads no statistics from now on

public Q_SLOTS:
    void updateSwitches();
    void updateImageStats();
    void updateZoomStates();
    void updateImage();
    void updatePixelValue();
    void showSwitches();
    void showSwitchesAt(const QPoint& position); ///< in the status bar

Q_SIGNALS:
    void ticked(); ///< four times a second

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QAction* switchOf(InfoItem item) const;
    void show(InfoMoment moment);
    QMenu* makeMenu();

    const Form& m_form;
    SurfaceStream* const m_stream;
    const Commands& m_commands;
    ViewModes* const m_viewModes;
    InfoBar* const m_bar;
    InfoState m_state;
    QTimer m_statisticsTimer;
    QTimer m_pixelTimer; // after the events that move the pointer
};

} // namespace Vistrel
