// SPDX-License-Identifier: MIT
// A surface on the screen, before a backdrop on which everything that it paints can be told.
#pragma once

#include <Vistrel/Surface.h>

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

    /// What is painted, or the part of it that lies in `area` from one paint of just that.
    QImage picture(const QRect& area = QRect(0, 0, -1, -1))
    {
        return host.grab(area).toImage().convertToFormat(QImage::Format_RGB32);
    }

    QWidget host;
    Vistrel::Surface surface;
};
