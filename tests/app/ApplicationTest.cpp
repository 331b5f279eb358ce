// SPDX-License-Identifier: MIT
// Tests the application object: one at a time, its event loop, its idle methods. Every test makes its own.
#include "base/Report.h"

#include <Vistrel/Application.h>

#include <QtCore/QTemporaryDir>
#include <QtCore/QTimer>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>

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

/// An application whose idle methods write a trace.
class TracedApplication : public Application
{
public:
    TracedApplication() : Application(3, commandLine)
    {
        reportedLines = &lines;
        setReportSink([](const std::string& line) { reportedLines->append(QString::fromStdString(line)); });
    }
    ~TracedApplication() override { setReportSink(nullptr); }

    /// Adds an idle method that writes `name`, and then does `after`.
    void add(char name, std::function<void()> after = {})
    {
        m_methods.push_back(std::make_unique<Method>(Method{this, name, std::move(after)}));
        addIdleMethod(&TracedApplication::run, m_methods.back().get());
    }

    void addAgain() { addIdleMethod(&TracedApplication::run, m_methods.back().get()); }

    QByteArray trace;
    QStringList lines;

private:
    struct Method
    {
        TracedApplication* application;
        char name;
        std::function<void()> after;
    };

    static void run(void* userData)
    {
        const Method& method = *static_cast<Method*>(userData);
        method.application->trace += method.name;
        if (method.after)
            method.after();
    }

    std::vector<std::unique_ptr<Method>> m_methods;
};

} // namespace

class ApplicationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void secondIsRefused();
    void failedConstructionLeavesNothing_data();
    void failedConstructionLeavesNothing();
    void foreignToolkitIsARefusal();
    void commandLineIsCopied();
    void exitEndsTheLoopOnce_data();
    void exitEndsTheLoopOnce();
    void exitFromAnotherThreadInsideTheLoop();
    void idleMethodsRunInOrder();
    void idleMethodsRunOnlyInTheLoop();
    void idleMethodAddedInAPass();
    void idleMethodAddedInTheLoop();
    void idleMethodThatThrows();

private:
    QTemporaryDir m_runtimeDir;
};

// The toolkit warns of a session without this folder.
void ApplicationTest::initTestCase()
{
    QVERIFY(m_runtimeDir.isValid());
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_runtimeDir.path()));
}

// One at a time -------------------------------------------------------------------------------------------------------

void ApplicationTest::secondIsRefused()
{
    QVERIFY(!Application::global());
    for (int round = 0; round < 2; ++round) {
        Application first(3, commandLine);
        QCOMPARE(Application::global(), &first);
        QByteArray reason;
        try {
            Application second(3, commandLine);
        } catch (const std::runtime_error& error) {
            reason = error.what();
        }
        QCOMPARE(reason, QByteArray("Vistrel::Application::Application"
                                    ": The Applicaion global has already been allocated."));
        QCOMPARE(Application::global(), &first);
        QVERIFY(qobject_cast<QApplication*>(QCoreApplication::instance()));
    }
    QVERIFY(!Application::global());
    QVERIFY(!QCoreApplication::instance());
}

void ApplicationTest::failedConstructionLeavesNothing_data()
{
    QTest::addColumn<int>("argc");
    QTest::addColumn<bool>("hasArgv");
    QTest::addColumn<int>("nullEntry");
    QTest::newRow("null first entry") << 3 << true << 0;
    QTest::newRow("null last entry") << 3 << true << 2;
    QTest::newRow("no argv") << 3 << false << -1;
    QTest::newRow("negative argc") << -1 << true << -1;
}

void ApplicationTest::failedConstructionLeavesNothing()
{
    QFETCH(int, argc);
    QFETCH(bool, hasArgv);
    QFETCH(int, nullEntry);
    std::vector<const char*> entries(std::begin(commandLine), std::end(commandLine));
    if (nullEntry >= 0)
        entries[std::size_t(nullEntry)] = nullptr;
    QVERIFY_EXCEPTION_THROWN(Application(argc, hasArgv ? entries.data() : nullptr), std::invalid_argument);
    QVERIFY(!Application::global());
    QVERIFY(!QCoreApplication::instance());
    const Application application(3, commandLine);
    QCOMPARE(Application::global(), &application);
}

void ApplicationTest::foreignToolkitIsARefusal()
{
    int argc = 1;
    char name[] = "program";
    char* argv[] = {name, nullptr};
    {
        const QCoreApplication foreign(argc, argv);
        QVERIFY_EXCEPTION_THROWN(Application(3, commandLine), std::runtime_error);
        QVERIFY(!Application::global());
        QCOMPARE(QCoreApplication::instance(), &foreign);
    }
    const Application application(3, commandLine);
    QCOMPARE(Application::global(), &application);
}

void ApplicationTest::commandLineIsCopied()
{
    auto argument = std::make_unique<std::string>("a rather long argument, too long for any short-string storage");
    const QString expected = QString::fromStdString(*argument);
    auto argv = std::make_unique<std::vector<const char*>>(2, argument->c_str());
    const Application application(2, argv->data());
    argument.reset();
    argv.reset();
    QCOMPARE(QCoreApplication::arguments(), QStringList({expected, expected}));
}

// The loop ------------------------------------------------------------------------------------------------------------

void ApplicationTest::exitEndsTheLoopOnce_data()
{
    QTest::addColumn<bool>("before");
    QTest::addColumn<bool>("elsewhere");
    QTest::newRow("in the loop") << false << false;
    QTest::newRow("before the loop") << true << false;
    QTest::newRow("before the loop, on another thread") << true << true;
}

void ApplicationTest::exitEndsTheLoopOnce()
{
    QFETCH(bool, before);
    QFETCH(bool, elsewhere);
    TracedApplication application;
    if (elsewhere)
        std::thread([&] { application.exit(5); }).join();
    else if (before)
        application.exit(5);
    else
        QTimer::singleShot(0, QCoreApplication::instance(), [&] { application.exit(5); });
    QCOMPARE(application.exec(), 5);

    // It is used up: the next loop runs until its own exit.
    application.add('i', [&] {
        if (application.trace.size() == 5)
            application.exit(6);
    });
    QCOMPARE(application.exec(), 6);
}

void ApplicationTest::exitFromAnotherThreadInsideTheLoop()
{
    TracedApplication application;
    std::thread thread;
    application.add('i', [&] {
        if (!thread.joinable())
            thread = std::thread([&] { application.exit(8); });
    });
    const int code = application.exec();
    thread.join();
    QCOMPARE(code, 8);
}

// Idle methods --------------------------------------------------------------------------------------------------------

void ApplicationTest::idleMethodsRunInOrder()
{
    TracedApplication application;
    int passes = 0;
    application.add('a');
    application.addAgain();
    application.addIdleMethod(nullptr, nullptr);
    application.add('b');
    application.add('z', [&] {
        if (++passes == 3)
            application.exit(0);
    });
    QCOMPARE(application.exec(), 0);
    QVERIFY2(application.trace.startsWith("aabzaabzaabz"), application.trace.constData());
    QVERIFY(application.lines.isEmpty());
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
    QEventLoop foreignLoop;
    QTimer::singleShot(0, &foreignLoop, SLOT(quit()));
    foreignLoop.exec();
    QCOMPARE(application.trace, traced);
    application.exec();
    QVERIFY(application.trace.size() > traced.size());
}

void ApplicationTest::idleMethodAddedInAPass()
{
    TracedApplication application;
    bool added = false;
    application.add('a', [&] {
        // As many as make any list move.
        for (int i = 0; i < 100 && !added; ++i)
            application.add('b', [&] { application.exit(0); });
        added = true;
    });
    application.add('z');
    application.exec();
    QVERIFY2(application.trace.startsWith("azaz" + QByteArray(100, 'b')), application.trace.constData());
}

void ApplicationTest::idleMethodAddedInTheLoop()
{
    TracedApplication application;
    QTimer::singleShot(0, QCoreApplication::instance(), [&] { application.add('a', [&] { application.exit(4); }); });
    QCOMPARE(application.exec(), 4);
}

void ApplicationTest::idleMethodThatThrows()
{
    TracedApplication application;
    int passes = 0;
    application.add('a', [] { throw std::runtime_error("the film ran out"); });
    application.add('b', [] { throw 7; });
    application.add('z', [&] {
        if (++passes == 2)
            application.exit(3);
    });
    QCOMPARE(application.exec(), 3);
    QVERIFY2(application.trace.startsWith("abzabz"), application.trace.constData());
    QVERIFY(application.lines.size() >= 4);
    for (const QString& line : qAsConst(application.lines))
        QVERIFY2(line.contains(QLatin1String("idle method")), qPrintable(line));
    QVERIFY(application.lines[0].contains(QLatin1String("the film ran out")));
}

QTEST_APPLESS_MAIN(ApplicationTest)
#include "ApplicationTest.moc"
