// SPDX-License-Identifier: MIT
// The parts of an image file that are needed for its pixels.
#pragma once

#include <QtCore/QIODevice>

#include <vector>

class QFile;

namespace Vistrel {

enum class ImageType { Unknown, Png, Jpeg, Bmp };

/// Reads a file without the parts that Qt would keep in memory besides the pixels: texts, profiles, previews. Of PNG
/// texts it keeps the first that names the frame's format. Takes the same memory for any file.
class ImageParts : public QIODevice
{
    Q_OBJECT

public:
    /// Bytes `at` to `at + size` of the file.
    struct Part
    {
        qint64 at;
        qint64 size;
    };

    /// The file must be open and outlive this object.
    explicit ImageParts(QFile& file);

    /// Finds the parts and opens this device. Returns false when the file is incomplete, is not of this type, states
    /// more pixels than its bytes can hold, has a wrong checksum, or has more pieces or scans than any writer makes.
    bool find(ImageType type);

    /// The data of the PNG chunks `extraChunk`.
    const std::vector<Part>& extras() const { return m_extras; }
    static constexpr int longestPngSide = 1000000; // of Qt's decoder and encoder, in pixels
    static constexpr char extraChunk[] = "vsBT";   // the letters' cases mean: ancillary, private, not safe to copy

    qint64 size() const override;
    bool seek(qint64 position) override;

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char* data, qint64 maxSize) override;

private:
    bool hasTrueChecksum(qint64 at, qint64 length);
    bool findInPng();
    bool findInJpeg();
    bool findInBmp();
    void add(qint64 at, qint64 size);
    int byteAt(qint64 at);
    qint64 numberAt(qint64 at, int bytes, bool isBigEndian);
    qint64 find(char byte, qint64 from);
    bool hasWholeRuns(qint64 at, qint64 width, qint64 height, bool isHalfBytes);

    QFile& m_file;
    QByteArray m_block; // of the file, from `m_blockAt` on
    qint64 m_blockAt = 0;
    std::vector<Part> m_parts; // in the file's order
    std::vector<Part> m_extras;
    qint64 m_position = 0; // where this device reads next
};

} // namespace Vistrel
