// SPDX-License-Identifier: MIT
// Tests what a source gets without overriding anything: defaults, capabilities, setup modes, the relay of signals.
#include "base/Report.h"

#include <Vistrel/AbstractAcquisitionInterface.h>
#include <Vistrel/AcquisitionSignalHandler.h>

#include <QtTest/QtTest>

#include <stdexcept>
#include <thread>

using namespace Vistrel;

namespace {

class BareSource : public AbstractAcquisitionInterface
{
public:
    bool isSetup() const override { return false; }
    bool isRunning() const override { return running; }
    bool getNextFrame(RawImage* const, ScopedLock* const) override { return false; }
    ScopedLock getFrameLock(const RawImage&) override { return {}; }

    using AbstractAcquisitionInterface::signalAcquisitionStateChange;
    using AbstractAcquisitionInterface::signalFeatureSetChange;
    using AbstractAcquisitionInterface::signalGetFrameNow;

    bool running = false;
};

/// Notes which command came, on which thread; throws when told to.
class CommandedSource : public BareSource
{
public:
    enum Throws { Nothing, Exception, SomethingElse };

    bool setup() override { return note("setup"); }
    bool cleanup() override { return note("cleanup"); }
    bool startSingleReverse() override { return note("startSingleReverse"); }
    bool startReverse() override { return note("startReverse"); }
    bool start() override { return note("start"); }
    bool startFixed(std::size_t frames) override
    {
        count = frames;
        return note("startFixed");
    }
    bool startSingle() override { return note("startSingle"); }
    bool pause() override { return note("pause"); }
    bool stop() override { return note("stop"); }

    Throws throws = Nothing;
    std::size_t count = 0;
    QByteArrayList commands;
    QThread* thread = nullptr;

private:
    bool note(const char* command)
    {
        commands += command;
        thread = QThread::currentThread();
        if (throws == Exception)
            throw std::runtime_error("the shutter is stuck");
        if (throws == SomethingElse)
            throw 7;
        return true;
    }
};

class Receiver : public QObject
{
    Q_OBJECT

public:
    QByteArrayList received;
    QThread* thread = nullptr;

public Q_SLOTS:
    void stateChanged() { note("state"); }
    void featuresChanged() { note("features"); }
    void frameNow() { note("frame"); }

private:
    void note(const char* name)
    {
        received += name;
        thread = QThread::currentThread();
    }
};

struct Capability
{
    const char* name;
    bool (AbstractAcquisitionInterface::*has)() const;
    void (AbstractAcquisitionInterface::*set)(bool);
};

#define CAPABILITY(name)                                                                                               \
    Capability                                                                                                         \
    {                                                                                                                  \
#name, &AbstractAcquisitionInterface::has##name, &AbstractAcquisitionInterface::setHas##name                   \
    }

const Capability capabilities[] = {
    CAPABILITY(Setup),        CAPABILITY(SetupMode),     CAPABILITY(Cleanup),         CAPABILITY(Trigger),
    CAPABILITY(StartReverse), CAPABILITY(Start),         CAPABILITY(StartFixed),      CAPABILITY(StartSingle),
    CAPABILITY(Pause),        CAPABILITY(Stop),          CAPABILITY(FrameRate),       CAPABILITY(FramesQueued),
    CAPABILITY(FramesFilled), CAPABILITY(FramesDropped), CAPABILITY(FramesDelivered), CAPABILITY(StartSingleReverse),
};

QStringList* reportedLines = nullptr;

} // namespace

class AcquisitionInterfaceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stoppedFollowsRunning();
    void capabilitiesAreIndependent();
    void setupModesAreNamedOnce();
    void textOut_data();
    void textOut();
    void textOutRefusals();
    void signalsReachQueuedReceivers();
    void slotsRunCommands_data();
    void slotsRunCommands();
};

void AcquisitionInterfaceTest::stoppedFollowsRunning()
{
    BareSource source;
    const AbstractAcquisitionInterface& base = source;
    QVERIFY(base.isStopped());
    source.running = true;
    QVERIFY(!base.isStopped());
}

void AcquisitionInterfaceTest::capabilitiesAreIndependent()
{
    BareSource source;
    for (const Capability& changed : capabilities) {
        QVERIFY2(!(source.*changed.has)(), changed.name);
        (source.*changed.set)(true);
        for (const Capability& other : capabilities)
            QVERIFY2((source.*other.has)() == (&other == &changed), changed.name);
        (source.*changed.set)(false);
        QVERIFY2(!(source.*changed.has)(), changed.name);
    }
}

// Setup modes ---------------------------------------------------------------------------------------------------------

void AcquisitionInterfaceTest::setupModesAreNamedOnce()
{
    BareSource source;
    QCOMPARE(source.setupModeCount(), std::size_t{0});
    QVERIFY(!source.addSetupMode(nullptr));
    QVERIFY(!source.addSetupMode(nullptr, "no name"));
    QVERIFY(!source.addSetupMode("Full", nullptr));
    QCOMPARE(source.setupModeCount(), std::size_t{0});

    QVERIFY(source.addSetupMode("Full"));
    QVERIFY(source.addSetupMode("Binning", "two by two"));
    QVERIFY(!source.addSetupMode("Full"));
    QVERIFY(!source.addSetupMode("Full", "all pixels"));
    QVERIFY(source.addSetupMode("full"));
    QCOMPARE(source.setupModeCount(), std::size_t{3});

    const auto mode = [&](std::size_t index) {
        char name[32];
        char description[32];
        std::size_t size = sizeof name;
        source.setupModeName(index, name, &size);
        size = sizeof description;
        source.setupModeDescription(index, description, &size);
        return QByteArray(name) + "|" + QByteArray(description);
    };
    QCOMPARE(mode(0), QByteArray("Full|"));
    QCOMPARE(mode(1), QByteArray("Binning|two by two"));
    QCOMPARE(mode(2), QByteArray("full|"));

    source.clearSetupModes();
    QCOMPARE(source.setupModeCount(), std::size_t{0});
    QVERIFY(source.addSetupMode("Full", "all pixels"));
    QCOMPARE(mode(0), QByteArray("Full|all pixels"));
}

void AcquisitionInterfaceTest::textOut_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<quint64>("capacity");
    QTest::addColumn<QByteArray>("expected"); // of a buffer of twelve '#', with '0' for a zero
    QTest::newRow("no capacity") << QByteArray("Binning") << quint64(0) << QByteArray("############");
    QTest::newRow("one byte") << QByteArray("Binning") << quint64(1) << QByteArray("0###########");
    QTest::newRow("cut") << QByteArray("Binning") << quint64(4) << QByteArray("Bin0########");
    QTest::newRow("cut by the zero") << QByteArray("Binning") << quint64(7) << QByteArray("Binnin0#####");
    QTest::newRow("exact") << QByteArray("Binning") << quint64(8) << QByteArray("Binning0####");
    QTest::newRow("roomy") << QByteArray("Binning") << quint64(12) << QByteArray("Binning0###0");
    QTest::newRow("empty, roomy") << QByteArray("") << quint64(3) << QByteArray("0#0#########");
    QTest::newRow("empty, one byte") << QByteArray("") << quint64(1) << QByteArray("0###########");
}

void AcquisitionInterfaceTest::textOut()
{
    QFETCH(QByteArray, text);
    QFETCH(quint64, capacity);
    QFETCH(QByteArray, expected);
    BareSource source;
    source.addSetupMode(text.constData(), text.constData());
    for (const auto query :
         {&AbstractAcquisitionInterface::setupModeName, &AbstractAcquisitionInterface::setupModeDescription}) {
        QByteArray buffer(12, '#');
        std::size_t size = capacity;
        QVERIFY((source.*query)(0, buffer.data(), &size));
        QCOMPARE(buffer.replace('\0', '0'), expected);
        QCOMPARE(size, std::size_t(text.size()) + 1);

        size = capacity;
        QVERIFY((source.*query)(0, nullptr, &size));
        QCOMPARE(size, std::size_t(text.size()) + 1);
    }
}

void AcquisitionInterfaceTest::textOutRefusals()
{
    BareSource source;
    source.addSetupMode("Full", "all pixels");
    for (const auto query :
         {&AbstractAcquisitionInterface::setupModeName, &AbstractAcquisitionInterface::setupModeDescription}) {
        char buffer[] = "unchanged";
        QVERIFY(!(source.*query)(0, buffer, nullptr));
        for (const std::size_t index : {std::size_t{1}, ~std::size_t{0}}) {
            std::size_t size = sizeof buffer;
            QVERIFY(!(source.*query)(index, buffer, &size));
            QCOMPARE(size, sizeof buffer);
        }
        QCOMPARE(buffer, "unchanged");
    }
}

// Signals and slots ---------------------------------------------------------------------------------------------------

void AcquisitionInterfaceTest::signalsReachQueuedReceivers()
{
    BareSource source;
    Receiver receiver;
    const AcquisitionSignalHandler* const handler = std::as_const(source).signalHandler();
    QCOMPARE(source.signalHandler(), handler);
    QCOMPARE(handler->thread(), QThread::currentThread());
    connect(handler, SIGNAL(acquisitionStateChanged()), &receiver, SLOT(stateChanged()), Qt::QueuedConnection);
    connect(handler, SIGNAL(featureSetChanged()), &receiver, SLOT(featuresChanged()), Qt::QueuedConnection);
    connect(handler, SIGNAL(getFrameNow()), &receiver, SLOT(frameNow()), Qt::QueuedConnection);

    std::thread([&] {
        source.signalGetFrameNow();
        source.signalAcquisitionStateChange();
        source.signalFeatureSetChange();
        source.signalGetFrameNow();
    }).join();
    QVERIFY(receiver.received.isEmpty());
    QCoreApplication::processEvents();
    QCOMPARE(receiver.received, QByteArrayList({"frame", "state", "features", "frame"}));
    QCOMPARE(receiver.thread, QThread::currentThread());
}

void AcquisitionInterfaceTest::slotsRunCommands_data()
{
    QTest::addColumn<QByteArray>("command");
    for (const char* command : {"setup", "cleanup", "startSingleReverse", "startReverse", "start", "startFixed",
                                "startSingle", "pause", "stop"})
        QTest::newRow(command) << QByteArray(command);
}

void AcquisitionInterfaceTest::slotsRunCommands()
{
    QFETCH(QByteArray, command);
    const std::size_t count = (std::size_t{5} << (sizeof(std::size_t) * 8 - 4)) + 3; // needs the whole width
    CommandedSource source;
    QStringList lines;
    reportedLines = &lines;
    setReportSink([](const std::string& line) { reportedLines->append(QString::fromStdString(line)); });

    for (const auto throws : {CommandedSource::Nothing, CommandedSource::Exception, CommandedSource::SomethingElse}) {
        source.throws = throws;
        source.commands.clear();
        bool invoked = false;
        std::thread([&] {
            invoked = QMetaObject::invokeMethod(source.signalHandler(), command, Qt::QueuedConnection,
                                                command == "startFixed" ? Q_ARG(size_t, count) : QGenericArgument());
        }).join();
        QVERIFY(invoked);
        QCoreApplication::processEvents();
        QCOMPARE(source.commands, QByteArrayList({command}));
        QCOMPARE(source.thread, QThread::currentThread());
        QCOMPARE(source.count, command == "startFixed" ? count : 0);
    }
    setReportSink(nullptr);

    QCOMPARE(lines.size(), 2);
    const QRegularExpression named(QStringLiteral("\\b%1\\b").arg(QString::fromLatin1(command)));
    for (const QString& line : qAsConst(lines)) {
        QVERIFY2(line.contains(named), qPrintable(line));
        QVERIFY2(!line.contains(QLatin1Char('\n')), qPrintable(line));
    }
    QVERIFY2(lines[0].contains(QLatin1String("the shutter is stuck")), qPrintable(lines[0]));
}

QTEST_GUILESS_MAIN(AcquisitionInterfaceTest)
#include "AcquisitionInterfaceTest.moc"
