// SPDX-License-Identifier: MIT
// The commands that a source may offer, and what it answered when it was asked last.
#include "window/SourceAnswers.h"

#include "base/HostCall.h"
#include "ui_WindowQt.h"
#include "window/HostText.h"

#include <QtCore/QCoreApplication>

namespace Vistrel {

namespace {

using Source = AbstractAcquisitionInterface;

struct State
{
    SourceQuery query;
    const char* picture;
    const char* words;
};

// clang-format off
// The first state that holds is shown.
constexpr State states[] = {
    {{"isStopped", &Source::isStopped}, "Stop", QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Stopped")},
    {{"isPaused", &Source::isPaused}, "Pause", QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Paused")},
    {{"isRunningSingle", &Source::isRunningSingle}, "PlayOne", QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Running, one image")},
    {{"isRunningSingleReverse", &Source::isRunningSingleReverse}, "PlayOneReverse", QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Running backwards, one image")},
    {{"isRunningReverse", &Source::isRunningReverse}, "PlayReverse", QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Running backwards")},
    {{"isRunningFixed", &Source::isRunningFixed}, "PlayFixed", QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Running, counted")},
    {{"isRunning", &Source::isRunning}, "Play", QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Running")},
};

} // namespace

#define VISTREL_COMMAND(action, slot, Name)                                                                            \
    {&Ui_WindowQt::action, slot, &Source::has##Name, {"can" #Name, &Source::can##Name}}

const std::array<CommandRow, 10>& commandRows()
{
    static const std::array<CommandRow, 10> rows = {{
        VISTREL_COMMAND(actionSetup, SLOT(setupAsync()), Setup),
        VISTREL_COMMAND(actionCleanup, SLOT(cleanupAsync()), Cleanup),
        VISTREL_COMMAND(actionTrigger, SLOT(triggerAsync()), Trigger),
        VISTREL_COMMAND(actionStart_Single_Reverse, SLOT(startSingleReverseAsync()), StartSingleReverse),
        VISTREL_COMMAND(actionStart_Reverse, SLOT(startReverseAsync()), StartReverse),
        VISTREL_COMMAND(actionStart, SLOT(startAsync()), Start),
        VISTREL_COMMAND(actionStart_Fixed, nullptr, StartFixed),
        VISTREL_COMMAND(actionStart_Single, SLOT(startSingleAsync()), StartSingle),
        VISTREL_COMMAND(actionPause, SLOT(pauseAsync()), Pause),
        VISTREL_COMMAND(actionStop, SLOT(stopAsync()), Stop),
    }};
    return rows;
}

#undef VISTREL_COMMAND
// clang-format on

bool askSource(const Source* source, const SourceQuery& query)
{
    return source && hostCall(query.name, false, [&] { return (source->*query.question)(); });
}

SourceAnswers askSource(const Source* source, bool hasModes)
{
    SourceAnswers answers;
    for (std::size_t i = 0; i < answers.can.size(); ++i)
        answers.can[i] = askSource(source, commandRows()[i].can);
    answers.canSetupMode = askSource(source, {"canSetupMode", &Source::canSetupMode});
    answers.isRunning = askSource(source, {"isRunning", &Source::isRunning});
    if (hasModes)
        answers.activeMode = hostText("activeSetupMode", [source](char* text, std::size_t* length) {
            return source->activeSetupMode(text, length);
        });

    const char* words = QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Not set up");
    answers.statePicture = QStringLiteral("Cleanup");
    answers.isSetUp = askSource(source, {"isSetup", &Source::isSetup});
    if (answers.isSetUp) {
        words = QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Unknown state");
        answers.statePicture = QStringLiteral("AmbiguousState");
        for (const State& state : states) {
            if (!askSource(source, state.query))
                continue;
            words = state.words;
            answers.statePicture = QLatin1String(state.picture);
            break;
        }
    }
    if (source)
        answers.stateWords = QCoreApplication::translate("Vistrel::WindowQt", words);
    return answers;
}

} // namespace Vistrel
