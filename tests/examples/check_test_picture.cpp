// SPDX-License-Identifier: MIT
// Checks that two screenshots show the viewer's test picture, and that it moved between them:
// check_test_picture WIDTHxHEIGHT SHOT SHOT
#include "TestPicture.h"

#include <QtCore/QStringList>
#include <QtGui/QGuiApplication>

#include <cstdio>
#include <cstdlib>

namespace {

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

// A null image without the picture. The ball and the counter are not in `still`, and make up less than 2 % of it.
QImage pictureIn(const QString& fileName, const QImage& still)
{
    const QImage shot = QImage(fileName).convertToFormat(QImage::Format_RGB32);
    const QImage top = still.copy(0, 0, still.width(), 1);
    for (int y = 0; y + still.height() <= shot.height(); ++y) {
        for (int x = 0; x + still.width() <= shot.width(); ++x) {
            if (shot.pixel(x, y) != top.pixel(0, 0) || shot.copy(x, y, top.width(), 1) != top)
                continue;
            const QImage picture = shot.copy(QRect(QPoint(x, y), still.size()));
            if (percentDifferent(picture, still) < 2)
                return picture;
        }
    }
    std::printf("%s does not show the picture\n", qPrintable(fileName));
    return {};
}

} // namespace

int main(int argc, char* argv[])
{
    const QGuiApplication application(argc, argv); // the picture has text
    const QStringList arguments = QCoreApplication::arguments();
    const QStringList numbers = arguments.value(1).split(QLatin1Char('x'));
    const QSize size(numbers.value(0).toInt(), numbers.value(1).toInt());
    const QImage still =
        drawTestPicture(size, QStringLiteral("RGB8 ") + arguments[1]).still.convertToFormat(QImage::Format_RGB32);
    const QImage first = pictureIn(arguments[2], still);
    const QImage second = pictureIn(arguments[3], still);
    if (first.isNull() || second.isNull())
        return 1;
    const double moved = percentDifferent(first, second);
    std::printf("moved: %.2f %%\n", moved);
    return moved > 0.05 ? 0 : 1;
}
