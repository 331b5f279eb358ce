// SPDX-License-Identifier: MIT
// Saves and copies the image that the main window shows.
#include "window/controllers/Saving.h"

#include "base/FrameLocking.h"
#include "base/HostCall.h"
#include "base/UserInterfaceCall.h"
#include "files/ImageFile.h"
#include "platform/LocalFileName.h"
#include "window/Form.h"
#include "window/HostText.h"
#include "window/controllers/Commands.h"

#include <Vistrel/FileIO.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceStream.h>

#include <QtCore/QEventLoop>
#include <QtCore/QFileInfo>
#include <QtCore/QPointer>
#include <QtCore/QRegularExpression>
#include <QtCore/QScopeGuard>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QStatusBar>

#include <boost/thread/scoped_thread.hpp>

#include <algorithm>
#include <atomic>
#include <iterator>

namespace Vistrel {

namespace {

constexpr int messageMs = 5000;

constexpr const char* builtInFilters[] = {
    QT_TRANSLATE_NOOP("Vistrel::Saving", "Portable Network Graphics Image (*.png)"),
    QT_TRANSLATE_NOOP("Vistrel::Saving", "Joint Photographic Expert Group Image (*.jpg *.jpeg)"),
    QT_TRANSLATE_NOOP("Vistrel::Saving", "Bitmap Image (*.bmp)"),
};

// With its dot, as file interfaces take it. Empty for a name without a suffix.
QByteArray suffixOf(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix();
    return suffix.isEmpty() ? QByteArray() : '.' + suffix.toLocal8Bit();
}

// The suffixes in a filter's pattern, such as ".jpg" and ".jpeg" in "Photographs (*.jpg *.jpeg)".
QStringList suffixesOf(const QString& filter)
{
    const int begin = filter.lastIndexOf(QLatin1String("(*"));
    const QString pattern = begin < 0 ? QString() : filter.mid(begin + 2).section(QLatin1Char(')'), 0, 0);
    return pattern.split(QRegularExpression(QStringLiteral("[ *]+")));
}

// "shot.tif" asks for that type. "my.cat", "lens 2.8" and "v1.final" are names without a type.
bool namesOtherPicture(const QString& path)
{
    constexpr const char* types[] = {"avif", "dib", "dng",  "exr", "fit", "fits", "gif",  "hdr", "heic", "heif",
                                     "ico",  "j2k", "jfif", "jp2", "jpe", "jxl",  "pbm",  "pdf", "pgm",  "pnm",
                                     "ppm",  "psd", "raw",  "svg", "tga", "tif",  "tiff", "webp"};
    const QString suffix = QFileInfo(path).suffix().toLower();
    return std::any_of(std::begin(types), std::end(types),
                       [&suffix](const char* type) { return suffix == QLatin1String(type); });
}

// Returns the button that was pressed, or none when the window was deleted meanwhile.
int showBox(QWidget* window, QMessageBox::Icon icon, const QString& title, const QString& text,
            QMessageBox::StandardButtons buttons)
{
    const QPointer<QMessageBox> box = new QMessageBox(icon, title, text, buttons, window);
    box->setAttribute(Qt::WA_QuitOnClose, false);
    box->setDefaultButton(QMessageBox::No);
    const int pressed = box->exec();
    if (!box)
        return QMessageBox::NoButton;
    delete box;
    return pressed;
}

} // namespace

Saving::Saving(const Form& form, const Commands& commands, SurfaceStream* stream,
               const std::shared_ptr<AbstractAcquisitionInterface>& source,
               const std::shared_ptr<AbstractFileInterface>& files)
    : m_form(form), m_commands(commands), m_stream(stream), m_source(source), m_files(files)
{
}

bool Saving::claims(const QByteArray& suffix) const
{
    return m_files && m_files->hasFormat(suffix.constData());
}

QStringList Saving::filters() const
{
    QStringList all;
    for (const char* const filter : builtInFilters) {
        const QStringList suffixes = suffixesOf(QLatin1String(filter));
        if (std::none_of(suffixes.begin(), suffixes.end(), [this](const QString& s) { return claims(s.toLatin1()); }))
            all += tr(filter);
    }
    return all + hostFilters();
}

QStringList Saving::hostFilters() const
{
    QStringList filters;
    if (!m_files)
        return filters;
    const QByteArray suffixes = hostText(
        "queryFormats", [this](char* text, std::size_t* size) { return m_files->queryFormats(nullptr, text, size); });
    for (const QByteArray& suffix : suffixes.split(' ')) {
        const QByteArray pattern = hostText("queryFormatPattern", [&](char* text, std::size_t* size) {
            return m_files->queryFormatPattern(suffix.constData(), text, size);
        });
        if (!pattern.isEmpty())
            filters += QString::fromLocal8Bit(pattern);
    }
    return filters;
}

// Returns the path that the user chose, of a type that can be written, or nothing. A name without a type gets the first
// suffix of the chosen filter.
QString Saving::askPath()
{
    const QStringList choices = filters();
    QString start = m_savedPath;
    const QPointer<Saving> alive(this);
    while (true) {
        const QPointer<QFileDialog> dialog = new QFileDialog(m_form.window, tr("Save Current Image"));
        dialog->setAttribute(Qt::WA_QuitOnClose, false);
        dialog->setAcceptMode(QFileDialog::AcceptSave);
        dialog->setFileMode(QFileDialog::AnyFile);
        dialog->setOption(QFileDialog::DontConfirmOverwrite); // Qt keeps its own question on the stack
        dialog->setNameFilters(choices);
        dialog->selectNameFilter(choices.contains(m_savedFilter) ? m_savedFilter : hostFilters().value(0));
        if (!start.isEmpty()) {
            dialog->setDirectory(QFileInfo(start).absolutePath());
            dialog->selectFile(QFileInfo(start).fileName());
        }
        const bool isAccepted = dialog->exec() == QDialog::Accepted;
        if (!alive || !dialog) // deleted with the window
            return QString();
        QString path = isAccepted ? dialog->selectedFiles().value(0) : QString();
        m_savedFilter = dialog->selectedNameFilter();
        delete dialog;
        if (path.isEmpty())
            return path;
        const auto isWritable = [&] { return claims(suffixOf(path)) || imageType(path) != ImageType::Unknown; };
        if (!isWritable() && !namesOtherPicture(path)) {
            if (path.endsWith(QLatin1Char('.')))
                path.chop(1);
            path += suffixesOf(m_savedFilter).value(0);
        }
        int answer = QMessageBox::Yes;
        if (!isWritable())
            answer = showBox(m_form.window, QMessageBox::Critical, tr("File Save Error"),
                             tr("Files of the type \"%1\" cannot be written. Please choose one of the listed types.")
                                 .arg(QFileInfo(path).suffix()),
                             QMessageBox::Ok);
        else if (QFileInfo::exists(path))
            answer = showBox(m_form.window, QMessageBox::Question, tr("Save Current Image"),
                             tr("%1 already exists.\nDo you want to replace it?").arg(QFileInfo(path).fileName()),
                             QMessageBox::Yes | QMessageBox::No);
        if (answer == QMessageBox::Yes)
            return path;
        if (!alive || answer == QMessageBox::NoButton)
            return QString();
        start = path;
    }
}

// Writes on a thread while this one handles events, and returns when the file is written. The window may be deleted
// meanwhile. An application that ends waits here. Calls are nested: one that began later returns first.
bool Saving::writeBeside(const std::function<bool()>& write)
{
    m_isWriting = true;
    const auto end = qScopeGuard([alive = QPointer<Saving>(this)] {
        if (alive)
            alive->m_isWriting = false;
    });
    Q_EMIT stateChanged();
    QEventLoop loop;
    bool isWritten = false;
    std::atomic<bool> isDone{false};
    const auto work = [&] {
        isWritten = hostCall("save", false, write);
        isDone = true;
        QMetaObject::invokeMethod(&loop, "quit", Qt::QueuedConnection);
    };
    try {
        const boost::strict_scoped_thread<> thread(work); // joined in any case
        loop.exec();
        if (!isDone)
            endUserInterfaceCalls(); // the application ends; a message box of the writer would wait for ever
    } catch (const boost::thread_resource_error&) {
        work();
    }
    return isWritten;
}

// Returns the error, or nothing.
QString Saving::saveImage(const QString& path)
{
    if (claims(suffixOf(path)))
        return saveFrame(path);
    const QImage image = m_stream->cloneLatestImageForRender();
    if (image.isNull())
        return tr("The display image cannot be accessed at this time.");
    return writeBeside([&] { return writeImage(image, path, ImageOptions()); })
               ? QString()
               : tr("File save of a display image failed. Please verify that the current user has "
                    "access to the selected location.");
}

// The host's interface gets the frame itself, or a copy when it may be called on a thread.
QString Saving::saveFrame(const QString& path)
{
    // The host may delete the window meanwhile.
    const std::shared_ptr<AbstractAcquisitionInterface> keptSource = m_source;
    const std::shared_ptr<AbstractFileInterface> keptFiles = m_files;
    RawImage raw;
    ScopedLock lock;
    // While a command runs, asking for the lock could block.
    if (m_commands.isBusy() || !m_stream->latestImage(&raw, &lock))
        return tr("The image data buffer cannot be accessed at this time.");

    const std::wstring name = path.toStdWString();
    const auto save = [&](const RawImage& image) { return keptFiles->saveWide(image, name.c_str()); };
    bool isSaved = false;
    if (hostCall("savesOnThread", false, [&] { return keptFiles->savesOnThread(); })) {
        const FileIO copy(raw);
        lock.reset(nullptr);
        RawImage image;
        isSaved = copy.getData(image) && writeBeside([&] { return save(image); });
    } else {
        const QPointer<Surface> surface = m_form.scrollArea->surface();
        {
            const HeldFrameLock held(keptSource.get());
            isSaved = hostCall("save", false, [&] { return save(raw); });
        }
        lock.reset(nullptr);
        if (surface)
            surface->update(); // with the pixel values that it could not read
    }
    if (isSaved)
        return QString();
    if (LocalFileName(path).bytes().isEmpty())
        return tr("File save of an image data buffer failed. The name of this file or of its folder has letters that "
                  "the system's code page has not, which not every writer takes. Please choose another name or "
                  "folder.");
    return tr("File save of an image data buffer failed. Please verify that the current user has access to the "
              "selected location.");
}

void Saving::save()
{
    const QPointer<Saving> alive(this);
    if (m_isWriting)
        return;
    const QString path = askPath();
    if (!alive || path.isEmpty())
        return;
    const QString error = saveImage(path);
    if (!alive || m_commands.hasEnded()) { // while the file was written
        if (!error.isEmpty())
            reportLine("Vistrel::WindowQt: An image that was being saved when its window closed is lost.");
        return;
    }
    if (error.isEmpty()) {
        m_savedPath = path;
        m_form.statusBar->showMessage(tr("Saved %1").arg(QFileInfo(path).fileName()), messageMs);
    } else {
        m_form.statusBar->clearMessage(); // the message about an earlier image
        showBox(m_form.window, QMessageBox::Critical, tr("File Save Error"), error, QMessageBox::Ok);
        if (!alive)
            return;
    }
    Q_EMIT stateChanged();
}

void Saving::copy()
{
    const QImage image = m_stream->cloneLatestImageForRender();
    if (!image.isNull())
        QGuiApplication::clipboard()->setImage(image);
    Q_EMIT stateChanged();
}

} // namespace Vistrel
