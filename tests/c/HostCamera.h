// SPDX-License-Identifier: MIT
// A C host with one window, for tests that hold its functions and frames in their hands.
#pragma once

#include <Vistrel/CInterface.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/WindowQt.h>

#include "support/FakeSources.h"

#include <QtTest/QtTest>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>

#include <algorithm>
#include <deque>
#include <map>
#include <set>
#include <thread>
#include <tuple>

using namespace Vistrel;

enum { Gone = 1, Triggered, Idle }; // callbacks besides the features

inline const char* const commandLine[] = {"program"};
inline VTAppHandle app = nullptr;

/// Any handle or pointer, which becomes the wanted one as in C.
struct Handle
{
    void* at;
    template <typename Type>
    operator Type*() const
    {
        return static_cast<Type*>(at);
    }
};

struct Camera;
template <std::int32_t feature, typename Callback>
struct Call;

/// One window's user: its functions, which do as they are told, and its frames.
struct Camera
{
    using Act = std::function<bool()>;

    static void gone(void* user) { static_cast<Camera*>(user)->enter(Gone); }

    Camera()
    {
        VTAppCreate(1, commandLine, &app); // unless there is one
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
        if (host.joinable())
            host.join();
    }
    template <std::int32_t feature, typename Callback>
    void add(std::int32_t (*set)(VTWindowHandle, std::int32_t, Callback), Act act = nullptr)
    {
        on(feature, std::move(act));
        added.insert(feature);
        QCOMPARE(set(window, feature, &Call<feature, Callback>::call), VT_OK + 0);
        // The feature that each VT_SOURCE_HAS_* tells of.
        constexpr int told[] = {100, 300, 101, 102, 103, 104, 105, 200, 106, 107, 108, 600, 700, 701, 702, 703};
        for (std::int32_t i = 0; i < 16; ++i) {
            bool isTold = false;
            VTGetPropBool(window, VT_SOURCE_HAS_SETUP + i, &isTold);
            QCOMPARE(isTold, added.count(told[i]) > 0);
        }
    }
    VTActionHandle addAction()
    {
        VTActionHandle result = nullptr;
        const auto triggered = [](VTActionHandle, bool, void* user) { static_cast<Camera*>(user)->enter(Triggered); };
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
        freed.notify_all();
    }
    std::int32_t push(const VTRawImage& image)
    {
        const std::int32_t answer = VTWindowSetNextFrame(window, &image);
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
        const auto all = view->findChildren<QAction*>();
        return *std::find_if(all.begin(), all.end(), [](QAction* one) { return one->text() == QLatin1String("Own"); });
    }

    struct Frame
    {
        std::vector<std::uint8_t> pixels;
        VTRawImage image;
        int returned = 0;
    };

    VTWindowHandle window = nullptr;
    QPointer<WindowQt> view;
    std::set<std::int32_t> added; // features
    Gate gate;
    std::thread host; // another one of its threads

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

Q_DECLARE_METATYPE(Story)
