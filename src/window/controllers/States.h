// SPDX-License-Identifier: MIT
// Shows the state of the source: enabled actions, words in the status bar and over the empty view, the window's icon.
#pragma once

#include "window/SourceAnswers.h"

#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtGui/QIcon>

class QLabel;

namespace Vistrel {

class Commands;
class Features;
class Information;
class Palettes;
class Saving;
class SurfaceStream;
struct Form;

class States : public QObject
{
    Q_OBJECT

public:
    /// The source may be null. All outlive this object.
    States(const Form& form, const AbstractAcquisitionInterface* source, SurfaceStream* stream, Commands* commands,
           const Features& features, const Saving& saving, Palettes* palettes, Information* information);

public Q_SLOTS:
    void updateActionStates(); ///< asks the source when it can be asked; else shows what it answered last
    void updateHint();         ///< what an empty view says: what to do next, or why frames are not shown

private:
    void showCommands();
    void showSetupToggle(bool canSetup, bool canCleanup);
    QString hint() const;
    void showBadge(const QString& picture);

    const Form& m_form;
    const AbstractAcquisitionInterface* const m_source;
    SurfaceStream* const m_stream;
    Commands* const m_commands;
    const Features& m_features;
    const Saving& m_saving;
    Palettes* const m_palettes;
    Information* const m_information;
    QLabel* const m_label; // the source's state
    QString m_badge;       // the key of the window's icon
    QHash<QString, QIcon> m_icons;
    SourceAnswers m_known;
};

} // namespace Vistrel
