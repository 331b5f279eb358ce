// SPDX-License-Identifier: MIT
// Tests what the image information bar says, how it keeps still, and what it leaves out of a narrow window.
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include "window/OfferingCamera.h"

#include <QtGui/QClipboard>
#include <QtWidgets/QLabel>
#include <QtWidgets/QStatusBar>

#include <cmath>

namespace {

// All items whose values the source knows are switched on.
struct ShownBar : ShownWindow
{
    ShownBar()
    {
        camera->addSetupMode("Slow\n& <b>", "");
        push(Mono12);
        for (const char* const name :
             {"actionActive_Setup_Mode", "actionFrame_Rate", "actionBuffers_Dropped", "actionImageDimensions",
              "actionImage_Format", "actionZoom_Level", "actionPixel_Value"}) {
            action(name)->setChecked(false);
            action(name)->trigger();
        }
        window->updateFeatureSet();
        QTRY_COMPARE(label("Frames Dropped")->text(), QStringLiteral("Dropped: 1"));
    }
    QLabel* label(const char* name) const
    {
        for (QLabel* const label : window->statusBar()->findChildren<QLabel*>()) {
            if (label->accessibleName() == QLatin1String(name))
                return label;
        }
        return nullptr;
    }
    QList<QLabel*> labels() const
    {
        QCoreApplication::processEvents();
        QList<QLabel*> inView;
        for (QLabel* const one : label("Pixel Value")->parent()->findChildren<QLabel*>()) {
            if (one->isVisible())
                inView.append(one);
        }
        return inView;
    }
    QString report() const
    {
        window->copyCurrentImageStats();
        return QGuiApplication::clipboard()->text();
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
    void roomGoesToTheMostImportant();
    void droppedIsAmberWhileItRises();
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
    QTRY_VERIFY(shown.report().contains(QLatin1String("4 x 3 x 14 bit\nImage Format: Mono14\n")));
    shown.push(RGB8);
    QTRY_COMPARE(shown.label("Pixel Value")->text(), QStringLiteral("(3, 2) R: 141 G: 137 B: 133"));
    shown.camera->rate = std::nan("");
    shown.camera->push({}); // clears
    QTRY_COMPARE(shown.label("Frame Rate")->text(), QStringLiteral("\u2013 fps"));
    QTRY_VERIFY(!shown.report().contains(QLatin1String("Image Format")));
}

void InfoBarTest::nothingMovesWhileDigitsChange()
{
    ShownBar shown;
    const auto geometries = [&shown] {
        QList<QRect> rects;
        for (const QLabel* const label : shown.labels())
            rects.append(label->geometry());
        return rects;
    };
    const QList<QRect> before = geometries();
    QCOMPARE(before.size(), 7);
    const QLabel* const dropped = shown.label("Frames Dropped");
    for (const std::size_t number : {88u, 111u}) {
        shown.camera->rate = double(number) * 1.01;
        shown.camera->dropped = number;
        shown.window->surfaceScrollArea()->setZoomTo(double(number) / 100, {-1, -1});
        shown.surface->setActivePixel(number == 88 ? QPoint(3, 2) : QPoint(-1, -1));
        QTRY_VERIFY(dropped->text().endsWith(QString::number(number)));
        QCOMPARE(geometries(), before);
    }
    // A text that is wider than ever makes room for itself, and keeps it.
    shown.camera->dropped = 123456789;
    QTRY_VERIFY(dropped->text().endsWith(QLatin1Char('9')));
    const QList<QRect> grown = geometries();
    QVERIFY(dropped->width() >= dropped->fontMetrics().horizontalAdvance(dropped->text()));
    shown.camera->dropped = 1;
    QTRY_VERIFY(dropped->text().endsWith(QLatin1String(" 1")));
    QCOMPARE(geometries(), grown);
}

void InfoBarTest::roomGoesToTheMostImportant()
{
    ShownBar shown;
    const auto widthFor = [&shown](int count) { // the smallest that leaves so many items in view
        int width = shown.window->width();
        for (; shown.labels().size() >= count && width > 100; width -= 9)
            shown.window->resize(width, 600);
        shown.window->resize(width += 18, 600);
        return width;
    };
    widthFor(7);
    QCOMPARE(shown.labels().size(), 7);
    const QString message = QStringLiteral("Setting up the camera");
    const QLabel* const first = shown.label("Playback Mode");
    shown.window->statusBar()->showMessage(message);
    QVERIFY(shown.labels().contains(shown.label("Pixel Value")) && !shown.label("Image Format")->isVisible());
    QVERIFY(first->mapTo(shown.window, QPoint(0, 0)).x() > first->fontMetrics().horizontalAdvance(message));
    shown.window->statusBar()->clearMessage();
    QCOMPARE(shown.labels().size(), 7);
    for (const char* const next : {"Image Format", "Dimensions", "Playback Mode", "Frames Dropped", "Frame Rate"}) {
        QVERIFY2(shown.label(next)->isVisible(), next);
        shown.window->resize(widthFor(shown.labels().size()) - 9, 600);
        for (const QLabel* const label : shown.labels())
            QVERIFY(label->parentWidget()->rect().contains(label->geometry()));
        QVERIFY2(!shown.label(next)->isVisible(), next);
    }
}

void InfoBarTest::droppedIsAmberWhileItRises()
{
    ShownBar shown;
    const QLabel* const label = shown.label("Frames Dropped");
    const auto color = [label] { return label->palette().color(QPalette::WindowText); };
    for (const QColor& background : {QColor(0xEF, 0xEF, 0xEF), QColor(0x2B, 0x2B, 0x2B)}) {
        shown.window->statusBar()->setPalette(QPalette(background, background));
        const QColor usual = label->parentWidget()->palette().color(QPalette::WindowText);
        QTRY_COMPARE(color(), usual);
        shown.camera->dropped = 10;
        QTRY_VERIFY(color() != usual);
        QVERIFY((qGray(color().rgb()) < 128) != (qGray(background.rgb()) < 128)); // can be read
        QTRY_COMPARE(color(), usual);
        shown.camera->dropped = 0; // counted anew
        QTRY_COMPARE(label->text(), QStringLiteral("Dropped: 0"));
        QCOMPARE(color(), usual);
    }
}

QTEST_MAIN(InfoBarTest)
#include "InfoBarTest.moc"
