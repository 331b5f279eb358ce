// SPDX-License-Identifier: MIT
// The commands that a source may offer, and what it answered when it was asked last.
#pragma once

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <array>
#include <cstddef>

class QAction;
class Ui_WindowQt;

namespace Vistrel {

/// A question to a source, and the name under which its exception is reported.
struct SourceQuery
{
    const char* name;
    bool (AbstractAcquisitionInterface::*question)() const;
};

struct CommandRow
{
    QAction* Ui_WindowQt::*action;
    const char* slot; // of `Commands`, for the action; null where a panel gives the command
    bool (AbstractAcquisitionInterface::*has)() const;
    SourceQuery can;
};

// Set-up and clean-up come first, then trigger, then what the source plays.
constexpr std::size_t setupRow = 0;
constexpr std::size_t cleanupRow = 1;
constexpr std::size_t firstPlaybackRow = 3;
const std::array<CommandRow, 10>& commandRows();

struct SourceAnswers
{
    std::array<bool, 10> can{}; // by the rows above
    bool canSetupMode = false;
    bool isSetUp = false;
    bool isRunning = false;
    QByteArray activeMode; // null when none is active
    QString statePicture;  // on the window's icon
    QString stateWords;    // empty without a source
};

/// Asks what can be done and what state the source, which may be null, is in. A query that throws counts as false.
SourceAnswers askSource(const AbstractAcquisitionInterface* source, bool hasModes);

} // namespace Vistrel
