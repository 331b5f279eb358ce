// SPDX-License-Identifier: MIT
// The state of the source as a picture on the window's icon.
#include "window/controllers/Badge.h"

#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QWidget>

namespace Vistrel {

namespace {

QPixmap iconPicture(const QString& name, const QSize& size)
{
    return QIcon(QStringLiteral(":/Icons/%1.png").arg(name)).pixmap(size);
}

// The state's picture in a rounded frame over the lower right of the application's icon, a little over half of it.
QPixmap withBadge(const QPixmap& icon, const QString& state)
{
    QPixmap badged = icon;
    badged.setDevicePixelRatio(1); // all below is in its own pixels
    const int side = badged.width() * 9 / 16;
    const QRectF frame(badged.width() - side + 0.5, badged.height() - side + 0.5, side - 1, side - 1);
    const double inset = side / 8.0;
    QPainter painter(&badged);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setPen(QColor(0x60, 0x60, 0x60));
    painter.setBrush(QColor(0xF4, 0xF4, 0xF4));
    painter.drawRoundedRect(frame, side / 6.0, side / 6.0);
    const QRectF inner = frame.adjusted(inset, inset, -inset, -inset);
    const QPixmap picture = iconPicture(state, QSize(48, 48));
    painter.drawPixmap(inner, picture, QRectF(picture.rect()));
    return badged;
}

QIcon makeBadgedIcon(const QIcon& application, const QString& state)
{
    QList<QPixmap> pictures;
    for (const QSize& size : application.availableSizes())
        pictures.append(application.pixmap(size));
    if (pictures.isEmpty()) {
        for (const int side : {16, 24, 32, 48, 64, 128})
            pictures.append(QPixmap(QStringLiteral(":/Icons/VistrelIcon-%1.png").arg(side)));
    }
    QIcon icon;
    for (const QPixmap& picture : qAsConst(pictures))
        icon.addPixmap(withBadge(picture, state));
    return icon;
}

} // namespace

void Badge::show(const QString& state)
{
    const QIcon application = QApplication::windowIcon();
    const QString key = state + QString::number(application.cacheKey());
    if (m_shown == key)
        return;
    m_shown = key;
    QIcon& icon = m_icons[key];
    if (icon.isNull())
        icon = makeBadgedIcon(application, state);
    m_window->setWindowIcon(icon);
}

} // namespace Vistrel
