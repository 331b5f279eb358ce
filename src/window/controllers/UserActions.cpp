// SPDX-License-Identifier: MIT
// The host's own actions in the main window's menus and tool bar.
#include "window/controllers/UserActions.h"

#include "window/Form.h"
#include "window/controllers/ViewModes.h"

#include <algorithm>

namespace Vistrel {

namespace {

const QLatin1String userMenuPrefix("VistrelUserMenu_");

} // namespace

UserActions::UserActions(const Form& form, ViewModes* viewModes) : m_form(form), m_viewModes(viewModes) {}

QAction* UserActions::make(const QString& text)
{
    auto* const action = new QAction(text, m_form.window);
    m_form.window->addAction(action);
    return action;
}

QAction* UserActions::addToMenu(const QString& menuTitle, const QString& text)
{
    const QString name = userMenuPrefix + menuTitle;
    QMenuBar* const bar = m_form.menuBar;
    auto* menu = bar->findChild<QMenu*>(name, Qt::FindDirectChildrenOnly);
    if (!menu) {
        menu = new QMenu(menuTitle, bar);
        menu->setObjectName(name);
        m_viewModes->followMenu(menu);
        bar->insertMenu(m_form.menuHelp->menuAction(), menu);
    }
    QAction* const action = make(text);
    menu->addAction(action);
    connect(action, SIGNAL(destroyed()), this, SLOT(userMenuActionDestroyed()));
    return action;
}

QAction* UserActions::addToToolBar(const QString& text)
{
    QAction* const action = make(text);
    m_ofToolBar.append(action);
    connect(action, SIGNAL(destroyed()), this, SLOT(userToolBarActionDestroyed()));
    Q_EMIT toolBarChanged();
    return action;
}

// Menus are deleted later, because the action may be deleted while its menu handles a click.
void UserActions::userMenuActionDestroyed()
{
    for (QMenu* const menu : m_form.menuBar->findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (!menu->objectName().startsWith(userMenuPrefix) || !menu->actions().isEmpty())
            continue; // a hidden action keeps its menu
        menu->setObjectName(QString());
        m_form.menuBar->removeAction(menu->menuAction());
        menu->deleteLater();
    }
}

void UserActions::userToolBarActionDestroyed()
{
    // The sender is only a QObject by now.
    const auto isGone = [gone = sender()](const QAction* one) { return one == gone; };
    m_ofToolBar.erase(std::remove_if(m_ofToolBar.begin(), m_ofToolBar.end(), isGone), m_ofToolBar.end());
    if (m_ofToolBar.isEmpty())
        Q_EMIT toolBarChanged(); // their separator goes with them
}

} // namespace Vistrel
