// SPDX-License-Identifier: MIT
// A window whose source offers everything or nothing, and what the source is asked to do.
#pragma once

#include <Vistrel/WindowQt.h>

#include "support/FakeSources.h"

#include <QtCore/QPointer>
#include <QtCore/QThread>
#include <QtTest/QTest>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QToolBar>

using namespace Vistrel;

struct Command
{
    const char *call, *action, *key, *argument;
};

inline const Command commands[] = {
    {"setup", "actionSetup", "F5", ""},
    {"setupMode", "actionSetup_Mode", "", "(Fast)"},
    {"cleanup", "actionCleanup", "Shift+F5", ""},
    {"trigger", "actionTrigger", "F10", ""},
    {"startSingleReverse", "actionStart_Single_Reverse", "-", ""},
    {"startReverse", "actionStart_Reverse", "Shift+Space", ""},
    {"start", "actionStart", "Space", ""},
    {"startFixed", "actionStart_Fixed", "*", "(1)"},
    {"startSingle", "actionStart_Single", "+", ""},
    {"pause", "actionPause", "Space", ""},
    {"stop", "actionStop", ".", ""},
};
constexpr unsigned anyCommand = (1u << std::size(commands)) - 1;

inline unsigned bit(const char* call)
{
    unsigned i = 0;
    while (qstricmp(commands[i].call, call) != 0)
        ++i;
    return 1u << i;
}

inline std::atomic<const char*> thrower{nullptr}; // the query or command that throws
inline std::atomic<int> thrown{0};
inline std::atomic<int> asked{0}; // on the user-interface thread
inline std::atomic<int> reported{0};
inline std::atomic<int> reportedOther{0};

// What a source and its test share; the source may go first.
struct Log
{
    bool add(const std::string& event)
    {
        const std::lock_guard<std::mutex> guard(mutex);
        list += list.empty() ? event : " " + event;
        return success;
    }
    std::string seen()
    {
        const std::lock_guard<std::mutex> guard(mutex);
        return list;
    }

    std::mutex mutex;
    std::string list;
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

    void offer(bool all)
    {
        using Source = AbstractAcquisitionInterface;
        for (const auto feature :
             {&Source::setHasSetup, &Source::setHasSetupMode, &Source::setHasCleanup, &Source::setHasTrigger,
              &Source::setHasStartSingleReverse, &Source::setHasStartReverse, &Source::setHasStart,
              &Source::setHasStartFixed, &Source::setHasStartSingle, &Source::setHasPause, &Source::setHasStop,
              &Source::setHasFrameRate, &Source::setHasFramesQueued, &Source::setHasFramesFilled,
              &Source::setHasFramesDropped, &Source::setHasFramesDelivered})
            (this->*feature)(all);
    }
    using PushSource::signalAcquisitionStateChange;
    using PushSource::signalFeatureSetChange;

    bool setup() override { return run("setup"); }
    bool setupMode(const char* const name) override { return run("setupMode", name); }
    bool cleanup() override { return run("cleanup"); }
    bool trigger() override { return run("trigger"); }
    bool startSingleReverse() override { return run("startSingleReverse"); }
    bool startReverse() override { return run("startReverse"); }
    bool start() override { return run("start"); }
    bool startFixed(std::size_t frames) override { return run("startFixed", std::to_string(frames).c_str()); }
    bool startSingle() override { return run("startSingle"); }
    bool pause() override { return run("pause"); }
    bool stop() override { return run("stop"); }
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

    bool isSetup() const override { return answer("isSetup", true); }
    bool isRunningSingleReverse() const override { return answer("isRunningSingleReverse", false); }
    bool isRunningReverse() const override { return answer("isRunningReverse", false); }
    bool isRunning() const override { return answer("isRunning", false); }
    bool isRunningFixed() const override { return answer("isRunningFixed", false); }
    bool isRunningSingle() const override { return answer("isRunningSingle", false); }
    bool isPaused() const override { return answer("isPaused", false); }
    bool isStopped() const override { return answer("isStopped", false); }
    bool activeSetupMode(char* const buffer, std::size_t* const size) const override
    {
        return answer("activeSetupMode", setupModeName(1, buffer, size));
    }
    double frameRate() const override { return answer("frameRate", 25.0); }
    std::size_t framesQueued() const override { return answer("framesQueued", 1u); }
    std::size_t framesFilled() const override { return answer("framesFilled", 1u); }
    std::size_t framesDropped() const override { return answer("framesDropped", 1u); }
    std::size_t framesDelivered() const override { return answer("framesDelivered", 1u); }

    std::atomic<unsigned> able{anyCommand};

private:
    template <typename Value>
    static Value answer(const char* query, Value value)
    {
        asked += QThread::currentThread() == qApp->thread() ? 1 : 0;
        if (thrower && std::strcmp(thrower, query) == 0) {
            ++thrown;
            throw std::runtime_error("no camera");
        }
        return value;
    }
    bool can(const char* query) const { return answer(query, (able & bit(query + 3)) != 0); }
    bool run(const char* call, const char* argument = nullptr)
    {
        m_log->gate.pass();
        return answer(call, m_log->add(argument ? std::string(call) + "(" + argument + ")" : call));
    }

    const std::shared_ptr<Log> m_log;
};

struct ShownWindow
{
    explicit ShownWindow(bool all = true, unsigned able = anyCommand)
    {
        offer(all, able);
        window->resize(1200, 600); // room for the whole tool bar
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window));
    }
    ~ShownWindow()
    {
        delete window;
        log->gate.openForGood();
        QTRY_VERIFY(QByteArray::fromStdString(log->seen()).endsWith("gone"));
    }

    void offer(bool all, unsigned able)
    {
        camera->offer(all);
        camera->able = able;
        if (!window)
            window = new WindowQt(ScopedAcquisitionInterface(camera));
        window->updateFeatureSet();
    }
    QAction* action(const char* name) const { return window->findChild<QAction*>(QLatin1String(name)); }
    QMenu* modes() const { return action("actionSetup_Mode")->menu(); }
    QWidget* button(const char* name) const { return window->findChild<QToolBar*>()->widgetForAction(action(name)); }

    // By the mouse, through the menus that lead there; nothing happens when there is no such entry.
    void choose(const char* name) const
    {
        QMenuBar* const bar = window->menuBar();
        auto* const menu = window->findChild<QMenu*>(QStringLiteral("menuAcquisition"));
        QTest::mouseClick(bar, Qt::LeftButton, {}, bar->actionGeometry(menu->menuAction()).center());
        QTRY_VERIFY(menu->isVisible());
        click(menu, action(name));
        if (action(name)->isVisible() && action(name)->menu()) {
            QTRY_VERIFY(modes()->isVisible());
            click(modes(), modes()->actions().last());
            modes()->close();
        }
        menu->close();
    }
    static void click(QMenu* menu, QAction* entry)
    {
        const QRect place = menu->actionGeometry(entry);
        if (entry->isVisible())
            QTest::mouseClick(menu, Qt::LeftButton, {}, place.topLeft() + QPoint(8, place.height() / 2));
    }

    const std::shared_ptr<Log> log = std::make_shared<Log>();
    Camera* camera = new Camera(log);
    QPointer<WindowQt> window;
};
