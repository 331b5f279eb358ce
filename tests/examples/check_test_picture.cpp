// SPDX-License-Identifier: MIT
// Checks that two screenshots of a whole screen show the viewer's test picture, and that it moved between them:
// check_test_picture WIDTHxHEIGHT SHOT SHOT
#include "TestPicture.h"

#include <QtCore/QStringList>
#include <QtGui/QGuiApplication>

#include <cstdio>
#include <cstdlib>

namespace {

// Where the picture's frame of white pixels begins, or a null image.
QImage pictureIn(const QImage& shot, const QSize& size)
{
    const auto isFrame = [&](int left, int top) {
        for (int x = 0; x < size.width(); ++x) {
            if (shot.pixel(left + x, top) != 0xFFFFFFFF || shot.pixel(left + x, top + size.height() - 1) != 0xFFFFFFFF)
                return false;
        }
        for (int y = 0; y < size.height(); ++y) {
            if (shot.pixel(left, top + y) != 0xFFFFFFFF || shot.pixel(left + size.width() - 1, top + y) != 0xFFFFFFFF)
                return false;
        }
        return true;
    };
    for (int top = 0; top + size.height() <= shot.height(); ++top) {
        for (int left = 0; left + size.width() <= shot.width(); ++left) {
            if (isFrame(left, top))
                return shot.copy(QRect(QPoint(left, top), size));
        }
    }
    return {};
}

double percentDifferent(const QImage& a, const QImage& b)
{
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            count += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q)) > 6;
        }
    }
    return 100.0 * count / (a.width() * a.height());
}

} // namespace

int main(int argc, char* argv[])
{
    const QGuiApplication application(argc, argv); // the picture has text
    const QStringList arguments = QCoreApplication::arguments();
    const QStringList numbers = arguments.value(1).split(QLatin1Char('x'));
    const QSize size(numbers.value(0).toInt(), numbers.value(1).toInt());
    if (arguments.size() != 4 || size.isEmpty())
        return 2;
    const QImage first = pictureIn(QImage(arguments[2]).convertToFormat(QImage::Format_RGB32), size);
    const QImage second = pictureIn(QImage(arguments[3]).convertToFormat(QImage::Format_RGB32), size);
    if (first.isNull() || second.isNull()) {
        std::puts("The picture is not on the screen");
        return 1;
    }
    const QImage still = drawTestPicture(size, QStringLiteral("RGB8 ") + arguments[1]).still;
    // The ball and the counter are not in the still picture, and make up less than 2 % of it.
    const double firstPercent = percentDifferent(first, still);
    const double secondPercent = percentDifferent(second, still);
    const double moved = percentDifferent(first, second);
    std::printf("Differs from the still picture: %.2f %% and %.2f %%; moved: %.2f %%\n", firstPercent, secondPercent,
                moved);
    return firstPercent < 2 && secondPercent < 2 && moved > 0.05 ? 0 : 1;
}
