// SPDX-License-Identifier: MIT
// Checks that a screenshot of the viewer shows the picture of Aravis' fake camera: a diagonal ramp of 512 x 512 pixels.
#include <QtGui/QImage>

#include <cstdio>
#include <cstring>
#include <set>

namespace {

constexpr int pictureSize = 512;

bool fail(const char* why, int x, int y)
{
    std::fprintf(stderr, "at (%d, %d): %s\n", x, y, why);
    return false;
}

// Where the picture begins, or -1. Nothing but background is left of it and, up to a scroll bar, right of it. A level
// of the picture may be the background's, but not in the same column of several rows.
int leftOfPicture(const QImage& shot)
{
    constexpr int barWidth = 24;
    const QRgb background = shot.pixel(0, shot.height() / 2);
    const auto isBackground = [&](int x) {
        for (const int dy : {-2, -1, 0, 1, 2}) {
            if (shot.pixel(x, shot.height() / 2 + dy) != background)
                return false;
        }
        return true;
    };
    int left = 0;
    while (left < shot.width() && isBackground(left))
        ++left;
    for (int x = left + pictureSize; x < shot.width() - barWidth; ++x) {
        if (!isBackground(x))
            return -1;
    }
    return left + pictureSize + barWidth <= shot.width() ? left : -1;
}

// One level more with each pixel to the right, and the same with each row down, but for the wrap to 0.
bool checkGray(const QImage& shot, const QRect& area)
{
    std::set<int> levels;
    for (int y = area.top(); y < area.bottom(); ++y) {
        for (int x = area.left(); x < area.right(); ++x) {
            const QRgb pixel = shot.pixel(x, y);
            const int level = qRed(pixel);
            levels.insert(level);
            if (qGreen(pixel) != level || qBlue(pixel) != level)
                return fail("not grey", x, y);
            const int right = qRed(shot.pixel(x + 1, y));
            if (right != level + 1 && !(level >= 254 && right == 0))
                return fail("not one level more to the right", x, y);
            if (qRed(shot.pixel(x, y + 1)) != right)
                return fail("not the same ramp in the next row", x, y);
        }
    }
    return levels.size() >= 255 || fail("too few levels", area.left(), area.top());
}

// From blue over cyan, green and yellow to red with each pixel to the right; swapped channels would run the other way.
// Looked at from cyan to yellow, where green is full, red rises and blue falls.
bool checkColor(const QImage& shot, const QRect& area)
{
    int rising = 0;
    int falling = 0;
    for (int y = area.top(); y < area.bottom(); ++y) {
        for (int x = area.left(); x < area.right(); ++x) {
            const QRgb pixel = shot.pixel(x, y);
            const QRgb right = shot.pixel(x + 1, y);
            if (shot.pixel(x, y + 1) != right)
                return fail("not the same ramp in the next row", x, y);
            if (qGreen(pixel) < 255 || qGreen(right) < 255)
                continue;
            rising += qRed(right) > qRed(pixel) && qBlue(right) < qBlue(pixel) ? 1 : 0;
            falling += qRed(right) < qRed(pixel) && qBlue(right) > qBlue(pixel) ? 1 : 0;
        }
    }
    std::printf("towards red: %d steps, towards blue: %d\n", rising, falling);
    return rising > area.width() * area.height() / 8 && falling == 0;
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 3)
        return 2;
    const QImage shot(QString::fromLocal8Bit(argv[1]));
    if (shot.width() < pictureSize || shot.height() < 450)
        return 2;
    const int left = leftOfPicture(shot);
    if (left < 0 && !fail("no picture in the middle", left, shot.height() / 2))
        return 1;
    // Well inside the picture, whatever the height of the bars.
    const QRect area(left + 1, shot.height() / 2 - 200, pictureSize - 2, 400);
    const bool isColor = std::strcmp(argv[2], "color") == 0;
    return (isColor ? checkColor(shot, area) : checkGray(shot, area)) ? 0 : 1;
}
