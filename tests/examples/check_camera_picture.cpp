// SPDX-License-Identifier: MIT
// Checks that a screenshot of the viewer shows the picture of Aravis' fake camera: a diagonal ramp of 512 x 512 pixels.
#include <QtGui/QImage>

#include <cstdio>
#include <set>

namespace {

bool fail(const char* why, int x, int y)
{
    std::fprintf(stderr, "at (%d, %d): %s\n", x, y, why);
    return false;
}

// One level more with each pixel to the right, and the same with each row down, but for the wrap to 0.
bool checkRamp(const QImage& shot, const QRect& area)
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

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 2)
        return 2;
    const QImage shot(QString::fromLocal8Bit(argv[1]));
    if (shot.width() < 512 || shot.height() < 450)
        return 2;
    // Well inside the picture, which is in the middle.
    return checkRamp(shot, QRect(shot.width() / 2 - 200, shot.height() / 2 - 200, 400, 400)) ? 0 : 1;
}
