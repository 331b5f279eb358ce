// SPDX-License-Identifier: MIT
// The host's own actions in the main window.
#include "window/WindowQt_p.h"

#include <QtWidgets/QAction>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>

#include <algorithm>

namespace Vistrel {

namespace {

const QLatin1String userMenuPrefix("VistrelUserMenu_");

} // namespace

QAction* WindowQt::addMainMenuAction(const QString& menuTitle, const QString& text)
{
    const QString name = userMenuPrefix + menuTitle;
    QMenuBar* const bar = m_data->form.menuBar;
    auto* menu = bar->findChild<QMenu*>(name, Qt::FindDirectChildrenOnly);
    if (!menu) {
        menu = new QMenu(menuTitle, bar);
        menu->setObjectName(name);
        m_data->connectMenu(menu);
        bar->insertMenu(m_data->form.menuHelp->menuAction(), menu);
    }
    auto* const action = new QAction(text, this);
    menu->addAction(action);
    addAction(action); // a shortcut that the host gives it lives while the menus are hidden, too
    connect(action, SIGNAL(destroyed()), m_data.get(), SLOT(userMenuActionDestroyed()));
    return action;
}

QAction* WindowQt::addToolBarAction(const QString& text)
{
    auto* const action = new QAction(text, this);
    addAction(action);
    m_data->userToolBarActions.append(action);
    connect(action, SIGNAL(destroyed()), m_data.get(), SLOT(userToolBarActionDestroyed()));
    m_data->layOutToolBar(); // asks the source nothing, and so at any time
    return action;
}

QAction* WindowQt::addImageStatsAction(const QString& text)
{
    auto* const action = new QAction(text, this);
    addAction(action);
    m_data->infoBar->addUserAction(action);
    return action;
}

// The menu may be open, and what it shows be what has just been triggered.
void WindowQt::PrivateData::userMenuActionDestroyed()
{
    for (QMenu* const menu : form.menuBar->findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (!menu->objectName().startsWith(userMenuPrefix) || !menu->actions().isEmpty())
            continue; // a hidden one is there, too
        menu->setObjectName(QString());
        form.menuBar->removeAction(menu->menuAction());
        menu->deleteLater();
    }
}

void WindowQt::PrivateData::userToolBarActionDestroyed()
{
    // No action any more, only the last of its parts.
    const auto isGone = [gone = sender()](const QAction* one) { return one == gone; };
    userToolBarActions.erase(std::remove_if(userToolBarActions.begin(), userToolBarActions.end(), isGone),
                             userToolBarActions.end());
    if (userToolBarActions.isEmpty())
        layOutToolBar(); // their separator goes with them
}

} // namespace Vistrel
