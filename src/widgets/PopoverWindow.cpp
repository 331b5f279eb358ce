// SPDX-License-Identifier: MIT
// A small panel that opens beside the button that it belongs to.
#include <Vistrel/PopoverWindow.h>

#include "widgets/PlainKey.h"

#include <QtCore/QPointer>
#include <QtGui/QCursor>
#include <QtGui/QGuiApplication>
#include <QtGui/QPainter>
#include <QtGui/QScreen>
#include <QtWidgets/QApplication>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>

namespace Vistrel {

namespace {

constexpr int borderMargin = 7; // pixels between the panel's edge and its contents
constexpr int anchorGap = 2;    // pixels between the panel and its anchor

bool canBeSeen(const QWidget* widget)
{
    return widget && widget->isVisible() && !widget->window()->isMinimized();
}

// Also across windows: a menu belongs to its parent widget.
bool isWithin(const QWidget* widget, const QWidget* ancestor)
{
    while (widget && widget != ancestor)
        widget = widget->parentWidget();
    return widget;
}

QRect screenAround(const QPoint& point, const QWidget* widget)
{
    const QScreen* screen = QGuiApplication::screenAt(point);
    if (!screen)
        screen = widget ? widget->screen() : QGuiApplication::primaryScreen();
    return screen ? screen->availableGeometry() : QRect(point, QSize(1, 1));
}

} // namespace

class PopoverWindow::PrivateData
{
public:
    explicit PrivateData(PopoverWindow* owner) : popover(owner), layout(new QVBoxLayout(owner)) {}

    QWidget* host() const { return popover->parentWidget() ? popover->parentWidget()->window() : nullptr; }
    void place();
    void giveFocusBack();
    bool leavesOpen() const;

    PopoverWindow* const popover;
    QVBoxLayout* const layout;
    QPointer<QWidget> contents;
    QPointer<QWidget> anchor;
    QPointer<QWidget> fallback;
    QPointer<QWidget> focusBefore;
    bool isOpen = false;
};

PopoverWindow::PopoverWindow(QWidget* parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint), m_data(new PrivateData(this))
{
    m_data->layout->setContentsMargins(borderMargin, borderMargin, borderMargin, borderMargin);
}

PopoverWindow::~PopoverWindow() = default;

void PopoverWindow::setContents(QWidget* contents)
{
    if (contents == m_data->contents)
        return;
    delete m_data->contents;
    m_data->contents = contents;
    setWindowTitle(contents ? contents->accessibleName() : QString());
    setAccessibleName(windowTitle());
    if (!contents)
        return;
    m_data->layout->addWidget(contents);
    contents->show();
}

bool PopoverWindow::isOpen() const
{
    return m_data->isOpen;
}

// Opening and closing -------------------------------------------------------------------------------------------------

void PopoverWindow::popUp(QWidget* anchor, QWidget* fallback)
{
    const QWidget* const host = m_data->host();
    if (host && !canBeSeen(host))
        return;
    m_data->anchor = anchor;
    m_data->fallback = fallback;
    m_data->place();
    const QPointer<PopoverWindow> self(this); // a slot may delete the panel
    show();
    if (!self)
        return;
    raise();
    activateWindow();
}

void PopoverWindow::setVisible(bool visible)
{
    if (visible == m_data->isOpen) {
        QWidget::setVisible(visible);
        return;
    }
    m_data->isOpen = visible;
    if (visible) {
        m_data->focusBefore = QApplication::focusWidget();
        qApp->installEventFilter(this);
        QWidget::setVisible(true);
        if (m_data->contents)
            m_data->contents->setFocus(Qt::PopupFocusReason);
        Q_EMIT opened();
        return;
    }
    qApp->removeEventFilter(this);
    const bool wasActive =
        QApplication::activeWindow() == this; // `isActiveWindow` is also true if the parent is active
    QWidget::setVisible(false);
    if (wasActive)
        m_data->giveFocusBack();
    Q_EMIT closed();
}

void PopoverWindow::PrivateData::giveFocusBack()
{
    QWidget* const receiver = canBeSeen(focusBefore) ? focusBefore.data() : host();
    if (!canBeSeen(receiver))
        return;
    receiver->activateWindow();
    if (receiver == focusBefore)
        receiver->setFocus(Qt::PopupFocusReason);
}

void PopoverWindow::PrivateData::place()
{
    const bool isAnchored = canBeSeen(anchor);
    const QWidget* const reference = isAnchored ? anchor.data() : canBeSeen(fallback) ? fallback.data() : host();
    const QRect around =
        reference ? QRect(reference->mapToGlobal(QPoint(0, 0)), reference->size()) : QRect(QCursor::pos(), QSize(1, 1));
    const QRect screen = screenAround(around.center(), reference);

    popover->ensurePolished();
    layout->activate();
    const QSize size = popover->sizeHint().expandedTo(popover->minimumSize()).boundedTo(screen.size());
    QPoint corner(around.center().x() - size.width() / 2, around.top() + anchorGap);
    if (isAnchored) {
        corner.setX(anchor->isRightToLeft() ? around.right() + 1 - size.width() : around.left());
        corner.setY(around.bottom() + 1 + anchorGap);
        const int above = around.top() - anchorGap - size.height();
        if (corner.y() + size.height() > screen.bottom() + 1 && above >= screen.top())
            corner.setY(above);
    }
    corner.setX(std::max(std::min(corner.x(), screen.right() + 1 - size.width()), screen.left()));
    corner.setY(std::max(std::min(corner.y(), screen.bottom() + 1 - size.height()), screen.top()));
    popover->setGeometry(QRect(corner, size));
}

// Whether the panel stays open although another window has become active: a menu of its contents, or its own window by
// a press on the anchor. That press follows the activation and toggles the panel.
bool PopoverWindow::PrivateData::leavesOpen() const
{
    if (QApplication::activePopupWidget())
        return true;
    const QWidget* const active = QApplication::activeWindow();
    return isWithin(active, popover) || (canBeSeen(anchor) && active == anchor->window() &&
                                         anchor->rect().contains(anchor->mapFromGlobal(QCursor::pos())));
}

bool PopoverWindow::event(QEvent* event)
{
    if (event->type() == QEvent::WindowDeactivate && m_data->isOpen && !m_data->leavesOpen()) {
        const QPointer<PopoverWindow> self(this);
        close();
        if (!self)
            return true;
    }
    if (event->type() == QEvent::ShortcutOverride) {
        auto* const key = static_cast<QKeyEvent*>(event);
        const QWidget* const editor = focusWidget();
        if (key->key() == Qt::Key_Escape || (editor && editor != m_data->contents && isPlain(*key))) {
            key->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

// Watches all events of the application while the panel is open. Filters none of them out.
bool PopoverWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (!m_data->isOpen || !watched->isWidgetType())
        return false;
    const auto* const widget = static_cast<QWidget*>(watched);
    const bool isHost = widget == m_data->host();
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::TouchBegin:
        if (!isWithin(widget, this) && !(m_data->anchor && isWithin(widget, m_data->anchor)))
            close();
        break;
    case QEvent::Hide:
        if (isHost)
            close();
        break;
    case QEvent::WindowStateChange:
        if (isHost && widget->isMinimized())
            close();
        break;
    case QEvent::Move:
    case QEvent::Resize:
        if (isHost)
            m_data->place();
        break;
    default:
        break;
    }
    return false;
}

void PopoverWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Cancel))
        close();
    else
        QWidget::keyPressEvent(event);
}

void PopoverWindow::paintEvent(QPaintEvent*)
{
    const QColor ink = palette().color(QPalette::WindowText);
    const auto line = [&ink](int alpha) {
        QColor color = ink;
        color.setAlpha(alpha);
        return color;
    };
    QPainter painter(this);
    painter.setPen(line(120));
    painter.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
    // A second line at the lower edge gives a shadow.
    painter.setPen(line(60));
    painter.drawLine(QLineF(1, height() - 1.5, width() - 1, height() - 1.5));
}

} // namespace Vistrel
