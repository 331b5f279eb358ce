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

    /// Returns the answer of `question`. Without a window it reports the host's mistake and returns false, zero or
    /// null.
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
    WindowQt* windowQt; // null from the beginning of its destruction
    AboutDialog* aboutDialog = nullptr;
    std::unique_ptr<TransientLink> transientLink; // null when the window is

public Q_SLOTS:
    void windowQtDestroyed();
};

} // namespace Vistrel
