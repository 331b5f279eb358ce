// SPDX-License-Identifier: MIT
// Tests what the image information bar says, how it keeps still, and what it leaves out of a narrow window.
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include "window/OfferingCamera.h"

#include <QtGui/QClipboard>
#include <QtWidgets/QLabel>
#include <QtWidgets/QStatusBar>

#include <algorithm>
#include <cmath>

namespace {

// All items whose values the source knows are switched on.
struct ShownBar : ShownWindow
{
    ShownBar()
    {
        window->resize(2000, 600); // room for all in any font
        camera->addSetupMode("Slow\n& <b>", "");
        push(Mono12);
        for (const char* const name : {"actionBuffers_Dropped", "actionImageDimensions", "actionImage_Format"})
            action(name)->trigger();
        QTRY_COMPARE(labels().size(), 7);
        QTRY_COMPARE(label("Frames Dropped")->text(), QStringLiteral("Dropped: 1"));
    }
    QLabel* label(const char* name) const
    {
        const QList<QLabel*> all = window->statusBar()->findChildren<QLabel*>();
        return *std::find_if(all.begin(), all.end(),
                             [=](QLabel* one) { return one->accessibleName() == QLatin1String(name); });
    }
    QMap<QString, QRect> labels() const // in view, with their places
    {
        QCoreApplication::processEvents();
        QMap<QString, QRect> inView;
        for (const QLabel* const one : label("Pixel Value")->parent()->findChildren<QLabel*>()) {
            if (one->isVisible())
                inView[one->accessibleName()] = one->geometry();
        }
        return inView;
    }

    Surface* const surface = window->surfaceScrollArea()->surface();
};

} // namespace

class InfoBarTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void imageAndSourceAreToldOf();
    void nothingMovesWhileDigitsChange();
};

void InfoBarTest::imageAndSourceAreToldOf()
{
    ShownBar shown;
    QTRY_COMPARE(shown.label("Playback Mode")->text(), QStringLiteral("Mode: Slow & <b>"));
    QCOMPARE(shown.label("Pixel Value")->text(), QStringLiteral("\u2013"));
    const auto pointAtLastPixel = [&shown] {
        QTest::mouseMove(shown.surface, (shown.surface->scaledRect().topLeft() + QPointF(3.25, 2.25)).toPoint());
        return shown.surface->activePixel() == QPoint(3, 2);
    };
    QTRY_VERIFY(pointAtLastPixel()); // the bars may still be taking their places
    QTest::keyClick(shown.window, Qt::Key_P, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("(3, 2) 3417"));
    QTest::keyClick(shown.window, Qt::Key_I, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(),
             QStringLiteral("Playback Mode: Slow & <b>\nFrame Rate: 25.00 fps\nFrames Dropped: 1\n"
                            "Dimensions: 4 x 3 x 12 bit\nImage Format: Mono12\nZoom Level: 100.0 %\n"
                            "Pixel Value: (3, 2) 3417\n"));
    QVERIFY(shown.action("actionBuffers_Dropped")->isVisible() && !shown.action("actionBuffers_Queued")->isVisible());

    shown.push(Mono14); // of the same size
    QTRY_COMPARE(shown.label("Image Format")->text(), QStringLiteral("Mono14"));
    QCOMPARE(shown.label("Dimensions")->text(), QStringLiteral("4 x 3 x 14 bit"));
    shown.push(RGB8);
    QTRY_COMPARE(shown.label("Pixel Value")->text(), QStringLiteral("(3, 2) R: 141 G: 137 B: 133"));
    shown.camera->rate = std::nan("");
    shown.camera->push({}); // clears
    QTRY_COMPARE(shown.label("Frame Rate")->text(), QStringLiteral("\u2013 fps"));
    QTRY_COMPARE(shown.label("Image Format")->text(), QStringLiteral("\u2013"));
}

void InfoBarTest::nothingMovesWhileDigitsChange()
{
    ShownBar shown;
    const QMap<QString, QRect> before = shown.labels();
    const QLabel* const dropped = shown.label("Frames Dropped");
    for (const std::size_t number : {88u, 111u}) {
        shown.camera->rate = double(number) * 1.01;
        shown.camera->dropped = number;
        shown.window->surfaceScrollArea()->setZoomTo(double(number) / 100, {-1, -1});
        shown.surface->setActivePixel(number == 88 ? QPoint(3, 2) : QPoint(-1, -1));
        QTRY_VERIFY(dropped->text().endsWith(QString::number(number)));
        QCOMPARE(shown.labels(), before);
        const QColor color = dropped->palette().color(QPalette::WindowText); // amber while it rises
        QVERIFY(color != dropped->parentWidget()->palette().color(QPalette::WindowText));
    }
}

QTEST_MAIN(InfoBarTest)
#include "InfoBarTest.moc"
