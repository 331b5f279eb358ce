// SPDX-License-Identifier: MIT
// Saves and copies the image that the main window shows.
#pragma once

#include <Vistrel/AbstractAcquisitionInterface.h>
#include <Vistrel/AbstractFileInterface.h>

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>
#include <memory>

namespace Vistrel {

class Commands;
class SurfaceStream;
struct Form;

/// Asks for a file's name and writes the file beside the user interface. The host's file interface writes the types
/// that it claims; the others hold the picture as it is shown.
class Saving : public QObject
{
    Q_OBJECT

public:
    /// `files` may be null. The others outlive this object.
    Saving(const Form& form, const Commands& commands, SurfaceStream* stream,
           const std::shared_ptr<AbstractAcquisitionInterface>& source,
           const std::shared_ptr<AbstractFileInterface>& files);

    bool isWriting() const { return m_isWriting; }
    void save(); ///< returns when the file is written; this object may be deleted by then
    void copy(); ///< to the clipboard

Q_SIGNALS:
    void stateChanged(); ///< `isWriting` has changed, or there may be another image

private:
    bool claims(const QByteArray& suffix) const; ///< whether the host's file interface does
    QStringList hostFilters() const;
    QStringList filters() const;
    QString askPath();
    QString saveImage(const QString& path);
    QString saveFrame(const QString& path);
    bool writeBeside(const std::function<bool()>& write);

    const Form& m_form;
    const Commands& m_commands;
    SurfaceStream* const m_stream;
    const std::shared_ptr<AbstractAcquisitionInterface> m_source;
    const std::shared_ptr<AbstractFileInterface> m_files;
    QString m_savedPath;   // of the image saved last
    QString m_savedFilter; // of the last dialog
    bool m_isWriting = false;
};

} // namespace Vistrel
