// SPDX-License-Identifier: MIT
// Tests how the library calls a C host's functions: on which thread, and what becomes of what they throw.
#include "c/HostCamera.h"

#include <Vistrel/AbstractFileInterface.h>
#include <Vistrel/FileIO.h>

#include <QtWidgets/QMenu>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>

class CallbacksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void callsComeOnTheirThreads();
    void windowFollows();
    void filesAreTheHosts();
    void drawnFrameEndsWithItsBitmap();
    void workerAsks();
};

// Calls ---------------------------------------------------------------------------------------------------------------

namespace {

// By which the user gives the commands.
const char* const commands[] = {"Setup",        "Cleanup", "Trigger", "Start_Single_Reverse", "Start_Reverse", "Start",
                                "Start_Single", "Pause",   "Stop",    "Start_Fixed"};

template <std::int32_t first, typename Callback, std::int32_t... offset>
void addEach(Camera& camera, std::int32_t (*set)(VTWindowHandle, std::int32_t, Callback), const Camera::Act& act,
             std::integer_sequence<std::int32_t, offset...>)
{
    (camera.add<first + offset>(set, act), ...);
}

template <std::int32_t first, std::int32_t last, typename Callback>
void addAll(Camera& camera, std::int32_t (*set)(VTWindowHandle, std::int32_t, Callback), const Camera::Act& act)
{
    addEach<first>(camera, set, act, std::make_integer_sequence<std::int32_t, last - first + 1>());
}

void addFeatures(Camera& camera, const Camera::Act& act)
{
    addAll<VT_FEATURE_SETUP, VT_FEATURE_STOP>(camera, VTSetFeatureCommand, act);
    camera.add<VT_FEATURE_START_FIXED>(VTSetFeatureCount, act);
    camera.add<VT_FEATURE_SETUP_MODE>(VTSetFeatureName, act);
    addAll<VT_FEATURE_CAN_SETUP, VT_FEATURE_CAN_STOP>(camera, VTSetFeatureQuery, nullptr);
    addAll<VT_FEATURE_IS_RUNNING_SINGLE_REVERSE, VT_FEATURE_IS_STOPPED>(camera, VTSetFeatureQuery, act);
    camera.add<VT_FEATURE_ACTIVE_SETUP_MODE>(VTSetFeatureText, act);
    camera.add<VT_FEATURE_FRAME_RATE>(VTSetFeatureDouble, act);
    addAll<VT_FEATURE_FRAMES_QUEUED, VT_FEATURE_FRAMES_DELIVERED>(camera, VTSetFeatureSize, act);
    camera.add<VT_FEATURE_NEXT_FRAME>(VTSetFeatureNextFrame, act);
    camera.add<VT_FEATURE_CLOSED>(VTSetFeatureNotify, act);
}

void runCommands(Camera& camera)
{
    QCOMPARE(VTWindowAddSetupMode(camera.window, "Fast", ""), VT_OK + 0);
    for (const char* const command : commands)
        camera.trigger((QByteArray("action") + command).constData());
    for (QSpinBox* const box : camera.view->findChildren<QSpinBox*>()) {
        if (box->window() != camera.view && box->isVisible()) // the number of frames
            QTest::keyClick(box, Qt::Key_Return);
    }
    camera.action("actionSetup_Mode")->menu()->actions().constLast()->trigger();
    for (std::int32_t feature : camera.added) {
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
    addFeatures(camera, raise);
    for (const int callback : {int{Gone}, int{Triggered}, int{VT_FEATURE_FRAME_RELEASED}, int{VT_FEATURE_FINISHED}})
        camera.on(callback, raise);
    camera.addAction();
    runCommands(camera);
    camera.ownAction()->trigger();
    VTAppAddIdleMethod(
        app, [](void* user) { static_cast<Camera*>(user)->enter(Idle); }, &camera);
    camera.on(Idle, [&] { return VTAppExit(app, 0), raise(); });
    VTAppExec(app, nullptr);
    for (const std::int32_t feature : camera.added) {
        if (feature >= VT_FEATURE_FRAME_RELEASED) // the end's
            break;
        QTRY_VERIFY2(camera.calls(feature) > 0, QByteArray::number(feature).constData());
        const bool isQuery = feature >= VT_FEATURE_CAN_SETUP && feature < VT_FEATURE_NEXT_FRAME;
        QCOMPARE(camera.isOn(feature, here), isQuery);
        QCOMPARE(camera.isOn(feature, camera.threads[VT_FEATURE_START]), feature <= VT_FEATURE_SETUP_MODE);
    }
    camera.view->close();
    VTAppDestroy(app);
    for (const int callback :
         {int{Gone}, int{VT_FEATURE_FRAME_RELEASED}, int{VT_FEATURE_CLOSED}, int{VT_FEATURE_FINISHED}})
        QCOMPARE(camera.calls(callback), 1);
}

// What the window offers ----------------------------------------------------------------------------------------------

// Told by the setting of functions, and by signals from another thread.
void CallbacksTest::windowFollows()
{
    Camera camera;
    std::atomic<bool> isSetUp{true}, canStart{true};
    const auto state = [&camera] {
        std::int32_t value = -1;
        VTGetPropInt32(camera.window, VT_WINDOW_ACQUISITION_STATE, &value);
        return value;
    };
    const auto send = [&camera](std::int32_t signal) {
        std::thread([&camera, signal] { VTSendSignal(camera.window, signal); }).join();
    };
    camera.show();
    QAction* const start = camera.action("actionStart");
    QVERIFY(!start->isVisible() && state() == VT_ACQUISITION_RUNNING);
    camera.add<VT_FEATURE_START>(VTSetFeatureCommand);
    QTRY_VERIFY(start->isVisible() && start->isEnabled() && state() == VT_ACQUISITION_CONFIGURED);
    VTSetPropInt32(camera.window, VT_WINDOW_ACQUISITION_STATE, VT_ACQUISITION_RUNNING);
    QTRY_COMPARE(camera.calls(VT_FEATURE_START), 1); // without a command to set up

    VTSetPropBool(camera.window, VT_WINDOW_REFRESH_ENABLED, false);
    const VTRawImage second = camera.lend();
    VTWindowSetNextFrame(camera.window, &second);
    send(VT_SIGNAL_GET_FRAME_NOW);
    QTRY_COMPARE(camera.shown(), 2);
    camera.add<VT_FEATURE_CAN_START>(VTSetFeatureQuery, [&] { return canStart.load(); });
    QTRY_VERIFY(start->isEnabled());
    canStart = false;
    send(VT_SIGNAL_FEATURE_SET_CHANGED);
    QTRY_VERIFY(!start->isEnabled());
    camera.add<VT_FEATURE_IS_RUNNING>(VTSetFeatureQuery);
    QCOMPARE(state(), VT_ACQUISITION_RUNNING + 0);
    VTSetFeatureQuery(camera.window, VT_FEATURE_IS_RUNNING, nullptr);
    camera.add<VT_FEATURE_IS_SETUP>(VTSetFeatureQuery, [&] { return isSetUp.load(); });
    send(VT_SIGNAL_ACQUISITION_STATE_CHANGED);
    QCoreApplication::processEvents();
    bool isRefreshing = true;
    VTGetPropBool(camera.window, VT_WINDOW_REFRESH_ENABLED, &isRefreshing);
    QVERIFY(!isRefreshing); // what the host has disabled stays so
    isSetUp = false;
    send(VT_SIGNAL_ACQUISITION_STATE_CHANGED);
    QTRY_COMPARE(camera.returned(), QByteArray("11"));
    QCOMPARE(state(), VT_ACQUISITION_UNCONFIGURED + 0);
    VTSetFeatureCommand(camera.window, VT_FEATURE_START, nullptr);
    QTRY_VERIFY(!start->isVisible());
}

// Files ---------------------------------------------------------------------------------------------------------------

// Pixels that a host loads are copied and come back at once; what it throws is a failure.
void CallbacksTest::filesAreTheHosts()
{
    Camera camera;
    AbstractFileInterface& files = *camera.view->fileInterface();
    FileIO file;
    RawImage image{};
    camera.add<VT_FEATURE_FILE_LOAD>(VTSetFeatureLoad);
    QVERIFY(files.load("a.raw", &file) && file.getData(image) && image.data[0] == 1);
    QCOMPARE(camera.returned(), QByteArray("1"));
    camera.add<VT_FEATURE_FILE_SAVE>(VTSetFeatureSave);
    QVERIFY(files.save(image, "a.raw"));
    camera.on(VT_FEATURE_FILE_LOAD, []() -> bool { throw 1; });
    camera.on(VT_FEATURE_FILE_SAVE, [] { return false; });
    QVERIFY(!files.load("a.raw", &file) && !files.save(image, "a.raw"));
    QCOMPARE(camera.returned(), QByteArray("1"));
}

// Frames --------------------------------------------------------------------------------------------------------------

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

// Message boxes -------------------------------------------------------------------------------------------------------

// It is answered, or its window is destroyed before it is there.
void CallbacksTest::workerAsks()
{
    // Destroys the window between the call's post and the box.
    struct Before : QObject
    {
        bool eventFilter(QObject* receiver, QEvent* event) override
        {
            if (event->type() == QEvent::MetaCall && strstr(receiver->metaObject()->className(), "CallCarrier"))
                VTWindowDestroy(window);
            return false;
        }
        VTWindowHandle window;
    } before;
    for (const bool isAnswered : {true, false}) {
        Camera camera;
        VTSetPropBool(camera.window, VT_WINDOW_VISIBLE, true);
        VTSetPropBool(app, VT_APP_QUIT_ON_LAST_WINDOW_CLOSED, false);
        before.window = isAnswered ? nullptr : camera.window;
        qApp->installEventFilter(&before);
        QTimer watch;
        watch.callOnTimeout([&] {
            if (auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
                box->button(QMessageBox::Retry)->click();
        });
        watch.start();
        std::uint32_t pressed = 5;
        std::int32_t code = 1;
        std::thread worker([&] {
            code = VTMessageBoxDialogShow(camera.window, VT_MESSAGE_QUESTION, "T", "t",
                                          VT_BUTTON_RETRY | VT_BUTTON_ABORT, VT_BUTTON_ABORT, &pressed);
            VTAppExit(app, 0);
        });
        VTAppExec(app, nullptr);
        worker.join();
        QCOMPARE(code, isAnswered ? VT_OK : VT_ERROR_NO_ANSWER);
        QCOMPARE(pressed, isAnswered ? std::uint32_t{VT_BUTTON_RETRY} : 5u);
    }
}

QTEST_APPLESS_MAIN(CallbacksTest)

#include "CallbacksTest.moc"
