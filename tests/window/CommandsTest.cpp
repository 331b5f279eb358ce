// SPDX-License-Identifier: MIT
// Tests each command of the main window by key, menu entry and button, and what is left of the window when its source
// fails it.
#include <Vistrel/AcquisitionSignalHandler.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include "base/Log.h"
#include "window/BusyWork.h"
#include "window/OfferingCamera.h"

#include <QtCore/QTimer>
#include <QtTest/QSignalSpy>
#include <QtWidgets/QApplication>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QToolButton>

#include <thread>

class CommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void commandsRunOnceWhenTheyCan();
    void throwingQueryIsReported();
    void modeNameReachesTheSourceAsBytes();
    void slowCommandIsShownAndDisablesTheOthers();
    void sourceIsLeftAloneWhileCommandsAreUnderWay();
    void sourceWithoutSetupIsStarted();
    void windowGoesWhileACommandRuns();
    void nothingPilesUp();
};

void CommandsTest::initTestCase()
{
    setReportSink([](const std::string& line) {
        const char* const name = thrower;
        ++(name && line == std::string("Vistrel: ") + name + ": no camera" ? reported : reportedOther);
    });
}

void CommandsTest::commandsRunOnceWhenTheyCan()
{
    for (const Command& command : commands) {
        for (const bool isByButton : {false, true}) {
            if (isByButton && !command.button)
                continue;
            ShownWindow shown;
            QAction* const action = shown.action(command.action);
            QVERIFY(shown.window->findChild<QMenu*>(QStringLiteral("menuAcquisition"))->actions().contains(action));
            shown.offer(false, bit(command.call)); // hidden
            QVERIFY(shown.action("actionNo_Controls_Available")->isVisible());
            shown.act(command, isByButton);
            shown.offer(true, 0); // disabled
            shown.act(command, isByButton);
            // In its turn: all that was asked for before comes before it.
            shown.window->setUnconfigured();
            QTRY_COMPARE(shown.log->seen(), QByteArray("cleanup"));
            shown.offer(true, bit(command.call));
            QTRY_VERIFY((action->menu() ? shown.modes()->actions()[0] : action)->isEnabled());
            shown.act(command, isByButton);
            shown.window->setUnconfigured();
            QTRY_COMPARE(shown.log->seen(), QByteArray("cleanup ") + command.call + command.argument + " cleanup");
        }
    }
}

void CommandsTest::throwingQueryIsReported()
{
    for (const char* const query : {"canStart", "isSetup", "activeSetupMode", "framesDropped", "start", "uxClosed"}) {
        thrown = reported = reportedOther = 0;
        ShownWindow shown;
        thrower = query;
        shown.camera->signalFeatureSetChange();
        shown.action("actionStart")->trigger();
        QTRY_COMPARE(shown.log->seen(), QByteArray("start"));
        QTRY_VERIFY2(thrown > 0 || query == QByteArray("uxClosed"), query); // a window that closes asks nothing more
        QTest::keyClick(shown.window, Qt::Key_W, Qt::ControlModifier);
        QTRY_VERIFY(shown.log->seen().endsWith("gone"));
        thrower = nullptr;
        QVERIFY2(thrown > 0, query);
        QCOMPARE(reported.load(), thrown.load());
        QCOMPARE(reportedOther.load(), 0);
    }
}

void CommandsTest::modeNameReachesTheSourceAsBytes()
{
    // With a mnemonic's mark, empty, long, and no text in the local encoding.
    for (const QByteArray& name :
         {QByteArray("Slow & dark"), QByteArray(""), QByteArray(10000, 'm'), QByteArray("\xFF\xFE")}) {
        ShownWindow shown;
        const QSize before = shown.window->size();
        QVERIFY(shown.camera->addSetupMode(name, "Long exposure"));
        shown.offer(true, bit("setupMode"));
        const QList<QAction*> modes = shown.modes()->actions();
        QCOMPARE(modes.size(), 2);
        QVERIFY(modes[1]->isChecked() && modes[1]->font().bold() && !modes[0]->isChecked()); // the active one
        QCOMPARE(modes[1]->toolTip(), QStringLiteral("Long exposure"));
        QCOMPARE(qobject_cast<QToolButton*>(shown.button("actionSetup_Cleanup"))->menu(), shown.modes());
        shown.log->gate.close();
        modes[1]->trigger();
        const QString message = QStringLiteral("Acquisition setup (") + QString::fromLocal8Bit(name.left(11));
        QTRY_VERIFY(shown.window->statusBar()->currentMessage().startsWith(message));
        QCOMPARE(shown.window->size(), before);
        shown.log->gate.openForGood();
        QTRY_COMPARE(shown.log->seen(), QByteArray("setupMode(" + name + ")"));
    }
}

void CommandsTest::slowCommandIsShownAndDisablesTheOthers()
{
    ShownWindow shown;
    const auto* const progress = shown.window->findChild<QProgressBar*>();
    const auto* const bar = shown.window->statusBar();
    shown.log->success = false;
    for (const char* const end : {"Operation failed!", ""}) {
        shown.log->gate.close();
        QTest::keyClick(shown.window, Qt::Key_Period);
        QTRY_VERIFY(progress->isVisible());
        QCOMPARE(bar->currentMessage(), QStringLiteral("Acquisition stop ongoing"));
        for (const Command& command : commands)
            shown.act(command, command.button != nullptr); // does nothing
        shown.log->gate.openForGood();
        QTRY_VERIFY(!progress->isVisible());
        QVERIFY(shown.action("actionTrigger")->isEnabled());
        QCOMPARE(bar->currentMessage(), QString::fromLatin1(end));
        shown.log->success = true;
    }
    QTest::keyClick(shown.window, Qt::Key_Period); // quick
    QTRY_COMPARE(shown.log->seen(), QByteArray("stop stop stop"));
    QTimer later; // than a slow command is shown
    QSignalSpy passed(&later, &QTimer::timeout);
    later.start(2 * BusyWork::graceMs);
    QVERIFY(passed.wait() && !progress->isVisible());
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
    const int locks = shown.camera->frameLocks;
    QSignalSpy announced(shown.camera->signalHandler(), SIGNAL(featureSetChanged()));
    std::thread other([camera = shown.camera] {
        for (unsigned i = 0; i < 500; ++i) {
            camera->able = i % 2 ? anyCommand : 0u;
            camera->signalAcquisitionStateChange();
            camera->signalFeatureSetChange();
        }
    });
    other.join();
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
    QCOMPARE(shown.camera->frameLocks.load(), locks);
    shown.log->gate.openForGood();
    QTRY_VERIFY(start->isEnabled());
    QCOMPARE(shown.log->seen(), QByteArray("trigger setup start"));
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
    for (const Command& command : commands) {
        for (const bool isDeleted : {false, true}) {
            ShownWindow shown;
            shown.log->gate.close();
            shown.offer(true, bit(command.call));
            shown.act(command);
            QTRY_COMPARE(shown.log->gate.arrived(), 1);
            thrower = isDeleted ? command.call : nullptr; // also when it throws
            shown.window->setUnconfigured();              // which never begins
            if (isDeleted)
                delete shown.window;
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
            thrower = nullptr;
        }
    }
}

// Announcements that come together are looked at once; what is offered as before stays as it is.
void CommandsTest::nothingPilesUp()
{
    ShownWindow shown;
    const auto objects = [&shown] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return shown.window->findChildren<QObject*>().size() + QApplication::topLevelWidgets().size();
    };
    const int before = objects();
    const qint64 icon = shown.window->windowIcon().cacheKey();
    const QPointer<QWidget> button = shown.button("actionStart");
    asked = 0;
    shown.window->updateFeatureSet();
    const int askedOnce = asked.exchange(0);
    for (int i = 0; i < 1000; ++i) {
        shown.camera->signalFeatureSetChange();
        shown.camera->signalAcquisitionStateChange();
    }
    QTRY_VERIFY(asked > askedOnce);
    QVERIFY(button && asked < 5 * askedOnce);
    QCOMPARE(shown.window->windowIcon().cacheKey(), icon);
    QCOMPARE(objects(), before);
}

QTEST_MAIN(CommandsTest)
#include "CommandsTest.moc"
