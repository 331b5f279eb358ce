// SPDX-License-Identifier: MIT
// Tests what the image information bar says, how it keeps still, and what it leaves out of a narrow window.
#include "window/InfoBar.h"

#include <QtTest/QTest>
#include <QtWidgets/QLabel>
#include <QtWidgets/QStatusBar>

#include <limits>

using namespace Vistrel;

namespace {

const std::uint8_t noPixels = 0; // never read

RawImage frameOf(std::size_t width, std::size_t height, unsigned format)
{
    return {&noPixels, width, height, Format(format), nullptr};
}

std::optional<PixVal> mono(std::uint32_t value)
{
    return PixVal{true, value, false, 0, 0, 0};
}

struct Fixture
{
    Fixture()
    {
        bar = new InfoBar(&statusBar);
        statusBar.addPermanentWidget(bar);
        set({nullptr, {}, frameOf(1920, 1080, BayerRG12), 0, {7, 5}, mono(17)});
        bar->makeRoom(InfoItem::PixelValue, widestPixelText(frameOf(1920, 1080, BayerRG12)));
        for (std::size_t i = 0; i < infoItemCount; ++i)
            bar->setItemShown(InfoItem(i), true);
    }
    void set(const InfoState& state)
    {
        for (std::size_t i = 0; i < infoItemCount; ++i)
            bar->setValue(InfoItem(i), infoRow(InfoItem(i)).value(state));
    }
    void show(int width)
    {
        statusBar.resize(width, 30);
        statusBar.show();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    }
    QLabel* label(InfoItem item) const
    {
        for (QLabel* const label : bar->findChildren<QLabel*>()) {
            if (label->accessibleName() == infoName(item))
                return label;
        }
        return nullptr;
    }
    QStringList inView() const
    {
        QStringList names;
        for (std::size_t i = 0; i < infoItemCount; ++i) {
            if (label(InfoItem(i))->isVisible())
                names.append(infoName(InfoItem(i)));
        }
        return names;
    }

    QStatusBar statusBar;
    InfoBar* bar;
};

} // namespace

class InfoBarTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void unknownValuesAreDashes();
    void reportTellsWhatIsKnown();
    void nothingMovesWhileDigitsChange();
    void narrowWindowLeavesOutTheLeastImportant();
    void messageKeepsRoom();
    void droppedIsAmberWhileItRises();
};

void InfoBarTest::unknownValuesAreDashes()
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const QString dash = QStringLiteral("\u2013");
    for (const QString& text : {frameRateText(nan), frameRateText(-1.0), countText(std::nullopt), dimensionsText({}),
                                dimensionsText(frameOf(0, 4, Mono8)), formatText(frameOf(4, 4, 11)), zoomText(0.0),
                                pixelText({-1, 4}, mono(1))})
        QCOMPARE(infoText(InfoItem::Format, text), dash);
    QCOMPARE(pixelText({3, 4}, std::nullopt), QStringLiteral("(3, 4) ") + dash);
    QCOMPARE(pixelText({3, 4}, PixVal{false, 0, true, 1, 2, 65535}), QStringLiteral("(3, 4) R: 1 G: 2 B: 65535"));
    QCOMPARE(pixelText({0, 0}, mono(0xFFFFFFFF)), QStringLiteral("(0, 0) 4294967295"));
    QCOMPARE(infoText(InfoItem::SetupMode, QStringLiteral("Fast & %1 <b>")), QStringLiteral("Mode: Fast & %1 <b>"));
    QCOMPARE(infoText(InfoItem::SetupMode, QString(33, QLatin1Char('m'))).size(), 6 + 32);
}

void InfoBarTest::reportTellsWhatIsKnown()
{
    Fixture f;
    InfoState state{nullptr, "Two\nlines", frameOf(1920, 1080, BayerRG14), 1.0, {7, 5}, mono(17)};
    f.set(state);
    const QString head = QStringLiteral("Playback Mode: Two lines\n");
    const QString tail = QStringLiteral("Zoom Level: 100.0 %\nPixel Value: (7, 5) 17\n");
    QCOMPARE(f.bar->report(),
             head + QStringLiteral("Dimensions: 1920 x 1080 x 14 bit\nImage Format: BayerRG14\n") + tail);
    state.image = {};
    f.set(state);
    QCOMPARE(f.bar->report(), head + tail);
}

void InfoBarTest::nothingMovesWhileDigitsChange()
{
    Fixture f;
    f.show(2000);
    const auto geometries = [&f] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        QList<QRect> rects;
        for (const QLabel* const label : f.bar->findChildren<QLabel*>())
            rects.append(label->geometry());
        return rects;
    };
    const QList<QRect> before = geometries();
    for (const std::uint32_t digits : {1u, 88u, 11u}) {
        f.set({nullptr, {}, {}, digits / 10.0, {int(digits), int(digits)}, mono(digits)});
        f.bar->setValue(InfoItem::FrameRate, frameRateText(digits * 1.01));
        f.bar->setValue(InfoItem::Queued, countText(digits));
        f.bar->setValue(InfoItem::Dropped, countText(digits));
        QCOMPARE(geometries(), before);
    }
    f.bar->setValue(InfoItem::PixelValue, {});
    QCOMPARE(geometries(), before);

    // A text that is wider than ever makes room for itself, and keeps it.
    f.bar->setValue(InfoItem::Delivered, countText(123456789u));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    const QLabel* const delivered = f.label(InfoItem::Delivered);
    const int grown = delivered->width();
    QVERIFY(grown >= delivered->fontMetrics().horizontalAdvance(delivered->text()));
    f.bar->setValue(InfoItem::Delivered, countText(1u));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    QCOMPARE(delivered->width(), grown);
}

void InfoBarTest::narrowWindowLeavesOutTheLeastImportant()
{
    const InfoItem leastFirst[] = {InfoItem::Format,     InfoItem::Filled,    InfoItem::Queued,  InfoItem::Delivered,
                                   InfoItem::Dimensions, InfoItem::SetupMode, InfoItem::Dropped, InfoItem::FrameRate,
                                   InfoItem::Zoom,       InfoItem::PixelValue};
    Fixture f;
    QVERIFY(f.bar->minimumSizeHint().width() < 100);
    f.show(1600);
    QCOMPARE(f.inView().size(), 10);
    for (int width = 1600; width > 40; width -= 9) {
        f.show(width);
        QStringList left = f.inView();
        const int count = left.size();
        QCOMPARE(count == 10, f.bar->width() >= f.bar->sizeHint().width());
        for (const QLabel* const label : f.bar->findChildren<QLabel*>())
            QVERIFY(label->isHidden() || f.bar->rect().contains(label->geometry()));
        if (left == QStringList{infoName(InfoItem::Zoom)})
            continue; // too narrow for the pixel value
        for (int i = 10 - count; i < 10; ++i)
            QVERIFY2(left.removeOne(infoName(leastFirst[i])), qPrintable(infoName(leastFirst[i])));
    }
    QCOMPARE(f.inView().size(), 0);
}

void InfoBarTest::messageKeepsRoom()
{
    Fixture f;
    f.show(f.bar->sizeHint().width() + 40);
    const int wide = f.bar->width();
    const QString message = QStringLiteral("Setting up the camera");
    f.statusBar.showMessage(message);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    QVERIFY(f.bar->x() > f.statusBar.fontMetrics().horizontalAdvance(message));
    QVERIFY(!f.inView().contains(infoName(InfoItem::Format)));
    QVERIFY(f.inView().contains(infoName(InfoItem::PixelValue)));
    f.statusBar.clearMessage();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    QCOMPARE(f.bar->width(), wide);
    QCOMPARE(f.inView().size(), 10);
}

void InfoBarTest::droppedIsAmberWhileItRises()
{
    Fixture f;
    for (const QColor& window : {QColor(0xEF, 0xEF, 0xEF), QColor(0x2B, 0x2B, 0x2B)}) {
        f.statusBar.setPalette(QPalette(window, window));
        const QColor usual = f.bar->palette().color(QPalette::WindowText);
        f.bar->setValue(InfoItem::Dropped, countText(std::nullopt));
        // How fast it came to be 9 is not known; 0: started anew.
        for (const auto& [count, isAlarm] :
             {std::pair(9u, false), {10u, true}, {10u, false}, {0u, false}, {1u, true}}) {
            f.bar->setValue(InfoItem::Dropped, countText(count));
            const QColor shown = f.label(InfoItem::Dropped)->palette().color(QPalette::WindowText);
            QCOMPARE(shown, isAlarm ? alarmColor(f.bar->palette()) : usual);
            QVERIFY(!isAlarm || (qGray(shown.rgb()) < 128) != (qGray(window.rgb()) < 128));
        }
    }
}

QTEST_MAIN(InfoBarTest)
#include "InfoBarTest.moc"
