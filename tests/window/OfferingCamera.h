// SPDX-License-Identifier: MIT
// A window whose source offers everything or nothing, and what the source is asked to do.
#pragma once

#include <Vistrel/PopoverWindow.h>
#include <Vistrel/SurfaceStream.h>
#include <Vistrel/Window.h>
#include <Vistrel/WindowQt.h>

#include "support/FakeSources.h"

#include <QtCore/QPointer>
#include <QtCore/QThread>
#include <QtTest/QTest>
#include <QtWidgets/QMenu>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QToolBar>

#include <deque>
#include <functional>
#include <memory>
#include <string>

using namespace Vistrel;

struct Command
{
    const char *call, *action, *button, *key, *argument;
};

inline const Command commands[] = {
    {"setup", "actionSetup", "actionSetup_Cleanup", "F5", ""},
    {"setupMode", "actionSetup_Mode", nullptr, "", "(Fast)"},
    {"cleanup", "actionCleanup", "actionSetup_Cleanup", "Shift+F5", ""},
    {"trigger", "actionTrigger", "actionTrigger", "F10", ""},
    {"startSingleReverse", "actionStart_Single_Reverse", "actionStart_Single_Reverse", "-", ""},
    {"startReverse", "actionStart_Reverse", "actionStart_Reverse", "Shift+Space", ""},
    {"start", "actionStart", "actionStart", "Space", ""},
    {"startFixed", "actionStart_Fixed", "actionStart_Fixed", "*", "(1)"},
    {"startSingle", "actionStart_Single", "actionStart_Single", "+", ""},
    {"pause", "actionPause", "actionPause", "Space", ""},
    {"stop", "actionStop", "actionStop", ".", ""},
};
constexpr unsigned anyCommand = (1u << std::size(commands)) - 1;

inline unsigned bit(const char* call)
{
    unsigned i = 0;
    while (qstricmp(commands[i].call, call) != 0)
        ++i;
    return 1u << i;
}

inline std::atomic<const char*> moment{nullptr}; // the call of the host's in which it acts
inline std::function<void()> act;
inline std::atomic<int> asked{0}; // queries on the user-interface thread

inline void enter(const std::string& call)
{
    const char* const at = moment;
    if (at && call == at)
        act();
}

// What a source and its test share; the source may go first.
struct Log
{
    bool add(const QByteArray& event)
    {
        const std::lock_guard<std::mutex> guard(mutex);
        list += list.isEmpty() ? event : " " + event;
        return success;
    }
    QByteArray seen()
    {
        const std::lock_guard<std::mutex> guard(mutex);
        return list;
    }

    std::mutex mutex;
    QByteArray list;
    std::atomic<bool> success{true};
    Gate gate; // that commands pass
};

// Offers everything or nothing, and tells what it is asked to do.
class Camera : public PushSource
{
public:
    explicit Camera(std::shared_ptr<Log> log) : m_log(std::move(log))
    {
        m_log->gate.openForGood();
        addSetupMode("Fast", "Short exposure");
    }
    ~Camera() override { m_log->add("gone"); }

    ScopedLock getFrameLock(const RawImage& frame) override
    {
        if (QThread::currentThread() == qApp->thread())
            answer("getFrameLock", 0);
        return lends ? PushSource::getFrameLock(frame) : ScopedLock();
    }
    void offer(bool all)
    {
        using Source = AbstractAcquisitionInterface;
        for (const auto feature :
             {&Source::setHasSetup, &Source::setHasSetupMode, &Source::setHasCleanup, &Source::setHasTrigger,
              &Source::setHasStartSingleReverse, &Source::setHasStartReverse, &Source::setHasStart,
              &Source::setHasStartFixed, &Source::setHasStartSingle, &Source::setHasPause, &Source::setHasStop,
              &Source::setHasFrameRate, &Source::setHasFramesDropped})
            (this->*feature)(all);
    }
    using PushSource::signalAcquisitionStateChange;
    using PushSource::signalFeatureSetChange;

    bool setup() override { return run("setup") && hasSetup(); }
    bool setupMode(const char* const name) override { return run("setupMode", name); }
    bool cleanup() override { return run("cleanup"); }
    bool trigger() override { return run("trigger"); }
    bool startSingleReverse() override { return run("startSingleReverse"); }
    bool startReverse() override { return run("startReverse"); }
    bool start() override { return run("start") && (running = true); }
    bool startFixed(std::size_t frames) override { return run("startFixed", std::to_string(frames).c_str()); }
    bool startSingle() override { return run("startSingle"); }
    bool pause() override { return run("pause"); }
    bool stop() override { return run("stop") && !(running = false); }
    void uxClosed() override { answer("uxClosed", m_log->add("closed")); }

    bool canSetup() const override { return can("canSetup"); }
    bool canSetupMode() const override { return can("canSetupMode"); }
    bool canCleanup() const override { return can("canCleanup"); }
    bool canTrigger() const override { return can("canTrigger"); }
    bool canStartSingleReverse() const override { return can("canStartSingleReverse"); }
    bool canStartReverse() const override { return can("canStartReverse"); }
    bool canStart() const override { return can("canStart"); }
    bool canStartFixed() const override { return can("canStartFixed"); }
    bool canStartSingle() const override { return can("canStartSingle"); }
    bool canPause() const override { return can("canPause"); }
    bool canStop() const override { return can("canStop"); }

    bool isSetup() const override { return answer("isSetup", setUp.load()); }
    bool isRunning() const override { return answer("isRunning", running.load()); }
    bool isStopped() const override { return !running; }
    bool activeSetupMode(char* const buffer, std::size_t* const size) const override
    {
        return answer("activeSetupMode", setupModeName(1, buffer, size));
    }
    double frameRate() const override { return answer("frameRate", rate.load()); }
    std::size_t framesDropped() const override { return answer("framesDropped", dropped.load()); }

    std::atomic<bool> lends{true};
    std::atomic<bool> running{false};
    std::atomic<double> rate{25};
    std::atomic<std::size_t> dropped{1};
    std::atomic<unsigned> able{anyCommand};

private:
    template <typename Value>
    static Value answer(const char* query, Value value)
    {
        asked += QThread::currentThread() == qApp->thread() ? 1 : 0;
        enter(query);
        return value;
    }
    bool can(const char* query) const { return answer(query, (able & bit(query + 3)) != 0); }
    bool run(const char* call, const char* argument = nullptr)
    {
        m_log->gate.pass();
        return answer(call, m_log->add(call + (argument ? QByteArray("(") + argument + ")" : QByteArray())));
    }

    const std::shared_ptr<Log> m_log;
};

struct ShownWindow
{
    explicit ShownWindow(bool all = true, unsigned able = anyCommand, AbstractFileInterface* files = nullptr)
    {
        camera->offer(all);
        camera->able = able;
        host = std::make_unique<Window>(camera, files);
        window = static_cast<WindowQt*>(host->qt_handle());
        window->resize(1200, 600); // room for the whole tool bar
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window));
    }
    ~ShownWindow()
    {
        host.reset();
        log->gate.openForGood();
        QTRY_VERIFY(log->seen().endsWith("gone"));
    }

    void offer(bool all, unsigned able) const
    {
        camera->offer(all);
        camera->able = able;
        window->updateFeatureSet();
    }
    QAction* action(const char* name) const { return window->findChild<QAction*>(QLatin1String(name)); }
    QMenu* modes() const { return action("actionSetup_Mode")->menu(); }
    QWidget* button(const char* name) const { return window->findChild<QToolBar*>()->widgetForAction(action(name)); }
    // What is not offered has no button, and a mode no entry; then nothing happens.
    void choose(const Command& command, bool isByButton = false) const
    {
        QAction* const entry = modes()->actions().value(0); // of the one command without a key
        if (QWidget* const pressed = isByButton ? button(command.button) : nullptr) {
            QTRY_VERIFY(pressed->isVisible());
            QTest::mouseClick(pressed, Qt::LeftButton, {}, {8, pressed->height() / 2});
        } else if (!isByButton && *command.key) {
            QTest::keySequence(window, QKeySequence(QLatin1String(command.key)));
        } else if (!isByButton && entry && entry->isEnabled()) {
            entry->trigger();
        }
        if (const PopoverWindow* const asking = panel())
            asking->findChild<QPushButton*>()->click();
        QVERIFY(!panel());
    }
    PopoverWindow* panel() const // the one that is open, or null
    {
        for (auto* const one : window->findChildren<PopoverWindow*>()) {
            if (one->isOpen())
                return one;
        }
        return nullptr;
    }
    // Of the bytes 1, 5, 9 and so on.
    void push(Format format, std::size_t width = 4, std::size_t height = 3)
    {
        frames.emplace_back(width, height, format);
        for (std::size_t i = 0; i < frames.back().pixels.size(); ++i)
            frames.back().pixels[i] = static_cast<std::uint8_t>(4 * i + 1);
        camera->push(frames.back().raw);
        const QSize size(static_cast<int>(width), static_cast<int>(height));
        QTRY_COMPARE(window->surfaceScrollArea()->surface()->pixmap().size(), size);
        QTRY_VERIFY(window->surfaceStream()->latestImageFormat() == format && action("actionSave_Image")->isEnabled());
    }

    const std::shared_ptr<Log> log = std::make_shared<Log>();
    Camera* camera = new Camera(log);
    std::unique_ptr<Window> host;
    QPointer<WindowQt> window;
    std::deque<TestFrame> frames;
};
