// SPDX-License-Identifier: MIT
// Tests what a source gets without overriding anything: setup modes, texts, the relay of commands.
#include "base/Log.h"

#include <Vistrel/AbstractAcquisitionInterface.h>
#include <Vistrel/AcquisitionSignalHandler.h>

#include <QtTest/QtTest>

#include <stdexcept>

using namespace Vistrel;

namespace {

class BareSource : public AbstractAcquisitionInterface
{
public:
    bool isSetup() const override { return false; }
    bool isRunning() const override { return false; }
    bool getNextFrame(RawImage* const, ScopedLock* const) override { return false; }
    ScopedLock getFrameLock(const RawImage&) override { return {}; }
};

/// Notes which command came, and fails.
class FailingSource : public BareSource
{
public:
    bool setup() override { return note("setup"); }
    bool cleanup() override { return note("cleanup"); }
    bool startSingleReverse() override { return note("startSingleReverse"); }
    bool startReverse() override { return note("startReverse"); }
    bool start() override { return note("start"); }
    bool startFixed(std::size_t frames) override { return note("startFixed", frames); }
    bool startSingle() override { return note("startSingle"); }
    bool pause() override { return note("pause"); }
    bool stop() override { return note("stop"); }

    QByteArrayList commands;
    std::size_t count = 0;

private:
    bool note(const char* command, std::size_t frames = 0)
    {
        commands += command;
        count = frames;
        throw std::runtime_error("the shutter is stuck");
    }
};

QByteArrayList* reportedLines = nullptr;

} // namespace

class AcquisitionInterfaceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void setupModesAreNamedOnce();
    void textOut();
    void slotsRunCommands();
};

void AcquisitionInterfaceTest::setupModesAreNamedOnce()
{
    BareSource source;
    QVERIFY(!source.addSetupMode(nullptr));
    QVERIFY(!source.addSetupMode("Full", nullptr));
    QVERIFY(source.addSetupMode("Full"));
    QVERIFY(source.addSetupMode("Binning", "two by two"));
    QVERIFY(!source.addSetupMode("Full", "all pixels"));
    QVERIFY(source.addSetupMode("full"));
    QCOMPARE(source.setupModeCount(), std::size_t{3});
    source.clearSetupModes();
    QCOMPARE(source.setupModeCount(), std::size_t{0});
    QVERIFY(source.addSetupMode("Full"));
}

void AcquisitionInterfaceTest::textOut()
{
    BareSource source;
    source.addSetupMode("Full");
    source.addSetupMode("Binning", "two by two");
    const struct
    {
        std::size_t capacity;
        QByteArray expected; // of a buffer of twelve '#', with '0' for a zero
    } rows[] = {{0, "############"}, {1, "0###########"}, {4, "Bin0########"},
                {7, "Binnin0#####"}, {8, "Binning0####"}, {12, "Binning0###0"}};
    for (const auto& row : rows) {
        QByteArray buffer(12, '#');
        for (char* const into : {buffer.data(), static_cast<char*>(nullptr)}) {
            std::size_t size = row.capacity;
            QVERIFY(source.setupModeName(1, into, &size));
            QCOMPARE(size, std::size_t{8});
        }
        QCOMPARE(buffer.replace('\0', '0'), row.expected);
    }
    char buffer[11];
    std::size_t size = sizeof buffer;
    QVERIFY(source.setupModeDescription(1, buffer, &size));
    QCOMPARE(buffer, "two by two");
    for (const auto query :
         {&AbstractAcquisitionInterface::setupModeName, &AbstractAcquisitionInterface::setupModeDescription}) {
        QVERIFY(!(source.*query)(0, buffer, nullptr));
        QVERIFY(!(source.*query)(2, buffer, &size) && !(source.*query)(~std::size_t{0}, buffer, &size));
        QCOMPARE(size, sizeof buffer);
    }
    QCOMPARE(buffer, "two by two");
}

void AcquisitionInterfaceTest::slotsRunCommands()
{
    const std::size_t count = (std::size_t{5} << (sizeof(std::size_t) * 8 - 4)) + 3; // needs the whole width
    QByteArrayList lines;
    reportedLines = &lines;
    setReportSink([](const std::string& line) { reportedLines->append(QByteArray::fromStdString(line)); });
    const auto reset = qScopeGuard([] { setReportSink(nullptr); });
    for (const char* const command : {"setup", "cleanup", "startSingleReverse", "startReverse", "start", "startFixed",
                                      "startSingle", "pause", "stop"}) {
        FailingSource source;
        const bool isCounted = qstrcmp(command, "startFixed") == 0;
        QVERIFY(QMetaObject::invokeMethod(source.signalHandler(), command, Qt::QueuedConnection,
                                          isCounted ? Q_ARG(size_t, count) : QGenericArgument()));
        QCoreApplication::processEvents();
        QCOMPARE(source.commands, QByteArrayList({command}));
        QCOMPARE(source.count, isCounted ? count : 0);
        QCOMPARE(lines, QByteArrayList({QByteArray("Vistrel: ") + command + ": the shutter is stuck"}));
        lines.clear();
    }
}

QTEST_GUILESS_MAIN(AcquisitionInterfaceTest)
#include "AcquisitionInterfaceTest.moc"
