// SPDX-License-Identifier: MIT
// The picture that the pattern source shows: colour wheel, bars, star, grey steps and ramps.
#include "TestPicture.h"

#include <QtCore/QtMath>
#include <QtGui/QConicalGradient>
#include <QtGui/QFontDatabase>
#include <QtGui/QLinearGradient>
#include <QtGui/QPainter>
#include <QtGui/QRadialGradient>

namespace {

// All coordinates are in a frame of 1280 x 960, which is then scaled.
constexpr QSizeF layout(1280, 960);
constexpr QPointF wheelCentre(360, 370);
constexpr double wheelRadius = 270;
constexpr double orbitRadius = 305;
constexpr double ballRadius = 26;
constexpr QRectF bars(740, 60, 500, 210);
constexpr QPointF starCentre(860, 420);
constexpr double starRadius = 120;
constexpr QRectF steps(1010, 300, 230, 240);
constexpr QRectF labelRect(740, 580, 500, 50);
constexpr QRectF digitRect(740, 635, 26, 50); // the first of six
constexpr QRectF ramps(40, 740, 1200, 180);
constexpr QRgb background = 0xFF1B1F26;

QFont textFont()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(40);
    font.setStyleStrategy(QFont::ForceOutline);
    return font;
}

void drawWheel(QPainter& painter)
{
    QConicalGradient hues(wheelCentre, 90);
    for (int i = 0; i <= 6; ++i)
        hues.setColorAt(i / 6.0, QColor::fromHsv(i % 6 * 60, 255, 255));
    painter.setBrush(hues);
    painter.drawEllipse(wheelCentre, wheelRadius, wheelRadius);
    QRadialGradient white(wheelCentre, wheelRadius);
    white.setColorAt(0, QColor(255, 255, 255));
    white.setColorAt(1, QColor(255, 255, 255, 0));
    painter.setBrush(white);
    painter.drawEllipse(wheelCentre, wheelRadius, wheelRadius);
}

void drawBars(QPainter& painter)
{
    static constexpr Qt::GlobalColor colors[] = {Qt::white,   Qt::yellow, Qt::cyan, Qt::green,
                                                 Qt::magenta, Qt::red,    Qt::blue, Qt::black};
    const double width = bars.width() / 8;
    for (int i = 0; i < 8; ++i)
        painter.fillRect(QRectF(bars.x() + i * width, bars.y(), width, bars.height()), colors[i]);
}

void drawStar(QPainter& painter)
{
    const QRectF disc(starCentre.x() - starRadius, starCentre.y() - starRadius, 2 * starRadius, 2 * starRadius);
    painter.setBrush(Qt::black);
    painter.drawEllipse(disc);
    painter.setBrush(Qt::white);
    for (int spoke = 0; spoke < 36; ++spoke)
        painter.drawPie(disc, spoke * 160, 80); // sixteenths of a degree
}

void drawSteps(QPainter& painter)
{
    const QSizeF cell = steps.size() / 4;
    for (int i = 0; i < 16; ++i) {
        const int column = i % 4;
        const int row = i / 4;
        const QPointF corner(steps.x() + column * cell.width(), steps.y() + row * cell.height());
        painter.fillRect(QRectF(corner, cell), QColor(i * 17, i * 17, i * 17));
    }
}

void drawRamps(QPainter& painter)
{
    static constexpr Qt::GlobalColor colors[] = {Qt::white, Qt::red, Qt::green, Qt::blue};
    const double height = ramps.height() / 4;
    for (int i = 0; i < 4; ++i) {
        QLinearGradient ramp(ramps.topLeft(), ramps.topRight());
        ramp.setColorAt(0, Qt::black);
        ramp.setColorAt(1, colors[i]);
        painter.fillRect(QRectF(ramps.x(), ramps.y() + i * height, ramps.width(), height), ramp);
    }
}

QImage drawBall(int diameter)
{
    QImage ball(diameter, diameter, QImage::Format_RGBA64_Premultiplied);
    ball.fill(Qt::transparent);
    QPainter painter(&ball);
    QRadialGradient shade(QPointF(0.35, 0.35) * diameter, 0.7 * diameter);
    shade.setColorAt(0, Qt::white);
    shade.setColorAt(1, QColor(255, 120, 0));
    painter.setPen(Qt::NoPen);
    painter.setBrush(shade);
    painter.drawEllipse(ball.rect());
    return ball;
}

} // namespace

TestPicture drawTestPicture(const QSize& size, const QString& label)
{
    const double scale = qMin(size.width() / layout.width(), size.height() / layout.height());
    const QPointF corner((size.width() - layout.width() * scale) / 2, (size.height() - layout.height() * scale) / 2);
    TestPicture picture;

    picture.still = QImage(size, QImage::Format_RGBX64);
    picture.still.fill(QColor(background));
    QPainter painter(&picture.still);
    painter.translate(corner);
    painter.scale(scale, scale);
    painter.setPen(Qt::NoPen);
    painter.setRenderHint(QPainter::Antialiasing);
    drawWheel(painter);
    drawBars(painter);
    drawStar(painter);
    drawSteps(painter);
    drawRamps(painter);
    painter.setPen(Qt::white);
    painter.setFont(textFont());
    painter.drawText(labelRect, Qt::AlignVCenter, label);
    // The outermost pixels show whether an edge is cut off.
    painter.resetTransform();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(0, 0, size.width() - 1, size.height() - 1);

    picture.ball = drawBall(qMax(1, qRound(2 * ballRadius * scale)));
    picture.orbitCentre = corner + wheelCentre * scale;
    picture.orbitRadius = orbitRadius * scale;

    const QSize digitSize(qMax(1, int(digitRect.width() * scale)), qMax(1, int(digitRect.height() * scale)));
    for (int digit = 0; digit < 10; ++digit) {
        QImage& image = picture.digits[std::size_t(digit)];
        image = QImage(digitSize, QImage::Format_RGBX64);
        image.fill(QColor(background));
        QPainter digitPainter(&image);
        digitPainter.scale(scale, scale);
        digitPainter.setRenderHint(QPainter::Antialiasing);
        digitPainter.setPen(Qt::white);
        digitPainter.setFont(textFont());
        digitPainter.drawText(QRectF(QPointF(0, 0), digitRect.size()), Qt::AlignCenter, QString::number(digit));
    }
    picture.counter = (corner + digitRect.topLeft() * scale).toPoint();
    return picture;
}
