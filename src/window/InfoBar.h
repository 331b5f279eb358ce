// SPDX-License-Identifier: MIT
// The image information at the right of the main window's status bar.
#pragma once

#include "window/InfoItems.h"

#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtWidgets/QWidget>

#include <array>
#include <cstddef>
#include <vector>

class QAction;
class QLabel;
class QPalette;
class QStatusBar;
class QToolButton;

namespace Vistrel {

/// Amber that is readable on the palette's window colour.
QColor alarmColor(const QPalette& palette);

/// Shows a label for each item that is switched on, then a button for each action of the host. An item keeps the width
/// of its widest text, so nothing moves while numbers change. A narrow bar leaves out the least important items. The
/// bar leaves room for a message of the status bar. Setters are cheap when nothing has changed.
class InfoBar : public QWidget
{
    Q_OBJECT

public:
    /// The caller adds it to `statusBar` as a permanent widget. At first all items are switched off and have no value.
    explicit InfoBar(QStatusBar* statusBar);
    ~InfoBar() override;

    void setItemShown(InfoItem item, bool shown);

    /// An empty value is shown as a dash. The number of dropped frames is amber when it is greater than the last one.
    void setValue(InfoItem item, const QString& value);
    /// Makes the item wide enough for `value`.
    void makeRoom(InfoItem item, const QString& value);

    /// Does not own the action. The button is deleted with it.
    void addUserAction(QAction* action);

    /// Returns a line "Name: value" for each item that has a value, also for items that are switched off.
    QString report() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override; ///< without width: every item can be left out

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private Q_SLOTS:
    void arrangeAnew();
    void makeWay();

private:
    struct Item
    {
        QLabel* label = nullptr;
        bool isShown = false;
        QString value;
        QString widest;   // the text that its width is for, each digit the widest one
        QString measured; // the text that was measured last
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

    bool widen(Item& item, QString text);
    void measure();
    void showAlarm();
    std::vector<Place> places() const;
    int gap() const;
    void arrange();

    QStatusBar* const m_statusBar;
    std::array<Item, infoItemCount> m_items;
    std::vector<QToolButton*> m_buttons;
    QChar m_widestDigit = QLatin1Char('0');
    bool m_isDropping = false;
    std::vector<int> m_dividers; // positions from the bar's leading edge
};

} // namespace Vistrel
