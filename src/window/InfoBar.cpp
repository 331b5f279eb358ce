// SPDX-License-Identifier: MIT
// The image information at the right of the main window's status bar.
#include "window/InfoBar.h"

#include "window/ActionIcons.h"

#include <QtCore/QEvent>
#include <QtGui/QFontMetrics>
#include <QtGui/QPainter>
#include <QtGui/QPalette>
#include <QtWidgets/QAction>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLayout>
#include <QtWidgets/QLayoutItem>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QStyle>
#include <QtWidgets/QToolButton>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace Vistrel {

namespace {

constexpr int buttonImportance = 8;
constexpr int messageMargin = 8; // pixels that the status bar leaves on either side of a message

} // namespace

QColor alarmColor(const QPalette& palette)
{
    return isDark(palette) ? QColor(0xFF, 0xC2, 0x4D) : QColor(0x8A, 0x50, 0x00);
}

// The bar -------------------------------------------------------------------------------------------------------------

InfoBar::InfoBar(QStatusBar* statusBar) : QWidget(statusBar), m_statusBar(statusBar)
{
    for (std::size_t i = 0; i < infoItemCount; ++i) {
        const auto item = static_cast<InfoItem>(i);
        const bool hasUnitOnly = infoRow(item).caption[0] == '%' && infoRow(item).unit[2] != '\0';
        auto* const label = new QLabel(this);
        label->setTextFormat(Qt::PlainText); // the source may put anything into a mode's name
        label->setAlignment((hasUnitOnly ? Qt::AlignTrailing : Qt::AlignLeading) | Qt::AlignVCenter);
        label->setAccessibleName(infoName(item));
        label->setToolTip(infoName(item));
        label->setText(infoText(item, {}));
        label->hide();
        m_items[i].label = label;
        const QString usual = QString::fromLatin1(infoRow(item).usual);
        m_items[i].widest = infoText(item, usual);
    }
    measure();
    statusBar->installEventFilter(this);
    connect(statusBar, SIGNAL(messageChanged(QString)), this, SLOT(makeWay()));
}

InfoBar::~InfoBar()
{
    // An action may be a child of this widget and be deleted after the list of buttons.
    for (const QToolButton* const button : m_buttons) {
        if (QAction* const action = button->defaultAction())
            action->disconnect(this);
    }
}

void InfoBar::setItemShown(InfoItem item, bool shown)
{
    if (at(item).isShown == shown)
        return;
    at(item).isShown = shown;
    arrangeAnew();
}

void InfoBar::addUserAction(QAction* action)
{
    auto* const button = new QToolButton(this);
    button->setDefaultAction(action);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_buttons.push_back(button);
    connect(action, SIGNAL(changed()), this, SLOT(arrangeAnew()));
    // The action may be deleted by its own click, so the button is deleted later.
    connect(action, &QObject::destroyed, this, [this, button] {
        m_buttons.erase(std::find(m_buttons.begin(), m_buttons.end(), button));
        button->hide();
        button->deleteLater();
        arrangeAnew();
    });
    arrangeAnew();
}

QString InfoBar::report() const
{
    QString lines;
    for (std::size_t i = 0; i < infoItemCount; ++i) {
        const auto item = static_cast<InfoItem>(i);
        if (!m_items[i].value.isEmpty())
            lines +=
                QStringLiteral("%1: ").arg(infoName(item)) + infoWithUnit(item, m_items[i].value) + QLatin1Char('\n');
    }
    return lines;
}

// Values --------------------------------------------------------------------------------------------------------------

void InfoBar::setValue(InfoItem item, const QString& value)
{
    Item& entry = at(item);
    const bool isDropping = item == InfoItem::Dropped && !entry.value.isEmpty() && !value.isEmpty() &&
                            value.toULongLong() > entry.value.toULongLong();
    if (item == InfoItem::Dropped && std::exchange(m_isDropping, isDropping) != isDropping)
        showAlarm();
    if (entry.value == value)
        return;
    entry.value = value;
    const QString text = infoText(item, value);
    entry.label->setText(text);
    entry.label->setAccessibleDescription(text);
    if (widen(entry, text))
        arrangeAnew();
}

void InfoBar::makeRoom(InfoItem item, const QString& value)
{
    if (widen(at(item), value))
        arrangeAnew();
}

void InfoBar::showAlarm()
{
    QPalette alarm; // all other colours stay inherited
    if (m_isDropping)
        alarm.setColor(QPalette::WindowText, alarmColor(palette()));
    at(InfoItem::Dropped).label->setPalette(alarm);
}

// Widths --------------------------------------------------------------------------------------------------------------

bool InfoBar::widen(Item& item, QString text)
{
    // In some fonts the digits differ in width. All are measured as the widest one.
    for (QChar& character : text) {
        if (character.isDigit())
            character = m_widestDigit;
    }
    if (text == item.measured)
        return false;
    item.measured = text;
    const int width = item.label->fontMetrics().horizontalAdvance(text) + 2; // for glyphs wider than their advance
    if (width <= item.width)
        return false;
    item.width = width;
    item.widest = text;
    return true;
}

void InfoBar::measure()
{
    const QFontMetrics metrics = fontMetrics();
    for (char digit = '0'; digit <= '9'; ++digit) {
        if (metrics.horizontalAdvance(QLatin1Char(digit)) > metrics.horizontalAdvance(m_widestDigit))
            m_widestDigit = QLatin1Char(digit);
    }
    for (Item& item : m_items) {
        item.width = 0;
        item.measured.clear();
        widen(item, QString(item.widest));
    }
    arrangeAnew();
}

int InfoBar::gap() const
{
    return fontMetrics().averageCharWidth() * 2 + 1;
}

std::vector<InfoBar::Place> InfoBar::places() const
{
    std::vector<Place> places;
    for (std::size_t i = 0; i < infoItemCount; ++i) {
        if (m_items[i].isShown)
            places.push_back({m_items[i].label, m_items[i].width, infoRow(InfoItem(i)).importance});
    }
    for (QToolButton* const button : m_buttons) {
        if (button->defaultAction() && button->defaultAction()->isVisible())
            places.push_back({button, button->sizeHint().width(), buttonImportance});
    }
    return places;
}

QSize InfoBar::sizeHint() const
{
    int width = gap() / 2;
    for (const Place& place : places())
        width += place.width + gap();
    return {width, minimumSizeHint().height()};
}

QSize InfoBar::minimumSizeHint() const
{
    int height = fontMetrics().height() + 2;
    for (const QToolButton* const button : m_buttons)
        height = std::max(height, button->sizeHint().height());
    return {0, height};
}

// Places the labels without a layout, so that a new number causes no layout of the status bar.
void InfoBar::arrange()
{
    std::vector<Place> ranked = places();
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const Place& a, const Place& b) { return a.importance > b.importance; });
    int used = gap() / 2;
    std::vector<QWidget*> inView;
    for (const Place& place : ranked) {
        if (used + place.width + gap() > width()) {
            if (place.importance == infoRow(InfoItem::PixelValue).importance)
                continue; // the values of deep colour may be wider than the bar
            break;
        }
        used += place.width + gap();
        inView.push_back(place.widget);
    }

    const auto show = [&](QWidget* widget) {
        const bool isInView = std::find(inView.begin(), inView.end(), widget) != inView.end();
        if (widget->isHidden() == isInView)
            widget->setVisible(isInView);
        return isInView;
    };
    for (const Item& item : m_items)
        show(item.label);
    for (QToolButton* const button : m_buttons)
        show(button);

    m_dividers.clear();
    int x = width() - used + gap();
    for (const Place& place : places()) {
        if (place.widget->isHidden())
            continue;
        m_dividers.push_back(x - gap() / 2 - 1);
        place.widget->setGeometry(QStyle::visualRect(layoutDirection(), rect(), QRect(x, 0, place.width, height())));
        x += place.width + gap();
    }
    update();
}

void InfoBar::arrangeAnew()
{
    arrange();
    updateGeometry();
}

// Leaves room for the message of the status bar.
void InfoBar::makeWay()
{
    const QString message = m_statusBar->currentMessage();
    if (message.isEmpty()) {
        setMaximumWidth(QWIDGETSIZE_MAX);
        return;
    }
    const int text = m_statusBar->fontMetrics().horizontalAdvance(message) + 2 * messageMargin;
    int room = m_statusBar->width() - std::min(text, m_statusBar->width() / 2);
    for (QWidget* const other : m_statusBar->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (other != this && !other->isHidden())
            room -= QWidgetItem(other).sizeHint().width() + m_statusBar->layout()->spacing();
    }
    setMaximumWidth(std::max(room, 0));
}

// Events --------------------------------------------------------------------------------------------------------------

bool InfoBar::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_statusBar && (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest))
        makeWay();
    return QWidget::eventFilter(watched, event);
}

void InfoBar::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        measure();
    else if (event->type() == QEvent::LayoutDirectionChange)
        arrange();
    else if (event->type() == QEvent::PaletteChange)
        showAlarm();
}

void InfoBar::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    arrange();
}

void InfoBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QColor color = palette().color(QPalette::WindowText);
    color.setAlphaF(0.25);
    QPen pen(color, qRound(devicePixelRatioF())); // in device pixels, so that all are equally wide
    pen.setCosmetic(true);
    painter.setPen(pen);
    const int inset = height() / 6;
    for (const int x : m_dividers) {
        const int left = QStyle::visualPos(layoutDirection(), rect(), QPoint(x, 0)).x();
        painter.drawLine(left, inset, left, height() - inset - 1);
    }
}

} // namespace Vistrel
