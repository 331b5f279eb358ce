// SPDX-License-Identifier: MIT
// File names for code that takes them in 8 bits.
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Vistrel {

/// Whether the system can name a file so: any name on Windows, else those that the local encoding has letters for. The
/// toolkit would name another file instead.
bool isFileName(const QString& path);

/// A file's name in the local 8-bit encoding. On Windows, what the code page has no letters for is replaced by the
/// short name of the folder or of the file. A file has a short name only when it is there: an empty one is made, and
/// removed in the end unless it is kept.
class LocalFileName
{
public:
    explicit LocalFileName(const QString& path);
    ~LocalFileName();
    LocalFileName(const LocalFileName&) = delete;
    LocalFileName& operator=(const LocalFileName&) = delete;

    /// Empty when the file has no such name with the same suffix.
    const QByteArray& bytes() const { return m_bytes; }
    void keepFile() { m_isMade = false; }

private:
    const QString m_path;
    QByteArray m_bytes;
    bool m_isMade = false;
};

} // namespace Vistrel
