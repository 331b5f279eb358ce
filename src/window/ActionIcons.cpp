// SPDX-License-Identifier: MIT
// The icons of the main window's actions, in colours that can be seen on its palette.
#include "window/ActionIcons.h"

#include <QtCore/QVariant>
#include <QtGui/QIcon>
#include <QtGui/QPalette>
#include <QtWidgets/QAction>
#include <QtWidgets/QToolButton>

namespace Vistrel {

bool isDark(const QPalette& palette)
{
    return qGray(palette.color(QPalette::Window).rgb()) < 128;
}

namespace {

constexpr char nameProperty[] = "iconName"; // also in the form

QIcon iconFor(const QPalette& palette, const QString& name)
{
    return QIcon(
        (isDark(palette) ? QStringLiteral(":/Icons/dark/%1.png") : QStringLiteral(":/Icons/%1.png")).arg(name));
}

} // namespace

void showIcon(QAction* action, const QString& name, const QPalette& palette)
{
    action->setProperty(nameProperty, name);
    action->setIcon(iconFor(palette, name));
}

void showIcons(const QWidget& window)
{
    for (QAction* const action : window.findChildren<QAction*>()) {
        const QString name = action->property(nameProperty).toString();
        if (!name.isEmpty())
            showIcon(action, name, window.palette());
    }
    // The styles' own picture is black.
    for (auto* const more : window.findChildren<QToolButton*>(QStringLiteral("qt_toolbar_ext_button")))
        more->setIcon(iconFor(window.palette(), QStringLiteral("More")));
}

} // namespace Vistrel
