// SPDX-License-Identifier: MIT
// File names in the local 8-bit encoding.
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Vistrel {

/// Whether the name can be a file's: any name on Windows, elsewhere a name that the local encoding can represent. For
/// any other name Qt would open another file.
bool isFileName(const QString& path);

/// A file's name in the local 8-bit encoding. On Windows, a folder or a file whose name the code page cannot represent
/// is given by its short name. Only an existing file has one: if needed, an empty file is created, and removed by the
/// destructor unless `keepFile` was called.
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
