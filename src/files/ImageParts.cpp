// SPDX-License-Identifier: MIT
// The parts of an image file that are needed for its pixels.
#include "files/ImageParts.h"

#include <QtCore/QFile>

#include <boost/crc.hpp>

#include <algorithm>
#include <utility>

namespace Vistrel {

namespace {

constexpr qint64 blockSize = 1 << 16;
constexpr std::size_t mostParts = 1024;
constexpr int mostScans = 64;              // of a JPEG file; a scan of few bytes may still decode all pixels
constexpr qint64 deflateLimit = 1032;      // bytes that one compressed byte gives at most
constexpr qint64 optionalBit = 0x20000000; // of a chunk's type; the pixels can be read without the chunk
constexpr qint64 longestText = 64;
constexpr char formatKeyword[] = "Vistrel Format"; // with the terminating zero

constexpr qint64 chunkType(const char (&text)[5])
{
    return qint64{text[0]} << 24 | text[1] << 16 | text[2] << 8 | text[3];
}

} // namespace

ImageParts::ImageParts(QFile& file) : m_file(file) {}

bool ImageParts::find(ImageType type)
{
    const bool isFound = type == ImageType::Png    ? findInPng()
                         : type == ImageType::Jpeg ? findInJpeg()
                                                   : type == ImageType::Bmp && findInBmp();
    return isFound && std::max(m_parts.size(), m_extras.size()) <= mostParts && open(ReadOnly | Unbuffered);
}

// The file ------------------------------------------------------------------------------------------------------------

void ImageParts::add(qint64 at, qint64 size)
{
    if (size == 0)
        return;
    if (!m_parts.empty() && m_parts.back().at + m_parts.back().size == at)
        m_parts.back().size += size;
    else if (m_parts.size() <= mostParts)
        m_parts.push_back({at, size});
}

// Negative at the end of the file.
int ImageParts::byteAt(qint64 at)
{
    if (at < m_blockAt || at >= m_blockAt + m_block.size()) {
        m_block = at >= 0 && m_file.seek(at) ? m_file.read(blockSize) : QByteArray();
        m_blockAt = at;
    }
    return m_block.isEmpty() ? -1 : static_cast<uchar>(m_block[static_cast<int>(at - m_blockAt)]);
}

// Unsigned; negative when a byte is missing.
qint64 ImageParts::numberAt(qint64 at, int bytes, bool isBigEndian)
{
    qint64 number = 0;
    for (int i = 0; i < bytes; ++i) {
        const int byte = byteAt(at + (isBigEndian ? i : bytes - 1 - i));
        if (byte < 0)
            return -1;
        number = number << 8 | byte;
    }
    return number;
}

// Negative when there is none.
qint64 ImageParts::find(char byte, qint64 from)
{
    while (byteAt(from) >= 0) {
        const int found = m_block.indexOf(byte, static_cast<int>(from - m_blockAt));
        if (found >= 0)
            return m_blockAt + found;
        from = m_blockAt + m_block.size();
    }
    return -1;
}

// The types -----------------------------------------------------------------------------------------------------------
// For the missing end of a file Qt shows grey in JPEG, and uninitialised memory in BMP. For a PNG chunk it allocates
// the length that the chunk states.

// Checks the chunk at `at`. The checksum covers its type and data.
bool ImageParts::hasTrueChecksum(qint64 at, qint64 length)
{
    boost::crc_32_type sum;
    if (!m_file.seek(at + 4))
        return false;
    for (qint64 rest = 4 + length; rest > 0;) {
        const QByteArray piece = m_file.read(std::min(rest, blockSize));
        if (piece.isEmpty())
            return false;
        sum.process_bytes(piece.constData(), static_cast<std::size_t>(piece.size()));
        rest -= piece.size();
    }
    return sum.checksum() == numberAt(at + 8 + length, 4, true);
}

// Follows the chunks, which consist of length, type, data and checksum. Qt's decoder would print a warning for a
// damaged or illegal chunk.
bool ImageParts::findInPng()
{
    const QByteArray head("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16);
    if (!m_file.seek(0) || m_file.read(head.size()) != head)
        return false;
    const qint64 width = numberAt(16, 4, true);
    const qint64 height = numberAt(20, 4, true);
    const int depth = byteAt(24);
    const int kind = byteAt(25); // bits: 1 palette, 2 colour, 4 alpha
    const int channels = ((kind & 3) == 2 ? 3 : 1) + ((kind & 4) != 0 ? 1 : 0);
    bool hasFormat = false;
    bool hasTransparency = false;
    qint64 compressed = 0;
    qint64 at = 8;
    add(0, at);
    while (true) {
        const qint64 length = numberAt(at, 4, true);
        const qint64 type = numberAt(at + 4, 4, true);
        const qint64 end = at + 12 + length;
        if (type < 0 || end > m_file.size())
            return false;
        bool isNeeded = (type & optionalBit) == 0;
        const bool isExtra = type == chunkType(extraChunk) && m_extras.size() <= mostParts;
        if (type == chunkType("IDAT"))
            compressed += length;
        else if (isExtra)
            m_extras.push_back({at + 8, length});
        else if (type == chunkType("tRNS"))
            isNeeded = !std::exchange(hasTransparency, true);
        else if (type == chunkType("tEXt") && !hasFormat && length <= longestText)
            isNeeded = hasFormat = m_file.seek(at + 8) &&
                                   m_file.read(sizeof formatKeyword) == QByteArray(formatKeyword, sizeof formatKeyword);
        if ((isNeeded || isExtra) && !hasTrueChecksum(at, length))
            return false;
        if (isNeeded)
            add(at, end - at);
        if (type == chunkType("IEND"))
            return width > 0 && height > 0 && std::max(width, height) <= longestPngSide &&
                   (width * depth * channels + 7) / 8 <= compressed * deflateLimit / height;
        at = end;
    }
}

// Follows the markers to the end-of-image marker, whose code never follows 0xFF within compressed data.
bool ImageParts::findInJpeg()
{
    int scans = 0;
    qint64 from = 0;
    for (qint64 at = find('\xFF', 2); at >= 0; at = find('\xFF', from)) {
        add(from, at - from);
        const int marker = byteAt(at + 1);
        qint64 size = marker == 0xFF ? 1 : 2;
        if (marker > 0x01 && marker < 0xFF && (marker < 0xD0 || marker > 0xD9)) {
            const qint64 length = numberAt(at + 2, 2, true);
            if (length < 2 || at + size + length > m_file.size())
                return false;
            size += length;
        }
        if (marker == 0xDA && ++scans > mostScans)
            return false;
        const bool isComment = marker == 0xFE;
        const bool isApplications = marker > 0xE0 && marker < 0xF0 && marker != 0xEE; // 0xEE says how colour is stored
        if (!isComment && !isApplications)
            add(at, size);
        if (marker == 0xD9)
            return true;
        from = at + size;
    }
    return false;
}

bool ImageParts::findInBmp()
{
    const auto number = [this](qint64 at) { return qint64{static_cast<qint32>(numberAt(at, 4, false))}; };
    const auto word = [this](qint64 at) { return numberAt(at, 2, false); };
    const bool isOld = number(14) == 12;
    const qint64 pixels = std::max(number(10), qint64{0});
    const qint64 width = isOld ? word(18) : number(18);
    const qint64 height = std::abs(isOld ? word(20) : number(22));
    const qint64 bits = word(isOld ? 24 : 28);
    const qint64 compression = isOld ? 0 : number(30);
    if (byteAt(53) < 0 || width <= 0 || bits <= 0)
        return false;
    add(0, m_file.size());
    if (compression == 1 || compression == 2)
        return hasWholeRuns(pixels, width, height, compression == 2);
    return (m_file.size() - pixels) / ((width * bits + 31) / 32 * 4) >= height;
}

// Whether the run lengths reach their end marker or the last pixel.
bool ImageParts::hasWholeRuns(qint64 at, qint64 width, qint64 height, bool isHalfBytes)
{
    qint64 x = 0;
    for (qint64 y = 0; y < height && (y < height - 1 || x < width);) {
        const int count = byteAt(at);
        const int value = byteAt(at + 1);
        at += 2;
        if (value < 0)
            return false;
        if (count > 0) {
            x += count;
        } else if (value == 0) {
            x = 0;
            ++y;
        } else if (value == 1) {
            return true;
        } else if (value == 2) {
            x += byteAt(at);
            y += byteAt(at + 1);
            at += 2;
        } else {
            x += value;
            at += (isHalfBytes ? (value + 1) / 2 + 1 : value + 1) / 2 * 2;
        }
        if (at > m_file.size())
            return false;
    }
    return true;
}

// The device ----------------------------------------------------------------------------------------------------------

qint64 ImageParts::size() const
{
    qint64 sum = 0;
    for (const Part& part : m_parts)
        sum += part.size;
    return sum;
}

bool ImageParts::seek(qint64 position)
{
    m_position = position;
    return QIODevice::seek(position);
}

qint64 ImageParts::readData(char* data, qint64 maxSize)
{
    qint64 done = 0;
    qint64 skipped = 0; // bytes of the parts passed
    for (const Part& part : m_parts) {
        const qint64 inside = m_position - skipped;
        skipped += part.size;
        if (inside >= part.size || done == maxSize)
            continue;
        const qint64 wanted = std::min(part.size - inside, maxSize - done);
        const qint64 got = m_file.seek(part.at + inside) ? m_file.read(data + done, wanted) : -1;
        done += std::max(got, qint64{0});
        m_position += std::max(got, qint64{0});
        if (got != wanted)
            break;
    }
    return done;
}

qint64 ImageParts::writeData(const char*, qint64)
{
    return -1;
}

} // namespace Vistrel
