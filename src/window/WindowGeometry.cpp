// SPDX-License-Identifier: MIT
// Place and size of a display window, bounded to what a screen system can draw.
#include "window/Window_p.h"

#include "base/TextOut.h"

#include <QtCore/QDataStream>
#include <QtCore/QRect>
#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace Vistrel {

namespace {

// X11 counts 32,767 device pixels in a window.
int longestSide()
{
    return static_cast<int>(32767 / qApp->devicePixelRatio());
}

QSize boundedSize(std::int64_t width, std::int64_t height)
{
    const auto bounded = [](std::int64_t side) {
        return static_cast<int>(std::clamp<std::int64_t>(side, 1, longestSide()));
    };
    return {bounded(width), bounded(height)};
}

// Moves the place to the nearest one that meets a screen. 64 bits hold every distance.
QRect boundedPlace(int x, int y, const QSize& size)
{
    QPoint nearest(0, 0);
    std::int64_t least = std::numeric_limits<std::int64_t>::max();
    for (const QScreen* const screen : QGuiApplication::screens()) {
        const QRect area = screen->geometry();
        const QPoint corner(std::clamp(x, area.left() - size.width() + 1, area.right()),
                            std::clamp(y, area.top() - size.height() + 1, area.bottom()));
        const std::int64_t way = std::abs(std::int64_t(corner.x()) - x) + std::abs(std::int64_t(corner.y()) - y);
        if (way < least) {
            least = way;
            nearest = corner;
        }
    }
    return {nearest, size};
}

bool canBeShown(const QRect& rectangle)
{
    const auto isLength = [](std::int64_t first, std::int64_t last) {
        return last - first + 1 >= 1 && last - first + 1 <= longestSide();
    };
    const QList<QScreen*> screens = QGuiApplication::screens();
    return isLength(rectangle.left(), rectangle.right()) && isLength(rectangle.top(), rectangle.bottom()) &&
           std::any_of(screens.begin(), screens.end(),
                       [&](const QScreen* screen) { return screen->geometry().intersects(rectangle); });
}

// Qt itself checks only the magic number and the version, and reads missing bytes as zeros.
bool isUsable(const QByteArray& geometry)
{
    constexpr int sizes[] = {0, 46, 50, 66}; // bytes, by major version
    QDataStream stream(geometry);
    quint32 magic = 0;
    quint16 version = 0, minorVersion = 0;
    QRect frame, normal, client;
    stream >> magic >> version >> minorVersion >> frame >> normal;
    if (stream.status() != QDataStream::Ok || magic != 0x1D9D0CB || version < 1 || version > 3 ||
        geometry.size() != sizes[version])
        return false;
    if (version == 3) {
        stream.skipRawData(10); // screen, its width and the window's state
        stream >> client;
    }
    return canBeShown(frame) && (normal == QRect() || canBeShown(normal)) && (version < 3 || canBeShown(client));
}

} // namespace

void Window::move(int x, int y)
{
    m_data->tell("move", [=](WindowQt& w) { w.move(boundedPlace(x, y, w.frameGeometry().size()).topLeft()); });
}

void Window::resize(int width, int height)
{
    m_data->tell("resize", [=](WindowQt& w) { w.resize(boundedSize(width, height)); });
}

void Window::getGeometry(int& x, int& y, int& width, int& height) const
{
    m_data->ask("getGeometry", [](WindowQt& w) { return w.geometry(); }).getRect(&x, &y, &width, &height);
}

void Window::getFrameGeometry(int& x, int& y, int& width, int& height) const
{
    m_data->ask("getFrameGeometry", [](WindowQt& w) { return w.frameGeometry(); }).getRect(&x, &y, &width, &height);
}

void Window::setGeometry(int x, int y, int width, int height)
{
    m_data->tell("setGeometry", [=](WindowQt& w) { w.setGeometry(boundedPlace(x, y, boundedSize(width, height))); });
}

void Window::setFrameGeometry(int x, int y, int width, int height)
{
    m_data->tell("setFrameGeometry", [=](WindowQt& w) {
        const QSize frame = w.frameGeometry().size() - w.size();
        const QSize outer = boundedSize(width, height);
        w.move(boundedPlace(x, y, outer).topLeft());
        w.resize(boundedSize(outer.width() - frame.width(), outer.height() - frame.height()));
    });
}

bool Window::saveGeometry(char* const buffer, std::size_t* const size) const
{
    return m_data->ask("saveGeometry", [=](WindowQt& w) {
        return latin1Out(QString::fromLatin1(w.saveGeometry().toHex()), buffer, size);
    });
}

bool Window::restoreGeometry(const char* const text)
{
    return m_data->ask("restoreGeometry", [=](WindowQt& w) {
        const QByteArray hexadecimal = QByteArray(text).toLower();
        const QByteArray geometry = QByteArray::fromHex(hexadecimal);
        return geometry.toHex() == hexadecimal && isUsable(geometry) && w.restoreGeometry(geometry);
    });
}

} // namespace Vistrel
