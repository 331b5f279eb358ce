// SPDX-License-Identifier: MIT
// Tests the application object: one at a time, its event loop, its idle methods. Every test makes its own.
#include "app/c/Calls.h"
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

/// A source whose setup is a function, which goes with it.
class BusySource : public PushSource
{
public:
    explicit BusySource(std::function<bool()> work) : m_work(std::move(work)) { setUp = false; }
    bool setup() override { return m_work(); }

private:
    const std::function<bool()> m_work;
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
    void nothingIsThrownIntoC();
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
    auto argv = std::make_unique<std::vector<const char*>>(1, argument->c_str());
    const Application application(1, argv->data());
    argument.reset();
    argv.reset();
    QCOMPARE(QCoreApplication::arguments(), QStringList(QString(100, QLatin1Char('x'))));
}

void ApplicationTest::exitEndsTheLoopOnce()
{
    Application application(3, commandLine);
    application.exit(4);
    QCOMPARE(application.exec(), 4);
    std::thread([&] { application.exit(5); }).join();
    QCOMPARE(application.exec(), 5);
    std::thread thread;
    QTimer::singleShot(0, qApp, [&] { thread = std::thread([&] { application.exit(6); }); });
    QCOMPARE(application.exec(), 6);
    thread.join();
    QTimer::singleShot(0, qApp, [&] { // the first idle method comes while the loop runs
        application.addIdleMethod([](void* self) { static_cast<Application*>(self)->exit(7); }, &application);
    });
    QCOMPARE(application.exec(), 7);
}

void ApplicationTest::idleMethodsRunInOrderInTheLoopAlone()
{
    const Reported lines;
    Application application(3, commandLine);
    QByteArray trace;
    std::deque<std::function<void()>> methods;
    const auto addAgain = [&] {
        application.addIdleMethod([](void* one) { (*static_cast<std::function<void()>*>(one))(); }, &methods.back());
    };
    const auto add = [&](char name, const std::function<void()>& after) {
        methods.emplace_back([&trace, name, after] { trace += name, after(); });
        addAgain();
    };
    int added = 0;
    add('a', [&] {
        for (; added < 100; ++added) // as many as make any list move
            add('n', [&] { application.exit(3); });
    });
    add('b', [] {});
    addAgain();
    application.addIdleMethod(nullptr, nullptr);
    add('c', [] { throw std::runtime_error("the film ran out"); });
    add('d', [] { throw 7; });
    const auto runsNone = [&] {
        const QByteArray before = trace;
        for (int i = 0; i < 20; ++i)
            QCoreApplication::processEvents();
        return trace == before;
    };
    QVERIFY(runsNone());
    QCOMPARE(application.exec(), 3);
    QVERIFY(runsNone());
    QVERIFY2(trace.startsWith("abbcdabbcd" + QByteArray(100, 'n')), trace.constData());
    QCOMPARE(lines.mid(0, 2), QStringList({QStringLiteral("Vistrel: idle method: the film ran out"),
                                           QStringLiteral("Vistrel: idle method: unknown exception")}));
}

void ApplicationTest::endTakesTheWindowsAlong()
{
    const Reported lines;
    auto& never = *new Gate; // for a thread that stays
    Gate slow, asking;
    std::unique_ptr<Window> outlived;
    std::weak_ptr<int> sources[3]; // live as long as they
    std::thread opener;
    {
        const Application application(3, commandLine);
        const auto setUp = [&sources](int number, Gate& gate, const std::function<void()>& work) {
            const auto life = std::make_shared<int>();
            sources[number] = life;
            (new WindowQt(ScopedAcquisitionInterface(new BusySource([life, work] { return work(), true; }))))
                ->setConfigured();
            while (gate.arrived() == 0) // no box without events
                std::this_thread::yield();
        };
        setUp(0, slow, [&] { slow.pass(); });
        setUp(1, never, [&never] { never.pass(); });
        outlived = std::make_unique<Window>(ScopedAcquisitionInterface());
        asking.open();
        setUp(2, asking, [&] {
            asking.pass();
            MessageBoxDialog::question(nullptr, "", "", DialogButton::Yes, DialogButton::Yes);
        });
        opener = std::thread([&] {
            while (Application::global())
                std::this_thread::yield();
            slow.open();
        });
    }
    opener.join();
    QVERIFY(sources[0].expired() && !sources[1].expired() && sources[2].expired() && !outlived->good());
#if defined(NDEBUG)
    outlived->setApplicationAbout("a", "b");
#endif
    QCOMPARE(lines,
             QStringList(QStringLiteral("Vistrel::Application: A source whose call has not returned is left alone.")));
}

void ApplicationTest::nothingIsThrownIntoC()
{
    QCOMPARE(guarded([]() -> std::int32_t { throw 1; }), VT_ERROR_EXCEPTION + 0);
}

QTEST_APPLESS_MAIN(ApplicationTest)
#include "ApplicationTest.moc"
