// SPDX-License-Identifier: MIT
// Tests what the image information bar says, how it keeps still, and what it leaves out of a narrow window.
#include "window/InfoBar.h"

#include <QtCore/QSet>
#include <QtTest/QTest>
#include <QtWidgets/QAction>
#include <QtWidgets/QLabel>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QToolButton>

#include <cmath>
#include <limits>
#include <memory>

using namespace Vistrel;

Q_DECLARE_METATYPE(Vistrel::InfoItem)

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

std::optional<PixVal> color(std::uint32_t r, std::uint32_t g, std::uint32_t b)
{
    return PixVal{false, 0, true, r, g, b};
}

struct Fixture
{
    Fixture()
    {
        bar = new InfoBar(&statusBar);
        statusBar.addPermanentWidget(bar);
        bar->setImage(frameOf(1920, 1080, BayerRG12));
        bar->setPixel({7, 5}, mono(17));
    }
    void showAll()
    {
        for (std::size_t i = 0; i < infoItemCount; ++i)
            bar->setItemShown(InfoItem(i), true);
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

// Relative luminance and contrast as the web's accessibility guidelines define them.
double luminance(const QColor& color)
{
    const auto linear = [](double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& a, const QColor& b)
{
    const double first = luminance(a) + 0.05;
    const double second = luminance(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

} // namespace

class InfoBarTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts_data();
    void texts();
    void reportTellsWhatIsKnown();
    void nothingMovesWhileDigitsChange();
    void narrowWindowLeavesOutTheLeastImportant();
    void widePixelValueLeavesTheZoomInView();
    void messageKeepsRoom();
    void droppedIsAmberWhileItRises();
    void userActions();
};

void InfoBarTest::texts_data()
{
    QTest::addColumn<InfoItem>("item");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("text");
    const auto row = [](const char* name, InfoItem item, const QString& value, const char* text) {
        QTest::newRow(name) << item << value << QString::fromUtf8(text);
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();

    row("mode", InfoItem::SetupMode, QStringLiteral("Fast & %1 <b>"), "Mode: Fast & %1 <b>");
    row("no mode", InfoItem::SetupMode, {}, "Mode: –");
    row("long mode", InfoItem::SetupMode, QString(33, QLatin1Char('m')), "Mode: mmmmmmmmmmmmmmmmmmmmmmmmmmmmmmm…");
    row("frame rate", InfoItem::FrameRate, frameRateText(29.966), "29.97 fps");
    row("no frames a second", InfoItem::FrameRate, frameRateText(0.0), "0.00 fps");
    row("no frame rate", InfoItem::FrameRate, frameRateText(nan), "– fps");
    row("negative frame rate", InfoItem::FrameRate, frameRateText(-1.0), "– fps");
    row("queued", InfoItem::Queued, countText(4u), "Queued: 4");
    row("filled", InfoItem::Filled, countText(0u), "Filled: 0");
    row("dropped", InfoItem::Dropped, countText(std::nullopt), "Dropped: –");
    row("delivered", InfoItem::Delivered, countText(0xFFFFFFFFu), "Delivered: 4294967295");
    row("12 bit", InfoItem::Dimensions, dimensionsText(frameOf(1920, 1080, BayerRG12)), "1920 x 1080 x 12 bit");
    row("no image", InfoItem::Dimensions, dimensionsText({}), "–");
    row("no width", InfoItem::Dimensions, dimensionsText(frameOf(0, 4, Mono8)), "–");
    row("mosaic", InfoItem::Format, formatText(frameOf(4, 4, BayerRG12)), "BayerRG12");
    row("packed", InfoItem::Format, formatText(frameOf(4, 4, Mono10p_NoSwap)), "Mono10p_NoSwap");
    row("color", InfoItem::Format, formatText(frameOf(4, 4, BGR10p32)), "BGR10p32");
    row("unknown format", InfoItem::Format, formatText(frameOf(4, 4, 11)), "–");
    row("zoom", InfoItem::Zoom, zoomText(0.125), "12.5 %");
    row("no zoom", InfoItem::Zoom, zoomText(0.0), "– %");
    row("pixel", InfoItem::PixelValue, pixelText({0, 12}, mono(4095)), "(0, 12) 4095");
    row("color pixel", InfoItem::PixelValue, pixelText({3, 4}, color(1, 2, 65535)), "(3, 4) R: 1 G: 2 B: 65535");
    row("largest value", InfoItem::PixelValue, pixelText({0, 0}, mono(0xFFFFFFFF)), "(0, 0) 4294967295");
    row("unread pixel", InfoItem::PixelValue, pixelText({3, 4}, std::nullopt), "(3, 4) –");
    row("neither kind", InfoItem::PixelValue, pixelText({3, 4}, PixVal()), "(3, 4) –");
    row("left of the image", InfoItem::PixelValue, pixelText({-1, 4}, mono(1)), "–");
}

void InfoBarTest::texts()
{
    QFETCH(InfoItem, item);
    QFETCH(QString, value);
    QTEST(infoText(item, value), "text");
}

void InfoBarTest::reportTellsWhatIsKnown()
{
    Fixture f;
    f.bar->setFrameRate(25.0);
    f.bar->setSetupMode(QStringLiteral("Two\nlines"));
    f.bar->setDropped(3u);
    f.bar->setDropped(std::nullopt);
    f.bar->setZoom(1.0);
    const QString image = QStringLiteral("Dimensions: 1920 x 1080 x 12 bit\nImage Format: BayerRG12\n");
    const QString head = QStringLiteral("Playback Mode: Two lines\nFrame Rate: 25.00 fps\n");
    const QString tail = QStringLiteral("Zoom Level: 100.0 %\nPixel Value: (7, 5) 17\n");
    QCOMPARE(f.bar->report(), head + image + tail);
    QVERIFY(!f.bar->isItemShown(InfoItem::Zoom));
    f.bar->setImage({});
    QCOMPARE(f.bar->report(), head + tail);
}

void InfoBarTest::nothingMovesWhileDigitsChange()
{
    Fixture f;
    f.showAll();
    f.show(2000);
    const auto geometries = [&f] {
        QList<QRect> rects;
        for (const QLabel* const label : f.bar->findChildren<QLabel*>())
            rects.append(label->geometry());
        return rects;
    };
    const auto set = [&f](double rate, std::size_t count, double zoom, const PixPos& pixel, std::uint32_t value) {
        f.bar->setFrameRate(rate);
        f.bar->setQueued(count);
        f.bar->setDropped(count);
        f.bar->setZoom(zoom);
        f.bar->setPixel(pixel, mono(value));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    };
    const QList<QRect> before = geometries();
    set(1.11, 1, 0.011, {1, 1}, 1);
    QCOMPARE(geometries(), before);
    set(888.88, 88, 8.888, {1919, 1079}, 4095);
    QCOMPARE(geometries(), before);
    f.bar->setPixel({}, std::nullopt);
    QCOMPARE(geometries(), before);

    // A text that is wider than ever makes room for itself, and keeps it.
    f.bar->setDelivered(123456789u);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    const QLabel* const delivered = f.label(InfoItem::Delivered);
    const int grown = delivered->width();
    QVERIFY(grown >= delivered->fontMetrics().horizontalAdvance(delivered->text()));
    f.bar->setDelivered(1u);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    QCOMPARE(delivered->width(), grown);
}

void InfoBarTest::narrowWindowLeavesOutTheLeastImportant()
{
    const InfoItem leastFirst[] = {InfoItem::Format,     InfoItem::Filled,    InfoItem::Queued,  InfoItem::Delivered,
                                   InfoItem::Dimensions, InfoItem::SetupMode, InfoItem::Dropped, InfoItem::FrameRate,
                                   InfoItem::Zoom,       InfoItem::PixelValue};
    Fixture f;
    f.showAll();
    QVERIFY(f.bar->minimumSizeHint().width() < 100);
    QSet<int> counts;
    const auto verify = [&](int width) {
        f.show(width);
        QStringList left = f.inView();
        const int count = left.size();
        counts.insert(count);
        QCOMPARE(count == 10, f.bar->width() >= f.bar->sizeHint().width());
        for (const QLabel* const label : f.bar->findChildren<QLabel*>())
            QVERIFY(label->isHidden() || f.bar->rect().contains(label->geometry()));
        if (left == QStringList{infoName(InfoItem::Zoom)})
            return; // too narrow for the pixel value
        for (int i = 10 - count; i < 10; ++i)
            QVERIFY2(left.removeOne(infoName(leastFirst[i])), qPrintable(infoName(leastFirst[i])));
    };
    for (int width = 1600; width > 40; width -= 9)
        verify(width);
    QCOMPARE(counts.size(), 11); // one at a time, from all to none
    for (int width = 40; width < 1600; width += 100)
        verify(width);
    QCOMPARE(f.inView().size(), 10);
}

void InfoBarTest::widePixelValueLeavesTheZoomInView()
{
    Fixture f;
    f.bar->setItemShown(InfoItem::Zoom, true);
    f.show(250);
    const QStringList zoom{infoName(InfoItem::Zoom)};
    QCOMPARE(f.inView(), zoom);
    f.bar->setItemShown(InfoItem::PixelValue, true);
    f.bar->setImage(frameOf(10000, 10000, RGB16));
    f.show(250);
    QCOMPARE(f.inView(), zoom);
    f.show(900);
    QCOMPARE(f.inView(), zoom + QStringList{infoName(InfoItem::PixelValue)});
}

void InfoBarTest::messageKeepsRoom()
{
    Fixture f;
    f.showAll();
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
    f.showAll();
    for (const QColor& window : {QColor(0xEF, 0xEF, 0xEF), QColor(0x2B, 0x2B, 0x2B)}) {
        f.statusBar.setPalette(QPalette(window, window));
        const QColor usual = f.bar->palette().color(QPalette::WindowText);
        const auto shown = [&f] { return f.label(InfoItem::Dropped)->palette().color(QPalette::WindowText); };
        f.bar->setDropped(std::nullopt);
        f.bar->setDropped(9u); // how fast it came to be so many is not known
        QCOMPARE(shown(), usual);
        f.bar->setDropped(10u);
        QCOMPARE(shown(), alarmColor(f.bar->palette()));
        QVERIFY(contrast(shown(), window) >= 4.5);
        QVERIFY(shown() != usual);
        f.bar->setDropped(10u);
        QCOMPARE(shown(), usual);
        f.bar->setDropped(0u); // started anew
        QCOMPARE(shown(), usual);
        f.bar->setDropped(1u);
        QVERIFY(shown() != usual);
    }
}

void InfoBarTest::userActions()
{
    Fixture f;
    f.showAll();
    f.show(3000);
    auto action = std::make_unique<QAction>(QStringLiteral("Gain"));
    f.bar->addUserAction(action.get());
    const auto button = [&f] { return f.bar->findChild<QToolButton*>(); };
    QVERIFY(button()->isVisible());
    QVERIFY(button()->x() > f.label(InfoItem::PixelValue)->geometry().right());
    action->setVisible(false);
    QVERIFY(!button()->isVisible());
    action->setVisible(true);
    QVERIFY(button()->isVisible());

    // Its click may end it.
    connect(action.get(), &QAction::triggered, this, [&action] { action.reset(); });
    QTest::mouseClick(button(), Qt::LeftButton);
    QVERIFY(!action);
    QTRY_VERIFY(!button());
    QCOMPARE(f.inView().size(), 10);
}

QTEST_MAIN(InfoBarTest)
#include "InfoBarTest.moc"
