// SPDX-License-Identifier: MIT
// Tests saving and copying the image by the dialogs that the user answers, also when the window goes meanwhile.
#include <Vistrel/FileIO.h>
#include <Vistrel/MessageBoxDialog.h>
#include <Vistrel/PngFileInterface.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>
#include <Vistrel/Window.h>
#include <Vistrel/WindowQt.h>

#include "base/Log.h"
#include "support/FakeSources.h"

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

using namespace Vistrel;

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
            asked += (!box         ? "files"
                      : isQuestion ? "replace?"
                                   : box->text().section(QLatin1Char('.'), 0, 0).toStdString()) +
                     "|";
            if (!answers.empty()) {
                const Answer answer = answers.front();
                answers.pop_front();
                answer(*dialog);
            } else {
                box ? box->button(isQuestion ? QMessageBox::Yes : QMessageBox::Ok)->click() : dialog->reject();
            }
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

/// Lends its frames only as long as the test wants.
class LendingSource : public PushSource
{
public:
    ScopedLock getFrameLock(const RawImage& frame) override
    {
        return lends ? PushSource::getFrameLock(frame) : ScopedLock();
    }
    bool cleanup() override { return gate.pass(), true; }
    std::atomic<bool> lends{true};
    Gate gate;
};

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

} // namespace

class SavingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_user = std::make_unique<User>();
        m_frame = TestFrame(16, 4, Mono8);
        for (std::size_t i = 0; i < m_frame.pixels.size(); ++i)
            m_frame.pixels[i] = static_cast<std::uint8_t>(i * 4 + 1);
    }
    void cleanup() { m_window.reset(), m_user.reset(); }
    void filtersFollowTheHost();
    void writesWhatIsShownOrAcquired();
    void errorsAreTold();
    void namesAreCompletedAndRemembered();
    void windowGoesMeanwhile();
    void hostsSaveHasTheLockAlone();
    void threadWritesWhileTheWindowGoesOn();

private:
    void open(AbstractFileInterface* files = nullptr, bool hasImage = true)
    {
        m_source = new LendingSource;
        m_window = std::make_unique<Window>(ScopedAcquisitionInterface(m_source), ScopedFileInterface(files));
        m_window->show();
        if (hasImage)
            m_source->push(m_frame.raw);
        QTRY_COMPARE(shown()->findChild<QAction*>(QStringLiteral("actionSave_Image"))->isEnabled(), hasImage);
    }
    // As an action does it: in an event loop.
    std::string save(const std::deque<Answer>& answers)
    {
        m_user->asked.clear();
        m_user->answers = answers;
        QEventLoop loop;
        QTimer::singleShot(0, &loop, [&] { shown()->saveCurrentImage(), loop.quit(); });
        loop.exec();
        return m_user->asked;
    }
    QString path(const char* file) const { return m_folder->filePath(QLatin1String(file)); }
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
    WindowQt* shown() { return static_cast<WindowQt*>(m_window->qt_handle()); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<User> m_user;
    std::unique_ptr<Window> m_window;
    TestFrame m_frame{16, 4, Mono8};
    LendingSource* m_source = nullptr;
};

void SavingTest::filtersFollowTheHost()
{
    auto* const files = new HostFiles;
    open(files);
    files->addFormat(".png", ".tif", "Deep Image");
    files->addFormat(".jpeg", nullptr, "Lossy");
    QStringList filters;
    QString marked;
    save({[&](QDialog& dialog) {
        filters = dynamic_cast<QFileDialog&>(dialog).nameFilters();
        marked = dynamic_cast<QFileDialog&>(dialog).selectedNameFilter();
        dialog.reject();
    }});
    QCOMPARE(filters.join(QLatin1String(";;")),
             QLatin1String(bitmaps) +
                 QStringLiteral(";;.host image file (*.host);;Lossy (*.jpeg);;Deep Image (*.png *.tif)"));
    QCOMPARE(marked, filters[1]); // a host's
}

void SavingTest::writesWhatIsShownOrAcquired()
{
    open(new PngFileInterface);
    shown()->setColorTableGrayInverse();
    QCOMPARE(save({name(path("a.bmp"))}), std::string("files|"));
    shown()->copyCurrentImage();
    for (const QImage& image : {QImage(path("a.bmp")), QGuiApplication::clipboard()->image()}) {
        QCOMPARE(image.size(), QSize(16, 4));
        for (int i = 0; i < 64; ++i)
            QCOMPARE(image.pixel(i % 16, i / 16), qRgb(254 - i * 4, 254 - i * 4, 254 - i * 4));
    }
    m_frame.raw.format = Mono16;
    m_frame.raw.width = 8;
    m_source->push(m_frame.raw);
    QTRY_COMPARE(shown()->surfaceStream()->latestImageSize(), QSize(8, 4));
    QCOMPARE(save({name(path("a.PNG"))}), std::string("files|"));
    const QImage deep(path("a.PNG"));
    QCOMPARE(deep.size(), QSize(8, 4));
    QCOMPARE(std::memcmp(deep.constScanLine(3), m_frame.pixels.data() + 48, 16), 0);
}

void SavingTest::errorsAreTold()
{
    const std::string buffer = "The image data buffer cannot be accessed at this time|";
    const std::string bufferSave = "File save of an image data buffer failed|";
    const std::string display = "The display image cannot be accessed at this time|";
    const std::string displaySave = "File save of a display image failed|";
    const struct
    {
        const char* file;
        char fault; // n: no image, l: no lock, c: a command, t: thrown, w: too wide for the format
        const std::string error;
    } rows[] = {{"old.host", 'n', buffer},     {"old.HOST", 'l', buffer},       {"old.host", 'c', buffer},
                {"old.host", ' ', bufferSave}, {"old.host", 't', bufferSave},   {"old.bmp", 'n', display},
                {"old.jpg", 'w', displaySave}, {"none/a.bmp", ' ', displaySave}};
    setReportSink([](const std::string&) {});
    const auto reset = qScopeGuard([] { setReportSink(nullptr); });
    for (const auto& row : rows) {
        init();
        if (row.fault == 'w')
            m_frame = TestFrame(70000, 1, Mono8);
        auto* const files = new HostFiles;
        files->onSave = [&](const RawImage&) { return row.fault == 't' ? throw 3 : false; };
        open(files, row.fault != 'n');
        m_source->lends = row.fault != 'l';
        if (row.fault == 'c')
            shown()->setUnconfigured();
        const bool isOld = row.file[0] == 'o';
        if (isOld)
            make(row.file);
        const QStringList before = QDir(m_folder->path()).entryList();
        QCOMPARE(save({name(path(row.file))}), (isOld ? "files|replace?|" : "files|") + row.error);
        QCOMPARE(QDir(m_folder->path()).entryList(), before); // nothing half written
        QVERIFY(!isOld || contents(row.file) == "old");
        m_source->gate.openForGood();
    }
}

void SavingTest::namesAreCompletedAndRemembered()
{
    open();
    make("a.jpg");
    // No leads back.
    const Answer no = [](QDialog& box) { dynamic_cast<QMessageBox&>(box).button(QMessageBox::No)->click(); };
    QCOMPARE(save({name(path("a"), photographs), no}), std::string("files|replace?|files|"));
    QCOMPARE(contents("a.jpg"), QByteArray("old"));
    QCOMPARE(save({name(path("a"), photographs)}), std::string("files|replace?|"));
    QCOMPARE(QImageReader::imageFormat(path("a.jpg")), QByteArray("jpeg"));
    save({name(path("my.cat"), bitmaps)});
    QCOMPARE(QImageReader::imageFormat(path("my.cat.bmp")), QByteArray("bmp"));
    QString kept;
    QString filter;
    const Answer ok = [](QDialog& box) { box.accept(); };
    const Answer look = [&](QDialog& dialog) {
        auto& files = dynamic_cast<QFileDialog&>(dialog);
        kept = files.directory().filePath(files.findChild<QLineEdit*>()->text());
        filter = files.selectedNameFilter();
        files.reject();
    };
    QCOMPARE(save({name(path("b.TIF"), photographs), ok, look}),
             std::string("files|Files of the type \"TIF\" cannot be written|files|"));
    QCOMPARE(kept, path("b.TIF"));
    QVERIFY(!QFile::exists(path("b.TIF")) && !QFile::exists(path("b.TIF.jpg")));
    save({name(path("none/c.jpg"), bitmaps)});
    save({look});
    QCOMPARE(kept, path("my.cat.bmp")); // the last that was written
    QCOMPARE(filter, QLatin1String(bitmaps));
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
    const Answer go = [this](QDialog&) { m_window.reset(); };
    for (const auto& row : rows) {
        auto* const files = new HostFiles;
        int saves = 0;
        files->onSave = [&, files](const RawImage& image) {
            if (row.inSave == 'b')
                MessageBoxDialog::warning(m_window.get(), "", "Wait", DialogButton::Ok, DialogButton::Ok);
            else
                m_window.reset();
            saves += files->hasFormat(".host") && image.data[0] == 1; // both are still there
            return row.inSave == 'd';
        };
        open(files);
        const QPointer<QWidget> window = shown();
        make("old.bmp");
        QCOMPARE(save(*row.file ? std::deque<Answer>{name(path(row.file)), go} : std::deque<Answer>{go}), row.asked);
        QTRY_VERIFY(!window);
        QCOMPARE(saves, row.inSave == ' ' ? 0 : 1);
        QCOMPARE(contents("old.bmp"), QByteArray("old"));
    }
}

// Asking for the lock once more could wait for ever.
void SavingTest::hostsSaveHasTheLockAlone()
{
    auto* const files = new HostFiles;
    open(files);
    Surface* const surface = shown()->surfaceScrollArea()->surface();
    int asked = -1;
    PixVal value;
    bool isRead = true;
    files->onSave = [&](const RawImage&) {
        const int own = m_source->frameLocks;
        RawImage raw;
        ScopedLock lock;
        isRead = surface->imageSrcPixVal({0, 0}, value) || shown()->surfaceStream()->latestImage(&raw, &lock);
        asked = m_source->frameLocks - own;
        return true;
    };
    QCOMPARE(save({name(path("a.host"))}), std::string("files|"));
    QVERIFY(asked == 0 && !isRead);
    QCOMPARE(files->named, QFile::encodeName(path("a.host")));
    QVERIFY(surface->imageSrcPixVal({0, 0}, value)); // again
}

void SavingTest::threadWritesWhileTheWindowGoesOn()
{
    for (const char end :
         {' ', 'c', 'd', 'q'}) { // meanwhile the window is closed or deleted, or the loop is told to end
        auto* const files = new HostFiles;
        QSemaphore begun;
        QSemaphore go;
        files->isThreaded = true;
        files->onSave = [&](const RawImage& image) {
            begun.release();
            go.acquire();
            QFile file(path("a.host"));
            const QByteArray bytes(1 << 25, static_cast<char>(image.data[63]));
            return image.data != m_frame.raw.data && QThread::currentThread() != thread() &&
                   file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
        };
        open(files);
        const QPointer<WindowQt> window = shown();
        const auto* const action = window->findChild<QAction*>(QStringLiteral("actionSave_Image"));
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            if (!begun.tryAcquire())
                return;
            QVERIFY(!action->isEnabled());
            QVERIFY(m_source->getFrameLock(m_frame.raw).good()); // nobody holds it
            if (end == 'c')
                window->close();
            else if (end == 'd')
                m_window.reset();
            else if (end == 'q')
                QCoreApplication::exit();
            go.release();
        });
        timer.start(1);
        QCOMPARE(save({name(path("a.host"))}), std::string("files|"));
        const QByteArray written = contents("a.host");
        QVERIFY(written.size() == 1 << 25 && written.back() == '\xFD' && QFile::remove(path("a.host")));
    }
}

QTEST_MAIN(SavingTest)
#include "SavingTest.moc"
