// SPDX-License-Identifier: MIT
// The panels of the main window, each of which registers itself.
#include "window/panels/Panels.h"

#include <Vistrel/PopoverWindow.h>
#include <Vistrel/Surface.h>

namespace Vistrel {

namespace {

const PanelRegistration* firstPanel = nullptr;

void openByAction(QWidget* contents, QAction* action, const PanelContext& context)
{
    auto* const popover = new PopoverWindow(context.form.window);
    popover->setContents(contents);
    QObject::connect(popover, &PopoverWindow::opened, action, [action] { action->setChecked(true); });
    QObject::connect(popover, &PopoverWindow::closed, action, [action] { action->setChecked(false); });
    QObject::connect(action, &QAction::changed, popover, [action, popover] {
        if (popover->isOpen() && !action->isVisible())
            popover->close(); // the source does not offer it any more
    });
    QToolBar* const toolBar = context.form.acquisitionToolBar;
    Surface* const surface = context.form.scrollArea->surface();
    QObject::connect(action, &QAction::triggered, popover, [=] {
        if (popover->isOpen())
            popover->close();
        else
            popover->popUp(toolBar->widgetForAction(action), surface);
        action->setChecked(popover->isOpen());
    });
}

} // namespace

PanelRegistration::PanelRegistration(QAction* Ui_WindowQt::*panelAction, Factory factory) noexcept
    : action(panelAction), make(factory), next(firstPanel)
{
    firstPanel = this;
}

void makePanels(const PanelContext& context)
{
    for (const PanelRegistration* panel = firstPanel; panel; panel = panel->next) {
        if (QWidget* const contents = panel->make(context))
            openByAction(contents, context.form.*panel->action, context);
    }
}

} // namespace Vistrel
