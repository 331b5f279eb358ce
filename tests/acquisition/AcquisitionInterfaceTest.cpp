// SPDX-License-Identifier: MIT
// Tests what a source gets without overriding anything: setup modes, texts, the relay of commands.
#include "base/Log.h"

#include <Vistrel/AcquisitionSignalHandler.h>

#include "support/FakeSources.h"

#include <QtTest/QtTest>

#include <stdexcept>
#include <string>
#include <utility>

using namespace Vistrel;

namespace {

/// Has nothing but commands; notes which came, and fails.
class FailingSource : public PullSource
{
public:
    FailingSource() : PullSource(nullptr) {}
    bool setup() override { return note("setup"); }
    bool cleanup() override { return note("cleanup"); }
    bool startSingleReverse() override { return note("startSingleReverse"); }
    bool startReverse() override { return note("startReverse"); }
    bool start() override { return note("start"); }
    bool startFixed(std::size_t frames) override { return note("startFixed " + std::to_string(frames)); }
    bool startSingle() override { return note("startSingle"); }
    bool pause() override { return note("pause"); }
    bool stop() override { return note("stop"); }

    std::string noted;

private:
    bool note(const std::string& command)
    {
        noted += command;
        throw std::runtime_error("the shutter is stuck");
    }
};

std::string* reportedLines = nullptr;

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
    FailingSource source;
    QVERIFY(!source.addSetupMode(nullptr) && !source.addSetupMode("Full", nullptr));
    QVERIFY(source.addSetupMode("Full") && !source.addSetupMode("Full", "all pixels") && source.addSetupMode("full"));
    QCOMPARE(source.setupModeCount(), std::size_t{2});
    source.clearSetupModes();
    QCOMPARE(source.setupModeCount(), std::size_t{0});
    QVERIFY(source.addSetupMode("Full"));
}

void AcquisitionInterfaceTest::textOut()
{
    FailingSource source;
    source.addSetupMode("Full");
    source.addSetupMode("Binning", "two by two");
    const std::pair<std::size_t, QByteArray> rows[] = {// of a buffer of twelve '#', with '0' for a zero
                                                       {0, "############"}, {1, "0###########"}, {4, "Bin0########"},
                                                       {7, "Binnin0#####"}, {8, "Binning0####"}, {12, "Binning0###0"}};
    for (const auto& [capacity, expected] : rows) {
        QByteArray buffer(12, '#');
        for (char* const into : {buffer.data(), static_cast<char*>(nullptr)}) {
            std::size_t size = capacity;
            QVERIFY(source.setupModeName(1, into, &size));
            QCOMPARE(size, std::size_t{8});
        }
        QCOMPARE(buffer.replace('\0', '0'), expected);
    }
    char buffer[11];
    std::size_t size = sizeof buffer;
    QVERIFY(source.setupModeDescription(1, buffer, &size));
    for (const auto query :
         {&AbstractAcquisitionInterface::setupModeName, &AbstractAcquisitionInterface::setupModeDescription})
        QVERIFY(!(source.*query)(0, buffer, nullptr) && !(source.*query)(2, buffer, &size));
    QCOMPARE(size, sizeof buffer);
    QCOMPARE(buffer, "two by two");
}

void AcquisitionInterfaceTest::slotsRunCommands()
{
    const std::size_t count = (std::size_t{5} << (sizeof(std::size_t) * 8 - 4)) + 3; // needs the whole width
    std::string lines;
    reportedLines = &lines;
    setReportSink([](const std::string& line) { *reportedLines += line; });
    const auto reset = qScopeGuard([] { setReportSink(nullptr); });
    for (const std::string command : {"setup", "cleanup", "startSingleReverse", "startReverse", "start", "startFixed",
                                      "startSingle", "pause", "stop"}) {
        FailingSource source;
        const bool isCounted = command == "startFixed";
        QVERIFY(QMetaObject::invokeMethod(source.signalHandler(), command.c_str(), Qt::QueuedConnection,
                                          isCounted ? Q_ARG(size_t, count) : QGenericArgument()));
        QCoreApplication::processEvents();
        QCOMPARE(source.noted, isCounted ? command + ' ' + std::to_string(count) : command);
        QCOMPARE(std::exchange(lines, ""), "Vistrel: " + command + ": the shutter is stuck");
    }
}

QTEST_GUILESS_MAIN(AcquisitionInterfaceTest)
#include "AcquisitionInterfaceTest.moc"
