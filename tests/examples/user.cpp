// SPDX-License-Identifier: MIT
// Plays the user of an example program, which it is linked into: waits for a picture in each window, then closes them.
// The program is to end by itself then.
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/WindowQt.h>

#include <QtCore/QTimer>
#include <QtWidgets/QApplication>

#include <cstdio>
#include <cstdlib>

using namespace Vistrel;

namespace {

constexpr int patienceMs = 30000;

void fail(const char* why)
{
    std::printf("FAIL: %s\n", why);
    std::fflush(stdout);
    std::_Exit(1);
}

bool hasSeenAll = false;

// Closes the windows that the example is to have once each of them shows a picture.
void look(QTimer& timer)
{
    QList<WindowQt*> windows;
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        auto* const window = qobject_cast<WindowQt*>(widget);
        if (window && window->isVisible() && !window->surfaceScrollArea()->surface()->pixmap().isNull())
            windows.append(window);
    }
    if (windows.size() < qEnvironmentVariableIntValue("EXAMPLE_WINDOWS"))
        return;
    timer.stop();
    hasSeenAll = true;
    for (WindowQt* const window : windows)
        window->close();
}

// But for the platform's own, which tell what it cannot do.
void refuseWarnings(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    std::printf("%s\n", qPrintable(text));
    if (type != QtDebugMsg && type != QtInfoMsg && !text.startsWith(QLatin1String("This plugin ")))
        fail("a warning");
}

void makeUser()
{
    qInstallMessageHandler(refuseWarnings);
    auto* const timer = new QTimer(qApp);
    timer->callOnTimeout([timer] { look(*timer); });
    timer->start(10);
    QTimer::singleShot(patienceMs, timer,
                       [] { fail(hasSeenAll ? "the program does not end" : "a window or its picture does not come"); });
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, timer, [] {
        if (!hasSeenAll)
            fail("the program ends before each window has shown a picture");
    });
}

Q_COREAPP_STARTUP_FUNCTION(makeUser)

} // namespace
