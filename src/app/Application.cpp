// SPDX-License-Identifier: MIT
// The application object and its event loop.
#include <Vistrel/Application.h>

#include "base/Log.h"
#include "base/UserInterfaceCall.h"
#include "platform/Display.h"
#include "platform/PluginPath.h"
#include "platform/TransientParents.h"
#include "window/SourceKeeper.h"

#include <Vistrel/WindowQt.h>

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <QtWidgets/QApplication>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Vistrel {

namespace {

std::atomic<Application*> globalApplication{nullptr};

[[noreturn]] void refuse(const std::string& reason)
{
    throw std::runtime_error("Vistrel::Application::Application: " + reason);
}

} // namespace

class Application::PrivateData : public QObject
{
    Q_OBJECT

public:
    PrivateData(int count, const char* const* values);
    ~PrivateData() override;

    int argc;
    std::vector<std::string> arguments;
    std::vector<char*> argumentPointers; // one for each argument, then null
    std::unique_ptr<QApplication> toolkit;
    std::vector<std::pair<void (*)(void*), void*>> idleMethods;
    QTimer* idleTimer = nullptr; // a child of `toolkit`
    bool isRunning = false;      // inside exec(); user-interface thread only

    std::mutex exitMutex;
    std::optional<int> keptExit; // guarded by exitMutex: requested, but not passed to the loop yet

public Q_SLOTS:
    void runIdlePass();
    void applyKeptExit();
};

Application::PrivateData::PrivateData(int count, const char* const* values) : argc(count)
{
    if (count < 0 || (count > 0 && !values))
        throw std::invalid_argument("Vistrel::Application::Application: no command line");
    for (int i = 0; i < count; ++i) {
        if (!values[i])
            throw std::invalid_argument("Vistrel::Application::Application: null argument");
        arguments.emplace_back(values[i]);
    }
    for (std::string& argument : arguments)
        argumentPointers.push_back(argument.data());
    argumentPointers.push_back(nullptr);

    if (QCoreApplication::instance())
        refuse("The toolkit application exists already.");
    addQtPluginPath();
    const DisplayCheck display = checkDisplay(arguments);
    if (!display.refusal.empty())
        refuse(display.refusal);
    followScreenScales();
    if (!display.platforms.empty())
        qputenv("QT_QPA_PLATFORM", display.platforms.c_str()); // another one would end the process
    toolkit = std::make_unique<QApplication>(argc, argumentPointers.data());
    if (!display.platforms.empty())
        qunsetenv("QT_QPA_PLATFORM");
    if (!QGuiApplication::primaryScreen()) // a window would end the process
        refuse("The platform \"" + QGuiApplication::platformName().toStdString() + "\" has no screen.");
}

// Windows are deleted first, then their hooks, then the toolkit, whose remaining objects may still use the rest.
Application::PrivateData::~PrivateData()
{
    QList<QPointer<WindowQt>> windows; // one may be another's child
    for (QWidget* const widget : QApplication::allWidgets()) {
        if (auto* const window = qobject_cast<WindowQt*>(widget))
            windows.append(window);
    }
    for (const QPointer<WindowQt>& window : qAsConst(windows))
        delete window;
    endUserInterfaceCalls(); // a source may wait for one
    leaveSources();
    removeTransientParents();
    toolkit.reset();
}

// An idle method may add others. They are first called in the next pass.
void Application::PrivateData::runIdlePass()
{
    const std::size_t count = idleMethods.size();
    for (std::size_t i = 0; i < count; ++i) {
        const auto [method, userData] = idleMethods[i];
        // Not by `hostCall`: no window makes this call, so the host may delete one here at once.
        if (method)
            attempt("idle method", [method = method, userData = userData] { method(userData); });
    }
}

void Application::PrivateData::applyKeptExit()
{
    std::optional<int> code;
    {
        const std::lock_guard<std::mutex> guard(exitMutex);
        code = keptExit;
        if (isRunning)
            keptExit.reset();
    }
    if (!isRunning && QThread::currentThread()->loopLevel() == 0)
        return; // otherwise a message box runs the loop
    if (code)
        QCoreApplication::exit(*code);
}

Application::Application(int argc, const char* const* argv)
{
    Application* none = nullptr;
    if (!globalApplication.compare_exchange_strong(none, this))
        refuse("The Applicaion global has already been allocated.");
    try {
        m_data = std::make_unique<PrivateData>(argc, argv);
    } catch (...) {
        globalApplication.store(nullptr);
        throw;
    }
}

Application::~Application()
{
    globalApplication.exchange(nullptr);
}

Application* Application::global()
{
    return globalApplication.load();
}

int Application::exec()
{
    const bool wasRunning = std::exchange(m_data->isRunning, true);
    // Posted, because the loop forgets an exit that was requested before it runs.
    QMetaObject::invokeMethod(m_data.get(), "applyKeptExit", Qt::QueuedConnection);
    if (m_data->idleTimer)
        m_data->idleTimer->start();
    const int returnCode = QApplication::exec();
    m_data->isRunning = wasRunning;
    if (m_data->idleTimer && !wasRunning)
        m_data->idleTimer->stop();
    return returnCode;
}

void Application::exit(int returnCode)
{
    const bool isHere = QThread::currentThread() == m_data->thread();
    {
        const std::lock_guard<std::mutex> guard(m_data->exitMutex);
        m_data->keptExit = returnCode;
        // Posted under the mutex. The receiver takes it too, so it runs after the post is complete.
        if (!isHere)
            QMetaObject::invokeMethod(m_data.get(), "applyKeptExit", Qt::QueuedConnection);
    }
    if (isHere)
        m_data->applyKeptExit();
}

bool Application::quitOnLastWindowClosed() const
{
    return QGuiApplication::quitOnLastWindowClosed();
}

void Application::setQuitOnLastWindowClosed(bool quit)
{
    QGuiApplication::setQuitOnLastWindowClosed(quit);
}

void Application::addIdleMethod(void (*method)(void*), void* const userData)
{
    m_data->idleMethods.emplace_back(method, userData);
    if (m_data->idleTimer)
        return;
    m_data->idleTimer = new QTimer(m_data->toolkit.get());
    m_data->idleTimer->setInterval(0);
    QObject::connect(m_data->idleTimer, SIGNAL(timeout()), m_data.get(), SLOT(runIdlePass()));
    if (m_data->isRunning)
        m_data->idleTimer->start();
}

} // namespace Vistrel

#include "Application.moc"
