// SPDX-License-Identifier: MIT
// Tests what a surface announces, and that slots and other threads may call it meanwhile.
#include "ShownSurface.h"

#include "support/FakeSources.h"

#include <QtCore/QPointer>
#include <QtGui/QPainter>

#include <thread>

using namespace Vistrel;

using Operation = std::function<void(Surface&)>;
Q_DECLARE_METATYPE(Operation)

namespace {

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
    void announcements_data();
    void announcements();
    void resizeKeepsTheCentre();
    void slotsMayDeleteTheSurface_data();
    void slotsMayDeleteTheSurface();
    void feedingFromAnotherThread();
};

void SurfaceTest::announcements_data()
{
    QTest::addColumn<Operation>("prepare");
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char* name, const Operation& prepare, const Operation& operation,
                        const QString& expected) {
        QTest::newRow(name) << prepare << operation << expected.split(QStringLiteral("; "), Qt::SkipEmptyParts);
    };
    // The view has 400 x 300 pixels.
    const Operation empty = [](Surface&) {};
    const Operation fitted = [](Surface& s) { s.setPixmap(pixmapOf(1000, 800)); };
    const auto scrolled = [](double x, double y) {
        return [=](Surface& s) {
            s.setPixmap(pixmapOf(1000, 800));
            s.setScaling(2);
            s.setScaledOffset({x, y});
        };
    };
    const auto picture = [](int w, int h) { return [=](Surface& s) { s.setPixmap(pixmapOf(w, h)); }; };
    const auto scaling = [](double value) { return [=](Surface& s) { s.setScaling(value); }; };
    const auto fit = [](bool on) { return [=](Surface& s) { s.setScaleToFit(on); }; };
    const auto resize = [](int w, int h) { return [=](Surface& s) { s.resize(w, h); }; };
    const auto move = [](double x, double y) { return [=](Surface& s) { s.setScaledOffset({x, y}); }; };

    row("large image", empty, picture(1000, 800), QStringLiteral("range; scaling fit 0.375"));
    row("small image", empty, picture(100, 50), QStringLiteral("range"));
    row(
        "no image", fitted, [](Surface& s) { s.setPixmap({}); }, QStringLiteral("range"));
    row("image of the same size", fitted, picture(1000, 800), QString());
    row("image of the same size, scrolled", scrolled(9, 9), picture(1000, 800), QString());
    row("shrunk image, scrolled to the end", scrolled(1600, 1300), picture(500, 800),
        QStringLiteral("offset 600 1300; range"));
    row("small image, scrolled", scrolled(1600, 1300), picture(100, 50), QStringLiteral("offset 0 0; range"));
    row("grown image, scrolled to the end", scrolled(1600, 1300), picture(2000, 1600), QStringLiteral("range"));

    row("zoom", fitted, scaling(2), QStringLiteral("range; scaling free 2"));
    row("zoom, scrolled", scrolled(300, 200), scaling(3), QStringLiteral("offset 450 300; range; scaling free 3"));
    row("zoom of the fitting", fitted, scaling(0.375), QStringLiteral("scaling free 0.375"));
    row("same zoom", scrolled(300, 200), scaling(2), QString());
    row("fit again", scrolled(300, 200), fit(true), QStringLiteral("offset 0 0; range; scaling fit 0.375"));
    row("fit twice", fitted, fit(true), QStringLiteral("scaling fit 0.375"));
    row("fit nothing", empty, fit(true), QString());
    row("fit no more", fitted, fit(false), QString());

    row("offset out of range", scrolled(300, 200), move(-5, 1e9), QStringLiteral("offset 0 1300"));
    row("same offset", scrolled(300, 200), move(300, 200), QString());
    row("offset without an image", empty, move(-5, 1e6), QStringLiteral("offset 0 1e+06"));
    for (const bool whole : {true, false}) {
        row(
            whole ? "int x" : "double x", scrolled(300, 200),
            [=](Surface& s) { whole ? s.setScaledOffsetX(7) : s.setScaledOffsetX(7.0); },
            QStringLiteral("offset 7 200"));
        row(
            whole ? "int y" : "double y", scrolled(300, 200),
            [=](Surface& s) { whole ? s.setScaledOffsetY(7) : s.setScaledOffsetY(7.0); },
            QStringLiteral("offset 300 7"));
    }

    row("resize, fitted", fitted, resize(200, 300), QStringLiteral("range; scaling fit 0.2"));
    row("resize, small image", picture(100, 50), resize(500, 400), QStringLiteral("range"));
    row("wider", scrolled(300, 200), resize(500, 300), QStringLiteral("range; offset 250 200"));
    row("lower", scrolled(300, 200), resize(400, 250), QStringLiteral("range; offset 300 225"));
    row("wider at the end", scrolled(1600, 1300), resize(500, 300), QStringLiteral("range; offset 1500 1300"));
    row("wider at the start", scrolled(10, 200), resize(500, 300), QStringLiteral("range; offset 0 200"));
    row(
        "marks", scrolled(300, 200),
        [](Surface& s) {
            s.setCrosshairVisible(true);
            s.setActivePixel(2, 3);
            s.setValueOverlayEnabled(false);
            s.setImageSrc(QImage(4, 4, QImage::Format_RGB32));
            s.clearImageSrc();
        },
        QString());
}

void SurfaceTest::announcements()
{
    QFETCH(Operation, prepare);
    QFETCH(Operation, operation);
    ShownSurface shown({400, 300});
    Surface& surface = shown.surface;
    prepare(surface);

    QStringList heard;
    connect(&surface, &Surface::pixelOffsetChanged, [&](const QPointF& offset) {
        heard << QStringLiteral("offset %1 %2").arg(offset.x()).arg(offset.y());
        if (!surface.pixmap().isNull() && surface.visibleImageRectF().size() != QSizeF(surface.pixmap().size()))
            QCOMPARE(surface.scaledOffset(), offset);
    });
    connect(&surface, &Surface::pixelRangeChanged, [&] { heard << QStringLiteral("range"); });
    connect(&surface, &Surface::scalingChanged, [&](bool autoFit, double scaling) {
        heard << QStringLiteral("scaling %1 %2")
                     .arg(autoFit ? QStringLiteral("fit") : QStringLiteral("free"))
                     .arg(scaling);
        QCOMPARE(surface.scaling(), scaling);
        QCOMPARE(surface.scaleToFit(), autoFit);
    });
    operation(surface);
    QTEST(heard, "expected");

    const QRectF image(QPointF(0, 0), QSizeF(surface.pixmap().size()));
    QVERIFY(image.contains(surface.visibleImageRectF()) || image.isEmpty());
}

void SurfaceTest::resizeKeepsTheCentre()
{
    ShownSurface shown({400, 300});
    shown.show(QImage(1000, 800, QImage::Format_RGB32), 2, {300, 200});
    const QPointF centre = shown.surface.visibleImageRectF().center();
    shown.surface.resize(333, 222);
    QCOMPARE(shown.surface.visibleImageRectF().center(), centre);
    shown.surface.resize(450, 380);
    QCOMPARE(shown.surface.visibleImageRectF().center(), centre);
}

void SurfaceTest::slotsMayDeleteTheSurface_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::newRow("setPixmap") << Operation([](Surface& s) { s.setPixmap(pixmapOf(100, 100)); });
    QTest::newRow("setScaling") << Operation([](Surface& s) { s.setScaling(1); });
    QTest::newRow("setScaledOffset") << Operation([](Surface& s) { s.setScaledOffset({1, 1}); });
    QTest::newRow("setScaleToFit") << Operation([](Surface& s) { s.setScaleToFit(true); });
}

void SurfaceTest::slotsMayDeleteTheSurface()
{
    QFETCH(Operation, operation);
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

void SurfaceTest::feedingFromAnotherThread()
{
    constexpr int passes = 200;
    ShownSurface shown({300, 200});
    Surface& surface = shown.surface;
    ProtectedSource source(2, 2, Mono16);
    RawImage raw;
    {
        ScopedLock lock;
        source.getNextFrame(&raw, &lock);
    }
    std::atomic<int> rangesHeard{0};
    connect(
        &surface, &Surface::pixelRangeChanged, &surface, [&] { ++rangesHeard; }, Qt::DirectConnection);
    const QPixmap pixmaps[] = {pixmapOf(2, 2, 0xFF102030), pixmapOf(900, 600, 0xFF405060)};
    const QImage images[] = {pixmaps[0].toImage(), pixmaps[1].toImage()};

    std::atomic<bool> isDone{false};
    std::atomic<int> wrongValues{0};
    std::thread feeder([&] {
        for (int i = 0; i < passes; ++i) {
            surface.setPixmap(pixmaps[i % 2]);
            PixVal value;
            surface.setImageSrc(images[i % 2]);
            if (!surface.imageSrcPixVal({0, 0}, value) || value.r != (i % 2 ? 0x40u : 0x10u))
                ++wrongValues;
            surface.setImageSrc(&source, raw);
            if (!surface.imageSrcPixVal({1, 0}, value) || value.value != (14u | 21u << 8))
                ++wrongValues;
            if (surface.visibleImageRectF().isEmpty() || surface.pixmap().size() != pixmaps[i % 2].size())
                ++wrongValues;
        }
        isDone = true;
    });
    for (int i = 0; !isDone; ++i) {
        surface.setScaling(i % 2 ? Surface::scalingMax() : 1.5);
        surface.setScaledOffset({i % 40 * 10.0, i % 30 * 10.0});
        shown.picture();
        QCoreApplication::processEvents();
    }
    feeder.join();
    surface.setScaling(1);
    QCOMPARE(wrongValues.load(), 0);
    QVERIFY(rangesHeard >= passes);
    QCOMPARE(shown.picture().pixel(150, 100), 0xFF405060);
    surface.clearImageSrc(); // before the source goes
}

QTEST_MAIN(SurfaceTest)
#include "SurfaceTest.moc"
