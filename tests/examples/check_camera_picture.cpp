// SPDX-License-Identifier: MIT
// Checks that a screenshot of the viewer shows the picture of Aravis' fake camera: a diagonal ramp of 512 x 512 pixels.
#include <QtGui/QImage>

#include <cstdio>
#include <set>

int main(int argc, char* argv[])
{
    if (argc != 2)
        return 2;
    const QImage shot(QString::fromLocal8Bit(argv[1]));
    if (shot.width() < 512 || shot.height() < 450)
        return 2;
    // Well inside the picture, which is in the middle.
    const QRect area(shot.width() / 2 - 200, shot.height() / 2 - 200, 400, 400);
    std::set<int> levels;
    for (int y = area.top(); y < area.bottom(); ++y) {
        for (int x = area.left(); x < area.right(); ++x) {
            const QRgb pixel = shot.pixel(x, y);
            const int level = qRed(pixel);
            const int next = qRed(shot.pixel(x + 1, y));
            levels.insert(level);
            // One level more with each pixel to the right and with each row down, but for the wrap to 0.
            const bool isRamp = next == level + 1 || (level >= 254 && next == 0);
            if (pixel != qRgb(level, level, level) || !isRamp || qRed(shot.pixel(x, y + 1)) != next) {
                std::fprintf(stderr, "no grey ramp at (%d, %d)\n", x, y);
                return 1;
            }
        }
    }
    return levels.size() >= 255 ? 0 : 1;
}
