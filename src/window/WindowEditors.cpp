// SPDX-License-Identifier: MIT
// The panels that the main window opens under its tool buttons: zoom, fixed count, quick view.
#include "window/WindowQt_p.h"

#include "window/StartFixedEditor.h"
#include "window/ZoomEditor.h"

#include <Vistrel/MiniMap.h>
#include <Vistrel/PopoverWindow.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>

#include <QtWidgets/QAction>

namespace Vistrel {

// The action's check mark says whether the panel is open.
PopoverWindow* WindowQt::PrivateData::makePopover(QWidget* contents, QAction* action)
{
    auto* const popover = new PopoverWindow(window);
    popover->setContents(contents);
    connect(popover, &PopoverWindow::opened, action, [action] { action->setChecked(true); });
    connect(popover, &PopoverWindow::closed, action, [action] { action->setChecked(false); });
    connect(action, &QAction::changed, popover, [action, popover] {
        if (popover->isOpen() && !action->isVisible())
            popover->close(); // what it is for has gone
    });
    return popover;
}

void WindowQt::PrivateData::toggle(PopoverWindow* popover, QAction* action)
{
    if (popover->isOpen())
        popover->close();
    else
        popover->popUp(form.acquisitionToolBar->widgetForAction(action), scrollArea->surface());
    action->setChecked(popover->isOpen());
}

void WindowQt::PrivateData::makeEditors()
{
    zoomEditor = new ZoomEditor(scrollArea);
    zoomPopover = makePopover(zoomEditor, form.actionZoom_Editor);
    startFixedEditor = new StartFixedEditor;
    startFixedPopover = makePopover(startFixedEditor, form.actionStart_Fixed);
    miniMap = new MiniMap;
    miniMap->setScrollArea(scrollArea);
    quickViewPopover = makePopover(miniMap, form.actionQuick_View);

    connect(form.actionZoom_Editor, SIGNAL(triggered()), this, SLOT(zoomEditorOpen()));
    connect(form.actionStart_Fixed, SIGNAL(triggered()), this, SLOT(startFixedSelect()));
    connect(form.actionQuick_View, SIGNAL(triggered()), this, SLOT(quickViewPopoverOpen()));
    connect(startFixedEditor, SIGNAL(started(int)), this, SLOT(startFixedAccepted(int)));
    connect(form.actionZoom_Fit, &QAction::triggered, zoomEditor, &ZoomEditor::updateView);
    connect(&stream, SIGNAL(imageUpdated()), miniMap, SLOT(updateView()), Qt::QueuedConnection);
}

void WindowQt::PrivateData::zoomEditorOpen()
{
    toggle(zoomPopover, form.actionZoom_Editor);
}

void WindowQt::PrivateData::startFixedSelect()
{
    toggle(startFixedPopover, form.actionStart_Fixed);
}

void WindowQt::PrivateData::startFixedAccepted(int count)
{
    startFixedPopover->close();
    if (form.actionStart_Fixed->isEnabled() && count > 0)
        startFixedAsync(static_cast<size_t>(count));
}

void WindowQt::PrivateData::quickViewPopoverOpen()
{
    toggle(quickViewPopover, form.actionQuick_View);
}

} // namespace Vistrel
