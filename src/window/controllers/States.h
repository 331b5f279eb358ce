// SPDX-License-Identifier: MIT
// Keeps the main window's actions in step with the state that its source is in.
#pragma once

#include "window/SourceAnswers.h"
#include "window/controllers/Badge.h"
#include "window/controllers/Hint.h"

#include <QtCore/QObject>

class QLabel;
class QMainWindow;

namespace Vistrel {

class Commands;
class Features;
class Information;
class Palettes;
class Saving;
class SurfaceScrollArea;

class States : public QObject
{
    Q_OBJECT

public:
    /// The source may be null. All outlive this object.
    States(QMainWindow* window, const Ui::WindowQt& form, const AbstractAcquisitionInterface* source,
           SurfaceStream* stream, SurfaceScrollArea* scrollArea, Commands* commands, const Features& features,
           const Saving& saving, Palettes* palettes, Information* information);

public Q_SLOTS:
    void update(); ///< asks the source when it can be asked; else shows what it answered last
    void updateHint();

private:
    void showCommands();
    void showSetupToggle(bool canSetup, bool canCleanup);

    const Ui::WindowQt& m_form;
    const AbstractAcquisitionInterface* const m_source;
    SurfaceStream* const m_stream;
    Commands* const m_commands;
    const Features& m_features;
    const Saving& m_saving;
    Palettes* const m_palettes;
    Information* const m_information;
    QLabel* const m_label; // what state the source is in
    Hint m_hint;
    Badge m_badge;
    SourceAnswers m_known;
};

} // namespace Vistrel
