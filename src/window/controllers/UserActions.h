// SPDX-License-Identifier: MIT
// The host's own actions in the main window's menus and tool bar.
#pragma once

#include <QtCore/QList>
#include <QtCore/QObject>

class QAction;
class QMainWindow;

namespace Ui {
class WindowQt;
} // namespace Ui

namespace Vistrel {

class ViewModes;

/// Actions are the window's children. An action that is deleted leaves no trace, nor does the menu that it was the last
/// one of.
class UserActions : public QObject
{
    Q_OBJECT

public:
    /// All outlive this object.
    UserActions(QMainWindow* window, const Ui::WindowQt& form, ViewModes* viewModes);

    QAction* make(const QString& text); ///< its shortcut lives while the bars are hidden, too
    QAction* addToMenu(const QString& menuTitle, const QString& text);
    QAction* addToToolBar(const QString& text);
    const QList<QAction*>& ofToolBar() const { return m_ofToolBar; }

public Q_SLOTS:
    void userMenuActionDestroyed();
    void userToolBarActionDestroyed(); ///< of the signal's sender

Q_SIGNALS:
    void toolBarChanged();

private:
    QMainWindow* const m_window;
    const Ui::WindowQt& m_form;
    ViewModes* const m_viewModes;
    QList<QAction*> m_ofToolBar;
};

} // namespace Vistrel
