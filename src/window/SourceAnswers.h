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

/// False without a source, and when the query throws.
bool askSource(const AbstractAcquisitionInterface* source, const SourceQuery& query);

struct CommandRow
{
    QAction* Ui_WindowQt::*action;
    const char* slot; // of `Commands`, for the action; null where a panel gives the command
    bool (AbstractAcquisitionInterface::*has)() const;
    SourceQuery can;
};

// In the order of the table; trigger stands between these and the commands of the Playback menu.
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

/// Asks which commands are possible, and for the state. The source may be null.
SourceAnswers askSource(const AbstractAcquisitionInterface* source, bool hasModes);

} // namespace Vistrel
