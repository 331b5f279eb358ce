// SPDX-License-Identifier: MIT
// Tests what a surface announces, and that slots and other threads may call it meanwhile.
#include "ShownSurface.h"

#include <Vistrel/SurfaceScrollArea.h>

#include <QtGui/QMouseEvent>

#include <QtCore/QPointer>

#include <atomic>
#include <functional>
#include <thread>

using namespace Vistrel;

namespace {

using Operation = std::function<void(Surface&)>;

QPixmap pixmapOf(int width, int height, QRgb color = 0xFF808080)
{
    QPixmap pixmap(width, height);
    pixmap.fill(color);
    return pixmap;
}

} // namespace

class SurfaceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void announcements();
    void slotsMayDeleteTheSurface();
    void whatIsReadIsSeen();
    void feedingFromAnotherThread();
};

void SurfaceTest::announcements()
{
    const auto picture = [](int w, int h) -> Operation { return [=](Surface& s) { s.setPixmap(pixmapOf(w, h)); }; };
    const auto scaling = [](double value) -> Operation { return [=](Surface& s) { s.setScaling(value); }; };
    const auto resize = [](int w, int h) -> Operation { return [=](Surface& s) { s.resize(w, h); }; };
    const Operation fit = [](Surface& s) { s.setScaleToFit(true); };
    const Operation fitted = picture(1000, 800);
    const auto scrolled = [=](double x, double y) -> Operation {
        return [=](Surface& s) {
            fitted(s);
            s.setScaling(2);
            s.setScaledOffset({x, y});
        };
    };
    const struct
    {
        Operation prepare; // a view of 400 x 300 pixels
        Operation operation;
        const char* heard;
    } rows[] = {
        {[](Surface&) {}, fitted, "range; scaling fit 0.375; "},
        {[](Surface&) {}, picture(100, 50), "range; "}, // never enlarged
        {[](Surface&) {}, picture(100000, 1), "range; scaling fit 0.00899289; "},
        {scrolled(1600, 1300), picture(500, 800), "offset 600 1300; range; "},
        {scrolled(300, 200), scaling(3), "offset 450 300; range; scaling free 3; "},
        {scrolled(300, 200), fit, "offset 0 0; range; scaling fit 0.375; "},
        {fitted, scaling(0.375), "scaling free 0.375; "},
        {fitted, resize(200, 300), "range; scaling fit 0.2; "},
        {scrolled(300, 200), resize(500, 250), "range; offset 250 225; "}, // keeps the centre
    };
    for (const auto& row : rows) {
        ShownSurface shown({400, 300});
        Surface& surface = shown.surface;
        row.prepare(surface);
        QString heard;
        connect(&surface, &Surface::pixelOffsetChanged, [&](const QPointF& offset) {
            heard += QStringLiteral("offset %1 %2; ").arg(offset.x()).arg(offset.y());
        });
        connect(&surface, &Surface::pixelRangeChanged, [&] { heard += QStringLiteral("range; "); });
        connect(&surface, &Surface::scalingChanged, [&](bool autoFit, double value) {
            heard += QStringLiteral("scaling %1 %2; ").arg(QLatin1String(autoFit ? "fit" : "free")).arg(value);
            QVERIFY(surface.scaling() == value && surface.scaleToFit() == autoFit);
        });
        row.operation(surface);
        QCOMPARE(heard, QLatin1String(row.heard));
    }
}

void SurfaceTest::slotsMayDeleteTheSurface()
{
    const Operation operations[] = {
        [](Surface& s) { s.setPixmap(pixmapOf(100, 100)); }, [](Surface& s) { s.setScaling(1); },
        [](Surface& s) { s.setScaledOffset(QPointF(1, 1)); }, [](Surface& s) { s.setScaleToFit(true); }};
    for (const Operation& operation : operations) {
        const QPointer<Surface> surface = new Surface;
        surface->resize(40, 40);
        surface->setPixmap(pixmapOf(200, 200));
        surface->setScaling(2);
        surface->setScaledOffset({9, 9});
        connect(surface, &Surface::pixelRangeChanged, [=] { delete surface; });
        connect(surface, &Surface::pixelOffsetChanged, [=] { delete surface; });
        operation(*surface);
        QVERIFY(surface.isNull());
    }
}

// At each device pixel, the pixel under the pointer is the one that is painted there.
void SurfaceTest::whatIsReadIsSeen()
{
    QWidget host;
    host.resize(150, 120);
    host.setPalette(QPalette(Qt::magenta));
    SurfaceScrollArea area(&host);
    area.setGeometry(7, 5, 121, 97); // may begin at a fraction of a device pixel
    Surface& surface = *area.surface();
    QImage image(4096, 3072, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(y >> 4, (x & 15) << 4 | (y & 15), x >> 4)); // each in its own colour
    }
    surface.setPixmap(QPixmap::fromImage(image));
    host.show();
    QVERIFY(QTest::qWaitForWindowExposed(&host));
    const double ratio = host.devicePixelRatioF();
    for (const double zoom : {Surface::scalingMin(), 0.37, 1.0, 1.0 / ratio, 4.4, Surface::scalingMax()}) {
        surface.setScaling(zoom);
        surface.setScaledOffset({4000.3 * zoom, 3000.7 * zoom});
        QCoreApplication::processEvents(); // scroll bars
        const QImage seen = host.grab().toImage();
        const QRectF view(surface.mapTo(&host, QPoint(0, 0)), surface.size());
        for (int y = 0; y < seen.height(); ++y) {
            for (int x = 0; x < seen.width(); ++x) {
                const QPointF place = QPointF(x, y) / ratio;
                if (!view.contains(place) || place.x() >= view.right() || place.y() >= view.bottom())
                    continue;
                QMouseEvent move(QEvent::MouseMove, place - view.topLeft(), place,
                                 host.mapToGlobal(QPoint(0, 0)) + place, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
                QCoreApplication::sendEvent(&surface, &move);
                const QPoint read = surface.activePixel();
                const QRgb expected = image.rect().contains(read) ? image.pixel(read) : QColor(Qt::darkGray).rgb();
                QVERIFY2(seen.pixel(x, y) == expected,
                         qPrintable(QStringLiteral("(%1, %2) at %3").arg(x).arg(y).arg(zoom)));
            }
        }
    }
}

void SurfaceTest::feedingFromAnotherThread()
{
    ShownSurface shown({300, 200});
    Surface& surface = shown.surface;
    const QPixmap pixmaps[] = {pixmapOf(2, 2, 0xFF102030), pixmapOf(900, 600, 0xFF405060)};
    const QImage images[] = {pixmaps[0].toImage(), pixmaps[1].toImage()};
    std::atomic<bool> isDone{false};
    std::atomic<int> wrongValues{0};
    std::thread feeder([&] {
        for (int i = 0; i < 200; ++i) {
            surface.setPixmap(pixmaps[i % 2]);
            PixVal value;
            surface.setImageSrc(images[i % 2]);
            if (!surface.imageSrcPixVal({0, 0}, value) || value.r != (i % 2 ? 0x40u : 0x10u) ||
                surface.visibleImageRectF().isEmpty())
                ++wrongValues;
        }
        isDone = true;
    });
    for (int i = 0; !isDone; ++i) {
        surface.setScaling(i % 2 ? Surface::scalingMax() : 1.5);
        shown.picture();
        QCoreApplication::processEvents();
    }
    feeder.join();
    surface.setScaling(1);
    QCOMPARE(wrongValues.load(), 0);
    QCOMPARE(shown.picture().pixel(150, 100), 0xFF405060);
}

QTEST_MAIN(SurfaceTest)
#include "SurfaceTest.moc"
