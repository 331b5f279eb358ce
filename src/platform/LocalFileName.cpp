// SPDX-License-Identifier: MIT
// File names in the local 8-bit encoding.
#include "platform/LocalFileName.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#if defined(_WIN32)
#include <vector>
#include <windows.h>
#endif

namespace Vistrel {

namespace {

QByteArray inLocalEncoding(const QString& name)
{
    const QByteArray bytes = QFile::encodeName(name);
    return QFile::decodeName(bytes) == name ? bytes : QByteArray();
}

#if defined(_WIN32)
// Empty when there is no such file or folder; the name itself on a disk without short names.
QString shortName(const QString& path)
{
    const std::wstring name = QDir::toNativeSeparators(path).toStdWString();
    std::vector<wchar_t> text(32768); // the longest path
    const DWORD length = GetShortPathNameW(name.c_str(), text.data(), static_cast<DWORD>(text.size()));
    return length < text.size() ? QString::fromWCharArray(text.data(), static_cast<int>(length)) : QString();
}
#endif

} // namespace

bool isFileName(const QString& path)
{
#if defined(_WIN32)
    return !path.isEmpty();
#else
    return !inLocalEncoding(path).isEmpty();
#endif
}

LocalFileName::LocalFileName(const QString& path) : m_path(path), m_bytes(inLocalEncoding(path))
{
#if defined(_WIN32)
    const QFileInfo file(path);
    if (m_bytes.isEmpty())
        m_bytes = inLocalEncoding(QDir(shortName(file.absolutePath())).filePath(file.fileName()));
    if (!m_bytes.isEmpty())
        return;
    QFile made(path);
    m_isMade = !made.exists() && made.open(QIODevice::WriteOnly | QIODevice::NewOnly);
    made.close();
    const QString name = shortName(path);
    if (QFileInfo(name).suffix().compare(file.suffix(), Qt::CaseInsensitive) == 0)
        m_bytes = inLocalEncoding(name);
#endif
}

LocalFileName::~LocalFileName()
{
    if (m_isMade)
        QFile::remove(m_path);
}

} // namespace Vistrel
