// SPDX-License-Identifier: MIT
// Tests saving and copying the image by the dialogs that the user answers, also when the window goes meanwhile.
#include <Vistrel/MessageBoxDialog.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>
#include <Vistrel/Window.h>
#include <Vistrel/WindowQt.h>

#include "base/Log.h"
#include "window/OfferingCamera.h"

#include <QtGui/QClipboard>
#include <QtGui/QImageReader>
#include <QtTest/QtTest>
#include <QtWidgets/QAction>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListView>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>

#include <deque>

namespace {

using Answer = std::function<void(QDialog&)>;

/// A user who gives the next answer to each dialog that appears, and then says yes to boxes and names no file.
class User : public QObject
{
public:
    User() { look(); }

    std::deque<Answer> answers;
    std::string asked; // "files", "replace?" or the first sentence of an error, each with a bar behind it

private:
    void look()
    {
        QTimer::singleShot(1, this, [this] {
            look(); // also while the dialog's answer runs
            auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (!dialog || dialog == m_answered)
                return;
            m_answered = dialog;
            const auto* const box = qobject_cast<QMessageBox*>(dialog);
            const bool isQuestion = box && box->buttons().size() == 2;
            const QString text = box ? box->text().section(QLatin1Char('.'), 0, 0) : QStringLiteral("files");
            asked += isQuestion ? "replace?|" : text.toStdString() + "|";
            Answer answer = [=](QDialog&) { box ? box->buttons().constFirst()->click() : dialog->reject(); };
            if (!answers.empty()) {
                answer = answers.front();
                answers.pop_front();
            }
            answer(*dialog);
        });
    }

    QPointer<QDialog> m_answered;
};

Answer name(const QString& path, const char* filter = "")
{
    return [=](QDialog& dialog) {
        dynamic_cast<QFileDialog&>(dialog).selectNameFilter(QLatin1String(filter));
        auto* const edit = dialog.findChild<QLineEdit*>();
        // A file that the dialog has marked would go before what is typed.
        dialog.findChild<QListView*>(QStringLiteral("listView"))->selectionModel()->clear();
        edit->setText(path);
        dialog.accept();
    };
}

class HostFiles : public AbstractFileInterface
{
public:
    HostFiles() { addFormat(".host", nullptr, nullptr); }
    bool save(const RawImage& image, const char* const fileName) override
    {
        named = fileName;
        return onSave(image);
    }
    bool savesOnThread() const override { return isThreaded; }

    bool isThreaded = false;
    QByteArray named;
    std::function<bool(const RawImage&)> onSave = [](const RawImage&) { return false; };
};

const char* const bitmaps = "Bitmap Image (*.bmp)";
const char* const photographs = "Joint Photographic Expert Group Image (*.jpg *.jpeg)";

struct Shown : ShownWindow
{
    explicit Shown(AbstractFileInterface* files = nullptr, bool hasImage = true) : ShownWindow(true, anyCommand, files)
    {
        if (hasImage)
            push(Mono8, 16, 4);
    }
    // As an action does it: in an event loop.
    std::string save(const std::deque<Answer>& answers)
    {
        user.asked.clear();
        user.answers = answers;
        QEventLoop loop;
        QTimer::singleShot(0, &loop, [&] { window->saveCurrentImage(), loop.quit(); });
        loop.exec();
        return user.asked;
    }
    QString path(const char* file) const { return folder.filePath(QLatin1String(file)); }
    QStringList written() const { return QDir(folder.path()).entryList(QDir::Files); }
    QByteArray contents(const char* file) const
    {
        QFile one(path(file));
        return one.open(QIODevice::ReadOnly) ? one.readAll() : QByteArray("none");
    }
    void make(const char* file) const
    {
        QFile one(path(file));
        QVERIFY(one.open(QIODevice::WriteOnly) && one.write("old") == 3);
    }

    QTemporaryDir folder;
    User user;
};

} // namespace

class SavingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    void writesWhatIsShown();
    void errorsAreTold();
    void namesAreCompletedAndRemembered();
    void windowGoesMeanwhile();
    void hostsSaveHasTheLockAlone();
    void threadWritesWhileTheWindowGoesOn();

private:
    // By its name: the race detector does not see how Qt passes a function to another thread.
    Q_INVOKABLE void actMeanwhile() { m_meanwhile(); }

    std::function<void()> m_meanwhile;
};

void SavingTest::writesWhatIsShown()
{
    Shown shown;
    shown.window->setColorTableGrayInverse();
    QCOMPARE(shown.save({name(shown.path("a.bmp"))}), std::string("files|"));
    shown.window->copyCurrentImage();
    for (const QImage& image : {QImage(shown.path("a.bmp")), QGuiApplication::clipboard()->image()}) {
        QCOMPARE(image.size(), QSize(16, 4));
        for (int i = 0; i < 64; ++i)
            QCOMPARE(image.pixel(i % 16, i / 16), qRgb(254 - i * 4, 254 - i * 4, 254 - i * 4));
    }
}

void SavingTest::errorsAreTold()
{
    const struct
    {
        const char* file;
        char fault; // n: no image, l: no lock, c: a command, t: thrown, w: too wide for the format
        const char* error;
    } rows[] = {{"old.host", 'n', "The image data buffer cannot be accessed at this time"},
                {"old.HOST", 'l', "The image data buffer cannot be accessed at this time"},
                {"old.host", 'c', "The image data buffer cannot be accessed at this time"},
                {"old.host", ' ', "File save of an image data buffer failed"},
                {"old.host", 't', "File save of an image data buffer failed"},
                {"old.bmp", 'n', "The display image cannot be accessed at this time"},
                {"old.jpg", 'w', "File save of a display image failed"}};
    setReportSink([](const std::string&) {});
    const auto reset = qScopeGuard([] { setReportSink(nullptr); });
    for (const auto& row : rows) {
        auto* const files = new HostFiles;
        files->onSave = [&](const RawImage&) { return row.fault == 't' ? throw 3 : false; };
        Shown shown(files, row.fault != 'n');
        if (row.fault == 'w')
            shown.push(Mono8, 70000, 1);
        shown.camera->lends = row.fault != 'l';
        shown.log->gate.close();
        if (row.fault == 'c')
            shown.window->setUnconfigured();
        shown.make(row.file);
        QCOMPARE(shown.save({name(shown.path(row.file))}), "files|replace?|" + std::string(row.error) + "|");
        QCOMPARE(shown.written(), QStringList(QLatin1String(row.file)));
        QCOMPARE(shown.contents(row.file), QByteArray("old"));
    }
}

void SavingTest::namesAreCompletedAndRemembered()
{
    Shown shown;
    shown.make("a.jpg");
    // No leads back.
    const Answer no = [](QDialog& box) { QTest::keyClick(&box, Qt::Key_Escape); };
    QCOMPARE(shown.save({name(shown.path("a"), photographs), no}), std::string("files|replace?|files|"));
    QCOMPARE(shown.contents("a.jpg"), QByteArray("old"));
    QCOMPARE(shown.save({name(shown.path("a"), photographs)}), std::string("files|replace?|"));
    QCOMPARE(QImageReader::imageFormat(shown.path("a.jpg")), QByteArray("jpeg"));
    shown.save({name(shown.path("my.cat"), bitmaps)});
    QCOMPARE(QImageReader::imageFormat(shown.path("my.cat.bmp")), QByteArray("bmp"));
    QString kept;
    const Answer ok = [](QDialog& box) { box.accept(); };
    const Answer look = [&](QDialog& dialog) {
        const auto& asking = dynamic_cast<QFileDialog&>(dialog);
        kept = asking.selectedNameFilter() + asking.directory().filePath(asking.findChild<QLineEdit*>()->text());
        dialog.reject();
    };
    QCOMPARE(shown.save({name(shown.path("b.TIF"), photographs), ok, look}),
             std::string("files|Files of the type \"TIF\" cannot be written|files|"));
    QCOMPARE(kept, QLatin1String(photographs) + shown.path("b.TIF"));
    QCOMPARE(shown.save({name(shown.path("none/c.jpg"), bitmaps)}),
             std::string("files|File save of a display image failed|"));
    shown.save({look});
    QCOMPARE(kept, QLatin1String(bitmaps) + shown.path("my.cat.bmp")); // the last that was written
    QCOMPARE(shown.written().join(QLatin1Char(' ')), QStringLiteral("a.jpg my.cat.bmp"));
}

// The host deletes its window while a dialog is open, in its own part of the saving, or both.
void SavingTest::windowGoesMeanwhile()
{
    const struct
    {
        const char* file;
        char inSave; // what the host does: d: deletes, f: fails as well, b: shows a box
        std::string asked;
    } rows[] = {{"", ' ', "files|"},
                {"old.bmp", ' ', "files|replace?|"},
                {"none/a.bmp", ' ', "files|File save of a display image failed|"},
                {"a.host", 'd', "files|"},
                {"a.host", 'f', "files|"},
                {"a.host", 'b', "files|Wait|"}};
    for (const auto& row : rows) {
        auto* const files = new HostFiles;
        Shown shown(files);
        int saves = 0;
        files->onSave = [&, files](const RawImage& image) {
            if (row.inSave == 'b')
                MessageBoxDialog::warning(shown.host.get(), "", "Wait", DialogButton::Ok, DialogButton::Ok);
            else
                shown.host.reset();
            saves += files->hasFormat(".host") && image.data[0] == 1; // both are still there
            return row.inSave == 'd';
        };
        shown.make("old.bmp");
        std::deque<Answer> answers{[&](QDialog&) { shown.host.reset(); }};
        if (*row.file)
            answers.push_front(name(shown.path(row.file)));
        QCOMPARE(shown.save(answers), row.asked);
        QTRY_VERIFY(!shown.window);
        QCOMPARE(saves, row.inSave == ' ' ? 0 : 1);
        QCOMPARE(shown.contents("old.bmp"), QByteArray("old"));
    }
}

// Asking for the lock once more could wait for ever.
void SavingTest::hostsSaveHasTheLockAlone()
{
    auto* const files = new HostFiles;
    Shown shown(files);
    Surface* const surface = shown.window->surfaceScrollArea()->surface();
    PixVal value;
    files->onSave = [&](const RawImage&) {
        asked = 0;
        RawImage raw;
        ScopedLock lock;
        return !surface->imageSrcPixVal({0, 0}, value) && !shown.window->surfaceStream()->latestImage(&raw, &lock) &&
               asked == 0;
    };
    QCOMPARE(shown.save({name(shown.path("a.host"))}), std::string("files|"));
    QCOMPARE(files->named, QFile::encodeName(shown.path("a.host")));
    QVERIFY(surface->imageSrcPixVal({0, 0}, value)); // again
}

void SavingTest::threadWritesWhileTheWindowGoesOn()
{
    for (const char end : {' ', 'c', 'd', 'q'}) { // meanwhile: closed, deleted, or the loop is told to end
        auto* const files = new HostFiles;
        Shown shown(files);
        m_meanwhile = [&] {
            QVERIFY(!shown.action("actionSave_Image")->isEnabled());
            QVERIFY(shown.camera->getFrameLock(shown.frames.back().raw).good()); // nobody holds it
            if (end == 'c')
                shown.window->close();
            else if (end == 'd')
                shown.host.reset();
            else if (end == 'q')
                QCoreApplication::exit();
        };
        files->isThreaded = true;
        files->onSave = [&](const RawImage& image) {
            if (QThread::currentThread() == thread() || image.data == shown.frames.back().raw.data)
                return false;
            QMetaObject::invokeMethod(this, "actMeanwhile", Qt::BlockingQueuedConnection);
            QFile file(shown.path("a.host"));
            const QByteArray bytes(1 << 25, static_cast<char>(image.data[63]));
            return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
        };
        QCOMPARE(shown.save({name(shown.path("a.host"))}), std::string("files|"));
        const QByteArray written = shown.contents("a.host");
        QVERIFY(written.size() == 1 << 25 && written.back() == '\xFD');
    }
}

QTEST_MAIN(SavingTest)
#include "SavingTest.moc"
