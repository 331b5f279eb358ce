// SPDX-License-Identifier: MIT
// Tests the tie between a host's command and its entry, in every order in which their parts may go.
#include "base/Log.h"

#include <Vistrel/Action.h>

#include <QtTest/QtTest>
#include <QtWidgets/QAction>
#include <QtWidgets/QMenu>

#include <functional>
#include <memory>
#include <utility>

using namespace Vistrel;

namespace {

std::string* trace = nullptr; // what happened, in order

/// A command that does what the test wants, and then fails.
class TracedCommand : public AbstractActionInterface
{
public:
    ~TracedCommand() override { *trace += action() ? "gone too early" : "gone"; }
    void uxDestroyed() override
    {
        note(action() && !action()->qt_handle() ? "destroyed " : "too late ", inUxDestroyed);
    }
    void triggered(bool checked) override { note(checked ? "checked " : "triggered ", inTriggered); }

    std::function<void()> inUxDestroyed;
    std::function<void()> inTriggered;

private:
    [[noreturn]] static void note(const char* call, const std::function<void()>& act)
    {
        *trace += call;
        act();
        throw 3;
    }
};

} // namespace

class ActionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void partsGoOnce();
    void textsAreLocal();
};

void ActionTest::partsGoOnce()
{
    setReportSink([](const std::string& line) { *trace += line.substr(9, line.find(':', 9) - 8) + ' '; });
    const auto reset = qScopeGuard([] { setReportSink(nullptr); });
    const struct
    {
        const char* steps; // a: action, w: window, t: trigger, c: trigger checked; at first, in these and uxDestroyed
        std::string expected;
    } rows[] = {
        {"a  ", "gone"},
        {"w  ", "destroyed uxDestroyed: gone"},
        {"w a", "destroyed uxDestroyed: gone"},
        {"ta ", "triggered triggered: gone"},
        {"cw ", "checked destroyed uxDestroyed: triggered: gone"},
        {"twa", "triggered destroyed uxDestroyed: triggered: gone"},
        {"tta", "triggered triggered destroyed uxDestroyed: triggered: triggered: gone"}, // the window in the inner one
    };
    for (const auto& row : rows) {
        std::string happened;
        trace = &happened;
        auto window = std::make_unique<QMenu>();
        const QPointer<QAction> entry = window->addAction(QString());
        auto* const command = new TracedCommand;
        auto* const action = new Action(nullptr, entry, ScopedActionInterface(command));
        const auto run = [&](char step) {
            if (step == 'a')
                delete action;
            else if (step == 'w')
                window.reset();
            else if (step != ' ')
                action->setCheckable(step == 'c'), entry->trigger();
        };
        command->inTriggered = [&, step = row.steps[1]]() mutable { run(std::exchange(step, 'w')); };
        command->inUxDestroyed = [&] { run(row.steps[2]); };
        run(row.steps[0]);
        QVERIFY(!entry);
        QCOMPARE(happened, row.expected);
    }
}

void ActionTest::textsAreLocal()
{
    auto* const entry = new QAction;
    Action action(nullptr, entry, ScopedActionInterface());
    entry->trigger(); // without a command
    action.setText("caf\xc3\xa9");
    QCOMPARE(entry->text(), QString::fromLocal8Bit("caf\xc3\xa9"));
}

QTEST_MAIN(ActionTest)
#include "ActionTest.moc"
