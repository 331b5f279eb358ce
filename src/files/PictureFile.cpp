// SPDX-License-Identifier: MIT
// Images of the toolkit in files, read with suspicion and written whole or not at all.
#include "files/PictureFile.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtCore/QtEndian>
#include <QtGui/QImageReader>
#include <QtGui/QImageWriter>

namespace Vistrel {

namespace {

constexpr qint64 mostPixels = qint64{1} << 28;  // 2 GiB in the deepest format
constexpr qint64 longestJpeg = qint64{1} << 30; // is read into memory
constexpr qint64 mostPixelsPerByte = 8 * 1032;  // the most that PNG can hold: deflate's limit, at one bit a pixel
constexpr int jpegQuality = 95;

// Null when the name is null, or not text in the local encoding and so would name another file.
QString decodedName(const char* fileName)
{
    const QString name = QFile::decodeName(fileName);
    return QFile::encodeName(name) == fileName ? name : QString();
}

QByteArray toolkitName(PictureType type)
{
    return type == PictureType::Png ? "png" : type == PictureType::Jpeg ? "jpg" : "bmp";
}

bool isSane(const QSize& size)
{
    return !size.isEmpty() && qint64{size.width()} * size.height() <= mostPixels;
}

// Whole files ---------------------------------------------------------------------------------------------------------
// What is missing of a cut file the toolkit fills with grey in JPEG, and with whatever was in memory in BMP; for a PNG
// chunk it takes as much memory as the chunk claims.

// Follows the chunks, whose data lies between length, type and checksum.
bool isWholePng(QFile& file)
{
    qint64 at = 8;
    while (file.seek(at)) {
        const QByteArray head = file.read(8);
        if (head.size() < 8)
            return false;
        at += 12 + qint64{qFromBigEndian<quint32>(head.constData())};
        if (at > file.size())
            return false;
        if (head.endsWith("IEND"))
            return true;
    }
    return false;
}

// Follows the markers to the end of the image; within compressed data, 0xFF is never followed by that marker's code.
bool isWholeJpeg(const QByteArray& bytes)
{
    int at = bytes.indexOf('\xFF', 2);
    while (at >= 0 && at + 1 < bytes.size()) {
        const auto marker = static_cast<uchar>(bytes[at + 1]);
        if (marker == 0xD9)
            return true;
        at += marker == 0xFF ? 1 : 2;
        const bool hasSegment = marker > 0x01 && marker < 0xFF && (marker < 0xD0 || marker > 0xD7);
        if (hasSegment && at + 2 <= bytes.size())
            at += qFromBigEndian<quint16>(bytes.constData() + at);
        at = bytes.indexOf('\xFF', at);
    }
    return false;
}

// Of a run-length encoded file, only the header knows the length.
bool isWholeBmp(const QByteArray& header, qint64 fileSize)
{
    if (header.size() < 54)
        return false;
    const auto number = [&header](int at) { return qint64{qFromLittleEndian<qint32>(header.constData() + at)}; };
    const auto word = [&header](int at) { return qint64{qFromLittleEndian<quint16>(header.constData() + at)}; };
    const bool isOld = number(14) == 12;
    const qint64 width = isOld ? word(18) : number(18);
    const qint64 height = isOld ? word(20) : number(22);
    const qint64 bits = word(isOld ? 24 : 28);
    const qint64 compression = isOld ? 0 : number(30);
    if (compression == 1 || compression == 2)
        return fileSize >= qint64{qFromLittleEndian<quint32>(header.constData() + 2)};
    return width > 0 && bits > 0 &&
           (fileSize - qMax(number(10), qint64{0})) / ((width * bits + 31) / 32 * 4) >= qAbs(height);
}

bool isWhole(QFile& file, PictureType type)
{
    if (type == PictureType::Png)
        return isWholePng(file);
    if (type == PictureType::Jpeg)
        return file.size() <= longestJpeg && isWholeJpeg(file.readAll());
    return isWholeBmp(file.read(54), file.size());
}

} // namespace

PictureType pictureType(const QString& fileName)
{
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    if (suffix == QLatin1String("png"))
        return PictureType::Png;
    if (suffix == QLatin1String("jpg") || suffix == QLatin1String("jpeg"))
        return PictureType::Jpeg;
    return suffix == QLatin1String("bmp") ? PictureType::Bmp : PictureType::Unknown;
}

PictureType pictureType(const char* fileName)
{
    return pictureType(decodedName(fileName));
}

QImage readPicture(const char* fileName)
{
    const QString name = decodedName(fileName);
    const PictureType type = pictureType(name);
    if (type == PictureType::Unknown || !QFileInfo(name).isFile())
        return {};
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly) || !isWhole(file, type) || !file.seek(0))
        return {};
    QImageReader reader(&file, toolkitName(type));
    reader.setAutoDetectImageFormat(false);
    const QSize size = reader.size();
    if (!isSane(size) || qint64{size.width()} * size.height() / mostPixelsPerByte > file.size())
        return {};
    return reader.read();
}

bool writePicture(const QImage& image, const char* fileName)
{
    return writePicture(image, decodedName(fileName), jpegQuality);
}

bool writePicture(const QImage& image, const QString& fileName, int quality)
{
    const PictureType type = pictureType(fileName);
    if (type == PictureType::Unknown || !isSane(image.size()))
        return false;
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QImageWriter writer(&file, toolkitName(type));
    if (type == PictureType::Jpeg) // a quality of PNG is its compression
        writer.setQuality(quality);
    return writer.write(image) && file.commit();
}

} // namespace Vistrel
