// SPDX-License-Identifier: MIT
// Full screen and exhibit view: the image fills the window, and the bars appear over it at the window's edges.
#include "window/controllers/ViewModes.h"

#include "window/Form.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include <QtCore/QEvent>
#include <QtGui/QCursor>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>

namespace Vistrel {

namespace {

constexpr int edge = 3; // pixels in which the pointer shows the bars
constexpr int barsMs = 800;

} // namespace

ViewModes::ViewModes(const Form& form) : m_form(form), m_leaveAction(new QAction(form.window))
{
    m_leaveAction->setShortcut(Qt::Key_Escape);
    m_leaveAction->setEnabled(false);
    form.window->addAction(m_leaveAction);
    m_barsTimer.setSingleShot(true);
    m_barsTimer.setInterval(barsMs);
    form.scrollArea->surface()->installEventFilter(this);
    connect(m_leaveAction, SIGNAL(triggered()), this, SLOT(leave()));
    connect(&m_barsTimer, SIGNAL(timeout()), this, SLOT(hideWindowBars()));
    for (const QAction* const entry : form.menuBar->actions())
        followMenu(entry->menu());
}

bool ViewModes::keepsInformation() const
{
    return m_form.actionKeep_Stats_Visible->isChecked();
}

void ViewModes::setFullScreen(bool enabled)
{
    if (m_form.window->isFullScreen() != enabled)
        m_form.window->setWindowState(m_form.window->windowState() ^ Qt::WindowFullScreen);
    m_form.actionFull_Screen->setChecked(enabled);
    apply();
}

void ViewModes::setExhibited(bool enabled)
{
    m_isExhibited = enabled;
    m_form.actionExhibit_View->setChecked(enabled);
    apply();
}

void ViewModes::setKeepsInformation(bool enabled)
{
    m_form.actionKeep_Stats_Visible->setChecked(enabled);
    if (m_isImageAlone)
        hideWindowBars();
}

void ViewModes::followWindowState()
{
    if (m_form.window->isFullScreen() == m_form.actionFull_Screen->isChecked())
        return;
    m_form.actionFull_Screen->setChecked(m_form.window->isFullScreen());
    apply();
}

void ViewModes::followWindowSize()
{
    if (m_isImageAlone)
        m_form.scrollArea->setGeometry(m_form.window->rect());
}

void ViewModes::followMenu(const QMenu* menu)
{
    connect(menu, SIGNAL(aboutToShow()), this, SLOT(showWindowBars()));
    connect(menu, SIGNAL(aboutToHide()), &m_barsTimer, SLOT(start()));
}

// The image fills the window under the bars, so it stays in place when they appear.
void ViewModes::apply()
{
    const bool isAlone = m_form.window->isFullScreen() || m_isExhibited;
    m_form.actionFull_Screen->setToolTip(m_form.window->isFullScreen() ? tr("Leave Full Screen")
                                                                       : tr("Enter Full Screen"));
    m_form.actionExhibit_View->setToolTip(m_isExhibited ? tr("Leave Exhibit View") : tr("Enter Exhibit View"));
    m_leaveAction->setEnabled(isAlone);
    if (isAlone == m_isImageAlone)
        return;
    m_isImageAlone = isAlone;
    Q_EMIT imageAloneChanged(isAlone);
    if (isAlone) {
        m_form.centralwidget->hide();
        m_form.scrollArea->setParent(m_form.window);
        m_form.scrollArea->setGeometry(m_form.window->rect());
        m_form.scrollArea->lower();
    } else {
        m_barsTimer.stop();
        m_form.verticalLayout->addWidget(m_form.scrollArea);
        m_form.centralwidget->show();
    }
    m_form.scrollArea->show();
    setBarsVisible(!isAlone);
}

void ViewModes::setBarsVisible(bool visible)
{
    m_form.menuBar->setVisible(visible);
    m_form.acquisitionToolBar->setVisible(visible);
    m_form.statusBar->setVisible(visible || keepsInformation());
}

void ViewModes::showWindowBars()
{
    m_barsTimer.stop();
    if (m_isImageAlone)
        setBarsVisible(true);
}

void ViewModes::hideWindowBars()
{
    if (!m_isImageAlone)
        return;
    const QPoint pointer = m_form.window->mapFromGlobal(QCursor::pos());
    const bool isTouched =
        m_form.menuBar->isVisible() &&
        (m_form.menuBar->geometry().contains(pointer) || m_form.acquisitionToolBar->geometry().contains(pointer) ||
         (m_form.statusBar->isVisible() && m_form.statusBar->geometry().contains(pointer)));
    if (QApplication::activePopupWidget() || isTouched)
        m_barsTimer.start();
    else
        setBarsVisible(false);
}

void ViewModes::leave()
{
    if (m_form.window->isFullScreen())
        setFullScreen(false);
    else
        setExhibited(false);
}

bool ViewModes::eventFilter(QObject*, QEvent* event)
{
    if (!m_isImageAlone || (event->type() != QEvent::MouseMove && event->type() != QEvent::Leave))
        return false;
    const int y = m_form.window->mapFromGlobal(QCursor::pos()).y();
    const bool isAtEdge = event->type() == QEvent::MouseMove && (y < edge || y >= m_form.window->height() - edge);
    if (isAtEdge)
        showWindowBars();
    else if (m_form.menuBar->isVisible() && !m_barsTimer.isActive())
        m_barsTimer.start();
    return false;
}

} // namespace Vistrel
