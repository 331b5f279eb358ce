// SPDX-License-Identifier: MIT
// State of the display window's facade, for its source files.
#pragma once

#include "window/TransientLink.h"

#include <Vistrel/Window.h>
#include <Vistrel/WindowQt.h>

#include <QtCore/QObject>

#include <memory>

class QPixmap;

namespace Vistrel {

class AboutDialog;

class Window::PrivateData : public QObject
{
    Q_OBJECT

public:
    PrivateData(Window* owner, WindowQt* newWindow);

    /// What `question` finds out of the window; nothing (false, zero, null) when it is gone, which is the host's fault.
    template <typename Question>
    auto ask(const char* member, Question&& question)
    {
        using Answer = decltype(question(*windowQt));
        if (windowQt)
            return question(*windowQt);
        windowIsGone(member);
        return Answer();
    }
    template <typename Command>
    void tell(const char* member, Command&& command)
    {
        if (windowQt)
            command(*windowQt);
        else
            windowIsGone(member);
    }

    static void windowIsGone(const char* member);
    void setApplicationAbout(const QString& title, const QString& description, const QPixmap& icon1,
                             const QPixmap& icon2, const QPixmap& icon3);

    Window* const window;
    WindowQt* windowQt; // null once it has begun to go
    AboutDialog* aboutDialog = nullptr;
    std::unique_ptr<TransientLink> transientLink; // null as the window

public Q_SLOTS:
    void windowQtDestroyed();
};

} // namespace Vistrel
