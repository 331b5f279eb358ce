// SPDX-License-Identifier: MIT
// Full screen and exhibit view: the image takes the whole window, and the bars come over it at the window's edges.
#include "widgets/PlainKey.h"
#include "window/WindowQt_p.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include <QtCore/QEvent>
#include <QtGui/QCursor>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>

namespace Vistrel {

namespace {

constexpr int edge = 3; // pixels that call the bars

} // namespace

bool WindowQt::fullScreen() const
{
    return isFullScreen();
}

bool WindowQt::exhibitView() const
{
    return m_data->isExhibited;
}

bool WindowQt::keepImageInfoVisible() const
{
    return m_data->form.actionKeep_Stats_Visible->isChecked();
}

void WindowQt::setFullScreen(bool enabled)
{
    if (isFullScreen() != enabled)
        setWindowState(windowState() ^ Qt::WindowFullScreen);
    m_data->form.actionFull_Screen->setChecked(enabled);
    m_data->applyViewMode();
}

void WindowQt::setExhibitView(bool enabled)
{
    m_data->isExhibited = enabled;
    m_data->form.actionExhibit_View->setChecked(enabled);
    m_data->applyViewMode();
}

void WindowQt::toggleFullScreen()
{
    setFullScreen(!isFullScreen());
}

void WindowQt::toggleExhibitView()
{
    setExhibitView(!exhibitView());
}

void WindowQt::setKeepImageInfoVisible(bool visible)
{
    m_data->form.actionKeep_Stats_Visible->setChecked(visible);
    if (m_data->isImageAlone)
        m_data->hideWindowBars();
}

// The system may leave full screen, too, and change its colours.
void WindowQt::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        m_data->showRamps();
    if (event->type() == QEvent::WindowStateChange && isFullScreen() != m_data->form.actionFull_Screen->isChecked()) {
        m_data->form.actionFull_Screen->setChecked(isFullScreen());
        m_data->applyViewMode();
    }
}

void WindowQt::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    if (m_data->isImageAlone)
        m_data->scrollArea->setGeometry(rect());
}

// The image lies under the bars then, over the whole window, so that it stays where it is when they come.
void WindowQt::PrivateData::applyViewMode()
{
    const bool isAlone = window->isFullScreen() || isExhibited;
    form.actionFull_Screen->setToolTip(window->isFullScreen() ? tr("Leave Full Screen") : tr("Enter Full Screen"));
    form.actionExhibit_View->setToolTip(isExhibited ? tr("Leave Exhibit View") : tr("Enter Exhibit View"));
    leaveAction->setEnabled(isAlone);
    if (isAlone == isImageAlone)
        return;
    isImageAlone = isAlone;
    showRainbowDock();
    if (isAlone) {
        form.centralwidget->hide();
        scrollArea->setParent(window);
        scrollArea->setGeometry(window->rect());
        scrollArea->lower();
        scrollArea->show();
        setBarsVisible(false);
        return;
    }
    barsTimer.stop();
    form.verticalLayout->addWidget(scrollArea);
    form.centralwidget->show();
    scrollArea->show();
    setBarsVisible(true);
}

// The one place that shows or hides it: while it is wanted and leaves the image its room.
void WindowQt::PrivateData::showRainbowDock()
{
    form.rainbowRulesDockWidget->setVisible(isRainbowDockWanted && !isImageAlone);
}

void WindowQt::PrivateData::setBarsVisible(bool visible)
{
    form.menuBar->setVisible(visible);
    form.acquisitionToolBar->setVisible(visible);
    form.statusBar->setVisible(visible || window->keepImageInfoVisible());
}

void WindowQt::PrivateData::showWindowBars()
{
    barsTimer.stop();
    if (isImageAlone)
        setBarsVisible(true);
}

// Not while they are in use: then it looks again later.
void WindowQt::PrivateData::hideWindowBars()
{
    if (!isImageAlone)
        return;
    const QPoint pointer = window->mapFromGlobal(QCursor::pos());
    const bool isTouched =
        form.menuBar->isVisible() &&
        (form.menuBar->geometry().contains(pointer) || form.acquisitionToolBar->geometry().contains(pointer) ||
         (form.statusBar->isVisible() && form.statusBar->geometry().contains(pointer)));
    if (QApplication::activePopupWidget() || isTouched)
        barsTimer.start();
    else
        setBarsVisible(false);
}

void WindowQt::PrivateData::leaveViewMode()
{
    if (window->isFullScreen())
        window->setFullScreen(false);
    else
        window->setExhibitView(false);
}

bool WindowQt::PrivateData::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == form.rainbowRulesDockWidget)
        return filterDock(*event);
    if (event->type() == QEvent::MouseMove || event->type() == QEvent::Enter || event->type() == QEvent::Leave)
        pixelTimer.start(0);
    if (isImageAlone && (event->type() == QEvent::MouseMove || event->type() == QEvent::Leave)) {
        const int y = window->mapFromGlobal(QCursor::pos()).y();
        const bool isAtEdge = event->type() == QEvent::MouseMove && (y < edge || y >= window->height() - edge);
        if (isAtEdge)
            showWindowBars();
        else if (form.menuBar->isVisible() && !barsTimer.isActive())
            barsTimer.start();
    }
    return false;
}

// What is typed into the dock's boxes is no command of the window; Esc goes back to the image.
bool WindowQt::PrivateData::filterDock(QEvent& event)
{
    if (event.type() == QEvent::Close) // by its own button
        isRainbowDockWanted = false;
    if (event.type() != QEvent::ShortcutOverride && event.type() != QEvent::KeyPress)
        return false;
    auto& key = static_cast<QKeyEvent&>(event);
    const bool isEscape = key.key() == Qt::Key_Escape;
    if (event.type() == QEvent::ShortcutOverride) {
        key.setAccepted(isEscape || isPlain(key));
        return key.isAccepted();
    }
    if (isEscape)
        scrollArea->setFocus();
    return isEscape;
}

} // namespace Vistrel
