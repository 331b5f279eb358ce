// SPDX-License-Identifier: MIT
// Tests how the library calls a C host's functions: on which thread, and what becomes of what they throw.
#include "c/HostCamera.h"

#include <QtWidgets/QMenu>
#include <QtWidgets/QSpinBox>

class CallbacksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QCOMPARE(VTAppCreate(1, commandLine, &app), VT_OK + 0); }
    void cleanup() { VTAppDestroy(app); }
    void callsComeOnTheirThreads();
    void windowFollows();
    void startsWithoutSettingUp();
    void drawnFrameEndsWithItsBitmap();
    void signalsFromAnotherThread();
    void workerAsks_data();
    void workerAsks();
};

// Calls ---------------------------------------------------------------------------------------------------------------

namespace {

// By which the user gives the commands.
const char* const commands[] = {"Setup",        "Cleanup", "Trigger", "Start_Single_Reverse", "Start_Reverse", "Start",
                                "Start_Single", "Pause",   "Stop",    "Start_Fixed"};

template <std::int32_t... feature, typename Callback>
void addAll(Camera& camera, std::int32_t (*set)(VTWindowHandle, std::int32_t, Callback), const Camera::Act& act)
{
    (camera.add<feature>(set, act), ...);
}

void addCommands(Camera& camera, const Camera::Act& act)
{
    addAll<VT_FEATURE_SETUP, VT_FEATURE_CLEANUP, VT_FEATURE_TRIGGER, VT_FEATURE_START_SINGLE_REVERSE,
           VT_FEATURE_START_REVERSE, VT_FEATURE_START, VT_FEATURE_START_SINGLE, VT_FEATURE_PAUSE, VT_FEATURE_STOP>(
        camera, VTSetFeatureCommand, act);
    camera.add<VT_FEATURE_START_FIXED>(VTSetFeatureCount, act);
    camera.add<VT_FEATURE_SETUP_MODE>(VTSetFeatureName, act);
    QCOMPARE(VTWindowAddSetupMode(camera.window, "Fast", ""), VT_OK + 0);
}

void addQueries(Camera& camera, const Camera::Act& act)
{
    addAll<VT_FEATURE_IS_RUNNING_SINGLE_REVERSE, VT_FEATURE_IS_RUNNING_REVERSE, VT_FEATURE_IS_RUNNING,
           VT_FEATURE_IS_RUNNING_FIXED, VT_FEATURE_IS_RUNNING_SINGLE, VT_FEATURE_IS_PAUSED, VT_FEATURE_IS_STOPPED>(
        camera, VTSetFeatureQuery, act);
    camera.add<VT_FEATURE_ACTIVE_SETUP_MODE>(VTSetFeatureText, act);
    camera.add<VT_FEATURE_FRAME_RATE>(VTSetFeatureDouble, act);
    addAll<VT_FEATURE_FRAMES_QUEUED, VT_FEATURE_FRAMES_FILLED, VT_FEATURE_FRAMES_DROPPED, VT_FEATURE_FRAMES_DELIVERED>(
        camera, VTSetFeatureSize, act);
}

void runCommands(Camera& camera)
{
    for (const char* const command : commands)
        camera.trigger((QByteArray("action") + command).constData());
    for (QSpinBox* const box : camera.view->findChildren<QSpinBox*>()) {
        if (box->window() != camera.view && box->isVisible()) // the number of frames
            QTest::keyClick(box, Qt::Key_Return);
    }
    camera.action("actionSetup_Mode")->menu()->actions().constLast()->trigger();
    for (const std::int32_t feature : camera.added) {
        if (feature <= VT_FEATURE_SETUP_MODE)
            QTRY_COMPARE(camera.calls(feature), 1);
    }
}

} // namespace

// Where they throw, too.
void CallbacksTest::callsComeOnTheirThreads()
{
    const auto here = std::this_thread::get_id();
    const Camera::Act raise = []() -> bool { throw std::runtime_error("two\nlines"); };
    Camera camera;
    camera.show();
    addCommands(camera, raise);
    addQueries(camera, raise);
    camera.add<VT_FEATURE_CAN_START>(VTSetFeatureQuery);
    camera.add<VT_FEATURE_NEXT_FRAME>(VTSetFeatureNextFrame, raise);
    camera.add<VT_FEATURE_CLOSED>(VTSetFeatureNotify, raise);
    camera.add<VT_FEATURE_FILE_LOAD>(VTSetFeatureLoad, raise);
    camera.add<VT_FEATURE_FILE_SAVE>(VTSetFeatureSave, raise);
    for (const int callback : {int{Gone}, int{Triggered}, int{VT_FEATURE_FRAME_RELEASED}, int{VT_FEATURE_FINISHED}})
        camera.on(callback, raise);
    camera.addAction();
    runCommands(camera);
    camera.ownAction()->trigger();
    FileIO file;
    QVERIFY(!camera.view->fileInterface()->load("a.raw", &file));
    camera.save();
    VTAppAddIdleMethod(
        app, [](void* user) { static_cast<Camera*>(user)->enter(Idle); }, &camera);
    camera.on(Idle, [&] { return VTAppExit(app, 0), raise(); });
    VTAppExec(app, nullptr);
    for (const std::int32_t feature : camera.added) {
        const bool isOfEnd = feature >= VT_FEATURE_FRAME_RELEASED && feature <= VT_FEATURE_FINISHED;
        QTRY_VERIFY2(camera.calls(feature) > 0 || isOfEnd, QByteArray::number(feature).constData());
        const bool isFile = feature == VT_FEATURE_FILE_LOAD || feature == VT_FEATURE_FILE_SAVE;
        const bool isQuery = feature >= VT_FEATURE_CAN_SETUP && feature < VT_FEATURE_NEXT_FRAME;
        if (camera.calls(feature) > 0 && !isFile)
            QCOMPARE(camera.isOn(feature, here), isQuery);
        QVERIFY(isFile || camera.isOn(feature, camera.threads[VT_FEATURE_START]) == (feature <= VT_FEATURE_SETUP_MODE));
    }
    camera.view->close();
    VTAppDestroy(app);
    for (const int callback :
         {int{Gone}, int{VT_FEATURE_FRAME_RELEASED}, int{VT_FEATURE_CLOSED}, int{VT_FEATURE_FINISHED}})
        QCOMPARE(camera.calls(callback), 1);
}

// What the window offers ----------------------------------------------------------------------------------------------

void CallbacksTest::windowFollows()
{
    Camera camera;
    VTSetPropBool(camera.window, VT_WINDOW_VISIBLE, true);
    const auto state = [&camera] {
        std::int32_t value = -1;
        VTGetPropInt32(camera.window, VT_WINDOW_ACQUISITION_STATE, &value);
        return value;
    };
    QCOMPARE(state(), VT_ACQUISITION_RUNNING + 0);
    for (const char* const command : commands)
        QVERIFY(!camera.action((QByteArray("action") + command).constData())->isVisible());
    QAction* const start = camera.action("actionStart");
    camera.add<VT_FEATURE_START>(VTSetFeatureCommand);
    QTRY_VERIFY(start->isVisible() && start->isEnabled());
    QCOMPARE(state(), VT_ACQUISITION_CONFIGURED + 0);
    camera.add<VT_FEATURE_CAN_START>(VTSetFeatureQuery, [] { return false; });
    QTRY_VERIFY(!start->isEnabled());
    camera.add<VT_FEATURE_IS_RUNNING>(VTSetFeatureQuery);
    QCOMPARE(state(), VT_ACQUISITION_RUNNING + 0);
    camera.add<VT_FEATURE_IS_SETUP>(VTSetFeatureQuery, [] { return false; });
    VTSetFeatureQuery(camera.window, VT_FEATURE_IS_RUNNING, nullptr);
    QCOMPARE(state(), VT_ACQUISITION_UNCONFIGURED + 0);
    VTSetFeatureCommand(camera.window, VT_FEATURE_START, nullptr);
    QTRY_VERIFY(!start->isVisible());
}

void CallbacksTest::startsWithoutSettingUp()
{
    Camera camera;
    std::atomic<bool> isRunning{false};
    camera.add<VT_FEATURE_IS_RUNNING>(VTSetFeatureQuery, [&] { return isRunning.load(); });
    camera.add<VT_FEATURE_START>(VTSetFeatureCommand, [&] { return isRunning = true; });
    QCOMPARE(VTSetPropInt32(camera.window, VT_WINDOW_ACQUISITION_STATE, VT_ACQUISITION_RUNNING), VT_OK + 0);
    QTRY_VERIFY(isRunning);
}

// Its pixels go while it waits.
void CallbacksTest::drawnFrameEndsWithItsBitmap()
{
    Camera camera;
    camera.show();
    const std::uint32_t locks[][3] = {{16, 16, VT_FORMAT_RGBA8}, {16, 16, VT_FORMAT_MONO8}};
    for (const std::uint32_t* const next : std::initializer_list<const std::uint32_t*>{locks[0], locks[1], nullptr}) {
        VTRawImage bitmap{};
        std::size_t size = sizeof bitmap;
        VTGetPropData(camera.window, VT_WINDOW_BITMAP, &bitmap, &size);
        const int before = camera.calls(VT_FEATURE_FRAME_RELEASED);
        if (size > 0) {
            bitmap.userData = camera.lend().userData;
            camera.frames.back().image = bitmap;
            camera.push(bitmap);
        }
        QCOMPARE(VTSetPropData(camera.window, VT_WINDOW_BITMAP_LOCK, next, next ? sizeof locks[0] : 0), VT_OK + 0);
        QTRY_COMPARE(camera.calls(VT_FEATURE_FRAME_RELEASED), before + (size > 0));
        QVERIFY(camera.shown() <= 255); // what there is can be read
    }
    QCOMPARE(camera.returned(), QByteArray("011"));
}

void CallbacksTest::signalsFromAnotherThread()
{
    Camera camera;
    std::atomic<bool> isSetUp{true};
    std::atomic<bool> canStart{true};
    camera.add<VT_FEATURE_IS_SETUP>(VTSetFeatureQuery, [&] { return isSetUp.load(); });
    camera.add<VT_FEATURE_CAN_START>(VTSetFeatureQuery, [&] { return canStart.load(); });
    camera.add<VT_FEATURE_START>(VTSetFeatureCommand);
    const auto send = [&camera](std::int32_t signal, std::atomic<bool>* answer) {
        std::thread([&camera, signal, answer] {
            if (answer)
                *answer = false;
            VTSendSignal(camera.window, signal);
        }).join();
    };
    camera.show();
    QTRY_VERIFY(camera.action("actionStart")->isEnabled());
    VTSetPropBool(camera.window, VT_WINDOW_REFRESH_ENABLED, false);
    const VTRawImage second = camera.lend();
    VTWindowSetNextFrame(camera.window, &second);
    send(VT_SIGNAL_GET_FRAME_NOW, nullptr);
    QTRY_COMPARE(camera.shown(), 2);
    send(VT_SIGNAL_FEATURE_SET_CHANGED, &canStart);
    QTRY_VERIFY(!camera.action("actionStart")->isEnabled());
    send(VT_SIGNAL_ACQUISITION_STATE_CHANGED, nullptr);
    QCoreApplication::processEvents();
    bool isRefreshing = true;
    VTGetPropBool(camera.window, VT_WINDOW_REFRESH_ENABLED, &isRefreshing);
    QVERIFY(!isRefreshing); // what the host has disabled stays so
    send(VT_SIGNAL_ACQUISITION_STATE_CHANGED, &isSetUp);
    QTRY_COMPARE(camera.returned(), QByteArray("11"));
}

// Message boxes -------------------------------------------------------------------------------------------------------

void CallbacksTest::workerAsks_data()
{
    QTest::addColumn<Story>("story"); // when the box is up
    QTest::addColumn<int>("code");
    const Story press = [](Camera&) {
        qobject_cast<QMessageBox*>(QApplication::activeModalWidget())->button(QMessageBox::Retry)->click();
    };
    QTest::newRow("answered") << press << int{VT_OK};
    const auto end = [](const char* name, Story story) { QTest::newRow(name) << story << int{VT_ERROR_NO_ANSWER}; };
    end("window destroyed", [](Camera& c) { VTWindowDestroy(c.window); });
    end("window closed", [](Camera& c) { c.view->close(); });
    end("loop left", [](Camera&) { VTAppExit(app, 0); });
    end("window destroyed before", nullptr);
}

void CallbacksTest::workerAsks()
{
    QFETCH(Story, story);
    QFETCH(int, code);
    // Comes between the call's post and the box.
    struct Before : QObject
    {
        bool eventFilter(QObject* receiver, QEvent* event) override
        {
            const bool isCall =
                event->type() == QEvent::MetaCall && strstr(receiver->metaObject()->className(), "CallCarrier");
            if (isCall)
                VTWindowDestroy(window);
            return false;
        }
        VTWindowHandle window;
    } before;
    Camera camera;
    VTSetPropBool(camera.window, VT_WINDOW_VISIBLE, true);
    VTSetPropBool(app, VT_APP_QUIT_ON_LAST_WINDOW_CLOSED, false);
    before.window = camera.window;
    if (!story)
        qApp->installEventFilter(&before);
    QTimer watch;
    watch.callOnTimeout([&] {
        if (qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            watch.stop(), story ? story(camera) : QTest::qFail("There is a box.", __FILE__, __LINE__);
    });
    watch.start();
    std::uint32_t pressed = 5;
    std::thread worker;
    QTimer::singleShot(0, qApp, [&] {
        worker = std::thread([&] {
            camera.code = VTMessageBoxDialogShow(camera.window, VT_MESSAGE_QUESTION, "T", "t",
                                                 VT_BUTTON_RETRY | VT_BUTTON_ABORT, VT_BUTTON_ABORT, &pressed);
            VTAppExit(app, 0);
        });
    });
    VTAppExec(app, nullptr);
    worker.join();
    QCOMPARE(camera.code, code);
    QCOMPARE(pressed, code == VT_OK ? std::uint32_t{VT_BUTTON_RETRY} : 5u);
}

QTEST_APPLESS_MAIN(CallbacksTest)

#include "CallbacksTest.moc"
