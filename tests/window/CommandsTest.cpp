// SPDX-License-Identifier: MIT
// Tests each command of the main window by mouse and key, and what is left of the window when its source fails it.
#include <Vistrel/AcquisitionSignalHandler.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>

#include "base/Report.h"
#include "window/OfferingCamera.h"
#include "window/StartFixedEditor.h"

#include <QtCore/QTimer>
#include <QtTest/QSignalSpy>
#include <QtWidgets/QApplication>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QToolButton>

#include <thread>

class CommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void commandsRunOnceWhenTheyCan_data();
    void commandsRunOnceWhenTheyCan();
    void throwingQueryIsReported_data();
    void throwingQueryIsReported();
    void modeNameReachesTheSourceAsBytes_data();
    void modeNameReachesTheSourceAsBytes();
    void sourceIsLeftAloneWhileCommandsAreUnderWay();
    void sourceWithoutSetupIsStarted();
    void windowGoesWhileACommandRuns_data();
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

void CommandsTest::init()
{
    thrower = nullptr;
    thrown = reported = reportedOther = 0;
}

void CommandsTest::commandsRunOnceWhenTheyCan_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("way");
    for (int i = 0; i < int(std::size(commands)); ++i) {
        for (const char* const way : {"menu", "button", "key"}) {
            if (*commands[i].key || qstrcmp(way, "key") != 0)
                QTest::addRow("%s by %s", commands[i].call, way) << i << QByteArray(way);
        }
    }
}

void CommandsTest::commandsRunOnceWhenTheyCan()
{
    QFETCH(int, index);
    QFETCH(QByteArray, way);
    const Command& command = commands[index];
    const bool isArrow = bit(command.call) == bit("setupMode") && way == "button";
    const bool isToggle = isArrow || (bit(command.call) & (bit("setup") | bit("cleanup")));
    const unsigned able = bit(command.call) | (isArrow ? bit("setup") : 0); // for the button that it is on
    ShownWindow shown;
    auto* const editor = shown.window->findChild<StartFixedEditor*>();
    const auto act = [&] {
        QMenu* const modes = shown.modes();
        if (way == "key") {
            QTest::keySequence(shown.window, QKeySequence(QLatin1String(command.key)));
        } else if (way == "menu") {
            shown.choose(command.action);
        } else if (QWidget* const button = shown.button(isToggle ? "actionSetup_Cleanup" : command.action)) {
            QTRY_VERIFY(button->isVisible());
            if (isArrow) { // its click waits until the menu is closed
                QTimer::singleShot(0, modes, [modes] {
                    if (modes->isVisible())
                        ShownWindow::click(modes, modes->actions()[0]);
                    modes->close();
                });
            }
            const int x = isArrow ? button->width() - 3 : 8;
            QTest::mouseClick(button, Qt::LeftButton, {}, {x, button->height() / 2});
        }
        if (editor->isVisible())
            QTest::mouseClick(editor->findChild<QPushButton*>(), Qt::LeftButton);
    };
    shown.offer(false, able); // hidden
    act();
    shown.offer(true, 0); // disabled
    act();
    // In its turn: all that was asked for before comes before it.
    shown.window->setUnconfigured();
    std::string expected = "cleanup";
    QTRY_COMPARE(shown.log->seen(), expected);
    shown.offer(true, able);
    QMenu* const menu = shown.action(command.action)->menu();
    QTRY_VERIFY((menu ? menu->actions()[0] : shown.action(command.action))->isEnabled());
    act();
    shown.window->setUnconfigured();
    expected += std::string(" ") + command.call + command.argument + " cleanup";
    QTRY_COMPARE(shown.log->seen(), expected);
}

void CommandsTest::throwingQueryIsReported_data()
{
    QTest::addColumn<QByteArray>("query");
    for (const char* const query : {"canStart", "isSetup", "isPaused", "activeSetupMode", "framesDropped", "uxClosed"})
        QTest::newRow(query) << QByteArray(query);
}

void CommandsTest::throwingQueryIsReported()
{
    QFETCH(QByteArray, query);
    thrower = query.constData();
    {
        ShownWindow shown;
        shown.window->setConfigured();
        QTRY_COMPARE(shown.log->seen(), std::string("setup"));
        QVERIFY(shown.window->isVisible());
        QTest::keyClick(shown.window, Qt::Key_W, Qt::ControlModifier);
        QTRY_VERIFY(!shown.window);
    }
    QVERIFY(thrown > 0);
    QCOMPARE(reported.load(), thrown.load());
    QCOMPARE(reportedOther.load(), 0);
}

void CommandsTest::modeNameReachesTheSourceAsBytes_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("long") << QByteArray(10000, 'm');
    QTest::newRow("no text in the local encoding") << QByteArray("\xFF\xFE");
}

void CommandsTest::modeNameReachesTheSourceAsBytes()
{
    QFETCH(QByteArray, name);
    ShownWindow shown;
    const QSize before = shown.window->size();
    QVERIFY(shown.camera->addSetupMode(name, name));
    shown.offer(true, bit("setupMode"));
    QCOMPARE(shown.modes()->actions().size(), 2);
    QVERIFY(shown.modes()->actions()[1]->isChecked()); // the active one
    shown.log->gate.close();
    shown.choose("actionSetup_Mode");
    QTRY_VERIFY(shown.window->statusBar()->currentMessage().startsWith(QLatin1String("Acquisition setup (")));
    QCOMPARE(shown.window->size(), before);
    shown.log->gate.openForGood();
    QTRY_COMPARE(shown.log->seen(), "setupMode(" + name.toStdString() + ")");
}

void CommandsTest::sourceIsLeftAloneWhileCommandsAreUnderWay()
{
    ShownWindow shown;
    const TestFrame frame(4, 3, Mono8, 10);
    shown.camera->push(frame.raw);
    QTRY_VERIFY(shown.action("actionSave_Image")->isEnabled());
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
    const auto areAll = [&](bool enabled) {
        bool are = shown.action("actionSetup_Cleanup")->isEnabled() == enabled &&
                   shown.modes()->actions()[0]->isEnabled() == enabled;
        for (const Command& command : commands)
            are = are && (shown.action(command.action)->menu() || shown.action(command.action)->isEnabled() == enabled);
        return are;
    };
    QTRY_VERIFY(areAll(false));
    QSignalSpy changed(shown.action("actionStart"), SIGNAL(changed()));
    shown.log->gate.open();
    QTRY_COMPARE(shown.log->gate.arrived(), 2);
    QTRY_COMPARE(shown.window->statusBar()->currentMessage(), QStringLiteral("Acquisition setup and start ongoing"));
    QVERIFY(areAll(false) && changed.isEmpty()); // nor in between
    QCOMPARE(asked.load(), 0);
    QCOMPARE(shown.camera->frameLocks.load(), locks);
    shown.log->gate.openForGood();
    QTRY_VERIFY(areAll(true));
    QCOMPARE(shown.log->seen(), std::string("trigger setup start"));
}

void CommandsTest::sourceWithoutSetupIsStarted()
{
    class Plain : public PushSource
    {
    public:
        explicit Plain(std::shared_ptr<Log> log) : m_log(std::move(log)) {}
        bool isRunning() const override { return m_isRunning; }
        bool start() override { return m_isRunning = m_log->add("start"); }
        bool stop() override { return m_log->add("stop") && !(m_isRunning = false); }

    private:
        const std::shared_ptr<Log> m_log;
        std::atomic<bool> m_isRunning{false};
    };
    const auto log = std::make_shared<Log>();
    WindowQt window{ScopedAcquisitionInterface(new Plain(log))};
    window.setRunning();
    window.setRunning(); // it runs when this one's turn comes
    window.setConfigured();
    window.setRunning();
    QTRY_COMPARE(log->seen(), std::string("start stop start"));
}

void CommandsTest::windowGoesWhileACommandRuns_data()
{
    QTest::addColumn<bool>("isDeleted");
    QTest::addColumn<bool>("throws");
    for (const bool throws : {false, true}) {
        QTest::addRow("closed, the command %s", throws ? "throws" : "fails") << false << throws;
        QTest::addRow("deleted, the command %s", throws ? "throws" : "fails") << true << throws;
    }
}

void CommandsTest::windowGoesWhileACommandRuns()
{
    QFETCH(bool, isDeleted);
    QFETCH(bool, throws);
    const std::string closed = isDeleted ? "" : "closed ";
    for (const Command& command : commands) {
        init();
        ShownWindow shown;
        thrower = throws ? command.call : nullptr;
        shown.log->success = false;
        shown.log->gate.close();
        QAction* const action = shown.action(command.action);
        (action->menu() ? shown.modes()->actions()[0] : action)->trigger();
        if (auto* const editor = shown.window->findChild<StartFixedEditor*>(); editor->isVisible())
            editor->findChild<QPushButton*>()->click();
        QTRY_COMPARE(shown.log->gate.arrived(), 1);
        if (isDeleted)
            delete shown.window;
        else
            shown.window->close();
        QTRY_VERIFY(!shown.window);
        QCOMPARE(QByteArray::fromStdString(shown.log->seen()), QByteArray::fromStdString(closed).trimmed());
        shown.log->gate.openForGood();
        QTRY_COMPARE(shown.log->seen(), closed + command.call + command.argument + " gone");
        QCOMPARE(reported.load(), throws ? 1 : 0);
        QCOMPARE(reportedOther.load(), 0);
    }
    // A command that does not return holds up no other window.
    ShownWindow blocked;
    blocked.log->gate.close();
    blocked.action("actionStart")->trigger();
    delete blocked.window;
    ShownWindow next;
    next.action("actionTrigger")->trigger();
    QTRY_COMPARE(next.log->seen(), std::string("trigger"));
}

void CommandsTest::nothingPilesUp()
{
    ShownWindow shown;
    const TestFrame frame(4, 3, Mono8, 10);
    QSignalSpy published(shown.window->surfaceStream(), SIGNAL(imageUpdated()));
    shown.camera->push(frame.raw);
    QTRY_VERIFY(shown.action("actionSave_Image")->isEnabled());
    const auto objects = [&shown] {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return shown.window->findChildren<QObject*>().size();
    };
    const int before = objects();
    const int windows = QApplication::topLevelWidgets().size();
    const qint64 icon = shown.window->windowIcon().cacheKey();
    for (int i = 0; i < 100; ++i) {
        shown.camera->push(frame.raw);
        QVERIFY(published.wait());
    }
    QCOMPARE(objects(), before);
    QCOMPARE(shown.window->windowIcon().cacheKey(), icon);
    // Announcements that come together are looked at once; what is offered as before stays as it is.
    asked = 0;
    shown.window->updateFeatureSet();
    const int askedOnce = asked.exchange(0);
    const QPointer<QWidget> button = shown.button("actionStart");
    for (int i = 0; i < 1000; ++i) {
        shown.camera->signalFeatureSetChange();
        shown.camera->signalAcquisitionStateChange();
    }
    QTRY_VERIFY(asked > askedOnce);
    QVERIFY(asked < 5 * askedOnce);
    QVERIFY(button);
    QCOMPARE(objects(), before);
    QCOMPARE(QApplication::topLevelWidgets().size(), windows);
    QTest::mouseClick(shown.button("actionSetup_Cleanup"), Qt::LeftButton, {}, QPoint(8, 8));
    shown.window->setUnconfigured();
    QTRY_COMPARE(shown.log->seen(), std::string("cleanup cleanup"));
}

QTEST_MAIN(CommandsTest)
#include "CommandsTest.moc"
