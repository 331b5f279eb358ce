// SPDX-License-Identifier: MIT
// Message boxes over a display window, from any thread.
#include <Vistrel/MessageBoxDialog.h>

#include "base/Log.h"
#include "dialogs/WaitingCalls.h"

#include <Vistrel/Window.h>

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QThread>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <unordered_set>
#include <utility>

namespace Vistrel {

namespace {

constexpr struct
{
    DialogButton button;
    QMessageBox::StandardButton toolkitButton;
} buttonTable[] = {
    {DialogButton::NoButton, QMessageBox::NoButton},
    {DialogButton::Ok, QMessageBox::Ok},
    {DialogButton::Open, QMessageBox::Open},
    {DialogButton::Save, QMessageBox::Save},
    {DialogButton::Cancel, QMessageBox::Cancel},
    {DialogButton::Close, QMessageBox::Close},
    {DialogButton::Discard, QMessageBox::Discard},
    {DialogButton::Apply, QMessageBox::Apply},
    {DialogButton::Reset, QMessageBox::Reset},
    {DialogButton::RestoreDefaults, QMessageBox::RestoreDefaults},
    {DialogButton::Help, QMessageBox::Help},
    {DialogButton::SaveAll, QMessageBox::SaveAll},
    {DialogButton::Yes, QMessageBox::Yes},
    {DialogButton::YesToAll, QMessageBox::YesToAll},
    {DialogButton::No, QMessageBox::No},
    {DialogButton::NoToAll, QMessageBox::NoToAll},
    {DialogButton::Abort, QMessageBox::Abort},
    {DialogButton::Retry, QMessageBox::Retry},
    {DialogButton::Ignore, QMessageBox::Ignore},
};

QMessageBox::StandardButtons toToolkit(const DialogButtons& buttons)
{
    QMessageBox::StandardButtons toolkitButtons = QMessageBox::NoButton;
    for (const auto& row : buttonTable) {
        if (buttons.value & static_cast<int>(row.button))
            toolkitButtons |= row.toolkitButton;
    }
    return toolkitButtons;
}

QMessageBox::StandardButton toToolkit(DialogButton button)
{
    for (const auto& row : buttonTable) {
        if (row.button == button)
            return row.toolkitButton;
    }
    return QMessageBox::NoButton;
}

DialogButton fromToolkit(QMessageBox::StandardButton toolkitButton)
{
    for (const auto& row : buttonTable) {
        if (row.toolkitButton == toolkitButton)
            return row.button;
    }
    return DialogButton::NoButton;
}

class MessageBoxDialogSignalBox : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    void critical();
    void warning();
    void information();
    void question();
};

// Calls from other threads --------------------------------------------------------------------------------------------

/// A call whose thread waits for the answer.
struct WaitingCall
{
    const std::function<DialogButton()>& show;
    const Window* window;
    bool isAnswered = false;
    DialogButton answer = DialogButton::NoButton;
};

/// Lives on the user-interface thread as long as the application, and receives the calls. A blocking connection would
/// not do: its caller hangs for ever when no event loop comes to serve it.
class CallCarrier : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void serve();
    void loopEnded();
    void loopRuns();
};

struct WaitingCalls
{
    std::mutex mutex; // guards all below; held while a call is posted, and taken by the one who receives it
    std::condition_variable answered;
    QThread* thread = nullptr; // the user-interface thread, or null without an application
    CallCarrier* carrier = nullptr;
    bool hasLoopEnded = false;                 // and no other has been seen
    std::deque<WaitingCall*> unserved;         // each with one post under way
    std::unordered_set<const Window*> windows; // that are there
};

WaitingCalls& waitingCalls()
{
    static WaitingCalls& calls = *new WaitingCalls; // never freed: threads may still call while the process ends
    return calls;
}

// Under the mutex.
template <typename Predicate>
void dropUnserved(WaitingCalls& calls, Predicate isDropped)
{
    const auto kept = std::stable_partition(calls.unserved.begin(), calls.unserved.end(),
                                            [&](const WaitingCall* call) { return !isDropped(*call); });
    std::for_each(kept, calls.unserved.end(), [](WaitingCall* call) { call->isAnswered = true; });
    calls.unserved.erase(kept, calls.unserved.end());
    calls.answered.notify_all();
}

void dropUnserved(WaitingCalls& calls)
{
    dropUnserved(calls, [](const WaitingCall&) { return true; });
}

void dropUnserved(WaitingCalls& calls, const Window* window)
{
    dropUnserved(calls, [=](const WaitingCall& call) { return call.window == window; });
}

void CallCarrier::serve()
{
    WaitingCalls& calls = waitingCalls();
    std::unique_lock<std::mutex> guard(calls.mutex);
    if (calls.unserved.empty())
        return;
    WaitingCall* const call = calls.unserved.front();
    calls.unserved.pop_front();
    guard.unlock();
    DialogButton answer = DialogButton::NoButton;
    try {
        answer = call->show();
    } catch (...) { // not through the toolkit's loop, and not without an answer
        reportException("message box");
    }
    guard.lock();
    call->answer = answer;
    call->isAnswered = true;
    calls.answered.notify_all();
}

// Who waits then may wait for ever, and the host for him.
void CallCarrier::loopEnded()
{
    endWaitingCalls();
}

void CallCarrier::loopRuns()
{
    WaitingCalls& calls = waitingCalls();
    const std::lock_guard<std::mutex> guard(calls.mutex);
    calls.hasLoopEnded = false;
}

void forgetApplication()
{
    WaitingCalls& calls = waitingCalls();
    const std::lock_guard<std::mutex> guard(calls.mutex);
    calls.thread = nullptr;
    dropUnserved(calls);
    delete std::exchange(calls.carrier, nullptr);
}

// Called when an application begins, or when the library is loaded into one, then on any thread.
void watchApplication()
{
    auto* const application = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (!application)
        return;
    WaitingCalls& calls = waitingCalls();
    const std::lock_guard<std::mutex> guard(calls.mutex);
    calls.thread = application->thread();
    calls.hasLoopEnded = false;
    calls.carrier = new CallCarrier;
    calls.carrier->moveToThread(calls.thread);
    QObject::connect(application, SIGNAL(aboutToQuit()), calls.carrier, SLOT(loopEnded()));
    qAddPostRoutine(forgetApplication);
}

Q_COREAPP_STARTUP_FUNCTION(watchApplication)

} // namespace

DialogButton answerOnUserInterfaceThread(const Window* window, const std::function<DialogButton()>& show)
{
    WaitingCalls& calls = waitingCalls();
    std::unique_lock<std::mutex> guard(calls.mutex);
    if (!calls.thread || (window && calls.windows.count(window) == 0))
        return DialogButton::NoButton;
    if (QThread::currentThread() == calls.thread) {
        guard.unlock();
        return show();
    }
    if (calls.hasLoopEnded)
        return DialogButton::NoButton;
    WaitingCall call{show, window};
    calls.unserved.push_back(&call);
    QMetaObject::invokeMethod(calls.carrier, "serve", Qt::QueuedConnection);
    calls.answered.wait(guard, [&] { return call.isAnswered; });
    return call.answer;
}

void endWaitingCalls()
{
    WaitingCalls& calls = waitingCalls();
    const std::lock_guard<std::mutex> guard(calls.mutex);
    calls.hasLoopEnded = true;
    dropUnserved(calls);
    if (calls.carrier)
        QMetaObject::invokeMethod(calls.carrier, "loopRuns", Qt::QueuedConnection); // by the next loop, if there is one
}

void endWaitingCalls(const Window* window)
{
    WaitingCalls& calls = waitingCalls();
    const std::lock_guard<std::mutex> guard(calls.mutex);
    dropUnserved(calls, window);
}

void addCallableWindow(const Window* window)
{
    WaitingCalls& calls = waitingCalls();
    const std::lock_guard<std::mutex> guard(calls.mutex);
    calls.windows.insert(window);
}

void removeCallableWindow(const Window* window)
{
    WaitingCalls& calls = waitingCalls();
    const std::lock_guard<std::mutex> guard(calls.mutex);
    calls.windows.erase(window);
    dropUnserved(calls, window);
}

// The box -------------------------------------------------------------------------------------------------------------

/// One call, on the user-interface thread.
class MessageBoxDialog::PrivateData : public QObject
{
    Q_OBJECT

public:
    using Signal = void (MessageBoxDialogSignalBox::*)();

    static DialogButton ask(Signal signal, Window* window, const char* title, const char* text,
                            const DialogButtons& buttons, DialogButton defaultButton);

private Q_SLOTS:
    void doCritical() { show(QMessageBox::Critical); }
    void doWarning() { show(QMessageBox::Warning); }
    void doInformation() { show(QMessageBox::Information); }
    void doQuestion() { show(QMessageBox::Question); }

private:
    PrivateData(Window* window, const char* title, const char* text, const DialogButtons& buttons,
                DialogButton defaultButton);

    void show(QMessageBox::Icon icon);

    QWidget* m_parent;
    QString m_title;
    QString m_text;
    QMessageBox::StandardButtons m_buttons;
    QMessageBox::StandardButton m_defaultButton;
    QMessageBox::StandardButton m_result = QMessageBox::NoButton;
    MessageBoxDialogSignalBox m_signalBox;
};

MessageBoxDialog::PrivateData::PrivateData(Window* window, const char* title, const char* text,
                                           const DialogButtons& buttons, DialogButton defaultButton)
    : m_parent(window && window->good() ? window->qt_handle() : nullptr),
      m_title(QString::fromLocal8Bit(title)),
      m_text(QString::fromLocal8Bit(text)),
      m_buttons(toToolkit(buttons)),
      m_defaultButton(toToolkit(defaultButton))
{
    connect(&m_signalBox, SIGNAL(critical()), this, SLOT(doCritical()));
    connect(&m_signalBox, SIGNAL(warning()), this, SLOT(doWarning()));
    connect(&m_signalBox, SIGNAL(information()), this, SLOT(doInformation()));
    connect(&m_signalBox, SIGNAL(question()), this, SLOT(doQuestion()));
}

void MessageBoxDialog::PrivateData::show(QMessageBox::Icon icon)
{
    const QPointer<QMessageBox> box = new QMessageBox(icon, m_title, m_text, m_buttons, m_parent);
    box->setDefaultButton(m_defaultButton);
    box->setAttribute(Qt::WA_QuitOnClose, false); // a box is not the host's last window
    box->exec();
    if (box) // otherwise it went with its parent
        m_result = box->standardButton(box->clickedButton());
    delete box;
}

DialogButton MessageBoxDialog::PrivateData::ask(Signal signal, Window* window, const char* title, const char* text,
                                                const DialogButtons& buttons, DialogButton defaultButton)
{
    return answerOnUserInterfaceThread(window, [&] {
        PrivateData data(window, title, text, buttons, defaultButton);
        Q_EMIT(data.m_signalBox.*signal)();
        return fromToolkit(data.m_result);
    });
}

DialogButton MessageBoxDialog::critical(Window* const window, const char* const title, const char* const text,
                                        const DialogButtons& buttons, DialogButton defaultButton)
{
    return PrivateData::ask(&MessageBoxDialogSignalBox::critical, window, title, text, buttons, defaultButton);
}

DialogButton MessageBoxDialog::warning(Window* const window, const char* const title, const char* const text,
                                       const DialogButtons& buttons, DialogButton defaultButton)
{
    return PrivateData::ask(&MessageBoxDialogSignalBox::warning, window, title, text, buttons, defaultButton);
}

DialogButton MessageBoxDialog::information(Window* const window, const char* const title, const char* const text,
                                           const DialogButtons& buttons, DialogButton defaultButton)
{
    return PrivateData::ask(&MessageBoxDialogSignalBox::information, window, title, text, buttons, defaultButton);
}

DialogButton MessageBoxDialog::question(Window* const window, const char* const title, const char* const text,
                                        const DialogButtons& buttons, DialogButton defaultButton)
{
    return PrivateData::ask(&MessageBoxDialogSignalBox::question, window, title, text, buttons, defaultButton);
}

} // namespace Vistrel

#include "MessageBoxDialog.moc"
