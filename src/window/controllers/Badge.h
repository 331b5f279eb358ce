// SPDX-License-Identifier: MIT
// The state of the source as a picture on the window's icon.
#pragma once

#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtGui/QIcon>

class QWidget;

namespace Vistrel {

/// Sets the window's icon only when the state or the application's icon has changed.
class Badge
{
public:
    explicit Badge(QWidget* window) : m_window(window) {}

    void show(const QString& state); ///< a picture's name

private:
    QWidget* const m_window;
    QString m_shown; // which of the icons is the window's
    QHash<QString, QIcon> m_icons;
};

} // namespace Vistrel
