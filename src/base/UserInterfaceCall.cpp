// SPDX-License-Identifier: MIT
// Makes calls on the user-interface thread.
#include "base/UserInterfaceCall.h"

#include "base/Log.h"

#include <QtCore/QObject>
#include <QtCore/QThread>
#include <QtWidgets/QApplication>

#include <algorithm>
#include <deque>
#include <future>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace Vistrel {

namespace {

/// A call whose thread waits until it has been made or dropped.
struct WaitingCall
{
    const std::function<void(QWidget*)>* work;
    const void* target;
    std::promise<bool> made;
};

/// Receives the calls on the user-interface thread and lives as long as the application. With a blocking connection the
/// caller would hang for ever if no event loop runs to serve it.
class CallCarrier : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void serve();
    void loopEnded() { endUserInterfaceCalls(); } // a waiting thread might wait for ever, and the host for that thread
    void loopRuns();
};

struct CallTarget
{
    QWidget* widget = nullptr;
    std::shared_ptr<const void> life = std::make_shared<char>();
};

struct WaitingCalls
{
    CallTarget targetOf(const void* target) const
    {
        const auto entry = targets.find(target);
        return entry != targets.end() ? entry->second : CallTarget{nullptr, nullptr};
    }

    template <typename Predicate>
    void drop(Predicate isDropped)
    {
        const auto dropped = std::stable_partition(calls.begin(), calls.end(),
                                                   [&](const WaitingCall& call) { return !isDropped(call); });
        std::for_each(dropped, calls.end(), [](WaitingCall& call) { call.made.set_value(false); });
        calls.erase(dropped, calls.end());
    }
    void drop()
    {
        drop([](const WaitingCall&) { return true; });
    }
    void drop(const void* target)
    {
        drop([=](const WaitingCall& call) { return call.target == target; });
    }

    std::mutex mutex;          // guards all below; held while a call is posted, and taken by its receiver
    QThread* thread = nullptr; // the user-interface thread, or null without an application
    CallCarrier* carrier = nullptr;
    bool hasLoopEnded = false;     // and no other has begun
    std::deque<WaitingCall> calls; // each with one posted event
    std::unordered_map<const void*, CallTarget> targets;
};

WaitingCalls& waitingCalls()
{
    static WaitingCalls& calls = *new WaitingCalls; // never freed: threads may still call while the process ends
    return calls;
}

void CallCarrier::serve()
{
    WaitingCalls& waiting = waitingCalls();
    std::unique_lock<std::mutex> guard(waiting.mutex);
    if (waiting.calls.empty())
        return;
    WaitingCall call = std::move(waiting.calls.front());
    waiting.calls.pop_front();
    QWidget* const widget = waiting.targetOf(call.target).widget;
    guard.unlock();
    // An exception must not pass through Qt's event loop, nor leave the caller waiting.
    call.made.set_value(attempt("call on the user-interface thread", false, [&] {
        (*call.work)(widget);
        return true;
    }));
}

void CallCarrier::loopRuns()
{
    WaitingCalls& waiting = waitingCalls();
    const std::lock_guard<std::mutex> guard(waiting.mutex);
    waiting.hasLoopEnded = false;
}

void forgetApplication()
{
    WaitingCalls& waiting = waitingCalls();
    const std::lock_guard<std::mutex> guard(waiting.mutex);
    waiting.thread = nullptr;
    waiting.drop();
    delete std::exchange(waiting.carrier, nullptr);
}

// Called when an application begins, or, on any thread, when the library is loaded into one.
void watchApplication()
{
    auto* const application = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (!application)
        return;
    WaitingCalls& waiting = waitingCalls();
    const std::lock_guard<std::mutex> guard(waiting.mutex);
    waiting.thread = application->thread();
    waiting.hasLoopEnded = false;
    waiting.carrier = new CallCarrier;
    waiting.carrier->moveToThread(waiting.thread);
    QObject::connect(application, SIGNAL(aboutToQuit()), waiting.carrier, SLOT(loopEnded()));
    qAddPostRoutine(forgetApplication);
}

Q_COREAPP_STARTUP_FUNCTION(watchApplication)

} // namespace

bool callOnUserInterface(const void* target, const std::function<void(QWidget*)>& work)
{
    WaitingCalls& waiting = waitingCalls();
    std::unique_lock<std::mutex> guard(waiting.mutex);
    if (!waiting.thread || (target && waiting.targets.count(target) == 0))
        return false;
    if (QThread::currentThread() == waiting.thread) {
        QWidget* const widget = waiting.targetOf(target).widget;
        guard.unlock();
        work(widget);
        return true;
    }
    if (waiting.hasLoopEnded)
        return false;
    waiting.calls.push_back({&work, target, {}});
    std::future<bool> made = waiting.calls.back().made.get_future();
    QMetaObject::invokeMethod(waiting.carrier, "serve", Qt::QueuedConnection);
    guard.unlock();
    return made.get();
}

void endUserInterfaceCalls()
{
    WaitingCalls& waiting = waitingCalls();
    const std::lock_guard<std::mutex> guard(waiting.mutex);
    waiting.hasLoopEnded = true;
    waiting.drop();
    if (waiting.carrier) // served by the next loop, if there is one
        QMetaObject::invokeMethod(waiting.carrier, "loopRuns", Qt::QueuedConnection);
}

void addCallTarget(const void* target, QWidget* widget)
{
    WaitingCalls& waiting = waitingCalls();
    const std::lock_guard<std::mutex> guard(waiting.mutex);
    waiting.targets[target].widget = widget;
}

std::weak_ptr<const void> callTargetLife(const void* target)
{
    WaitingCalls& waiting = waitingCalls();
    const std::lock_guard<std::mutex> guard(waiting.mutex);
    return waiting.targetOf(target).life;
}

void clearCallTarget(const void* target)
{
    WaitingCalls& waiting = waitingCalls();
    const std::lock_guard<std::mutex> guard(waiting.mutex);
    const auto entry = waiting.targets.find(target);
    if (entry != waiting.targets.end())
        entry->second.widget = nullptr;
    waiting.drop(target);
}

void removeCallTarget(const void* target)
{
    WaitingCalls& waiting = waitingCalls();
    const std::lock_guard<std::mutex> guard(waiting.mutex);
    waiting.targets.erase(target);
    waiting.drop(target);
}

} // namespace Vistrel

#include "UserInterfaceCall.moc"
