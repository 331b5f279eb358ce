// SPDX-License-Identifier: MIT
// The viewer: every format of its test picture, its files, its locks, and the program as a user runs it.
#include "FileSource.h"
#include "PatternSource.h"
#include "TestPicture.h"

#include <Vistrel/AcquisitionSignalHandler.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceStream.h>

#include <QtCore/QDir>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <algorithm>
#include <atomic>
#include <vector>

using namespace Vistrel;

namespace {

// How much of a picture, in percent of its cells of 16 x 16 pixels, differs by more than `tolerance` levels in a
// channel, on average over the cell.
double percentDifferent(const QImage& seen, const QImage& wanted, int tolerance)
{
    if (seen.size() != wanted.size() || seen.isNull())
        return 100;
    const auto cells = [](const QImage& image) {
        return image.convertToFormat(QImage::Format_RGB32)
            .scaled(image.width() / 16, image.height() / 16, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    };
    const QImage a = cells(seen);
    const QImage b = cells(wanted);
    int different = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            different += std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                                   std::abs(qBlue(p) - qBlue(q))}) > tolerance;
        }
    }
    return 100.0 * different / (a.width() * a.height());
}

// The unscaled picture in a screenshot of the viewer, where all else between the bars is background.
QImage pictureIn(const QImage& shot, const QSize& size)
{
    const QRgb background = shot.pixel(0, shot.height() / 2);
    int top = shot.height() / 2;
    while (top > 0 && shot.pixel(0, top - 1) == background)
        --top;
    for (int y = top; y < shot.height(); ++y) {
        for (int x = 0; x < shot.width(); ++x) {
            if (shot.pixel(x, y) != background)
                return shot.copy(QRect(QPoint(x, y), size));
        }
    }
    return {};
}

// A picture whose colours, or grey levels, tell left from right and red from blue.
QImage gradient(const QSize& size, QImage::Format format)
{
    QImage image(size, QImage::Format_RGBA64);
    for (int y = 0; y < size.height(); ++y) {
        auto* line = reinterpret_cast<QRgba64*>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            const auto level = quint16(65535 - x * 65535 / size.width());
            line[x] = qRgba64(level, quint16(level / 2), quint16(y * 256), 65535);
        }
    }
    return image.convertToFormat(format);
}

// The toolkit writes PGM with 8 bits a pixel alone.
void writeDeepPgm(const QString& fileName, const QImage& image, int bits)
{
    QFile file(fileName);
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QString header = QStringLiteral("P5\n# of %1 bits\n%2 %3\n%4\n");
    file.write(header.arg(bits).arg(image.width()).arg(image.height()).arg((1 << bits) - 1).toLatin1());
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const quint16*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const int value = line[x] >> (16 - bits);
            file.putChar(char(value >> 8));
            file.putChar(char(value));
        }
    }
}

// Takes the first seven frames on the thread that announces them, so that none is replaced by the next one. Frames are
// as many levels bright as they are pixels wider than 20.
class FrameTaker : public QObject
{
    Q_OBJECT

public:
    static constexpr int wanted = 7;

    void take(AbstractAcquisitionInterface& source)
    {
        m_source = &source;
        connect(source.signalHandler(), SIGNAL(getFrameNow()), this, SLOT(takeFrame()), Qt::DirectConnection);
    }

    std::atomic<int> count{0};
    std::vector<RawImage> frames; // not to be read before all are there, as what follows
    bool areIntact = true;

public Q_SLOTS:
    void takeFrame()
    {
        RawImage frame;
        ScopedLock lock;
        if (count == wanted || !m_source.load()->getNextFrame(&frame, &lock))
            return;
        frames.push_back(frame);
        for (std::size_t i = frames.size(); i > 0 && i + 3 > frames.size(); --i) // this one and the last two before it
            areIntact &= frames[i - 1].data[0] == frames[i - 1].width - 20;
        ++count;
    }

private:
    std::atomic<AbstractAcquisitionInterface*> m_source{nullptr};
};

struct Ending
{
    int exitCode = -1;
    QString output;
    QString errors;
};

// Windows keeps a program's working folder for a moment after its end.
struct WorkingFolder : QTemporaryDir
{
    ~WorkingFolder()
    {
        setAutoRemove(false);
        if (!QTest::qWaitFor([this] { return QDir(path()).removeRecursively(); }))
            qWarning("The working folder is still in use");
    }
};

Ending runViewer(const char* arguments, const WorkingFolder& folder)
{
    QProcess viewer;
    viewer.setWorkingDirectory(folder.path());
    viewer.start(QStringLiteral(VIEWER_PROGRAM), QString::fromLatin1(arguments).split(QLatin1Char(' ')));
    if (!viewer.waitForFinished(60000) || viewer.exitStatus() != QProcess::NormalExit) {
        viewer.kill();
        viewer.waitForFinished();
        return {};
    }
    return {viewer.exitCode(), QString::fromLocal8Bit(viewer.readAllStandardOutput()),
            QString::fromLocal8Bit(viewer.readAllStandardError())};
}

using Source = AbstractAcquisitionInterface;

void writePictures(const QTemporaryDir& folder)
{
    for (int i = 1; i <= 3; ++i) {
        QImage image(20 + i, 10, QImage::Format_Grayscale8);
        image.fill(uint(i));
        QVERIFY(image.save(folder.filePath(QStringLiteral("%1.png").arg(i))));
    }
}

void writeText(const QString& fileName, const char* text)
{
    QFile file(fileName);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) >= 0);
}

} // namespace

class ViewerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFormatShowsThePicture_data();
    void everyFormatShowsThePicture();
    void lentFramesStayAsTheyAre();
    void filesPlayInOrderAgainAndAgain();
    void runsEndByThemselves();
    void stepsGoForthAndBack();
    void modesChangeTheRun();
    void windowShowsFiles_data();
    void windowShowsFiles();
    void endings();
};

void ViewerTest::everyFormatShowsThePicture_data()
{
    QTest::addColumn<quint32>("format");
    for (quint32 value = 0; value <= 0xFFFF; ++value) {
        const char* const name = formatName(Format(value));
        Format plain = Format(0);
        if (formatFromName(name, &plain) && plain == value)
            QTest::newRow(name) << value;
    }
}

void ViewerTest::everyFormatShowsThePicture()
{
    QFETCH(quint32, format);
    const QSize size(640, 480);
    QImage wanted =
        drawTestPicture(size, QStringLiteral("%1 640x480").arg(QLatin1String(formatName(Format(format))))).still;
    const bool isMosaic = (format & formatPatternMask) != 0;
    if (isMonochrome(Format(format)) && !isMosaic)
        wanted = wanted.convertToFormat(QImage::Format_RGB32).convertToFormat(QImage::Format_Grayscale8);

    PatternSource source(Format(format), size, 100);
    Surface surface;
    SurfaceStream stream(&surface, &source);
    stream.setBayerDemosaicEnabled(true);
    QTRY_VERIFY(stream.framesPublished() >= 6); // each buffer has been used again
    const QImage seen = stream.cloneLatestImageForRender();
    // The ball and the counter make up 1.5 % of the cells. Interpolation cannot follow every edge of a mosaic.
    const double percent = percentDifferent(seen, wanted, isMosaic ? 16 : 1);
    QVERIFY2(percent < 2, qPrintable(QString::number(percent)));
}

void ViewerTest::lentFramesStayAsTheyAre()
{
    PatternSource source(Mono8, QSize(320, 240), 1000); // waits out the millisecond to the next frame
    RawImage first;
    ScopedLock lock;
    QVERIFY(source.getNextFrame(&first, &lock));
    const std::vector<std::uint8_t> pixels(first.data, first.data + 320 * 240);

    RawImage newest;
    RawImage before;
    for (int i = 0; i < 20; ++i) {
        before = newest;
        ScopedLock passing;
        QVERIFY(source.getNextFrame(&newest, &passing));
        QVERIFY(newest.data != first.data);
    }
    QVERIFY(std::equal(pixels.begin(), pixels.end(), first.data));
    QVERIFY(source.getFrameLock(newest).good());
    QVERIFY(source.getFrameLock(before).good());
    QVERIFY(source.getFrameLock(first).bad()); // only the lock from its delivery keeps it
}

void ViewerTest::filesPlayInOrderAgainAndAgain()
{
    QTemporaryDir folder;
    writePictures(folder);
    FrameTaker taker;
    FileSource source(folder.path(), 50);
    taker.take(source);
    QTRY_COMPARE(taker.count.load(), FrameTaker::wanted);
    // The first one may have been announced before the connection was there.
    std::size_t width = taker.frames.front().width;
    for (const RawImage& frame : taker.frames) {
        QCOMPARE(frame.width, width);
        width = width == 23 ? 21 : width + 1;
    }
    QVERIFY(taker.areIntact);
}

void ViewerTest::runsEndByThemselves()
{
    PatternSource source(Mono8, QSize(64, 48), 1000);
    QVERIFY(source.pause() && !source.getNextFrame(nullptr, nullptr));
    QVERIFY(source.trigger() && source.getNextFrame(nullptr, nullptr) && !source.getNextFrame(nullptr, nullptr));
    QVERIFY(!source.startFixed(0) && source.startFixed(3));
    const QSignalSpy changes(source.signalHandler(), SIGNAL(acquisitionStateChanged()));
    for (int i = 0; i < 3; ++i)
        QVERIFY(source.isRunningFixed() && changes.isEmpty() && source.getNextFrame(nullptr, nullptr));
    QVERIFY(source.isStopped() && changes.count() == 1 && !source.getNextFrame(nullptr, nullptr));
}

void ViewerTest::stepsGoForthAndBack()
{
    QTemporaryDir folder;
    writePictures(folder);
    // Their second frames would come by themselves after ten seconds.
    PatternSource pattern(Mono8, QSize(320, 240), 0.1);
    FileSource files(folder.path(), 0.1);
    for (Source* const source : {static_cast<Source*>(&pattern), static_cast<Source*>(&files)}) {
        std::vector<std::vector<std::uint8_t>> pictures;
        const auto take = [&] {
            RawImage frame;
            ScopedLock lock;
            bool isTaken = false;
            QTRY_VERIFY(isTaken = isTaken || source->getNextFrame(&frame, &lock));
            pictures.emplace_back(frame.data, frame.data + frame.width * frame.height);
        };
        take();
        for (const char step : QByteArray(">><<<>")) {
            QVERIFY(step == '>' ? source->startSingle() : source->startSingleReverse());
            take();
            QVERIFY(source->isStopped());
        }
        QCOMPARE(pictures.size(), std::size_t(7));
        QVERIFY(pictures[0] != pictures[1] && pictures[1] != pictures[2] && pictures[5] != pictures[0]);
        QVERIFY(pictures[3] == pictures[1] && pictures[4] == pictures[0] && pictures[6] == pictures[0]);
        QVERIFY(source == &pattern || pictures[5] == pictures[2]); // before the first picture there is the last one
    }
}

void ViewerTest::modesChangeTheRun()
{
    PatternSource source(Mono10p, QSize(64, 48), 1000);
    char name[16] = "";
    std::size_t size = sizeof name;
    QVERIFY(source.setupMode("Mono12") && !source.setupMode("Mono9") && source.activeSetupMode(name, &size));
    RawImage frame;
    QVERIFY(source.getNextFrame(&frame, nullptr));
    QVERIFY(frame.format == Mono12 && qstrcmp(name, "Mono12") == 0);
    QVERIFY(source.cleanup() && !source.activeSetupMode(name, &size));
    QVERIFY(source.setupMode("Mono10p") && source.start() && source.getNextFrame(&frame, nullptr));
    QCOMPARE(frame.format, Mono10p);
}

void ViewerTest::windowShowsFiles_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QImage::Format>("format");
    QTest::addColumn<QString>("shownAs");
    QTest::newRow("grey 8") << "picture.png" << QImage::Format_Grayscale8 << "Mono8";
    QTest::newRow("grey 16") << "picture.png" << QImage::Format_Grayscale16 << "Mono16";
    QTest::newRow("PGM 8") << "picture.pgm" << QImage::Format_Grayscale8 << "Mono8";
    QTest::newRow("PGM 12") << "picture.pgm" << QImage::Format_Grayscale16 << "Mono12";
    QTest::newRow("colour 8") << "picture.png" << QImage::Format_RGB888 << "BGR8";
    QTest::newRow("colour 16") << "picture.png" << QImage::Format_RGBX64 << "BGR16";
    QTest::newRow("JPEG") << "picture.jpeg" << QImage::Format_RGB888 << "BGR8";
}

void ViewerTest::windowShowsFiles()
{
    QFETCH(QString, file);
    QFETCH(QImage::Format, format);
    QFETCH(QString, shownAs);
    const WorkingFolder folder;
    const QImage picture = gradient(QSize(203, 104), format); // rows that the toolkit pads
    if (shownAs == QLatin1String("Mono12"))
        writeDeepPgm(folder.filePath(file), picture, 12);
    else
        QVERIFY(picture.save(folder.filePath(file), nullptr, 100));
    writeText(folder.filePath(QStringLiteral("broken.png")), "no picture");

    const Ending ending = runViewer("--source files . --frames 3 --screenshot shot.png", folder);
    QCOMPARE(ending.exitCode, 0);
    QVERIFY2(ending.output.startsWith(shownAs + QLatin1String(" 203 x 104: ")), qPrintable(ending.output));
    QCOMPARE(ending.errors.count(QLatin1String("broken.png")), 1);
    QCOMPARE(
        percentDifferent(pictureIn(QImage(folder.filePath(QStringLiteral("shot.png"))), picture.size()), picture, 3),
        0.0);
}

void ViewerTest::endings()
{
    const WorkingFolder folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("empty")) && QDir(folder.path()).mkdir(QStringLiteral("broken")));
    writeText(folder.filePath(QStringLiteral("broken/a.png")), "");
    const auto check = [&](const char* arguments, int exitCode, const char* message) {
        const Ending ending = runViewer(arguments, folder);
        QVERIFY2(ending.exitCode == exitCode && ending.errors.contains(QLatin1String(message)),
                 qPrintable(QString::number(ending.exitCode) + ending.errors));
    };
    check("--help", 0, "");
    check("--bogus", 2, "bogus");
    check("--source tape", 2, "tape");
    check("--format Mono9", 2, "Mono9");
    check("--size 640", 2, "--size");
    check("--size 15x16", 2, "--size");
    check("--size 16x8193", 2, "--size");
    check("--fps 0", 2, "--fps");
    check("--zoom 0.5", 2, "--zoom");
    check("--frames 0", 2, "--frames");
    check("somewhere", 2, "somewhere");
    check("--source files", 2, "folder");
    check("--source files . --format Mono8", 2, "--format");
    check("--source camera --fps 5", 2, "--fps");
    check("--source files missing", 1, "missing");
    check("--source files empty", 1, "no PNG, PGM or JPEG");
    check("--source files broken --frames 1", 1, "none of the files");
    check("--frames 1 --screenshot missing/a.png", 1, "missing/a.png");
}

QTEST_MAIN(ViewerTest)
#include "viewer_test.moc"
