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

class User : public QObject
{
    Q_OBJECT

public:
    User() : QObject(qApp)
    {
        connect(&m_timer, SIGNAL(timeout()), this, SLOT(look()));
        connect(qApp, SIGNAL(aboutToQuit()), this, SLOT(endReached()));
        m_timer.start(10);
        QTimer::singleShot(patienceMs, this, SLOT(giveUp()));
    }

public Q_SLOTS:
    void look()
    {
        QList<WindowQt*> windows;
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            auto* const window = qobject_cast<WindowQt*>(widget);
            if (!window || !window->isVisible())
                continue;
            if (window->surfaceScrollArea()->surface()->pixmap().isNull())
                return;
            windows.append(window);
        }
        if (windows.size() < qEnvironmentVariableIntValue("EXAMPLE_WINDOWS"))
            return;
        m_timer.stop();
        m_hasSeenAll = true;
        for (WindowQt* const window : windows)
            window->close();
    }
    void endReached()
    {
        if (!m_hasSeenAll)
            fail("the program ends before each window has shown a picture");
    }
    void giveUp() { fail(m_hasSeenAll ? "the program does not end" : "a window or its picture does not come"); }

private:
    QTimer m_timer;
    bool m_hasSeenAll = false;
};

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
    new User;
}

Q_COREAPP_STARTUP_FUNCTION(makeUser)

} // namespace

#include "user.moc"
