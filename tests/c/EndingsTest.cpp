// SPDX-License-Identifier: MIT
// Tests until when the library keeps a C host's frames and calls its functions.
#include "c/HostCamera.h"

#include <chrono>

class EndingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framesComeBackOnce_data();
    void framesComeBackOnce();
    void finishedIsLast_data();
    void finishedIsLast();
    void actionIsGoneOnce();
    void applicationEnds();
};

// Frames --------------------------------------------------------------------------------------------------------------

void EndingsTest::framesComeBackOnce_data()
{
    QTest::addColumn<QByteArray>("returned"); // for each frame
    QTest::addColumn<Story>("story");
    const auto row = [](const char* name, const char* returned, Story story) {
        QTest::newRow(name) << QByteArray(returned) << story;
    };
    row("replaced unseen", "10", [](Camera& c) { c.push(c.lend()), c.push(c.lend()); });
    row("followed", "110", [](Camera& c) { c.show(), c.show(), c.show(); });
    row("of no format", "01", [](Camera& c) {
        c.show();
        c.push(c.lend(7));
        QTRY_COMPARE(c.returned(), QByteArray("01"));
        QCOMPARE(c.shown(), 1);
    });
    row("cleared", "10", [](Camera& c) {
        c.show();
        VTRawImage nothing = c.lend();
        c.frames.back().image.data = nothing.data = nullptr;
        c.push(nothing);
    });
    row("converted again", "0", [](Camera& c) {
        c.show();
        VTSetPropBool(c.window, VT_WINDOW_BAYER_DEMOSAIC_ENABLED, true);
        VTSetPropInt32(c.window, VT_WINDOW_BAYER_FILTER_OVERRIDE, VT_FORMAT_BAYER_BG);
    });
    row("pulled", "10", [](Camera& c) {
        c.add<VT_FEATURE_NEXT_FRAME>(VTSetFeatureNextFrame, [&c] { return c.calls(VT_FEATURE_NEXT_FRAME) <= 2; });
        QTRY_COMPARE(c.shown(), 2);
    });
}

void EndingsTest::framesComeBackOnce()
{
    QFETCH(Story, story);
    QFETCH(QByteArray, returned);
    Camera camera;
    story(camera);
    QTRY_COMPARE(camera.returned(), returned);
    VTWindowDestroy(camera.window);
    QTRY_COMPARE(camera.calls(VT_FEATURE_FINISHED), 1);
    QCOMPARE(camera.returned(), returned.replace('0', '1'));
    QVERIFY(!camera.isLate);
}

// The end of a window -------------------------------------------------------------------------------------------------

void EndingsTest::finishedIsLast_data()
{
    QTest::addColumn<Story>("story");
    QTest::addColumn<bool>("byApplication");
    const auto row = [](const char* name, Story story) {
        QTest::newRow(name) << story << false;
        QTest::newRow((QByteArray(name) + ", without a loop").constData()) << story << true;
    };
    row("left to the application", [](Camera&) {});
    row("closed by the user", [](Camera& c) { c.view->close(); });
    row("destroyed while a command runs", [](Camera& c) {
        c.add<VT_FEATURE_START>(VTSetFeatureCommand, [&c] { return c.gate.pass(), true; });
        c.trigger("actionStart");
        QTRY_COMPARE(c.gate.arrived(), 1);
        VTWindowDestroy(c.window);
    });
    row("destroyed while a frame is waited for", [](Camera& c) {
        c.add<VT_FEATURE_NEXT_FRAME>(VTSetFeatureNextFrame, [&c] { return c.gate.pass(), true; });
        VTSetPropBool(c.window, VT_WINDOW_REFRESH_ENABLED, true);
        QTRY_COMPARE(c.gate.arrived(), 1);
        // The last frames come back slowly, on another thread.
        c.on(VT_FEATURE_FRAME_RELEASED, [&c, here = std::this_thread::get_id()] {
            std::unique_lock<std::mutex> guard(c.mutex);
            const auto isFinished = [&c] { return c.counts[VT_FEATURE_FINISHED] > 0; };
            return std::this_thread::get_id() == here ||
                   c.freed.wait_for(guard, std::chrono::milliseconds(200), isFinished);
        });
        VTWindowDestroy(c.window);
    });
    row("destroyed while a frame comes back on another thread", [](Camera& c) {
        static thread_local bool isHost = false;
        c.on(VT_FEATURE_FRAME_RELEASED, [&c] {
            if (isHost)
                c.gate.pass();
            return true;
        });
        c.host = std::thread([&c] {
            isHost = true;
            while (c.gate.arrived() == 0)
                c.push(c.lend());
        });
        QTRY_COMPARE(c.gate.arrived(), 1);
        VTWindowDestroy(c.window);
    });
    row("in its closing", [](Camera& c) {
        c.add<VT_FEATURE_CLOSED>(VTSetFeatureNotify, [&c] { return VTWindowDestroy(c.window) == VT_OK; });
        c.view->close();
    });
    row("in a frame's return", [](Camera& c) {
        c.on(VT_FEATURE_FRAME_RELEASED, [&c] { return VTWindowDestroy(c.window) == VT_OK; });
        VTWindowSetNextFrame(c.window, nullptr);
    });
}

// With a frame in view, one that waits, and an action.
void EndingsTest::finishedIsLast()
{
    QFETCH(Story, story);
    QFETCH(bool, byApplication);
    Camera camera;
    camera.show();
    camera.addAction();
    VTSetPropBool(camera.window, VT_WINDOW_REFRESH_ENABLED, false);
    const VTRawImage waiting = camera.lend();
    VTWindowSetNextFrame(camera.window, &waiting);
    story(camera);
    std::thread opener;
    if (byApplication) {
        opener = std::thread([&] {
            for (VTAppHandle any; VTAppGetGlobal(&any) == VT_OK;)
                std::this_thread::yield();
            camera.gate.openForGood();
        });
    } else {
        QCoreApplication::processEvents();
        QVERIFY(camera.gate.arrived() == 0 || camera.calls(VT_FEATURE_FINISHED) == 0);
        camera.gate.openForGood();
        VTWindowDestroy(camera.window); // unless it has been
        QTRY_COMPARE(camera.calls(VT_FEATURE_FINISHED), 1);
    }
    VTAppDestroy(app);
    const int calls = camera.calls(VT_FEATURE_FINISHED);
    if (byApplication)
        opener.join();
    QCOMPARE(calls, 1);
    QVERIFY(camera.isOn(VT_FEATURE_FINISHED, std::this_thread::get_id()));
    QCOMPARE(camera.calls(Gone), 1);
    QCOMPARE(camera.returned(), QByteArray(camera.returned().size(), '1'));
    QVERIFY(!camera.isLate);
}

// It is destroyed in its own call, and again in that of its end.
void EndingsTest::actionIsGoneOnce()
{
    Camera camera;
    const VTActionHandle action = camera.addAction();
    std::vector<std::int32_t> codes;
    const Camera::Act destroy = [&] { return codes.push_back(VTActionDestroy(action)), true; };
    camera.on(Triggered, [&] { return destroy(), destroy(); });
    camera.on(Gone, destroy);
    camera.ownAction()->trigger();
    QCOMPARE(codes, std::vector<std::int32_t>({VT_OK, VT_ERROR_WRONG_HANDLE, VT_ERROR_WRONG_HANDLE}));
    VTAppDestroy(app);
    QCOMPARE(camera.calls(Gone), 1);
}

// The end of the application ------------------------------------------------------------------------------------------

// What a frame's return, an action's end and the window's end call meanwhile is refused.
void EndingsTest::applicationEnds()
{
    Camera camera;
    camera.show();
    for (int i = 0; i < 8; ++i) // the table of handles has no order
        camera.addAction();
    int refused = 0;
    const Camera::Act call = [&refused, window = camera.window] {
        std::uint32_t pressed = 0;
        for (const std::int32_t code :
             {VTAppExit(app, 0), VTAppDestroy(app), VTWindowDestroy(window), VTWindowSetNextFrame(window, nullptr),
              VTSendSignal(window, 1), VTMessageBoxDialogShow(window, 1, "", "", 0, 0, &pressed)})
            refused += code == VT_ERROR_NO_APPLICATION;
        refused += !VTWindowIsGood(window);
        return true;
    };
    const std::pair<int, int> calls[] = {{VT_FEATURE_FRAME_RELEASED, 1}, {VT_FEATURE_FINISHED, 1}, {Gone, 8}};
    for (const auto& [callback, count] : calls)
        camera.on(callback, call);
    QCOMPARE(VTAppDestroy(app), VT_OK + 0);
    for (const auto& [callback, count] : calls)
        QCOMPARE(camera.calls(callback), count);
    QCOMPARE(refused, 10 * 7);
}

QTEST_APPLESS_MAIN(EndingsTest)

#include "EndingsTest.moc"
