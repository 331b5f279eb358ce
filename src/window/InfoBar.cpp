// SPDX-License-Identifier: MIT
// The image information at the right of the main window's status bar.
#include "window/InfoBar.h"

#include "pipeline/pixels/PixelFormats.h"

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

struct Wording
{
    const char* name;
    const char* caption; // around the value and its unit, in the bar alone
    const char* unit;
    const char* usual; // the value that there is room for from the beginning; null: a dash
    int importance;    // the smallest is the first to make way
};

constexpr int pixelImportance = 11;
constexpr int buttonImportance = 8;

constexpr Wording wordings[infoItemCount] = {
    {QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Playback Mode"), QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Mode: %1"), "%1",
     nullptr, 6},
    {QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Frame Rate"), "%1", QT_TRANSLATE_NOOP("Vistrel::InfoBar", "%1 fps"),
     "000.00", 9},
    {QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Frames Queued"), QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Queued: %1"), "%1",
     "00", 3},
    {QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Frames Filled"), QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Filled: %1"), "%1",
     "00", 2},
    {QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Frames Dropped"), QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Dropped: %1"),
     "%1", "000", 7},
    {QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Frames Delivered"), QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Delivered: %1"),
     "%1", "00000", 4},
    {QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Dimensions"), "%1", "%1", nullptr, 5},
    {QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Image Format"), "%1", "%1", nullptr, 1},
    {QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Zoom Level"), "%1", QT_TRANSLATE_NOOP("Vistrel::InfoBar", "%1 %"), "000.0",
     10},
    {QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Pixel Value"), "%1", "%1", nullptr, pixelImportance},
};
constexpr int longestMode = 32;  // characters; a longer name is cut in the bar
constexpr int messageMargin = 8; // pixels that the status bar leaves on either side of a message

const Wording& wordingOf(InfoItem item)
{
    return wordings[static_cast<std::size_t>(item)];
}

QString withUnit(InfoItem item, const QString& value)
{
    return InfoBar::tr(wordingOf(item).unit).arg(value);
}

bool isKnown(const RawImage& image)
{
    return image.data && image.width > 0 && image.height > 0;
}

QString widestPixelText(const RawImage& image)
{
    const std::uint32_t maximum = channelMaximum(image.format);
    const bool isMono = isMonochrome(image.format);
    const PixPos last{static_cast<int>(image.width) - 1, static_cast<int>(image.height) - 1};
    return pixelText(last, PixVal{isMono, maximum, !isMono, maximum, maximum, maximum});
}

} // namespace

// Texts ---------------------------------------------------------------------------------------------------------------

QString frameRateText(const std::optional<double>& rate)
{
    return rate && std::isfinite(*rate) && *rate >= 0 ? QString::number(*rate, 'f', 2) : QString();
}

QString countText(const std::optional<std::size_t>& count)
{
    return count ? QString::number(static_cast<qulonglong>(*count)) : QString();
}

QString dimensionsText(const RawImage& image)
{
    if (!isKnown(image))
        return {};
    return InfoBar::tr("%1 x %2 x %3 bit").arg(image.width).arg(image.height).arg(formatDepth(image.format));
}

QString formatText(const RawImage& image)
{
    return isKnown(image) ? QString::fromLatin1(formatName(image.format)) : QString();
}

QString zoomText(const std::optional<double>& scaling)
{
    return scaling && std::isfinite(*scaling) && *scaling > 0 ? QString::number(*scaling * 100, 'f', 1) : QString();
}

QString pixelText(const PixPos& position, const std::optional<PixVal>& value)
{
    if (position.x < 0 || position.y < 0)
        return {};
    const QString place = QStringLiteral("(%1, %2) ").arg(position.x).arg(position.y);
    if (value && value->color)
        return place + QStringLiteral("R: %1 G: %2 B: %3").arg(value->r).arg(value->g).arg(value->b);
    return place + (value && value->mono ? QString::number(value->value) : QStringLiteral("\u2013"));
}

QString infoName(InfoItem item)
{
    return InfoBar::tr(wordingOf(item).name);
}

QString infoText(InfoItem item, const QString& value)
{
    QString text = value.isNull() ? QStringLiteral("\u2013") : value;
    if (item == InfoItem::SetupMode && text.size() > longestMode)
        text = text.left(longestMode - 1) + QChar(0x2026);
    return InfoBar::tr(wordingOf(item).caption).arg(withUnit(item, text));
}

QColor alarmColor(const QPalette& palette)
{
    return qGray(palette.color(QPalette::Window).rgb()) < 128 ? QColor(0xFF, 0xC2, 0x4D) : QColor(0x8A, 0x50, 0x00);
}

// The bar -------------------------------------------------------------------------------------------------------------

InfoBar::InfoBar(QStatusBar* statusBar) : QWidget(statusBar), m_statusBar(statusBar)
{
    for (std::size_t i = 0; i < infoItemCount; ++i) {
        const auto item = static_cast<InfoItem>(i);
        const bool hasUnitOnly = item == InfoItem::FrameRate || item == InfoItem::Zoom;
        auto* const label = new QLabel(this);
        label->setTextFormat(Qt::PlainText); // a mode's name is the source's
        label->setAlignment((hasUnitOnly ? Qt::AlignTrailing : Qt::AlignLeading) | Qt::AlignVCenter);
        label->setAccessibleName(infoName(item));
        label->setToolTip(infoName(item));
        label->setText(infoText(item, {}));
        label->hide();
        m_items[i].label = label;
        const QString usual = QString::fromLatin1(wordings[i].usual);
        m_items[i].widest = infoText(item, usual);
    }
    measure();
    statusBar->installEventFilter(this);
    connect(statusBar, &QStatusBar::messageChanged, this, &InfoBar::makeWay);
}

InfoBar::~InfoBar()
{
    // An action may be a child, too, and go when there is no list of buttons any more.
    for (const QToolButton* const button : m_buttons) {
        if (QAction* const action = button->defaultAction())
            action->disconnect(this);
    }
}

bool InfoBar::isItemShown(InfoItem item) const
{
    return at(item).isShown;
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
    connect(action, &QAction::changed, this, &InfoBar::arrangeAnew);
    // Its own click may be what ends the action. The button itself forgets what it is connected to before that.
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
        if (!m_items[i].value.isNull())
            lines += QStringLiteral("%1: ").arg(infoName(item)) + withUnit(item, m_items[i].value) + QLatin1Char('\n');
    }
    return lines;
}

// Values --------------------------------------------------------------------------------------------------------------

void InfoBar::setSetupMode(const QString& name)
{
    const QString line = name.simplified();
    setValue(InfoItem::SetupMode, line.isEmpty() ? QString() : line);
}

void InfoBar::setFrameRate(const std::optional<double>& rate)
{
    setValue(InfoItem::FrameRate, frameRateText(rate));
}

void InfoBar::setQueued(const std::optional<std::size_t>& frames)
{
    setValue(InfoItem::Queued, countText(frames));
}

void InfoBar::setFilled(const std::optional<std::size_t>& frames)
{
    setValue(InfoItem::Filled, countText(frames));
}

void InfoBar::setDropped(const std::optional<std::size_t>& frames)
{
    const bool isDropping = m_dropped && frames && *frames > *m_dropped;
    m_dropped = frames;
    setValue(InfoItem::Dropped, countText(frames));
    if (std::exchange(m_isDropping, isDropping) != isDropping)
        showAlarm();
}

void InfoBar::setDelivered(const std::optional<std::size_t>& frames)
{
    setValue(InfoItem::Delivered, countText(frames));
}

void InfoBar::setImage(const RawImage& image)
{
    if (isKnown(image) == isKnown(m_image) && image.width == m_image.width && image.height == m_image.height &&
        image.format == m_image.format)
        return;
    m_image = image;
    setValue(InfoItem::Dimensions, dimensionsText(image));
    setValue(InfoItem::Format, formatText(image));
    // The mouse is going to pass over pixels of all places and values.
    if (isKnown(image) && widen(at(InfoItem::PixelValue), widestPixelText(image)))
        arrangeAnew();
}

void InfoBar::setZoom(const std::optional<double>& scaling)
{
    setValue(InfoItem::Zoom, zoomText(scaling));
}

void InfoBar::setPixel(const PixPos& position, const std::optional<PixVal>& value)
{
    setValue(InfoItem::PixelValue, pixelText(position, value));
}

void InfoBar::setValue(InfoItem item, const QString& value)
{
    Item& entry = at(item);
    if (entry.value == value && entry.value.isNull() == value.isNull())
        return;
    entry.value = value;
    const QString text = infoText(item, value);
    entry.label->setText(text);
    entry.label->setAccessibleDescription(text);
    if (widen(entry, text))
        arrangeAnew();
}

void InfoBar::showAlarm()
{
    QPalette alarm; // everything else stays inherited
    if (m_isDropping)
        alarm.setColor(QPalette::WindowText, alarmColor(palette()));
    at(InfoItem::Dropped).label->setPalette(alarm);
}

// Widths --------------------------------------------------------------------------------------------------------------

bool InfoBar::widen(Item& item, QString text)
{
    // Fonts whose digits differ in width are not to move anything either.
    for (QChar& character : text) {
        if (character.isDigit())
            character = m_widestDigit;
    }
    if (text == item.measured)
        return false;
    item.measured = text;
    const int width = item.label->fontMetrics().horizontalAdvance(text) + 2; // for what leans over its advance
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
            places.push_back({m_items[i].label, m_items[i].width, wordings[i].importance});
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

// The status bar lays out the bar, which places its labels itself: a number that changes lays out nothing.
void InfoBar::arrange()
{
    std::vector<Place> ranked = places();
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const Place& a, const Place& b) { return a.importance > b.importance; });
    int used = gap() / 2;
    std::vector<QWidget*> inView;
    for (const Place& place : ranked) {
        if (used + place.width + gap() > width()) {
            if (place.importance == pixelImportance)
                continue; // colours of many bits may be too wide on their own
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

// A message stands where the permanent widgets leave it room.
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
    switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::StyleChange:
        measure();
        break;
    case QEvent::LayoutDirectionChange:
        arrange();
        break;
    case QEvent::PaletteChange:
        showAlarm();
        break;
    default:
        break;
    }
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
    const int inset = height() / 6;
    for (const int x : m_dividers) {
        const QRect divider(x, inset, 1, height() - 2 * inset);
        painter.fillRect(QStyle::visualRect(layoutDirection(), rect(), divider), color);
    }
}

} // namespace Vistrel
