// SPDX-License-Identifier: MIT
// Tests that frames come back from files bit for bit, that other programs see them right, and that no file does harm.
#include "pipeline/PixelReference.h"

#include <Vistrel/FileIO.h>
#include <Vistrel/PngFileInterface.h>

#include <QtGui/QImageWriter>
#include <QtTest/QtTest>

#include <limits>
#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

using namespace PixelReference;

namespace {

/// Format, width and bytes of the frame held.
QByteArray frameOf(const FileIO& file)
{
    RawImage raw;
    if (!file.getData(raw))
        return QByteArray();
    const std::size_t size = raw.width * raw.height * layoutOf(raw.format).bytes;
    return QByteArray(formatName(raw.format)) + ' ' + QByteArray::number(static_cast<int>(raw.width)) + ' ' +
           QByteArray(reinterpret_cast<const char*>(raw.data), static_cast<int>(size));
}

unsigned sampleAt(const QImage& image, std::size_t x, std::size_t y, unsigned color)
{
    const uchar* const row = image.constScanLine(static_cast<int>(y));
    if (image.format() == QImage::Format_Grayscale8)
        return row[x];
    if (image.format() == QImage::Format_Grayscale16)
        return reinterpret_cast<const quint16*>(row)[x];
    if (image.format() == QImage::Format_RGBX64)
        return reinterpret_cast<const quint16*>(row)[4 * x + color];
    return reinterpret_cast<const QRgb*>(row)[x] >> (16 - 8 * color) & 0xFF;
}

QByteArray pngChunk(const QByteArray& typeAndData)
{
    quint32 sum = ~quint32{0};
    for (const char byte : typeAndData) {
        sum ^= uchar(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = sum >> 1 ^ (sum & 1 ? 0xEDB88320u : 0u);
    }
    const quint32 ends[] = {qToBigEndian(quint32(typeAndData.size() - 4)), qToBigEndian(~sum)};
    const QByteArray bytes(reinterpret_cast<const char*>(ends), sizeof ends);
    return bytes.left(4) + typeAndData + bytes.right(4);
}

#ifdef Q_OS_UNIX
/// A disk on which no file gets longer than this.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_before;
};
#endif

const quint8 fewBytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
const RawImage fewPixels{fewBytes, 4, 2, Mono8, nullptr};

} // namespace

class FileIOTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framesSurvivePng_data();
    void framesSurvivePng();
    void fieldsAndAlphaOnlyWhereNeeded();
    void otherTypesHoldEightBits();
    void foreignPicturesAndFalseFields_data();
    void foreignPicturesAndFalseFields();
    void badFilesLeaveTheFrame_data();
    void badFilesLeaveTheFrame();
    void onlyPixelsAreRead();
    void failedSavesLeaveTheFile();
    void fullDiskLeavesTheFile();
    void badFramesAreRefused();
    void pngFileInterface();

private:
    QString pathOf(const char* name) const { return m_folder.filePath(QLatin1String(name)); }
    QByteArray nameOf(const char* name) const { return QFile::encodeName(pathOf(name)); }
    QByteArray contentOf(const char* name) const
    {
        QFile file(pathOf(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void write(const char* name, const QByteArray& content) const
    {
        QFile file(pathOf(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }

    QTemporaryDir m_folder;
};

void FileIOTest::framesSurvivePng_data()
{
    QTest::addColumn<unsigned>("code");
    for (const NamedFormat& named : namedFormats())
        QTest::newRow(named.name.constData()) << unsigned(named.format);
}

void FileIOTest::framesSurvivePng()
{
    QFETCH(unsigned, code);
    const Format format = Format(code);
    const Layout layout = layoutOf(format);
    Random random(code);
    for (const auto& [w, h] :
         std::initializer_list<std::pair<std::size_t, std::size_t>>{{1, 1}, {2, 5}, {3, 2}, {4, 1}, {5, 3}, {66, 7}}) {
        const GuardedBuffer memory(neededBytes(format, w, h), GuardedBuffer::AtBack);
        fillRandom(memory, random);
        const FileIO saved(RawImage{memory.data(), w, h, format, nullptr});
        FileIO loaded;
        QVERIFY(saved.save(nameOf("a.png")) && loaded.load(nameOf("a.png")));
        QCOMPARE(frameOf(loaded), frameOf(saved));

        RawImage raw;
        QVERIFY(saved.getData(raw) && std::equal(memory.data(), memory.data() + memory.size(), raw.data));
        const QImage image(pathOf("a.png"));
        QCOMPARE(image.format(),
                 layout.channels == 1 ? (layout.bits > 8 ? QImage::Format_Grayscale16 : QImage::Format_Grayscale8)
                 : layout.bits > 8    ? QImage::Format_RGBX64
                                      : (layout.bytes == 4 ? QImage::Format_ARGB32 : QImage::Format_RGB32));
        for (unsigned i = 0; i < w * h * layout.channels; ++i) {
            const unsigned pixel = i / layout.channels;
            const unsigned color = i % layout.channels;
            QCOMPARE(sampleAt(image, pixel % w, pixel / w, color),
                     channelAt(raw, pixel % w, pixel / w, channelOf(format, color)));
        }
    }
}

void FileIOTest::fieldsAndAlphaOnlyWhereNeeded()
{
    std::vector<std::uint8_t> bytes(300 * 1000 * 4, 0x3F); // one chunk of spare bits has not room for all
    QByteArray content;
    const auto chunksOf = [&](Format format, std::size_t width) {
        const FileIO saved(RawImage{bytes.data(), width, 1000, format, nullptr});
        FileIO loaded;
        const bool isSame =
            saved.save(nameOf("a.png")) && loaded.load(nameOf("a.png")) && frameOf(loaded) == frameOf(saved);
        content = contentOf("a.png");
        return isSame ? content.count("vsBT") : -1;
    };
    QCOMPARE(chunksOf(RGB10p32, 300), 0);
    QVERIFY(content.contains(QByteArray("Vistrel Format\0RGB10p32", 23)) && !content.contains("pHYs"));
    bytes.back() = 0xC0;
    QCOMPARE(chunksOf(RGB10p32, 300), 1);
    bytes[3] = 0xC0;
    QCOMPARE(chunksOf(RGB10p32, 300), 2);
    const QImage image(pathOf("a.png")); // the chunks are nothing to others
    QVERIFY(image.width() == 300 && image.textKeys().size() == 1);

    QVERIFY(chunksOf(RGBa8, 9) == 0 && QImage(pathOf("a.png")).hasAlphaChannel());
    for (std::size_t i = 3; i < bytes.size(); i += 4)
        bytes[i] = 0;
    QVERIFY(chunksOf(RGBa8, 9) == 0 && !QImage(pathOf("a.png")).hasAlphaChannel());
}

void FileIOTest::otherTypesHoldEightBits()
{
    Random random(1);
    std::vector<std::uint8_t> noise(5 * 17 * 6);
    std::generate(noise.begin(), noise.end(), std::ref(random));
    const std::vector<std::uint8_t> even(noise.size(),
                                         0x55); // the same in every sample: JPEG keeps it but for rounding
    for (const NamedFormat& named : namedFormats()) {
        const bool isGray = layoutOf(named.format).channels == 1;
        const auto kind = isGray ? QImage::Format_Indexed8 : QImage::Format_RGB888;
        for (const char* name : {"a.bmp", "a.jpg", "a.JPEG"}) {
            const bool isExact = name[2] == 'b';
            RawImage raw{isExact ? noise.data() : even.data(), 5, 17, named.format, nullptr};
            const FileIO saved(raw);
            QVERIFY(saved.getData(raw));
            if (isMosaic(raw.format))
                raw.format = Format(raw.format & ~formatPatternMask);
            const QByteArray expected = converted(raw, kind);
            FileIO loaded;
            QVERIFY(saved.save(nameOf(name)) && loaded.load(nameOf(name)) && loaded.getData(raw));
            QCOMPARE(raw.format, isGray ? Mono8 : RGB8);
            const QByteArray got = converted(raw, kind);
            QCOMPARE(got.size(), expected.size());
            QVERIFY2(isExact ? got == expected : qAbs(uchar(got[0]) - uchar(expected[0])) <= 2, named.name.constData());
        }
    }
}

void FileIOTest::foreignPicturesAndFalseFields_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QByteArray>("spare");
    QTest::addColumn<QByteArray>("format");
    const auto row = [](QImage::Format kind, const char* field, const char* spare, const char* format) {
        QTest::addRow("%d %s %s", kind, field, spare)
            << int(kind) << QString::fromLatin1(field) << QByteArray(spare) << QByteArray(format);
    };
    row(QImage::Format_Mono, "", "", "Mono8");
    row(QImage::Format_Grayscale8, "", "", "Mono8");
    row(QImage::Format_Grayscale16, "", "", "Mono16");
    row(QImage::Format_RGB32, "", "", "RGB8");
    row(QImage::Format_ARGB32, "", "", "RGBa8");
    row(QImage::Format_RGBA64, "", "", "RGB16");
    row(QImage::Format_RGB32, "RGB9", "", "RGB8");
    row(QImage::Format_Grayscale8, "Mono10", "", "Mono8");
    row(QImage::Format_Grayscale16, "RGB16", "", "Mono16");
    row(QImage::Format_ARGB32, "RGB8", "", "RGBa8");
    row(QImage::Format_Grayscale16, "Mono10p", "", "Mono16"); // samples of more than ten bits
    row(QImage::Format_RGBX64, "BGR10p32", "", "RGB16");
    row(QImage::Format_Grayscale16, "Mono10p", "spare bits of another frame", "Mono16");
    row(QImage::Format_Grayscale16, "Mono10p", "cut", "Mono16");
}

void FileIOTest::foreignPicturesAndFalseFields()
{
    QFETCH(int, kind);
    QFETCH(QString, field);
    QFETCH(QByteArray, spare);
    QFETCH(QByteArray, format);
    QImage image(5, 2, QImage::Format(kind));
    if (kind == QImage::Format_Mono)
        image.setColorTable({0xFF000000u, 0xFFFFFFFFu});
    image.fill(kind == QImage::Format_Mono ? QColor(Qt::white)
               : !spare.isEmpty()          ? QColor(Qt::black) // fits ten bits
                                           : QColor(200, 100, 50, image.hasAlphaChannel() ? 99 : 255));
    image.setText(QStringLiteral("Vistrel Format"), field);
    FileIO file;
    RawImage raw;
    QVERIFY(image.save(pathOf("b.png")));
    if (!spare.isEmpty())
        write("b.png", contentOf("b.png").insert(8 + 25, pngChunk("vsBT" + QByteArray(4, '\0') + spare)));
    QVERIFY(file.load(nameOf("b.png")) && file.getData(raw));
    QCOMPARE(QByteArray(formatName(raw.format)), format);
    const QRgba64 pixel = image.pixelColor(4, 1).rgba64();
    const unsigned colors[] = {pixel.red(), pixel.green(), pixel.blue()};
    const Layout layout = layoutOf(raw.format);
    for (unsigned color = 0; color < layout.channels; ++color)
        QCOMPARE(channelAt(raw, 4, 1, channelOf(raw.format, color)), colors[color] >> (16 - layout.bits));
    QVERIFY(format != "RGBa8" || raw.data[3] == 99);
}

void FileIOTest::badFilesLeaveTheFrame_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("content");
    QImage image(64, 48, QImage::Format_Grayscale8);
    image.fill(Qt::gray);
    const auto fileOf = [&image](const char* type) {
        QBuffer file;
        return image.save(&file, type) ? file.data() : QByteArray();
    };
    const auto row = [](const char* tag, const char* name, const QByteArray& content) {
        QTest::newRow(tag) << QByteArray(name) << content;
    };
    const QByteArray png = fileOf("png");
    const QByteArray jpg = fileOf("jpg");
    const QByteArray bmp = fileOf("bmp");
    const int jpgSize = jpg.indexOf("\xFF\xC0") + 5;
    row("empty", "x.png", "");
    row("png, cut", "x.png", png.left(png.size() / 2));
    row("png, damaged", "x.png", QByteArray(png).replace(png.indexOf("IDAT") + 9, 2, "zz"));
    row("png, damaged extra bytes", "x.png", QByteArray(png).insert(33, pngChunk("vsBT....spare").replace(9, 1, "!")));
    row("jpg, cut", "x.jpg", jpg.left(jpg.size() - 2));
    row("jpg, cut segment", "x.jpg", jpg.left(jpgSize - 2));
    row("jpg, huge", "x.jpg", QByteArray(jpg).replace(jpgSize, 4, "\xF0\xF0\xF0\xF0") + QByteArray(500000, '.'));
    row("jpg, too large for its bytes", "x.jpg", QByteArray(jpg).replace(jpgSize, 4, "\x1F\x1F\x1F\x1F"));
    QBuffer steps;
    QImageWriter writer(&steps, "jpg");
    writer.setProgressiveScanWrite(true);
    writer.write(image);
    const QByteArray last = steps.data().mid(steps.data().lastIndexOf("\xFF\xDA")).chopped(2);
    row("jpg, many scans", "x.jpg", steps.data().chopped(2) + last.repeated(64) + "\xFF\xD9");
    row("bmp, cut", "x.bmp", bmp.left(bmp.size() - 1));
    row("bmp, no bits", "x.bmp", QByteArray(bmp).replace(28, 1, QByteArray(1, '\0')));
    const QByteArray short1("\1\0\0\0", 4); // what the header says of the length must not count
    row("bmp, run lengths, cut", "x.bmp", QByteArray(bmp).replace(30, 1, "\1").replace(2, 4, short1));
    row("other type", "x.jpg", png);
    row("folder", "folder.png", QByteArray());
}

void FileIOTest::badFilesLeaveTheFrame()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, content);
    QDir(m_folder.path()).mkdir(QStringLiteral("folder.png"));
    if (!content.isNull())
        write(name, content);
    FileIO file(fewPixels);
    QVERIFY(!file.load(nameOf(name)) && !file.load(nullptr) && !file.load(""));
    QCOMPARE(frameOf(file), frameOf(FileIO(fewPixels)));
}

// The toolkit would keep texts and profiles in memory, however long they become, and shows what was in memory before
// where run lengths say nothing.
void FileIOTest::onlyPixelsAreRead()
{
    QImage image(64, 48, QImage::Format_Grayscale8);
    image.fill(Qt::gray);
    for (const char* name : {"c.png", "c.jpg", "c.bmp"})
        QVERIFY(image.save(pathOf(name)));
    // The toolkit, which has not to see them, would warn of each.
    write("c.png", contentOf("c.png").insert(8 + 25, pngChunk(QByteArray("zTXtTitle\0\0damaged", 18))));
    write("c.jpg", contentOf("c.jpg").insert(2, QByteArray("\xFF\xE2\0\x1B"
                                                           "ICC_PROFILE\0\1\1no profile",
                                                           29)));
    const QByteArray head = contentOf("c.bmp").chopped(64 * 48);
    write("c.bmp", QByteArray(head).replace(30, 1, "\1") + QByteArray("\0\1", 2));
    for (const char* name : {"c.png", "c.jpg", "c.bmp"}) {
        FileIO file;
        RawImage raw;
        QByteArray(64 * 48, '\7').clear(); // memory that has been used
        QVERIFY(file.load(nameOf(name)) && file.getData(raw));
        const int value = name[2] == 'b' ? 0 : qGray(image.pixel(0, 0));
        QVERIFY(std::all_of(raw.data, raw.data + 64 * 48, [&](int byte) { return qAbs(byte - value) <= 1; }));
    }
}

void FileIOTest::fullDiskLeavesTheFile()
{
#ifdef Q_OS_UNIX
    std::vector<std::uint8_t> bytes(300);
    std::generate(bytes.begin(), bytes.end(), Random(3));
    const FileIO file(RawImage{bytes.data(), 30, 10, Mono8, nullptr});
    const QByteArray before("old");
    // No other file fits beside the one with the long name, which is written in place.
    for (const QByteArray& name :
         {QByteArray("d.png"), QByteArray("d.jpg"), QByteArray("d.bmp"), QByteArray(250, 'd') + ".png"}) {
        bool isSaved = false;
        for (rlim_t free = rlim_t(before.size()); !isSaved && free < 5000; free += 13) {
            write(name, before);
            {
                const FullDisk disk(free);
                isSaved = file.save(nameOf(name));
            }
            QVERIFY(isSaved || contentOf(name) == before);
        }
        FileIO loaded;
        QVERIFY(loaded.load(nameOf(name)) &&
                QDir(m_folder.path()).entryList({QStringLiteral("d*")}).contains(QString::fromLatin1(name)));
    }
#endif
}

void FileIOTest::failedSavesLeaveTheFile()
{
    const QTemporaryDir folder;
    const auto nameIn = [&folder](const char* name) { return QFile::encodeName(folder.filePath(QLatin1String(name))); };
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("folder.png")));
    QVERIFY(FileIO(fewPixels).save(nameIn("old.png")) && FileIO(fewPixels).save(nameIn("old.jpg")));
    FileIO before[2];
    FileIO after[2];
    QVERIFY(before[0].load(nameIn("old.png")) && before[1].load(nameIn("old.jpg")));

    const std::vector<std::uint8_t> bytes(1000001, 7); // pixels a row that neither type can have
    const FileIO wide(RawImage{bytes.data(), bytes.size(), 1, Mono8, nullptr});
    for (const char* name : {"old.png", "old.jpg", "folder.png", "missing/a.png", "a.tif", "png"})
        QVERIFY2(!wide.save(nameIn(name)), name);
    QVERIFY(!FileIO().save(nameIn("old.png")) && !FileIO(fewPixels).save(nullptr) && !FileIO(fewPixels).save(""));
    for (const char* name : {"folder.png", "missing/a.png", "a.tif", "png"})
        QVERIFY2(!FileIO(fewPixels).save(nameIn(name)), name);
    QVERIFY(after[0].load(nameIn("old.png")) && after[1].load(nameIn("old.jpg")));
    QVERIFY(frameOf(after[0]) == frameOf(before[0]) && frameOf(after[1]) == frameOf(before[1]));
    QCOMPARE(int(QDir(folder.path()).count()), 5); // with the two of dots
}

void FileIOTest::badFramesAreRefused()
{
    FileIO file;
    RawImage got;
    QVERIFY(!file.hasData() && !file.getData(got) && !got.data);
    RawImage raw = fewPixels;
    raw.userData = &got;
    QVERIFY(file.setData(raw) && file.hasData());
    constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
    for (const RawImage& bad :
         {RawImage{nullptr, 4, 2, Mono8, nullptr}, RawImage{fewBytes, 0, 2, Mono8, nullptr},
          RawImage{fewBytes, 4, 0, Mono8, nullptr}, RawImage{fewBytes, most, most, Mono8, nullptr},
          RawImage{fewBytes, most / 2 + 1, 2, Mono16, nullptr}, RawImage{fewBytes, 4, 2, Format(9), nullptr},
          RawImage{fewBytes, 4, 2, Format(Mono8 | 0x10000), nullptr}})
        QVERIFY(!file.setData(bad) && !FileIO(bad).hasData());
    QVERIFY(file.getData(got) && file.setData(got)); // its own pixels
    QCOMPARE(frameOf(file), frameOf(FileIO(fewPixels)));
    QVERIFY(file.getData(got) && got.userData == &got && got.data != fewBytes);
    raw.format = Format(Mono8 | OrderBGR | Packedp | 0x1000000); // shown, and so saved, as Mono8
    QVERIFY(file.setData(raw) && file.getData(got) && got.format == Mono8);
    raw = RawImage{fewBytes, 1, 1, Format(BGR8 | BayerRG | PackedNoSwap), nullptr};
    QVERIFY(file.setData(raw) && file.save(nameOf("a.png")) && file.load(nameOf("a.png")) && file.getData(got));
    QVERIFY(got.format == BGR8 && std::equal(fewBytes, fewBytes + 3, got.data));
}

void FileIOTest::pngFileInterface()
{
    PngFileInterface png;
    AbstractFileInterface& files = png;
    FileIO loaded;
    const RawImage raw{fewBytes, 2, 2, BayerGB12, nullptr};
    QVERIFY(files.hasFormat("png") && files.save(raw, nameOf("deep.PNG")) && files.load(nameOf("deep.PNG"), &loaded));
    QCOMPARE(frameOf(loaded), frameOf(FileIO(raw)));
    QVERIFY(FileIO(raw).save(nameOf("a.bmp")));
    QVERIFY(!files.save(raw, nameOf("a.bmp")) && !files.load(nameOf("a.bmp"), &loaded));
    QVERIFY(FileIO(raw).save(pathOf("w.png").toStdWString()) && loaded.load(pathOf("w.png").toStdWString()));
    QVERIFY(!files.load(nameOf("deep.PNG"), nullptr) && !files.load(nullptr, &loaded) && !files.save(raw, nullptr));
}

QTEST_GUILESS_MAIN(FileIOTest)
#include "FileIOTest.moc"
