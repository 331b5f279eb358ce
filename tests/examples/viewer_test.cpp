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
#include <condition_variable>
#include <mutex>
#include <vector>

using namespace Vistrel;

namespace {

constexpr int cellSize = 16;

// The mean colour of each cell, as an image.
QImage cells(const QImage& image)
{
    QImage means(image.width() / cellSize, image.height() / cellSize, QImage::Format_RGB32);
    for (int y = 0; y < means.height(); ++y) {
        for (int x = 0; x < means.width(); ++x) {
            int sums[3] = {};
            for (int i = 0; i < cellSize * cellSize; ++i) {
                const QRgb pixel = image.pixel(x * cellSize + i % cellSize, y * cellSize + i / cellSize);
                sums[0] += qRed(pixel);
                sums[1] += qGreen(pixel);
                sums[2] += qBlue(pixel);
            }
            constexpr int count = cellSize * cellSize;
            means.setPixel(x, y, qRgb(sums[0] / count, sums[1] / count, sums[2] / count));
        }
    }
    return means;
}

// How much of a picture, in percent of its cells, differs by more than `tolerance` levels in a channel.
double percentDifferent(const QImage& seen, const QImage& wanted, int tolerance)
{
    const QImage a = cells(seen);
    const QImage b = cells(wanted);
    if (a.size() != b.size() || a.isNull())
        return 100;
    int different = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            different += std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                                   std::abs(qBlue(p) - qBlue(q))}) > tolerance
                             ? 1
                             : 0;
        }
    }
    return 100.0 * different / (a.width() * a.height());
}

// The unscaled picture in a screenshot of the viewer, above and left of which there is only background.
QImage pictureIn(const QImage& shot, const QSize& size)
{
    for (int y = 0; y < shot.height(); ++y) {
        for (int x = 0; x < shot.width(); ++x) {
            if (shot.pixel(x, y) != shot.pixel(0, 0))
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
bool writePicture(const QString& fileName, const QImage& image, int bits)
{
    if (image.format() != QImage::Format_Grayscale16 || !fileName.endsWith(QLatin1String(".pgm")))
        return image.save(fileName, nullptr, 100);
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(QStringLiteral("P5\n# of %1 bits\n%2 %3\n%4\n")
                   .arg(bits)
                   .arg(image.width())
                   .arg(image.height())
                   .arg((1 << bits) - 1)
                   .toLatin1());
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const quint16*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const int value = line[x] >> (16 - bits);
            file.putChar(char(value >> 8));
            file.putChar(char(value));
        }
    }
    return file.flush();
}

// Takes each frame on the thread that announces it, so that none is replaced by the next one, up to a count. Frames are
// as many levels bright as they are pixels wider than 20.
class FrameTaker : public QObject
{
    Q_OBJECT

public:
    void take(AbstractAcquisitionInterface& source)
    {
        {
            const std::lock_guard<std::mutex> guard(m_mutex);
            m_source = &source;
        }
        connect(source.signalHandler(), SIGNAL(getFrameNow()), this, SLOT(takeFrame()), Qt::DirectConnection);
    }
    bool waitFor(std::size_t count)
    {
        std::unique_lock<std::mutex> guard(m_mutex);
        const bool isThere =
            m_taken.wait_for(guard, std::chrono::seconds(20), [&] { return m_widths.size() >= count; });
        m_widths.resize(std::min(m_widths.size(), count));
        m_source = nullptr;
        return isThere;
    }
    std::vector<std::size_t> widths() const { return m_widths; }
    bool areIntact() const { return m_areIntact; }

public Q_SLOTS:
    void takeFrame()
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        RawImage frame;
        ScopedLock lock;
        if (!m_source || !m_source->getNextFrame(&frame, &lock))
            return;
        m_widths.push_back(frame.width);
        m_recent.push_back(frame);
        if (m_recent.size() > 3)
            m_recent.erase(m_recent.begin());
        for (const RawImage& recent : m_recent) // this one and the last two before it
            m_areIntact &= recent.data[0] == recent.width - 20;
        m_taken.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_taken;
    AbstractAcquisitionInterface* m_source = nullptr; // null when enough frames have been taken
    std::vector<std::size_t> m_widths;
    std::vector<RawImage> m_recent;
    bool m_areIntact = true;
};

struct Ending
{
    int exitCode = -1;
    QString output;
    QString errors;
};

Ending runViewer(const QStringList& arguments)
{
    QProcess viewer;
    viewer.start(QStringLiteral(VIEWER_PROGRAM), arguments);
    if (!viewer.waitForFinished(60000) || viewer.exitStatus() != QProcess::NormalExit) {
        viewer.kill();
        viewer.waitForFinished();
        return {};
    }
    return {viewer.exitCode(), QString::fromLocal8Bit(viewer.readAllStandardOutput()),
            QString::fromLocal8Bit(viewer.readAllStandardError())};
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
    void windowShowsFiles_data();
    void windowShowsFiles();
    void endings_data();
    void endings();
};

void ViewerTest::everyFormatShowsThePicture_data()
{
    QTest::addColumn<quint32>("format");
    for (quint32 value = 0; value <= 0xFFFF; ++value) {
        if (const char* const name = formatName(Format(value)))
            QTest::newRow(name) << value;
    }
}

void ViewerTest::everyFormatShowsThePicture()
{
    QFETCH(quint32, format);
    const QSize size(640, 480);
    QImage wanted =
        drawTestPicture(size, QStringLiteral("%1 640x480").arg(QLatin1String(formatName(Format(format))))).still;
    const bool isGray = isMonochrome(Format(format)) && (format & formatPatternMask) == 0;
    if (isGray) {
        const QImage colored = wanted;
        wanted = QImage(size, QImage::Format_RGB32);
        for (int i = 0; i < size.width() * size.height(); ++i) {
            const QPoint place(i % size.width(), i / size.width());
            const int level = qGray(colored.pixel(place));
            wanted.setPixel(place, qRgb(level, level, level));
        }
    }

    PatternSource source(Format(format), size, 100);
    Surface surface;
    SurfaceStream stream(&surface, &source);
    stream.setBayerDemosaicEnabled(true);
    QTRY_VERIFY(stream.framesPublished() >= 6); // each buffer has been used again
    const QImage seen = stream.cloneLatestImageForRender();
    // The ball and the counter make up 1.5 % of the cells. Interpolation cannot follow every edge of a mosaic.
    const bool isMosaic = (format & formatPatternMask) != 0;
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
    for (int i = 1; i <= 3; ++i) {
        QImage image(20 + i, 10, QImage::Format_Grayscale8);
        image.fill(uint(i));
        QVERIFY(image.save(folder.filePath(QStringLiteral("%1.png").arg(i))));
    }
    FrameTaker taker;
    FileSource source(folder.path(), 50);
    taker.take(source);
    QVERIFY(taker.waitFor(7));
    // The first one may have been announced before the connection was there.
    const std::vector<std::size_t> rounds{21, 22, 23, 21, 22, 23, 21, 22, 23};
    const std::vector<std::size_t> widths = taker.widths();
    const auto start = std::find(rounds.begin(), rounds.end(), widths.front());
    QCOMPARE(widths, std::vector<std::size_t>(start, start + 7));
    QVERIFY(taker.areIntact());
}

void ViewerTest::windowShowsFiles_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QImage::Format>("format");
    QTest::addColumn<QString>("shownAs");
    QTest::newRow("grey 8") << "picture.png" << QImage::Format_Grayscale8 << "Mono8";
    QTest::newRow("grey 16") << "picture.png" << QImage::Format_Grayscale16 << "Mono16";
    QTest::newRow("PGM 8") << "picture.pgm" << QImage::Format_Grayscale8 << "Mono8";
    QTest::newRow("PGM 16") << "picture.pgm" << QImage::Format_Grayscale16 << "Mono16";
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
    QTemporaryDir folder;
    const QImage picture = gradient(QSize(203, 104), format); // rows that the toolkit pads
    QVERIFY(writePicture(folder.filePath(file), picture, shownAs == QLatin1String("Mono12") ? 12 : 16));
    QFile broken(folder.filePath(QStringLiteral("broken.png")));
    QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("no picture") > 0);
    broken.close();

    const QTemporaryDir elsewhere;
    const QString shot = elsewhere.filePath(QStringLiteral("shot.png"));
    const Ending ending =
        runViewer({QStringLiteral("--source"), QStringLiteral("files"), folder.path(), QStringLiteral("--frames"),
                   QStringLiteral("3"), QStringLiteral("--screenshot"), shot});
    QCOMPARE(ending.exitCode, 0);
    QVERIFY2(ending.output.startsWith(shownAs + QLatin1String(" 203 x 104: ")), qPrintable(ending.output));
    QCOMPARE(ending.errors.count(QLatin1String("broken.png")), 1);
    QCOMPARE(percentDifferent(pictureIn(QImage(shot), picture.size()), picture, 3), 0.0);
}

void ViewerTest::endings_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("message");
    QTest::newRow("help") << "--help" << 0 << "";
    QTest::newRow("unknown option") << "--bogus" << 2 << "bogus";
    QTest::newRow("unknown source") << "--source tape" << 2 << "tape";
    QTest::newRow("unknown format") << "--format Mono9" << 2 << "Mono9";
    QTest::newRow("no size") << "--size 640" << 2 << "--size";
    QTest::newRow("tiny size") << "--size 15x16" << 2 << "--size";
    QTest::newRow("huge size") << "--size 16x8193" << 2 << "--size";
    QTest::newRow("no rate") << "--fps 0" << 2 << "--fps";
    QTest::newRow("rate in words") << "--fps many" << 2 << "--fps";
    QTest::newRow("no frames") << "--frames 0" << 2 << "--frames";
    QTest::newRow("negative frames") << "--frames -3" << 2 << "--frames";
    QTest::newRow("stray argument") << "somewhere" << 2 << "somewhere";
    QTest::newRow("no folder named") << "--source files" << 2 << "folder";
    QTest::newRow("format of files") << "--source files . --format Mono8" << 2 << "--format";
    QTest::newRow("pace of a camera") << "--source camera --fps 5" << 2 << "--fps";
    QTest::newRow("missing folder") << "--source files /nonexistent" << 1 << "/nonexistent";
    QTest::newRow("empty folder") << "--source files EMPTY" << 1 << "no PNG, PGM or JPEG";
    QTest::newRow("nothing readable") << "--source files BROKEN --frames 1" << 1 << "none of the files";
    QTest::newRow("unwritable screenshot") << "--frames 1 --screenshot /nonexistent/a.png" << 1 << "/nonexistent/a.png";
}

void ViewerTest::endings()
{
    QFETCH(QString, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, message);
    QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("EMPTY")) && QDir(folder.path()).mkdir(QStringLiteral("BROKEN")));
    QFile broken(folder.filePath(QStringLiteral("BROKEN/a.png")));
    QVERIFY(broken.open(QIODevice::WriteOnly));
    broken.close();
    arguments.replace(QLatin1String("EMPTY"), folder.filePath(QStringLiteral("EMPTY")));
    arguments.replace(QLatin1String("BROKEN"), folder.filePath(QStringLiteral("BROKEN")));
    const Ending ending = runViewer(arguments.split(QLatin1Char(' ')));
    QCOMPARE(ending.exitCode, exitCode);
    QVERIFY2(ending.errors.contains(message), qPrintable(ending.errors));
}

QTEST_MAIN(ViewerTest)
#include "viewer_test.moc"
