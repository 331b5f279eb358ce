// SPDX-License-Identifier: MIT
// The image information at the right of the main window's status bar.
#pragma once

#include <Vistrel/PixVal.h>
#include <Vistrel/RawImage.h>

#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtWidgets/QWidget>

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

class QAction;
class QLabel;
class QPalette;
class QStatusBar;
class QToolButton;

namespace Vistrel {

/// In the order in which they stand in the bar.
enum class InfoItem {
    SetupMode,
    FrameRate,
    Queued,
    Filled,
    Dropped,
    Delivered,
    Dimensions,
    Format,
    Zoom,
    PixelValue,
};
constexpr std::size_t infoItemCount = 10;

// The values as text; null when there is none to tell.
QString frameRateText(const std::optional<double>& rate);
QString countText(const std::optional<std::size_t>& count);
QString dimensionsText(const RawImage& image);
QString formatText(const RawImage& image);
QString zoomText(const std::optional<double>& scaling);
QString pixelText(const PixPos& position, const std::optional<PixVal>& value);

QString infoName(InfoItem item);
/// What the bar shows for a value; a dash stands for one that is null.
QString infoText(InfoItem item, const QString& value);
/// Amber that can be read on the palette's window colour.
QColor alarmColor(const QPalette& palette);

/// One label for each item that is switched on, then a button for each action of the host. An item keeps the width of
/// the widest text it has had, so that nothing moves while numbers change. What has no room is left out, the least
/// important first, and the bar makes way for a message of the status bar.
///
/// Setters are cheap when nothing has changed.
class InfoBar : public QWidget
{
    Q_OBJECT

public:
    /// To be added to `statusBar` as a permanent widget. All items are switched off at first, and have no value.
    explicit InfoBar(QStatusBar* statusBar);
    ~InfoBar() override;

    bool isItemShown(InfoItem item) const; ///< whether it is switched on
    void setItemShown(InfoItem item, bool shown);

    void setSetupMode(const QString& name); ///< empty: none is active
    void setFrameRate(const std::optional<double>& rate);
    void setQueued(const std::optional<std::size_t>& frames);
    void setFilled(const std::optional<std::size_t>& frames);
    /// Once for each update of the statistics: the item is amber when the number is greater than at the last one.
    void setDropped(const std::optional<std::size_t>& frames);
    void setDelivered(const std::optional<std::size_t>& frames);
    void setImage(const RawImage& image); ///< dimensions and format; the pixels are not read
    void setZoom(const std::optional<double>& scaling);
    /// A negative position means that there is no such pixel; without `value` it could not be read.
    void setPixel(const PixPos& position, const std::optional<PixVal>& value);

    /// The action stays its owner's; its button goes with it.
    void addUserAction(QAction* action);

    /// One line "Name: value" for each item that has a value, whether it is switched on or not.
    QString report() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override; ///< of no width: everything can be left out

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Item
    {
        QLabel* label = nullptr;
        bool isShown = false;
        QString value;
        QString widest;   // the text that its width is for, each digit the widest one
        QString measured; // the last text that its width was taken of
        int width = 0;
    };
    struct Place
    {
        QWidget* widget;
        int width;
        int importance;
    };

    Item& at(InfoItem item) { return m_items[static_cast<std::size_t>(item)]; }
    const Item& at(InfoItem item) const { return m_items[static_cast<std::size_t>(item)]; }

    void setValue(InfoItem item, const QString& value);
    bool widen(Item& item, QString text);
    void measure();
    void showAlarm();
    std::vector<Place> places() const;
    int gap() const;
    void arrange();
    void arrangeAnew();
    void makeWay();

    QStatusBar* const m_statusBar;
    std::array<Item, infoItemCount> m_items;
    std::vector<QToolButton*> m_buttons;
    QChar m_widestDigit = QLatin1Char('0');
    std::optional<std::size_t> m_dropped;
    bool m_isDropping = false;
    RawImage m_image;            // what the texts are of; without its pixels
    std::vector<int> m_dividers; // between what is in view; from the bar's leading edge
};

} // namespace Vistrel
