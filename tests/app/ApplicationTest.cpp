// SPDX-License-Identifier: MIT
// Tests the application object: one at a time, its event loop, its idle methods. Every test makes its own.
#include "base/Log.h"

#include <Vistrel/Application.h>
#include <Vistrel/MessageBoxDialog.h>
#include <Vistrel/Window.h>
#include <Vistrel/WindowQt.h>

#include "support/FakeSources.h"

#include <QtCore/QTimer>
#include <QtTest/QtTest>

#include <deque>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace Vistrel;

namespace {

const char* const commandLine[] = {"program", "one", "two words"};

QStringList* reportedLines = nullptr;

/// Takes what is reported while it lives.
struct Reported : QStringList
{
    Reported()
    {
        reportedLines = this;
        setReportSink([](const std::string& line) { reportedLines->append(QString::fromStdString(line)); });
    }
    ~Reported() { setReportSink(nullptr); }
};

/// A source whose setup is a function.
class BusySource : public PushSource
{
public:
    BusySource(std::function<bool()> work, std::atomic<bool>& isGone) : m_work(std::move(work)), m_isGone(isGone)
    {
        setUp = false;
    }
    ~BusySource() override { m_isGone = true; }
    bool setup() override { return m_work(); }

private:
    const std::function<bool()> m_work;
    std::atomic<bool>& m_isGone;
};

/// An application whose idle methods write a trace.
class TracedApplication : public Application
{
public:
    TracedApplication() : Application(3, commandLine) {}

    /// Adds an idle method that writes `name`, and then does `after`.
    void add(
        char name, const std::function<void()>& after = [] {})
    {
        m_methods.emplace_back([=] {
            trace += name;
            after();
        });
        addAgain();
    }
    void addAgain()
    {
        addIdleMethod([](void* method) { (*static_cast<std::function<void()>*>(method))(); }, &m_methods.back());
    }

    QByteArray trace;

private:
    std::deque<std::function<void()>> m_methods;
};

} // namespace

class ApplicationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void secondIsRefused();
    void failedConstructionLeavesNothing();
    void commandLineIsCopied();
    void exitEndsTheLoopOnce();
    void idleMethodsRunInOrderInTheLoopAlone();
    void endTakesTheWindowsAlong();
};

void ApplicationTest::secondIsRefused()
{
    for (int round = 0; round < 2; ++round) {
        const Application first(3, commandLine);
        QVERIFY_EXCEPTION_THROWN(Application(3, commandLine), std::runtime_error);
        QCOMPARE(Application::global(), &first);
    }
    QVERIFY(!Application::global());
    QVERIFY(!QCoreApplication::instance());
}

void ApplicationTest::failedConstructionLeavesNothing()
{
    const char* const withNull[] = {"program", nullptr, "two words"};
    QVERIFY_EXCEPTION_THROWN(Application(3, withNull), std::invalid_argument);
    QVERIFY_EXCEPTION_THROWN(Application(3, nullptr), std::invalid_argument);
    QVERIFY_EXCEPTION_THROWN(Application(-1, commandLine), std::invalid_argument);
#if defined(Q_OS_LINUX)
    const struct // of which each would end the process
    {
        const char* platform;
        const char* arguments[3];
    } missing[] = {{"", {""}},       {"xcb", {""}},    {"", {"", "-display", ":1:1"}},
                   {"nosuch", {""}}, {"xcb;no", {""}}, {"offscreen", {"", "--platform", "wayland;no"}}};
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    const QByteArray display = qgetenv("DISPLAY");
    qputenv("WAYLAND_DISPLAY", "no such compositor");
    qputenv("DISPLAY", ":no such display");
    for (const auto& row : missing) {
        qputenv("QT_QPA_PLATFORM", row.platform);
        QVERIFY_EXCEPTION_THROWN(Application(row.arguments[1] ? 3 : 1, row.arguments), std::runtime_error);
    }
    qputenv("QT_QPA_PLATFORM", "nosuch;offscreen");
    QTest::ignoreMessage(QtWarningMsg, "Could not find the Qt platform plugin \"nosuch\" in \"\"");
    Application(3, commandLine);
    qputenv("QT_QPA_PLATFORM", platform);
    qputenv("DISPLAY", display);
    qunsetenv("WAYLAND_DISPLAY");
#endif
    QVERIFY(!Application::global());
    QVERIFY(!QCoreApplication::instance());
}

void ApplicationTest::commandLineIsCopied()
{
    auto argument = std::make_unique<std::string>(100, 'x');
    auto argv = std::make_unique<std::vector<const char*>>(2, argument->c_str());
    const Application application(2, argv->data());
    argument.reset();
    argv.reset();
    QCOMPARE(QCoreApplication::arguments(),
             QStringList({QString(100, QLatin1Char('x')), QString(100, QLatin1Char('x'))}));
}

void ApplicationTest::exitEndsTheLoopOnce()
{
    TracedApplication application;
    application.exit(4);
    QCOMPARE(application.exec(), 4);
    std::thread([&] { application.exit(5); }).join();
    QCOMPARE(application.exec(), 5);

    std::thread thread;
    QTimer::singleShot(0, QCoreApplication::instance(), [&] { // the first idle method comes while the loop runs
        application.add('i', [&] {
            if (application.trace.size() == 5)
                application.exit(6);
            else if (application.trace.size() == 15)
                thread = std::thread([&] { application.exit(7); });
        });
    });
    const int codes[] = {application.exec(), application.exec()};
    thread.join();
    QCOMPARE(codes[0], 6);
    QCOMPARE(codes[1], 7);
}

void ApplicationTest::idleMethodsRunInOrderInTheLoopAlone()
{
    const Reported lines;
    TracedApplication application;
    int added = 0;
    application.add('a', [&] {
        for (; added < 100; ++added) // as many as make any list move
            application.add('n', [&] { application.exit(3); });
    });
    application.add('b');
    application.addAgain();
    application.addIdleMethod(nullptr, nullptr);
    application.add('c', [] { throw std::runtime_error("the film ran out"); });
    application.add('d', [] { throw 7; });
    const auto runsNone = [&] {
        const QByteArray before = application.trace;
        for (int i = 0; i < 20; ++i)
            QCoreApplication::processEvents();
        return application.trace == before;
    };
    QVERIFY(runsNone());
    QCOMPARE(application.exec(), 3);
    QVERIFY(runsNone());
    QVERIFY2(application.trace.startsWith("abbcdabbcd" + QByteArray(100, 'n')), application.trace.constData());
    QCOMPARE(lines.mid(0, 2), QStringList({QStringLiteral("Vistrel: idle method: the film ran out"),
                                           QStringLiteral("Vistrel: idle method: unknown exception")}));
}

void ApplicationTest::endTakesTheWindowsAlong()
{
    const Reported lines;
    auto& never = *new Gate; // for a thread that stays
    auto& isNeverGone = *new std::atomic<bool>{false};
    Gate slow, asking;
    std::atomic<bool> isSlowGone{false}, isAskingGone{false};
    std::unique_ptr<Window> outlived;
    std::thread opener;
    {
        const Application application(3, commandLine);
        const auto setUp = [](Gate& gate, std::function<bool()> work, std::atomic<bool>& isGone) {
            (new WindowQt(ScopedAcquisitionInterface(new BusySource(std::move(work), isGone))))->setConfigured();
            while (gate.arrived() == 0) // no box without events
                std::this_thread::yield();
        };
        setUp(
            slow, [&] { return slow.pass(), true; }, isSlowGone);
        setUp(
            never, [&never] { return never.pass(), true; }, isNeverGone);
        outlived = std::make_unique<Window>(ScopedAcquisitionInterface());
        asking.open();
        const auto ask = [&] {
            asking.pass();
            return MessageBoxDialog::question(nullptr, "", "", DialogButton::Yes, DialogButton::Yes) ==
                   DialogButton::Yes;
        };
        setUp(asking, ask, isAskingGone);
        opener = std::thread([&] {
            while (Application::global())
                std::this_thread::yield();
            slow.open();
        });
    }
    opener.join();
    QVERIFY(isSlowGone && isAskingGone && !isNeverGone && !outlived->good());
#if defined(NDEBUG)
    outlived->setApplicationAbout("a", "b");
#endif
    QCOMPARE(lines,
             QStringList(QStringLiteral("Vistrel::Application: A source whose call has not returned is left alone.")));
}

QTEST_APPLESS_MAIN(ApplicationTest)
#include "ApplicationTest.moc"
