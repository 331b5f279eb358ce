// SPDX-License-Identifier: MIT
// A surface on the screen, before a backdrop on which everything that it paints can be told.
#pragma once

#include <Vistrel/Surface.h>

#include <QtGui/QPainter>
#include <QtGui/QPalette>
#include <QtTest/QTest>

struct ShownSurface
{
    static constexpr QRgb backdrop = 0xFFFF00FF;

    explicit ShownSurface(const QSize& size) : surface(&host)
    {
        host.setPalette(QPalette(QColor(backdrop)));
        host.resize(size);
        surface.resize(size);
        host.show();
        QVERIFY(QTest::qWaitForWindowExposed(&host));
    }

    /// Shows an image of which `zoom` pixels a pixel are seen, from the scaled pixel `offset` on.
    void show(const QImage& image, double zoom, const QPointF& offset = {})
    {
        surface.setPixmap(QPixmap::fromImage(image, Qt::NoFormatConversion));
        surface.setScaling(zoom);
        surface.setScaledOffset(offset);
    }

    /// What is painted on a device of this ratio. With an area, all the rest of a first paint is kept from it, and only
    /// that part is painted anew over a damaged picture.
    QImage picture(double ratio, const QRect& area = {})
    {
        QImage image((QSizeF(host.size()) * ratio).toSize(), QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        host.render(&image);
        if (area.isValid()) {
            QPainter painter(&image);
            painter.fillRect(area, Qt::green);
            painter.end();
            host.render(&image, area.topLeft(), area);
        }
        return image;
    }
    QImage picture() { return picture(1); }

    QWidget host;
    Vistrel::Surface surface;
};
