// SPDX-License-Identifier: MIT
// Tests the application object: one at a time, its event loop, its idle methods. Every test makes its own.
#include "base/Report.h"

#include <Vistrel/Action.h>
#include <Vistrel/Application.h>
#include <Vistrel/MessageBoxDialog.h>
#include <Vistrel/Window.h>
#include <Vistrel/WindowQt.h>

#include "support/FakeSources.h"

#include <QtCore/QTemporaryDir>
#include <QtCore/QTimer>
#include <QtTest/QtTest>
#include <QtWidgets/QAction>

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

/// A source whose setup takes its time, or never ends.
class SlowSource : public PushSource
{
public:
    struct Progress
    {
        Gate gate;
        std::atomic<bool> isGone{false};
    };
    explicit SlowSource(Progress& progress) : m_progress(progress) { setUp = false; }
    ~SlowSource() override { m_progress.isGone = true; }
    bool setup() override { return m_progress.gate.pass(), true; }

private:
    Progress& m_progress;
};

/// A source whose setup asks the user.
class AskingSource : public PushSource
{
public:
    struct Progress
    {
        std::atomic<bool> isAsking{false};
        std::atomic<bool> isGone{false};
    };
    explicit AskingSource(Progress& progress) : m_progress(progress) { setUp = false; }
    ~AskingSource() override { m_progress.isGone = true; }
    bool setup() override
    {
        m_progress.isAsking = true;
        return MessageBoxDialog::question(nullptr, "", "", DialogButton::Yes, DialogButton::Yes) == DialogButton::Yes;
    }

private:
    Progress& m_progress;
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
    void initTestCase();
    void secondIsRefused();
    void failedConstructionLeavesNothing();
    void commandLineIsCopied();
    void exitEndsTheLoopOnce();
    void idleMethodsRunInOrder();
    void idleMethodsRunOnlyInTheLoop();
    void lastWindowEndsTheLoop();
    void endTakesTheWindowsAlong();

private:
    QTemporaryDir m_runtimeDir;
};

// The toolkit warns of a session without this folder.
void ApplicationTest::initTestCase()
{
    QVERIFY(m_runtimeDir.isValid());
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_runtimeDir.path()));
}

void ApplicationTest::secondIsRefused()
{
    for (int round = 0; round < 2; ++round) {
        const Application first(3, commandLine);
        QByteArray reason;
        try {
            const Application second(3, commandLine);
        } catch (const std::runtime_error& error) {
            reason = error.what();
        }
        QCOMPARE(reason, QByteArray("Vistrel::Application::Application"
                                    ": The Applicaion global has already been allocated."));
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

void ApplicationTest::idleMethodsRunInOrder()
{
    QStringList lines;
    reportedLines = &lines;
    setReportSink([](const std::string& line) { reportedLines->append(QString::fromStdString(line)); });
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
    const int code = application.exec();
    setReportSink(nullptr);
    QCOMPARE(code, 3);
    QVERIFY2(application.trace.startsWith("abbcdabbcd" + QByteArray(100, 'n')), application.trace.constData());
    QCOMPARE(lines.mid(0, 2), QStringList({QStringLiteral("Vistrel: idle method: the film ran out"),
                                           QStringLiteral("Vistrel: idle method: unknown exception")}));
}

void ApplicationTest::idleMethodsRunOnlyInTheLoop()
{
    TracedApplication application;
    application.add('a', [&] { application.exit(0); });
    const auto spin = [] {
        for (int i = 0; i < 20; ++i)
            QCoreApplication::processEvents();
    };
    spin();
    QCOMPARE(application.trace, QByteArray());
    application.exec();
    const QByteArray traced = application.trace;
    QVERIFY(!traced.isEmpty());
    spin();
    QCOMPARE(application.trace, traced);
    application.exec();
    QVERIFY(application.trace.size() > traced.size());
}

void ApplicationTest::lastWindowEndsTheLoop()
{
    struct Quit : AbstractActionInterface
    {
        void triggered(bool) override { delete action()->window(); }
    };
    Application application(3, commandLine);
    auto* const window = new Window(ScopedAcquisitionInterface(new PushSource));
    window->show();
    QAction* const quit = window->addToolBarAction(ScopedActionInterface(new Quit), "Quit")->qt_handle();
    QTimer::singleShot(0, quit, [quit] { quit->trigger(); });
    QTimer::singleShot(20000, QCoreApplication::instance(), [&] { application.exit(9); });
    QCOMPARE(application.exec(), 0);
}

void ApplicationTest::endTakesTheWindowsAlong()
{
    QStringList lines;
    reportedLines = &lines;
    setReportSink([](const std::string& line) { reportedLines->append(QString::fromStdString(line)); });
    auto& never = *new SlowSource::Progress; // for a thread that stays
    SlowSource::Progress slow;
    AskingSource::Progress asking;
    std::unique_ptr<Window> outlived;
    std::thread opener;
    {
        const Application application(3, commandLine);
        for (SlowSource::Progress* const progress : {&slow, &never}) {
            (new WindowQt(ScopedAcquisitionInterface(new SlowSource(*progress))))->setConfigured();
            QTRY_COMPARE(progress->gate.arrived(), 1);
        }
        outlived = std::make_unique<Window>(ScopedAcquisitionInterface());
        (new WindowQt(ScopedAcquisitionInterface(new AskingSource(asking))))->setConfigured();
        while (!asking.isAsking) // no box without events
            std::this_thread::yield();
        opener = std::thread([&] {
            while (Application::global())
                std::this_thread::yield();
            slow.gate.open();
        });
    }
    opener.join();
    setReportSink(nullptr);
    QVERIFY(slow.isGone && asking.isGone && !never.isGone && !outlived->good());
#if defined(NDEBUG)
    outlived->setApplicationAbout("a", "b");
#endif
    QCOMPARE(lines,
             QStringList(QStringLiteral("Vistrel::Application: A source whose call has not returned is left alone.")));
}

QTEST_APPLESS_MAIN(ApplicationTest)
#include "ApplicationTest.moc"
