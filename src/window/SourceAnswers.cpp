// SPDX-License-Identifier: MIT
// What a source answered when it was asked last.
#include "window/SourceAnswers.h"

#include "base/HostCall.h"
#include "window/HostText.h"

#include <QtCore/QCoreApplication>

#include <cstddef>

namespace Vistrel {

namespace {

using Source = AbstractAcquisitionInterface;

struct Query
{
    const char* name;
    bool (Source::*question)() const;
};

struct State
{
    Query query;
    const char* picture;
    const char* words;
};

// The first that holds is shown.
constexpr State states[] = {
    {{"isStopped", &Source::isStopped}, "Stop", QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Stopped")},
    {{"isPaused", &Source::isPaused}, "Pause", QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Paused")},
    {{"isRunningSingle", &Source::isRunningSingle},
     "PlayOne",
     QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Running, one image")},
    {{"isRunningSingleReverse", &Source::isRunningSingleReverse},
     "PlayOneReverse",
     QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Running backwards, one image")},
    {{"isRunningReverse", &Source::isRunningReverse},
     "PlayReverse",
     QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Running backwards")},
    {{"isRunningFixed", &Source::isRunningFixed},
     "PlayFixed",
     QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Running, counted")},
    {{"isRunning", &Source::isRunning}, "Play", QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Running")},
};

} // namespace

SourceAnswers askSource(const Source* source, bool hasModes)
{
    const auto ask = [source](const Query& query) {
        return source && hostCall(query.name, false, [&] { return (source->*query.question)(); });
    };
    SourceAnswers answers;
    answers.canSetup = ask({"canSetup", &Source::canSetup});
    answers.canSetupMode = ask({"canSetupMode", &Source::canSetupMode});
    answers.canCleanup = ask({"canCleanup", &Source::canCleanup});
    answers.canTrigger = ask({"canTrigger", &Source::canTrigger});
    answers.canStartSingleReverse = ask({"canStartSingleReverse", &Source::canStartSingleReverse});
    answers.canStartReverse = ask({"canStartReverse", &Source::canStartReverse});
    answers.canStart = ask({"canStart", &Source::canStart});
    answers.canStartFixed = ask({"canStartFixed", &Source::canStartFixed});
    answers.canStartSingle = ask({"canStartSingle", &Source::canStartSingle});
    answers.canPause = ask({"canPause", &Source::canPause});
    answers.canStop = ask({"canStop", &Source::canStop});
    answers.isRunning = ask({"isRunning", &Source::isRunning});
    if (hasModes)
        answers.activeMode = hostText("activeSetupMode", [source](char* text, std::size_t* length) {
            return source->activeSetupMode(text, length);
        });

    const char* words = QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Not set up");
    answers.statePicture = QStringLiteral("Cleanup");
    answers.isSetUp = ask({"isSetup", &Source::isSetup});
    if (answers.isSetUp) {
        words = QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Unknown state");
        answers.statePicture = QStringLiteral("AmbiguousState");
        for (const State& state : states) {
            if (!ask(state.query))
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
