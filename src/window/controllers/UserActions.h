// SPDX-License-Identifier: MIT
// The host's own actions in the main window's menus and tool bar.
#pragma once

#include <QtCore/QList>
#include <QtCore/QObject>

class QAction;

namespace Vistrel {

class ViewModes;
struct Form;

/// Actions are the window's children. A deleted action leaves its menu and the tool bar, and a menu without actions is
/// deleted.
class UserActions : public QObject
{
    Q_OBJECT

public:
    /// All outlive this object.
    UserActions(const Form& form, ViewModes* viewModes);

    QAction* make(const QString& text); ///< its shortcut works while the bars are hidden, too
    QAction* addToMenu(const QString& menuTitle, const QString& text);
    QAction* addToToolBar(const QString& text);
    const QList<QAction*>& ofToolBar() const { return m_ofToolBar; }

public Q_SLOTS:
    void userMenuActionDestroyed();
    void userToolBarActionDestroyed(); ///< of the signal's sender

Q_SIGNALS:
    void toolBarChanged();

private:
    const Form& m_form;
    ViewModes* const m_viewModes;
    QList<QAction*> m_ofToolBar;
};

} // namespace Vistrel
