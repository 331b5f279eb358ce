// SPDX-License-Identifier: MIT
// Reads images from files that may be malformed, and writes them completely or not at all.
#include "files/ImageFile.h"

#include "platform/DiskWriting.h"
#include "platform/LocalFileName.h"

#include <QtCore/QBuffer>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtCore/QtEndian>
#include <QtGui/QImageReader>
#include <QtGui/QImageWriter>

#include <boost/crc.hpp>

#include <algorithm>
#include <limits>

namespace Vistrel {

namespace {

constexpr qint64 mostPixels = qint64{1} << 28; // 2 GiB in the deepest format
constexpr int longestJpegSide = 65500;         // of Qt's encoder
constexpr qint64 mostPixelsPerByte = 8 * 1032; // PNG's limit: deflate's, at one bit a pixel
constexpr int extraPiece = 1 << 20;            // bytes of a frame in one chunk
constexpr int pngEnd = 12;                     // bytes of the last chunk

QByteArray qtFormatName(ImageType type)
{
    return type == ImageType::Png ? "png" : type == ImageType::Jpeg ? "jpg" : "bmp";
}

bool isSane(ImageType type, const QSize& size)
{
    const int longestSide = type == ImageType::Png    ? ImageParts::longestPngSide
                            : type == ImageType::Jpeg ? longestJpegSide
                                                      : std::numeric_limits<int>::max();
    return !size.isEmpty() && qint64{size.width()} * size.height() <= mostPixels &&
           std::max(size.width(), size.height()) <= longestSide;
}

// Extra bytes ---------------------------------------------------------------------------------------------------------
// A chunk holds the big-endian number of a piece of the frame and the bytes of that piece.

QByteArray bigEndian(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

bool appendExtras(QIODevice& file, const PixelBuffer& extras)
{
    const auto put = [&file](const QByteArray& bytes) { return file.write(bytes) == bytes.size(); };
    const auto putChunk = [&put](const QByteArray& typeAndData) {
        boost::crc_32_type sum;
        sum.process_bytes(typeAndData.constData(), static_cast<std::size_t>(typeAndData.size()));
        return put(bigEndian(static_cast<quint32>(typeAndData.size() - 4))) && put(typeAndData) &&
               put(bigEndian(sum.checksum()));
    };
    if (!file.seek(file.size() - pngEnd))
        return false;
    for (std::size_t from = 0; from < extras.size(); from += extraPiece) {
        const auto begin = extras.begin() + static_cast<std::ptrdiff_t>(from);
        const auto end = begin + std::min<std::ptrdiff_t>(extraPiece, extras.end() - begin);
        if (std::all_of(begin, end, [](std::uint8_t byte) { return byte == 0; }))
            continue;
        QByteArray chunk = ImageParts::extraChunk + bigEndian(static_cast<quint32>(from / extraPiece));
        chunk.append(reinterpret_cast<const char*>(&*begin), static_cast<int>(end - begin));
        if (!putChunk(chunk))
            return false;
    }
    return putChunk("IEND");
}

// Writing -------------------------------------------------------------------------------------------------------------

bool encode(const QImage& image, ImageType type, const ImageOptions& options, QIODevice& file)
{
    QImageWriter writer(&file, qtFormatName(type));
    if (type == ImageType::Jpeg) // for PNG, Qt takes the quality as the compression
        writer.setQuality(options.quality);
    if (type == ImageType::Png && options.compression >= 0)
        writer.setCompression(options.compression);
    return writer.write(image) && (options.extras.empty() || appendExtras(file, options.extras));
}

bool canOverwrite(const QString& fileName)
{
    return QFileInfo(fileName).isFile() && QFileInfo(fileName).isWritable();
}

// For a folder where no file can be created. Writes the bytes after the old end first: if the disk is full, the old
// bytes are unchanged.
bool overwrite(const QString& fileName, const QByteArray& bytes)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered))
        return false;
    const qint64 oldSize = file.size();
    const int head = static_cast<int>(qMin<qint64>(oldSize, bytes.size()));
    const qint64 tail = bytes.size() - head;
    if (!file.seek(head) || file.write(bytes.constData() + head, tail) != tail || !reachesDisk(file)) {
        file.resize(oldSize);
        return false;
    }
    return file.seek(0) && file.write(bytes.constData(), head) == head && file.resize(bytes.size()) &&
           reachesDisk(file);
}

} // namespace

QString decodedName(const char* fileName)
{
    const QString name = QFile::decodeName(fileName);
    return QFile::encodeName(name) == fileName ? name : QString();
}

ImageType imageType(const QString& fileName)
{
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    if (suffix == QLatin1String("png"))
        return ImageType::Png;
    if (suffix == QLatin1String("jpg") || suffix == QLatin1String("jpeg"))
        return ImageType::Jpeg;
    return suffix == QLatin1String("bmp") ? ImageType::Bmp : ImageType::Unknown;
}

QImage ImageFileReader::read(const QString& fileName)
{
    const ImageType type = imageType(fileName);
    if (type == ImageType::Unknown || !isFileName(fileName) || !QFileInfo(fileName).isFile())
        return {};
    m_file.setFileName(fileName);
    if (!m_file.open(QIODevice::ReadOnly))
        return {};
    ImageParts parts(m_file);
    if (!parts.find(type))
        return {};
    m_extras = parts.extras();
    QImageReader reader(&parts, qtFormatName(type));
    reader.setAutoDetectImageFormat(false);
    const QSize size = reader.size();
    if (!isSane(type, size) || qint64{size.width()} * size.height() / mostPixelsPerByte > m_file.size())
        return {};
    QImage image;
    if (type == ImageType::Bmp) { // run lengths may skip pixels
        image = QImage(size, reader.imageFormat());
        image.fill(0);
    }
    return reader.read(&image) ? image : QImage();
}

bool ImageFileReader::applyExtras(PixelBuffer& frame)
{
    for (const ImageParts::Part& part : m_extras) {
        if (part.size < 4 || part.size > extraPiece + 4 || !m_file.seek(part.at))
            return false;
        const QByteArray piece = m_file.read(part.size);
        if (piece.size() != part.size)
            return false;
        const std::size_t from = std::size_t{qFromBigEndian<quint32>(piece.constData())} * extraPiece;
        const auto size = static_cast<std::size_t>(piece.size() - 4);
        if (from >= frame.size() || size != std::min<std::size_t>(extraPiece, frame.size() - from))
            return false;
        for (std::size_t i = 0; i < size; ++i)
            frame[from + i] ^= static_cast<std::uint8_t>(piece[static_cast<int>(4 + i)]);
    }
    return true;
}

bool writeImage(QImage image, const QString& fileName, const ImageOptions& options)
{
    const ImageType type = imageType(fileName);
    if (type == ImageType::Unknown || !isFileName(fileName) || !isSane(type, image.size()))
        return false;
    if (type == ImageType::Png) { // Qt writes a positive size; a camera's pixels have none
        image.setDotsPerMeterX(-1);
        image.setDotsPerMeterY(-1);
    }
    QSaveFile file(fileName);
    const bool isBeside = file.open(QIODevice::WriteOnly);
    if (!isBeside && !canOverwrite(fileName))
        return false;
    QBuffer buffer; // encoding into a file that cannot be written would print a warning
    if (!buffer.open(QIODevice::WriteOnly) || !encode(image, type, options, buffer))
        return false;
    const QByteArray& bytes = buffer.data();
    // `commit` does not check its own flush.
    if (isBeside && (file.write(bytes) != bytes.size() || !file.flush() || !reachesDisk(file)))
        return false;
    return (isBeside && file.commit()) || (canOverwrite(fileName) && overwrite(fileName, bytes));
}

} // namespace Vistrel
