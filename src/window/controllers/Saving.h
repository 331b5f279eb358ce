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

/// Asks for a file's name and writes it beside the user interface: by the host's file interface where that claims the
/// type, else as the picture that is shown.
class Saving : public QObject
{
    Q_OBJECT

public:
    /// `files` may be null. The others outlive this object.
    Saving(const Form& form, const Commands& commands, SurfaceStream* stream,
           const std::shared_ptr<AbstractAcquisitionInterface>& source,
           const std::shared_ptr<AbstractFileInterface>& files);

    bool isWriting() const { return m_isWriting; }
    void save(); ///< returns when the file is there; this object may be gone then
    void copy(); ///< to the clipboard

Q_SIGNALS:
    void stateChanged(); ///< whether it writes, or whether there is an image

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
    QString m_savedFilter; // that was chosen last
    bool m_isWriting = false;
};

} // namespace Vistrel
