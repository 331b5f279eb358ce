// SPDX-License-Identifier: MIT
// Reads grey pictures of more than 8 bits a pixel, whose lower bits Qt would drop.
#include "DeepPgm.h"

#include <QtCore/QFile>
#include <QtCore/QtEndian>

#include <cctype>

namespace {

bool isSpace(char character)
{
    return std::isspace(static_cast<unsigned char>(character)) != 0;
}

// The number at `position`, past white space and comments; 0 when there is none of up to five digits.
int readNumber(const QByteArray& bytes, int& position)
{
    while (position < bytes.size() && (isSpace(bytes[position]) || bytes[position] == '#')) {
        if (bytes[position] == '#')
            position = qMax(bytes.indexOf('\n', position), position);
        ++position;
    }
    const int start = position;
    while (position < bytes.size() && bytes[position] >= '0' && bytes[position] <= '9')
        ++position;
    return position - start <= 5 ? bytes.mid(start, position - start).toInt() : 0;
}

} // namespace

QImage readDeepPgm(const QString& fileName, Vistrel::Format* format)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly) || file.peek(2) != "P5")
        return {};
    const QByteArray bytes = file.readAll();
    int position = 2;
    const int width = readNumber(bytes, position);
    const int height = readNumber(bytes, position);
    const int maximum = readNumber(bytes, position);
    ++position; // the single white-space character before the pixels
    if (width == 0 || height == 0 || maximum < 256 || maximum > 65535 ||
        qint64(width) * height * 2 > qint64(bytes.size()) - position)
        return {};

    QImage image(width, height, QImage::Format_Grayscale16);
    for (int y = 0; y < image.height(); ++y)
        qFromBigEndian<quint16>(bytes.constData() + position + qint64(y) * width * 2, width, image.scanLine(y));
    *format = maximum < 1024    ? Vistrel::Mono10
              : maximum < 4096  ? Vistrel::Mono12
              : maximum < 16384 ? Vistrel::Mono14
                                : Vistrel::Mono16;
    return image;
}
