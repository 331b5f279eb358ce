// SPDX-License-Identifier: MIT
// What a source answered when it was asked last.
#pragma once

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Vistrel {

struct SourceAnswers
{
    bool canSetup = false;
    bool canSetupMode = false;
    bool canCleanup = false;
    bool canTrigger = false;
    bool canStartSingleReverse = false;
    bool canStartReverse = false;
    bool canStart = false;
    bool canStartFixed = false;
    bool canStartSingle = false;
    bool canPause = false;
    bool canStop = false;
    bool isSetUp = false;
    bool isRunning = false;
    QByteArray activeMode; // null when none is active
    QString statePicture;  // on the window's icon
    QString stateWords;    // empty without a source
};

/// Asks what can be done and what state the source, which may be null, is in. A query that throws counts as false.
SourceAnswers askSource(const AbstractAcquisitionInterface* source, bool hasModes);

} // namespace Vistrel
