// SPDX-License-Identifier: MIT
// Tests what the library does with a C host's functions and frames: on which thread, how often, and until when.
#include <Vistrel/AbstractFileInterface.h>
#include <Vistrel/CInterface.h>
#include <Vistrel/FileIO.h>
#include <Vistrel/PixVal.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/WindowQt.h>

#include "support/FakeSources.h"

#include <QtCore/QProcess>
#include <QtTest/QtTest>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>

#include <chrono>
#include <deque>
#include <map>
#include <set>
#include <thread>
#include <tuple>

using namespace Vistrel;

namespace {

enum { Gone = 1, Triggered, Idle }; // callbacks besides the features

const char* const commandLine[] = {"program"};
VTAppHandle app = nullptr;

struct Camera;
template <std::int32_t feature, typename Callback>
struct Call;

/// One window's user: its functions, which do as they are told, and its frames.
struct Camera
{
    using Act = std::function<bool()>;

    Camera()
    {
        VTWindowCreate(app, &window, this);
        void* native = nullptr;
        VTWindowGetNativeHandle(window, &native);
        view = qobject_cast<WindowQt*>(QWidget::find(reinterpret_cast<WId>(native)));
        add<VT_FEATURE_FRAME_RELEASED>(VTSetFeatureReleased);
        add<VT_FEATURE_FINISHED>(VTSetFeatureNotify);
    }
    ~Camera() // all calls are over then, even when a test ends early
    {
        gate.openForGood();
        VTAppDestroy(app);
    }
    template <std::int32_t feature, typename Callback>
    void add(std::int32_t (*set)(VTWindowHandle, std::int32_t, Callback), Act act = nullptr)
    {
        on(feature, std::move(act));
        added.insert(feature);
        QCOMPARE(set(window, feature, &Call<feature, Callback>::call), VT_OK + 0);
    }
    VTActionHandle addAction()
    {
        VTActionHandle result = nullptr;
        const auto triggered = [](VTActionHandle, bool, void* user) { static_cast<Camera*>(user)->enter(Triggered); };
        const auto gone = [](void* user) { static_cast<Camera*>(user)->enter(Gone); };
        VTWindowAddAction(window, VT_PLACE_TOOL_BAR, nullptr, "Own", triggered, gone, this, &result);
        return result;
    }
    void on(int callback, Act act)
    {
        const std::lock_guard<std::mutex> guard(mutex);
        acts[callback] = std::move(act);
    }

    bool enter(int callback)
    {
        Act act;
        {
            const std::lock_guard<std::mutex> guard(mutex);
            isLate = isLate || counts[VT_FEATURE_FINISHED] > 0;
            ++counts[callback];
            threads[callback] = std::this_thread::get_id();
            act = acts[callback];
        }
        return !act || act();
    }
    int calls(int callback)
    {
        const std::lock_guard<std::mutex> guard(mutex);
        return counts[callback];
    }
    bool isOn(int callback, std::thread::id thread)
    {
        const std::lock_guard<std::mutex> guard(mutex);
        return counts[callback] > 0 && threads[callback] == thread;
    }

    VTRawImage lend(std::uint32_t format = VT_FORMAT_MONO8)
    {
        const std::lock_guard<std::mutex> guard(mutex);
        Frame& frame = frames.emplace_back();
        frame.pixels.assign(16 * 16, static_cast<std::uint8_t>(frames.size()));
        return frame.image = {frame.pixels.data(), 16, 16, format, &frame};
    }
    void takeBack(const VTRawImage& image)
    {
        const std::lock_guard<std::mutex> guard(mutex);
        Frame& frame = *static_cast<Frame*>(image.userData);
        const bool isSame = image.data == frame.image.data && image.width == 16 && image.height == 16 &&
                            image.format == frame.image.format;
        frame.returned += isSame ? 1 : 8;
        frame.pixels.assign(frame.pixels.size(), 0xEE); // nobody may read them any more
        --lentCount;
        freed.notify_all();
    }
    std::int32_t push(const VTRawImage& image)
    {
        ++lentCount;
        const std::int32_t answer = VTWindowSetNextFrame(window, &image);
        if (answer != VT_OK)
            --lentCount;
        VTSendSignal(window, VT_SIGNAL_GET_FRAME_NOW);
        return answer;
    }
    void show()
    {
        const VTRawImage image = lend();
        VTSetPropBool(window, VT_WINDOW_VISIBLE, true);
        QCOMPARE(push(image), VT_OK + 0);
        QTRY_COMPARE(shown(), static_cast<int>(image.data[0]));
    }
    /// The upper left pixel's value as the window reads it in the frame; -1 without one.
    int shown() const
    {
        PixVal value;
        const bool isRead = view && view->surfaceScrollArea()->surface()->imageSrcPixVal({0, 0}, value);
        return isRead ? static_cast<int>(value.value) : -1;
    }
    /// How often each frame has come back.
    QByteArray returned()
    {
        const std::lock_guard<std::mutex> guard(mutex);
        QByteArray all;
        for (const Frame& frame : frames)
            all += static_cast<char>('0' + frame.returned);
        return all;
    }
    QAction* action(const char* name) const { return view->findChild<QAction*>(QLatin1String(name)); }
    void trigger(const char* name) const
    {
        QTRY_VERIFY(action(name)->isVisible() && action(name)->isEnabled());
        action(name)->trigger();
    }
    QAction* ownAction() const
    {
        for (QAction* const one : view->findChildren<QAction*>()) {
            if (one->text() == QLatin1String("Own"))
                return one;
        }
        return nullptr;
    }
    // As the user does it; an error is acknowledged.
    void save()
    {
        VTWindowAddFileFormat(window, "raw", nullptr, nullptr);
        QTimer user;
        user.callOnTimeout([] {
            if (auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
                box->button(QMessageBox::Ok)->click();
            auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (dialog && dialog->isVisible()) {
                dialog->findChild<QLineEdit*>()->setText(QDir::tempPath() + QStringLiteral("/none/a.raw"));
                QMetaObject::invokeMethod(dialog, "done", Q_ARG(int, QDialog::Accepted));
            }
        });
        user.start(1);
        view->saveCurrentImage();
    }

    struct Frame
    {
        std::vector<std::uint8_t> pixels;
        VTRawImage image;
        int returned = 0;
    };

    VTWindowHandle window = nullptr;
    QPointer<WindowQt> view;
    std::unique_ptr<Camera> other;
    std::set<std::int32_t> added; // features
    Gate gate;
    std::atomic<std::int32_t> code{1}; // of the call that a callback makes
    std::atomic<int> lentCount{0};

    std::mutex mutex; // guards all below
    std::condition_variable freed;
    std::deque<Frame> frames;
    std::map<int, Act> acts;
    std::map<int, int> counts;
    std::map<int, std::thread::id> threads; // of the last call
    bool isLate = false;                    // something was called after the last call of all
};

template <std::int32_t feature, typename Result, typename... Arguments>
struct Call<feature, Result (*)(Arguments...)>
{
    static Result call(Arguments... arguments)
    {
        const auto all = std::make_tuple(arguments...);
        Camera& camera = *static_cast<Camera*>(std::get<sizeof...(Arguments) - 1>(all));
        if constexpr (feature == VT_FEATURE_FRAME_RELEASED)
            camera.takeBack(*std::get<0>(all));
        [[maybe_unused]] const bool answer = camera.enter(feature);
        if constexpr (feature == VT_FEATURE_NEXT_FRAME || feature == VT_FEATURE_FILE_LOAD) {
            VTRawImage* const image = std::get < feature == VT_FEATURE_NEXT_FRAME ? 0 : 1 > (all);
            if (answer)
                *image = camera.lend();
        }
        if constexpr (!std::is_void_v<Result>)
            return static_cast<Result>(answer);
    }
};

using Story = void (*)(Camera&);

/// An act that destroys the camera's window.
Camera::Act destroys(Camera& camera)
{
    return [&camera] { return camera.code = VTWindowDestroy(camera.window), true; };
}

} // namespace

Q_DECLARE_METATYPE(Story)

class CallbacksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The toolkit warns of a session without this folder.
    void initTestCase() { qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_runtimeDir.path())); }
    void init() { QCOMPARE(VTAppCreate(1, commandLine, &app), VT_OK + 0); }
    void cleanup() { VTAppDestroy(app); }
    void framesComeBackOnce_data();
    void framesComeBackOnce();
    void threeBuffersAreEnough();
    void finishedIsLast_data();
    void finishedIsLast();
    void commandOutlastsTheApplication();
    void exceptionsAreReported();
    void callsComeOnTheirThreads();
    void windowFollows();
    void signalsFromAnotherThread();
    void actionIsGoneOnce_data();
    void actionIsGoneOnce();
    void workerAsks_data();
    void workerAsks();
    void applicationEnds();
    void exitMeetsTheEnd();
    void hammered();

private:
    QTemporaryDir m_runtimeDir;
};

// Frames --------------------------------------------------------------------------------------------------------------

void CallbacksTest::framesComeBackOnce_data()
{
    QTest::addColumn<QByteArray>("returned"); // for each frame
    QTest::addColumn<Story>("story");
    const auto row = [](const char* name, const char* returned, Story story) {
        QTest::newRow(name) << QByteArray(returned) << story;
    };
    row("replaced unseen", "10", [](Camera& c) { c.push(c.lend()), c.push(c.lend()); });
    row("taken away", "1", [](Camera& c) { c.push(c.lend()), VTWindowSetNextFrame(c.window, nullptr); });
    row("in view", "0", [](Camera& c) { c.show(); });
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
    row("destroyed", "11", [](Camera& c) { c.show(), c.push(c.lend()), VTWindowDestroy(c.window); });
    row("closed by the user", "11", [](Camera& c) { c.show(), c.push(c.lend()), c.view->close(); });
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

void CallbacksTest::framesComeBackOnce()
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

void CallbacksTest::threeBuffersAreEnough()
{
    constexpr int most = 200;
    Camera camera;
    camera.show();
    std::atomic<int> pushed{0};
    std::atomic<bool> isOver{false};
    std::thread host([&] {
        for (; pushed < most; ++pushed) {
            std::unique_lock<std::mutex> guard(camera.mutex);
            if (!camera.freed.wait_for(guard, std::chrono::seconds(20), [&] { return camera.lentCount < 3; }))
                break; // starved
            guard.unlock();
            camera.push(camera.lend());
        }
        isOver = true;
    });
    bool isReadable = true;
    while (!isOver) {
        QTest::qWait(1);
        isReadable = isReadable && camera.shown() != 0xEE; // what is in frames that have come back, and in no other
    }
    host.join();
    QCOMPARE(pushed, most);
    QVERIFY(isReadable);
    QTRY_COMPARE(camera.lentCount, 1);
    QVERIFY(!camera.returned().contains('2'));
}

// The end of a window -------------------------------------------------------------------------------------------------

void CallbacksTest::finishedIsLast_data()
{
    QTest::addColumn<int>("code"); // of VTWindowDestroy in a callback, if it is called in one
    QTest::addColumn<Story>("story");
    QTest::addColumn<bool>("byApplication");
    const auto row = [](const char* name, int code, Story story) {
        QTest::newRow(name) << code << story << false;
        QTest::newRow((QByteArray(name) + ", without a loop").constData()) << code << story << true;
    };
    const int none = 1;
    row("destroyed", none, [](Camera& c) { VTWindowDestroy(c.window); });
    row("left to the application", none, [](Camera&) {});
    row("closed by the user", none, [](Camera& c) { c.view->close(); });
    row("closed, then destroyed at once", none, [](Camera& c) { c.view->close(), VTWindowDestroy(c.window); });
    row("closed, then destroyed", none, [](Camera& c) {
        c.view->close();
        QTRY_VERIFY(!c.view);
        QCOMPARE(VTWindowDestroy(c.window), VT_OK + 0);
    });
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
    row("in an action's end", VT_OK, [](Camera& c) {
        c.on(Gone, destroys(c));
        delete c.ownAction();
    });
    row("in a query", VT_OK, [](Camera& c) {
        c.add<VT_FEATURE_IS_RUNNING>(VTSetFeatureQuery, destroys(c));
        std::int32_t state = 0;
        VTGetPropInt32(c.window, VT_WINDOW_ACQUISITION_STATE, &state);
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
    row("while loading", VT_OK, [](Camera& c) {
        c.add<VT_FEATURE_FILE_LOAD>(VTSetFeatureLoad, [&c] { return destroys(c)(), false; });
        FileIO file;
        QVERIFY(!c.view->fileInterface()->load("a.raw", &file));
    });
    row("in a command", VT_ERROR_WRONG_THREAD, [](Camera& c) {
        c.add<VT_FEATURE_START>(VTSetFeatureCommand, destroys(c));
        c.trigger("actionStart");
        QTRY_COMPARE(c.code, VT_ERROR_WRONG_THREAD + 0);
    });
    row("in the end of another", VT_OK, [](Camera& c) {
        c.other = std::make_unique<Camera>();
        c.other->on(VT_FEATURE_FINISHED, destroys(c));
        VTWindowDestroy(c.other->window);
        QTRY_COMPARE(c.other->calls(VT_FEATURE_FINISHED), 1);
    });
    row("in its own end", VT_ERROR_WRONG_HANDLE, [](Camera& c) {
        c.on(VT_FEATURE_FINISHED, destroys(c));
        VTWindowDestroy(c.window);
        QTRY_COMPARE(c.calls(VT_FEATURE_FINISHED), 1);
    });
}

// With a frame in view, one that waits, and an action.
void CallbacksTest::finishedIsLast()
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

void CallbacksTest::commandOutlastsTheApplication()
{
    Camera camera;
    std::atomic<bool> hasReturned{false};
    camera.add<VT_FEATURE_START>(VTSetFeatureCommand, [&] {
        camera.gate.pass();
        hasReturned = true;
        return true;
    });
    camera.trigger("actionStart");
    QTRY_COMPARE(camera.gate.arrived(), 1);
    VTAppDestroy(app); // which reports that it has not waited for ever
    QCOMPARE(VTAppCreate(1, commandLine, &app), VT_OK + 0);
    camera.gate.openForGood();
    QTRY_VERIFY(hasReturned);
    QCOMPARE(camera.calls(VT_FEATURE_FINISHED), 0);
}

void CallbacksTest::actionIsGoneOnce_data()
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
    QTest::newRow("with the window") << Story([](Camera& c) { c.addAction(), VTWindowDestroy(c.window); });
    QTest::newRow("with the closed window") << Story([](Camera& c) {
        const VTActionHandle action = c.addAction();
        c.view->close();
        QTRY_VERIFY(!c.view);
        QCOMPARE(VTActionDestroy(action), VT_ERROR_WRONG_HANDLE + 0);
    });
    QTest::newRow("with the application") << Story([](Camera& c) { c.addAction(), VTAppDestroy(app); });
}

void CallbacksTest::actionIsGoneOnce()
{
    QFETCH(Story, story);
    Camera camera;
    story(camera);
    QCOMPARE(camera.calls(Gone), 1);
    VTAppDestroy(app);
    QCOMPARE(camera.calls(Gone), 1);
    QVERIFY(!camera.isLate);
}

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

/// The host that throws wherever it is called, in a process of its own. Answers how often it threw.
int throwEverywhere()
{
    std::atomic<int> thrown{0};
    const Camera::Act raise = [&thrown]() -> bool {
        ++thrown;
        throw std::runtime_error("two\nlines");
    };
    VTAppCreate(1, commandLine, &app);
    Camera camera;
    camera.show();
    addCommands(camera, raise);
    addQueries(camera, raise);
    camera.add<VT_FEATURE_NEXT_FRAME>(VTSetFeatureNextFrame, raise);
    camera.add<VT_FEATURE_CLOSED>(VTSetFeatureNotify, raise);
    camera.add<VT_FEATURE_FILE_LOAD>(VTSetFeatureLoad, raise);
    camera.add<VT_FEATURE_FILE_SAVE>(VTSetFeatureSave, raise);
    for (const int callback : {int{Gone}, int{Triggered}, int{VT_FEATURE_FRAME_RELEASED}, int{VT_FEATURE_FINISHED}})
        camera.on(callback, raise);
    camera.on(Idle, [&] { return VTAppExit(app, 0), raise(); });
    const auto idle = [](void* user) { static_cast<Camera*>(user)->enter(Idle); };
    VTAppAddIdleMethod(app, idle, &camera);
    camera.addAction();
    runCommands(camera);
    camera.ownAction()->trigger();
    FileIO file;
    const bool isLoaded = camera.view->fileInterface()->load("a.raw", &file);
    camera.save();
    VTAppExec(app, nullptr);
    camera.view->close();
    VTAppDestroy(app);
    for (const std::int32_t feature : camera.added)
        thrown = camera.calls(feature) > 0 ? thrown.load() : -1000;
    return isLoaded ? -1 : thrown.load();
}

} // namespace

void CallbacksTest::exceptionsAreReported()
{
    QProcess host;
    host.start(QCoreApplication::applicationFilePath(), {QStringLiteral("throwing")});
    QVERIFY(host.waitForFinished(100000));
    const QByteArray output = host.readAllStandardError().replace('\r', "");
    QVERIFY2(host.exitCode() == 0, output.constData());
    std::set<QByteArray> names;
    int count = 0;
    for (const QByteArray& line : output.split('\n')) {
        if (line.isEmpty() || line.startsWith("This plugin "))
            continue;
        QVERIFY2(line.startsWith("Vistrel: ") && line.endsWith(": two lines"), line.constData());
        names.insert(line.mid(9, line.size() - 20));
        ++count;
    }
    QCOMPARE(count, host.readAllStandardOutput().trimmed().toInt());
    const char* const kinds[] = {"start",      "startFixed",   "setupMode",    "isRunning",      "activeSetupMode",
                                 "frameRate",  "framesQueued", "getNextFrame", "frame released", "uxClosed",
                                 "finished",   "load",         "save",         "triggered",      "action gone",
                                 "idle method"};
    for (const char* const kind : kinds)
        QVERIFY2(names.count(kind) == 1, kind);
}

void CallbacksTest::callsComeOnTheirThreads()
{
    const auto here = std::this_thread::get_id();
    Camera camera;
    camera.show();
    addCommands(camera, nullptr);
    addQueries(camera, [] { return false; });
    camera.add<VT_FEATURE_CAN_START>(VTSetFeatureQuery);
    camera.add<VT_FEATURE_NEXT_FRAME>(VTSetFeatureNextFrame, [] { return false; });
    runCommands(camera);
    for (const std::int32_t feature : camera.added) {
        QTRY_VERIFY2(camera.calls(feature) > 0 || feature == VT_FEATURE_FINISHED ||
                         feature == VT_FEATURE_FRAME_RELEASED,
                     QByteArray::number(feature).constData());
        const bool isQuery = feature >= VT_FEATURE_CAN_SETUP && feature < VT_FEATURE_NEXT_FRAME;
        if (camera.calls(feature) > 0)
            QCOMPARE(camera.isOn(feature, here), isQuery);
        QCOMPARE(camera.isOn(feature, camera.threads[VT_FEATURE_START]), feature <= VT_FEATURE_SETUP_MODE);
    }
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
    camera.add<VT_FEATURE_CAN_START>(VTSetFeatureQuery, [] { return true; });
    QCoreApplication::processEvents();
    QVERIFY(!start->isVisible()); // there is nothing that could be called
    camera.add<VT_FEATURE_START>(VTSetFeatureCommand);
    QTRY_VERIFY(start->isVisible() && start->isEnabled());
    QCOMPARE(state(), VT_ACQUISITION_CONFIGURED + 0);
    camera.add<VT_FEATURE_CAN_START>(VTSetFeatureQuery, [] { return false; });
    QTRY_VERIFY(!start->isEnabled());
    VTSetFeatureQuery(camera.window, VT_FEATURE_CAN_START, nullptr);
    QTRY_VERIFY(start->isEnabled());
    camera.add<VT_FEATURE_IS_RUNNING>(VTSetFeatureQuery);
    QCOMPARE(state(), VT_ACQUISITION_RUNNING + 0);
    camera.add<VT_FEATURE_IS_SETUP>(VTSetFeatureQuery, [] { return false; });
    VTSetFeatureQuery(camera.window, VT_FEATURE_IS_RUNNING, nullptr);
    QCOMPARE(state(), VT_ACQUISITION_UNCONFIGURED + 0);
    VTSetFeatureCommand(camera.window, VT_FEATURE_START, nullptr);
    QTRY_VERIFY(!start->isVisible());
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
    send(VT_SIGNAL_ACQUISITION_STATE_CHANGED, &isSetUp);
    QTRY_COMPARE(camera.returned(), QByteArray("11"));
}

// Message boxes -------------------------------------------------------------------------------------------------------

void CallbacksTest::workerAsks_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<Story>("story"); // when the box is up
    QTest::addColumn<int>("code");
    const Story press = [](Camera&) {
        qobject_cast<QMessageBox*>(QApplication::activeModalWidget())->button(QMessageBox::Retry)->click();
    };
    for (int kind = VT_MESSAGE_CRITICAL; kind <= VT_MESSAGE_QUESTION; ++kind)
        QTest::addRow("kind %d", kind) << kind << press << int{VT_OK};
    const auto end = [](const char* name, Story story) {
        QTest::newRow(name) << int{VT_MESSAGE_WARNING} << story << int{VT_ERROR_NO_ANSWER};
    };
    end("window destroyed", [](Camera& c) { VTWindowDestroy(c.window); });
    end("window closed", [](Camera& c) { c.view->close(); });
    end("loop left", [](Camera&) { VTAppExit(app, 0); });
    end("window destroyed before", nullptr);
}

void CallbacksTest::workerAsks()
{
    QFETCH(int, kind);
    QFETCH(Story, story);
    QFETCH(int, code);
    // Comes between the call's post and the box.
    struct Before : QObject
    {
        bool eventFilter(QObject* receiver, QEvent* event) override
        {
            const bool isCall =
                event->type() == QEvent::MetaCall && strstr(receiver->metaObject()->className(), "Call");
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
            camera.code = VTMessageBoxDialogShow(camera.window, kind, "T", "t", VT_BUTTON_RETRY | VT_BUTTON_ABORT,
                                                 VT_BUTTON_ABORT, &pressed);
            VTAppExit(app, 0);
        });
    });
    VTAppExec(app, nullptr);
    worker.join();
    QCOMPARE(camera.code, code);
    QCOMPARE(pressed, code == VT_OK ? std::uint32_t{VT_BUTTON_RETRY} : 5u);
}

// The end of the application ------------------------------------------------------------------------------------------

void CallbacksTest::applicationEnds()
{
    std::atomic<bool> isEnding{false};
    std::atomic<int> wrongCodes{0};
    const auto cameras = std::make_unique<std::array<Camera, 3>>(); // shown, never shown, with a command
    const auto callsFail = [&] {
        VTAppHandle any = nullptr;
        const VTWindowHandle window = cameras->at(0).window;
        std::uint32_t pressed = 0;
        for (const std::int32_t code :
             {VTAppGetGlobal(&any), VTAppExit(app, 0), VTAppDestroy(app), VTAppExec(app, nullptr),
              VTWindowDestroy(window), VTWindowSetNextFrame(window, nullptr), VTSendSignal(window, 1),
              VTSetPropBool(window, VT_WINDOW_VISIBLE, true), VTActionDestroy(nullptr),
              VTMessageBoxDialogShow(window, 1, "", "", 0, 0, &pressed)})
            wrongCodes += isEnding && code != VT_ERROR_NO_APPLICATION;
        wrongCodes += isEnding && VTWindowIsGood(window);
        return true;
    };
    Camera& shown = cameras->at(0);
    Camera& commanded = cameras->at(2);
    shown.show();
    cameras->at(1).push(cameras->at(1).lend());
    commanded.add<VT_FEATURE_START>(VTSetFeatureCommand, [&] {
        std::uint32_t pressed = 0;
        commanded.gate.pass();
        commanded.code = VTMessageBoxDialogShow(commanded.window, VT_MESSAGE_QUESTION, "", "", 0, 0, &pressed);
        while (!isEnding || VTWindowIsGood(commanded.window))
            std::this_thread::yield();
        return callsFail();
    });
    commanded.trigger("actionStart");
    for (int i = 0; i < 8; ++i) { // the table of handles has no order
        for (Camera& camera : *cameras)
            camera.addAction();
    }
    for (Camera& camera : *cameras) {
        for (const int callback : {int{VT_FEATURE_FRAME_RELEASED}, int{VT_FEATURE_FINISHED}, int{Gone}})
            camera.on(callback, callsFail);
    }
    QTRY_COMPARE(commanded.gate.arrived(), 1);
    commanded.gate.open(); // it asks, and nobody is there to show the box
    isEnding = true;
    QCOMPARE(VTAppDestroy(app), VT_OK + 0);
    QCOMPARE(wrongCodes, 0);
    QVERIFY(commanded.code < VT_ERROR_EXCEPTION); // no answer, or it came too late
    for (Camera& camera : *cameras) {
        QCOMPARE(camera.calls(VT_FEATURE_FINISHED), 1);
        QCOMPARE(camera.calls(Gone), 8);
        QVERIFY(!camera.isLate && !camera.returned().contains('0'));
    }
    QCOMPARE(VTAppCreate(1, commandLine, &app), VT_OK + 0);
    Camera again;
    again.show();
}

void CallbacksTest::exitMeetsTheEnd()
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
void CallbacksTest::hammered()
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

int main(int argc, char** argv)
{
    if (argc == 2 && qstrcmp(argv[1], "throwing") == 0) {
        std::printf("%d\n", throwEverywhere());
        return 0;
    }
    CallbacksTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "CallbacksTest.moc"
