// SPDX-License-Identifier: MIT
// Tests until when the library keeps a C host's frames and calls its functions.
#include "c/HostCamera.h"

class EndingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QCOMPARE(VTAppCreate(1, commandLine, &app), VT_OK + 0); }
    void cleanup() { VTAppDestroy(app); }
    void framesComeBackOnce_data();
    void framesComeBackOnce();
    void finishedIsLast_data();
    void finishedIsLast();
    void actionIsGoneOnce_data();
    void actionIsGoneOnce();
    void applicationEnds();
    void exitMeetsTheEnd();
    void hammered();
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
    row("taken away", "1", [](Camera& c) { c.push(c.lend()), VTWindowSetNextFrame(c.window, nullptr); });
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
    row("cleaned up", "1", [](Camera& c) {
        c.show();
        c.add<VT_FEATURE_IS_SETUP>(VTSetFeatureQuery, [] { return false; });
    });
    row("refused", "0", [](Camera& c) {
        c.view->close();
        QTRY_VERIFY(!c.view);
        QCOMPARE(c.push(c.lend()), VT_ERROR_WINDOW_CLOSED + 0);
    });
    row("pulled", "10", [](Camera& c) {
        c.add<VT_FEATURE_NEXT_FRAME>(VTSetFeatureNextFrame, [&c] { return c.calls(VT_FEATURE_NEXT_FRAME) <= 2; });
        QTRY_COMPARE(c.shown(), 2);
    });
    row("saved", "10", [](Camera& c) {
        c.show();
        c.add<VT_FEATURE_FILE_SAVE>(VTSetFeatureSave, [&c] { return c.push(c.lend()), true; });
        c.save();
        QTRY_COMPARE(c.shown(), 2);
    });
    row("loaded", "1", [](Camera& c) {
        c.add<VT_FEATURE_FILE_LOAD>(VTSetFeatureLoad);
        FileIO file;
        RawImage image{};
        QVERIFY(c.view->fileInterface()->load("a.raw", &file) && file.getData(image) && image.data[0] == 1);
    });
}

void EndingsTest::framesComeBackOnce()
{
    QFETCH(Story, story);
    QFETCH(QByteArray, returned);
    Camera camera;
    const bool isRefused = QTest::currentDataTag() == QByteArrayLiteral("refused");
    story(camera);
    QTRY_COMPARE(camera.returned(), returned);
    VTWindowDestroy(camera.window);
    QTRY_COMPARE(camera.calls(VT_FEATURE_FINISHED), 1);
    QCOMPARE(camera.returned(), returned.replace('0', isRefused ? '0' : '1'));
    QVERIFY(!camera.isLate);
}

// The end of a window -------------------------------------------------------------------------------------------------

void EndingsTest::finishedIsLast_data()
{
    QTest::addColumn<int>("code"); // of VTWindowDestroy in a callback, if it is called in one
    QTest::addColumn<Story>("story");
    QTest::addColumn<bool>("byApplication");
    const auto row = [](const char* name, int code, Story story) {
        QTest::newRow(name) << code << story << false;
        QTest::newRow((QByteArray(name) + ", without a loop").constData()) << code << story << true;
    };
    const int none = 1;
    row("left to the application", none, [](Camera&) {});
    row("closed by the user", none, [](Camera& c) { c.view->close(); });
    row("closed, then destroyed at once", none, [](Camera& c) { c.view->close(), VTWindowDestroy(c.window); });
    row("destroyed while a command runs", none, [](Camera& c) {
        c.add<VT_FEATURE_START>(VTSetFeatureCommand, [&c] { return c.gate.pass(), true; });
        c.trigger("actionStart");
        QTRY_COMPARE(c.gate.arrived(), 1);
        VTWindowDestroy(c.window);
    });
    row("destroyed while a frame is waited for", none, [](Camera& c) {
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
    row("in its closing", VT_OK, [](Camera& c) {
        c.add<VT_FEATURE_CLOSED>(VTSetFeatureNotify, destroys(c));
        c.view->close();
    });
    row("in an action", VT_OK, [](Camera& c) {
        c.on(Triggered, destroys(c));
        c.ownAction()->trigger();
    });
    row("in a query of the window's", VT_OK, [](Camera& c) {
        c.add<VT_FEATURE_CAN_START>(VTSetFeatureQuery, destroys(c));
        c.add<VT_FEATURE_START>(VTSetFeatureCommand);
        QTRY_COMPARE(c.code, VT_OK + 0);
    });
    row("in a frame's return", VT_OK, [](Camera& c) {
        c.on(VT_FEATURE_FRAME_RELEASED, [&c] { return c.calls(VT_FEATURE_FRAME_RELEASED) > 1 || destroys(c)(); });
        VTWindowSetNextFrame(c.window, nullptr);
    });
    row("while saving", VT_OK, [](Camera& c) {
        c.add<VT_FEATURE_FILE_SAVE>(VTSetFeatureSave, destroys(c));
        c.save();
    });
    row("in a command", VT_ERROR_WRONG_THREAD, [](Camera& c) {
        c.add<VT_FEATURE_START>(VTSetFeatureCommand, destroys(c));
        c.trigger("actionStart");
        QTRY_COMPARE(c.code, VT_ERROR_WRONG_THREAD + 0);
    });
    row("in its own end", VT_ERROR_WRONG_HANDLE, [](Camera& c) {
        c.on(VT_FEATURE_FINISHED, destroys(c));
        VTWindowDestroy(c.window);
        QTRY_COMPARE(c.calls(VT_FEATURE_FINISHED), 1);
    });
}

// With a frame in view, one that waits, and an action.
void EndingsTest::finishedIsLast()
{
    QFETCH(Story, story);
    QFETCH(int, code);
    QFETCH(bool, byApplication);
    Camera camera;
    camera.show();
    camera.addAction();
    VTSetPropBool(camera.window, VT_WINDOW_REFRESH_ENABLED, false);
    const VTRawImage waiting = camera.lend();
    VTWindowSetNextFrame(camera.window, &waiting);
    story(camera);
    QCOMPARE(camera.code, code);
    std::thread opener;
    if (byApplication) {
        opener = std::thread([&] {
            for (VTAppHandle any; VTAppGetGlobal(&any) == VT_OK;)
                std::this_thread::yield();
            camera.gate.openForGood();
        });
        VTAppDestroy(app);
        const int calls = camera.calls(VT_FEATURE_FINISHED);
        opener.join();
        QCOMPARE(calls, 1);
    } else {
        if (camera.gate.arrived() > 0) {
            QCoreApplication::processEvents();
            QCOMPARE(camera.calls(VT_FEATURE_FINISHED), 0);
        }
        camera.gate.openForGood();
        if (VTWindowIsGood(camera.window)) // nothing has ended it so far
            VTWindowDestroy(camera.window);
        QTRY_COMPARE(camera.calls(VT_FEATURE_FINISHED), 1);
        VTAppDestroy(app);
    }
    QVERIFY(camera.isOn(VT_FEATURE_FINISHED, std::this_thread::get_id()));
    QCOMPARE(camera.calls(VT_FEATURE_FINISHED), 1);
    QCOMPARE(camera.calls(Gone), 1);
    QCOMPARE(camera.returned(), QByteArray(camera.returned().size(), '1'));
    QVERIFY(!camera.isLate);
}

void EndingsTest::actionIsGoneOnce_data()
{
    QTest::addColumn<Story>("story");
    QTest::newRow("destroyed") << Story([](Camera& c) { QCOMPARE(VTActionDestroy(c.addAction()), VT_OK + 0); });
    QTest::newRow("destroyed in its call") << Story([](Camera& c) {
        const VTActionHandle action = c.addAction();
        c.on(Triggered, [&c, action] {
            c.code = VTActionDestroy(action);
            return c.calls(Gone) == 0 && VTActionDestroy(action) == VT_ERROR_WRONG_HANDLE ? true : c.code = -1;
        });
        c.ownAction()->trigger();
        QCOMPARE(c.code, VT_OK + 0);
    });
    QTest::newRow("destroyed in its end") << Story([](Camera& c) {
        const VTActionHandle action = c.addAction();
        c.on(Gone, [&c, action] { return c.code = VTActionDestroy(action), true; });
        VTActionDestroy(action);
        QCOMPARE(c.code, VT_ERROR_WRONG_HANDLE + 0);
    });
    QTest::newRow("with the closed window") << Story([](Camera& c) {
        const VTActionHandle action = c.addAction();
        c.view->close();
        QTRY_VERIFY(!c.view);
        QCOMPARE(VTActionDestroy(action), VT_ERROR_WRONG_HANDLE + 0);
    });
}

void EndingsTest::actionIsGoneOnce()
{
    QFETCH(Story, story);
    Camera camera;
    story(camera);
    QCOMPARE(camera.calls(Gone), 1);
    VTAppDestroy(app);
    QCOMPARE(camera.calls(Gone), 1);
    QVERIFY(!camera.isLate);
}

// The end of the application ------------------------------------------------------------------------------------------

// What a frame's return, an action's end and the window's end call meanwhile is refused.
void EndingsTest::applicationEnds()
{
    Camera camera;
    const auto callsFail = [window = camera.window] {
        std::uint32_t pressed = 0;
        for (const std::int32_t code :
             {VTAppExit(app, 0), VTAppDestroy(app), VTWindowDestroy(window), VTWindowSetNextFrame(window, nullptr),
              VTSendSignal(window, 1), VTMessageBoxDialogShow(window, 1, "", "", 0, 0, &pressed)})
            QCOMPARE(code, VT_ERROR_NO_APPLICATION + 0);
        QVERIFY(!VTWindowIsGood(window));
    };
    camera.show();
    for (int i = 0; i < 8; ++i) // the table of handles has no order
        camera.addAction();
    for (const int callback : {int{VT_FEATURE_FRAME_RELEASED}, int{VT_FEATURE_FINISHED}, int{Gone}})
        camera.on(callback, [&] { return callsFail(), true; });
    QCOMPARE(VTAppDestroy(app), VT_OK + 0);
    QCOMPARE(camera.calls(VT_FEATURE_FRAME_RELEASED), 1);
    QCOMPARE(camera.calls(VT_FEATURE_FINISHED), 1);
    QCOMPARE(camera.calls(Gone), 8);
}

void EndingsTest::exitMeetsTheEnd()
{
    std::atomic<VTAppHandle> current{app};
    std::atomic<bool> isOver{false};
    std::thread leaver([&] {
        while (!isOver)
            VTAppExit(current, 0);
    });
    for (int i = 0; i < 30; ++i) {
        VTAppExec(app, nullptr);
        VTAppDestroy(app);
        VTAppCreate(1, commandLine, &app);
        current = app;
    }
    isOver = true;
    leaver.join();
}

// Frames and signals from four threads, while windows come and go in all ways.
void EndingsTest::hammered()
{
    std::atomic<Camera*> current{nullptr};
    std::atomic<bool> isOver{false};
    std::atomic<int> users{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int turn = i; !isOver; ++turn) {
                ++users;
                if (Camera* const camera = current) {
                    const VTRawImage image = camera->lend();
                    if (VTWindowSetNextFrame(camera->window, turn % 8 ? &image : nullptr) != VT_OK || turn % 8 == 0)
                        camera->takeBack(image);
                    VTSendSignal(camera->window, turn % 3 + 1);
                }
                --users;
                std::this_thread::yield();
            }
        });
    }
    for (int i = 0; i < 12; ++i) {
        if (i > 0)
            VTAppCreate(1, commandLine, &app); // the last camera has ended the one before
        const auto camera = std::make_unique<Camera>();
        current = camera.get();
        VTSetPropBool(camera->window, VT_WINDOW_VISIBLE, i % 2);
        QTRY_VERIFY(camera->calls(VT_FEATURE_FRAME_RELEASED) > 20);
        if (i % 3 > 0)
            camera->view->close();
        if (i % 3 > 1)
            QTRY_VERIFY(!camera->view);
        if (i % 4 < 3)
            VTWindowDestroy(camera->window);
        if (i % 4 < 2)
            QTRY_COMPARE(camera->calls(VT_FEATURE_FINISHED), 1);
        VTAppDestroy(app);
        current = nullptr;
        while (users > 0)
            std::this_thread::yield();
        QCOMPARE(camera->calls(VT_FEATURE_FINISHED), 1);
        QCOMPARE(camera->returned(), QByteArray(camera->returned().size(), '1'));
        QVERIFY(!camera->isLate);
    }
    isOver = true;
    for (std::thread& thread : threads)
        thread.join();
}

QTEST_APPLESS_MAIN(EndingsTest)

#include "EndingsTest.moc"
