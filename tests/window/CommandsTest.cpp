// SPDX-License-Identifier: MIT
// Tests each command of the main window by key, menu entry and button, and what is left of the window when its source
// fails it.
#include <Vistrel/AcquisitionSignalHandler.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include "base/Log.h"
#include "window/OfferingCamera.h"

#include <QtTest/QSignalSpy>
#include <QtWidgets/QApplication>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QToolButton>

#include <thread>

constexpr int graceMs = 16; // after which a command is shown

class CommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commandsRunOnceWhenTheyCan();
    void throwingCallIsReported();
    void modeNameReachesTheSourceAsBytes();
    void slowCommandIsShownAndDisablesTheOthers();
    void sourceIsLeftAloneWhileCommandsAreUnderWay();
    void sourceWithoutSetupIsStarted();
    void windowGoesWhileACommandRuns();
};

void CommandsTest::commandsRunOnceWhenTheyCan()
{
    for (const Command& command : commands) {
        for (const bool isByButton : {false, true}) {
            if (isByButton && !command.button)
                continue;
            ShownWindow shown;
            QAction* const action = shown.action(command.action);
            shown.offer(false, bit(command.call)); // hidden
            QVERIFY(shown.action("actionNo_Controls_Available")->isVisible());
            shown.choose(command, isByButton);
            shown.offer(true, 0); // disabled
            shown.choose(command, isByButton);
            // In its turn: all that was asked for before comes before it.
            shown.window->setUnconfigured();
            QTRY_COMPARE(shown.log->seen(), QByteArray("cleanup"));
            shown.offer(true, bit(command.call));
            QTRY_VERIFY((action->menu() ? shown.modes()->actions()[0] : action)->isEnabled());
            shown.choose(command, isByButton);
            shown.window->setUnconfigured();
            QTRY_COMPARE(shown.log->seen(), QByteArray("cleanup ") + command.call + command.argument + " cleanup");
        }
    }
}

void CommandsTest::throwingCallIsReported()
{
    static std::atomic<int> thrown, reported;
    act = [] {
        ++thrown;
        throw std::runtime_error("no camera");
    };
    setReportSink([](const std::string& line) {
        const char* const at = moment;
        reported += at && line == std::string("Vistrel: ") + at + ": no camera" ? 1 : 1000; // and nothing else
    });
    for (const char* const call : {"canStart", "isSetup", "activeSetupMode", "framesDropped", "start", "uxClosed"}) {
        ShownWindow shown;
        thrown = reported = 0;
        moment = call;
        shown.camera->signalFeatureSetChange();
        shown.action("actionStart")->trigger();
        QTRY_COMPARE(shown.log->seen(), QByteArray("start"));
        QTRY_VERIFY2(thrown > 0 || call == QByteArray("uxClosed"), call); // a window that closes asks nothing more
        QTest::keyClick(shown.window, Qt::Key_W, Qt::ControlModifier);
        QTRY_VERIFY(shown.log->seen().endsWith("gone"));
        moment = nullptr;
        QVERIFY2(thrown > 0, call);
        QCOMPARE(reported.load(), thrown.load());
    }
    setReportSink(nullptr);
}

void CommandsTest::modeNameReachesTheSourceAsBytes()
{
    // With a mnemonic's mark, long, and no text in the local encoding.
    for (const QByteArray& name : {QByteArray("Slow & dark"), QByteArray(10000, 'm'), QByteArray("\xFF\xFE")}) {
        ShownWindow shown;
        QVERIFY(shown.camera->addSetupMode(name, "Long exposure"));
        shown.offer(true, bit("setupMode"));
        const QList<QAction*> modes = shown.modes()->actions();
        QCOMPARE(modes.size(), 2);
        QVERIFY(modes[1]->isChecked() && !modes[0]->isChecked()); // the active one
        QCOMPARE(qobject_cast<QToolButton*>(shown.button("actionSetup_Cleanup"))->menu(), shown.modes());
        shown.log->gate.close();
        modes[1]->trigger();
        const QString message = QStringLiteral("Acquisition setup (") + QString::fromLocal8Bit(name.left(11));
        QTRY_VERIFY(shown.window->statusBar()->currentMessage().startsWith(message));
        QCOMPARE(shown.window->width(), 1200); // no wider for it
        shown.log->gate.openForGood();
        QTRY_COMPARE(shown.log->seen(), QByteArray("setupMode(" + name + ")"));
    }
}

void CommandsTest::slowCommandIsShownAndDisablesTheOthers()
{
    ShownWindow shown;
    const auto* const progress = shown.window->findChild<QProgressBar*>();
    const auto* const bar = shown.window->statusBar();
    const QPointer<QWidget> button = shown.button("actionStart");
    shown.log->success = false;
    for (const char* const end : {"Operation failed!", ""}) {
        shown.log->gate.close();
        QTest::keyClick(shown.window, Qt::Key_Period);
        QTRY_VERIFY(progress->isVisible());
        QCOMPARE(bar->currentMessage(), QStringLiteral("Acquisition stop ongoing"));
        for (const Command& command : commands)
            shown.choose(command, command.button != nullptr); // does nothing
        shown.log->gate.openForGood();
        QTRY_VERIFY(!progress->isVisible());
        QVERIFY(shown.action("actionTrigger")->isEnabled());
        QCOMPARE(bar->currentMessage(), QString::fromLatin1(end));
        shown.log->success = true;
    }
    QTest::keyClick(shown.window, Qt::Key_Period); // quick
    QTRY_COMPARE(shown.log->seen(), QByteArray("stop stop stop"));
    QVERIFY(!QTest::qWaitFor([&] { return progress->isVisible(); }, 2 * graceMs));
    QVERIFY(button); // the tool bar stays when it is to show the same
}

void CommandsTest::sourceIsLeftAloneWhileCommandsAreUnderWay()
{
    ShownWindow shown;
    shown.push(Mono8);
    shown.window->surfaceScrollArea()->surface()->setActivePixel(1, 1);
    shown.log->gate.close();
    QTest::keyClick(shown.window, Qt::Key_F10);
    QTRY_COMPARE(shown.log->gate.arrived(), 1);
    shown.window->setRunning(); // waits
    asked = 0;
    QSignalSpy announced(shown.camera->signalHandler(), SIGNAL(featureSetChanged()));
    std::thread([camera = shown.camera] {
        camera->able = 0;
        for (int i = 0; i < 500; ++i) {
            camera->signalAcquisitionStateChange();
            camera->signalFeatureSetChange();
        }
        camera->able = anyCommand;
    }).join();
    QTRY_COMPARE(announced.size(), 500);
    shown.window->copyCurrentImageStats();
    const QAction* const added = shown.window->addToolBarAction(QStringLiteral("At once"));
    QVERIFY(added->associatedWidgets().contains(shown.window->findChild<QToolBar*>()));
    const QAction* const start = shown.action("actionStart");
    QTRY_VERIFY(!start->isEnabled());
    QSignalSpy changed(start, SIGNAL(changed()));
    shown.log->gate.open();
    QTRY_COMPARE(shown.log->gate.arrived(), 2);
    QTRY_COMPARE(shown.window->statusBar()->currentMessage(), QStringLiteral("Acquisition setup and start ongoing"));
    QVERIFY(!start->isEnabled() && changed.isEmpty()); // nor in between
    QCOMPARE(asked.load(), 0);
    shown.log->gate.openForGood();
    QTRY_VERIFY(start->isEnabled());
    QCOMPARE(shown.log->seen(), QByteArray("trigger setup start"));
    QVERIFY2(asked < 300, QByteArray::number(asked.load())); // once for all that was announced
}

void CommandsTest::sourceWithoutSetupIsStarted()
{
    ShownWindow shown;
    shown.offer(false, 0);
    shown.window->setRunning();
    shown.window->setRunning(); // it runs when this one's turn comes
    shown.window->setConfigured();
    shown.window->setUnconfigured();
    QTRY_COMPARE(shown.log->seen(), QByteArray("setup start stop cleanup"));
}

void CommandsTest::windowGoesWhileACommandRuns()
{
    act = [] { throw 3; };
    for (const Command& command : commands) {
        for (const bool isDeleted : {false, true}) {
            ShownWindow shown;
            shown.log->gate.close();
            shown.offer(true, bit(command.call));
            shown.choose(command);
            QTRY_COMPARE(shown.log->gate.arrived(), 1);
            moment = isDeleted ? command.call : nullptr; // also when it throws
            shown.window->setUnconfigured();             // which never begins
            if (isDeleted)
                shown.host.reset();
            else
                shown.window->close();
            QTRY_VERIFY(!shown.window);
            QCOMPARE(shown.log->seen(), QByteArray(isDeleted ? "" : "closed"));
            // Nor does the command hold up another window.
            ShownWindow next;
            next.window->setUnconfigured();
            QTRY_COMPARE(next.log->seen(), QByteArray("cleanup"));
            shown.log->gate.openForGood();
            QTRY_COMPARE(shown.log->seen(),
                         QByteArray(isDeleted ? "" : "closed ") + command.call + command.argument + " gone");
            moment = nullptr;
        }
    }
}

QTEST_MAIN(CommandsTest)
#include "CommandsTest.moc"
