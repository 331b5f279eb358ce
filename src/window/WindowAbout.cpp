// SPDX-License-Identifier: MIT
// The about box of a host that does not use Qt.
#include "base/TextOut.h"
#include "platform/IconHandle.h"
#include "window/AboutDialog.h"
#include "window/Window_p.h"

#include <QtGui/QIcon>
#include <QtGui/QPixmap>

namespace Vistrel {

void Window::setApplicationAbout(const char* const title, const char* const description, const char* const* const icon1,
                                 const char* const* const icon2, const char* const* const icon3)
{
    m_data->tell("setApplicationAbout", [&](WindowQt&) {
        m_data->setApplicationAbout(QString::fromLatin1(title), QString::fromLatin1(description), QPixmap(icon1),
                                    QPixmap(icon2), QPixmap(icon3));
    });
}

#if defined(_WIN32)
void Window::setApplicationAbout(const char* const title, const char* const description, HICON icon1, HICON icon2,
                                 HICON icon3)
{
    m_data->tell("setApplicationAbout", [&](WindowQt&) {
        m_data->setApplicationAbout(QString::fromLatin1(title), QString::fromLatin1(description), pixmapFromIcon(icon1),
                                    pixmapFromIcon(icon2), pixmapFromIcon(icon3));
    });
}
#endif

// Needs the window.
void Window::PrivateData::setApplicationAbout(const QString& title, const QString& description, const QPixmap& icon1,
                                              const QPixmap& icon2, const QPixmap& icon3)
{
    if (!aboutDialog)
        aboutDialog = new AboutDialog(windowQt);
    aboutDialog->setWindowTitle(title);
    aboutDialog->setHeader(title, icon1);
    QIcon icon; // empty without the third picture: the dialog has the window's icon
    for (const QPixmap& picture : {icon3, icon2, icon1}) {
        if (!icon3.isNull() && !picture.isNull())
            icon.addPixmap(picture);
    }
    aboutDialog->setWindowIcon(icon);
    aboutDialog->setDetails(description);
    const bool isEmpty = title.isEmpty() && description.isEmpty() && icon1.isNull();
    if (!isEmpty)
        aboutDialog->fixSize();
    windowQt->setApplicationAbout(isEmpty ? nullptr : aboutDialog);
}

bool Window::applicationAboutTitle(char* const buffer, std::size_t* const size) const
{
    return m_data->ask("applicationAboutTitle", [&](WindowQt&) {
        return latin1Out(m_data->aboutDialog ? m_data->aboutDialog->windowTitle() : QString(), buffer, size);
    });
}

bool Window::applicationAboutDescription(char* const buffer, std::size_t* const size) const
{
    return m_data->ask("applicationAboutDescription", [&](WindowQt&) {
        return latin1Out(m_data->aboutDialog ? m_data->aboutDialog->details() : QString(), buffer, size);
    });
}

} // namespace Vistrel
