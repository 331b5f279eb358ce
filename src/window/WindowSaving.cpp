// SPDX-License-Identifier: MIT
// Saves and copies the image that the main window shows.
#include "files/PictureFile.h"
#include "window/WindowQt_p.h"

#include <Vistrel/AbstractFileInterface.h>
#include <Vistrel/SurfaceStream.h>

#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMessageBox>

namespace Vistrel {

namespace {

struct BuiltInFormat
{
    const char* filter;
    const char* suffixes[2];
};

constexpr BuiltInFormat builtInFormats[] = {
    {QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Portable Network Graphics Image (*.png)"), {".png", nullptr}},
    {QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Joint Photographic Expert Group Image (*.jpg *.jpeg)"), {".jpg", ".jpeg"}},
    {QT_TRANSLATE_NOOP("Vistrel::WindowQt", "Bitmap Image (*.bmp)"), {".bmp", nullptr}},
};

// With its dot, as file interfaces take it; empty without one.
QByteArray suffixOf(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix();
    return suffix.isEmpty() ? QByteArray() : '.' + suffix.toLocal8Bit();
}

// The first suffix in a filter's pattern, such as ".jpg" in "Photographs (*.jpg *.jpeg)".
QString firstSuffix(const QString& filter)
{
    const int begin = filter.lastIndexOf(QLatin1String("(*")) + 2;
    const int end = filter.indexOf(QRegularExpression(QStringLiteral("[ )]")), begin);
    return begin > 1 && end > begin ? filter.mid(begin, end - begin) : QString();
}

} // namespace

bool WindowQt::PrivateData::claims(const QByteArray& suffix) const
{
    return files && files->hasFormat(suffix.constData());
}

QStringList WindowQt::PrivateData::saveFilters() const
{
    QStringList filters;
    for (const BuiltInFormat& format : builtInFormats) {
        const bool isReplaced = claims(format.suffixes[0]) || (format.suffixes[1] && claims(format.suffixes[1]));
        if (!isReplaced)
            filters += WindowQt::tr(format.filter);
    }
    if (!files)
        return filters;
    const QByteArray suffixes = askText(
        "queryFormats", [this](char* text, std::size_t* size) { return files->queryFormats(nullptr, text, size); });
    for (const QByteArray& suffix : suffixes.split(' ')) {
        const QByteArray pattern = askText("queryFormatPattern", [&](char* text, std::size_t* size) {
            return files->queryFormatPattern(suffix.constData(), text, size);
        });
        if (!pattern.isEmpty())
            filters += QString::fromLocal8Bit(pattern);
    }
    return filters;
}

// The path that the user names, or nothing. A name without a known suffix gets the chosen filter's first one.
QString WindowQt::PrivateData::askSavePath()
{
    const QStringList filters = saveFilters();
    QString start = savedPath;
    const QPointer<WindowQt> alive(window);
    while (true) {
        const QPointer<QFileDialog> dialog = new QFileDialog(window, tr("Save Current Image"));
        dialog->setAttribute(Qt::WA_QuitOnClose, false);
        dialog->setAcceptMode(QFileDialog::AcceptSave);
        dialog->setFileMode(QFileDialog::AnyFile);
        dialog->setOption(QFileDialog::DontConfirmOverwrite); // its question would be on the stack; asked below
        dialog->setNameFilters(filters);
        if (filters.contains(savedFilter))
            dialog->selectNameFilter(savedFilter);
        if (!start.isEmpty()) {
            dialog->setDirectory(QFileInfo(start).absolutePath());
            dialog->selectFile(QFileInfo(start).fileName());
        }
        const bool isAccepted = dialog->exec() == QDialog::Accepted;
        if (!alive || !dialog) // it went with the window
            return QString();
        QString path = isAccepted ? dialog->selectedFiles().value(0) : QString();
        savedFilter = dialog->selectedNameFilter();
        delete dialog;
        const QByteArray suffix = suffixOf(path);
        if (path.isEmpty())
            return path;
        if (!claims(suffix) && pictureType(path) == PictureType::Unknown)
            path += firstSuffix(savedFilter);
        if (!QFileInfo::exists(path))
            return path;
        const QPointer<QMessageBox> question =
            new QMessageBox(QMessageBox::Question, tr("Save Current Image"),
                            tr("%1 already exists.\nDo you want to replace it?").arg(QFileInfo(path).fileName()),
                            QMessageBox::Yes | QMessageBox::No, window);
        question->setAttribute(Qt::WA_QuitOnClose, false);
        question->setDefaultButton(QMessageBox::No);
        const bool isReplaced = question->exec() == QMessageBox::Yes;
        if (!alive || !question)
            return QString();
        delete question;
        if (isReplaced)
            return path;
        start = path;
    }
}

// What went wrong, or nothing.
QString WindowQt::PrivateData::saveImage(const QString& path)
{
    if (claims(suffixOf(path))) {
        // The host may let the window go meanwhile.
        const std::shared_ptr<AbstractAcquisitionInterface> keptSource = source;
        const std::shared_ptr<AbstractFileInterface> keptFiles = files;
        RawImage raw;
        ScopedLock lock;
        if (!stream->latestImage(&raw, &lock))
            return tr("The image data buffer cannot be accessed at this time.");
        const QByteArray name = path.toLocal8Bit();
        const bool isSaved = QString::fromLocal8Bit(name) == path &&
                             hostCall("save", false, [&] { return keptFiles->save(raw, name.constData()); });
        return isSaved ? QString()
                       : tr("File save of an image data buffer failed. Please verify that the current user has access "
                            "to the selected location.");
    }
    const QImage image = stream->cloneLatestImageForRender();
    if (image.isNull())
        return tr("The display image cannot be accessed at this time.");
    return writePicture(image, path, PictureOptions())
               ? QString()
               : tr("File save of a display image failed. Please verify that the current user has "
                    "access to the selected location.");
}

void WindowQt::saveCurrentImage()
{
    const QPointer<WindowQt> alive(this);
    const QString path = m_data->askSavePath();
    if (!alive || path.isEmpty())
        return;
    const QString error = m_data->saveImage(path);
    if (!alive || m_data->isClosed) // the host's save may have closed the window
        return;
    if (error.isEmpty()) {
        m_data->savedPath = path;
    } else {
        const QPointer<QMessageBox> box =
            new QMessageBox(QMessageBox::Critical, tr("File Save Error"), error, QMessageBox::Ok, this);
        box->setAttribute(Qt::WA_QuitOnClose, false);
        box->exec();
        if (!alive)
            return;
        delete box;
    }
    m_data->updateActionStates();
}

void WindowQt::copyCurrentImage()
{
    const QImage image = m_data->stream->cloneLatestImageForRender();
    if (!image.isNull())
        QGuiApplication::clipboard()->setImage(image);
    m_data->updateActionStates();
}

} // namespace Vistrel
