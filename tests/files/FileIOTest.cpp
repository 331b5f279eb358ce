// SPDX-License-Identifier: MIT
// Tests that frames come back from files bit for bit, that other programs see them right, and that no file does harm.
#include "pipeline/PixelReference.h"

#include <Vistrel/FileIO.h>
#include <Vistrel/PngFileInterface.h>

#include <QtGui/QImageWriter>
#include <QtTest/QtTest>

#include <array>
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

std::array<unsigned, 3> samplesAt(const QImage& image, std::size_t x, std::size_t y)
{
    const QRgba64 pixel = image.pixelColor(int(x), int(y)).rgba64();
    const unsigned scale = image.depth() == 16 || image.depth() == 64 ? 1 : 257;
    return {pixel.red() / scale, pixel.green() / scale, pixel.blue() / scale};
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

/// 64 x 48 pixels of 160.
QByteArray grayFile(const char* type, bool isProgressive = false)
{
    QImage image(64, 48, QImage::Format_Grayscale8);
    image.fill(160);
    QBuffer file;
    QImageWriter writer(&file, type);
    writer.setProgressiveScanWrite(isProgressive);
    writer.write(image);
    return file.data();
}

const quint8 fewBytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
const RawImage fewPixels{fewBytes, 4, 2, Mono8, nullptr};

} // namespace

class FileIOTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framesSurvivePng();
    void fieldsAndAlphaOnlyWhereNeeded();
    void otherTypesHoldEightBits();
    void foreignPicturesAndFalseFields();
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

void FileIOTest::framesSurvivePng()
{
    for (const NamedFormat& named : namedFormats()) {
        const Format format = named.format;
        const Layout layout = layoutOf(format);
        Random random{unsigned(format)};
        for (const QSize& size : {QSize(1, 1), QSize(2, 5), QSize(3, 2), QSize(4, 1), QSize(5, 3), QSize(66, 7)}) {
            const auto w = std::size_t(size.width()), h = std::size_t(size.height());
            const GuardedBuffer memory(neededBytes(format, w, h), GuardedBuffer::AtBack);
            fillRandom(memory, random);
            const FileIO saved(RawImage{memory.data(), w, h, format, nullptr});
            FileIO loaded;
            QVERIFY(saved.save(nameOf("a.png")) && loaded.load(nameOf("a.png")));
            QCOMPARE(frameOf(loaded), frameOf(saved));

            RawImage raw;
            QVERIFY(saved.getData(raw) && std::equal(memory.data(), memory.data() + memory.size(), raw.data));
            const QImage image(pathOf("a.png"));
            QCOMPARE(image.depth() / (layout.channels == 1 ? 1 : 4), layout.bits > 8 ? 16 : 8);
            for (unsigned i = 0; i < w * h * layout.channels; ++i) {
                const unsigned pixel = i / layout.channels;
                const unsigned color = i % layout.channels;
                QCOMPARE(samplesAt(image, pixel % w, pixel / w)[color],
                         channelAt(raw, pixel % w, pixel / w, channelOf(format, color)));
            }
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
    std::fill(bytes.begin(), bytes.end(), 0);
    QVERIFY(chunksOf(RGBa8, 9) == 0 && !QImage(pathOf("a.png")).hasAlphaChannel());
}

void FileIOTest::otherTypesHoldEightBits()
{
    const std::uint16_t words[] = {0x123, 0xFFF, 0x800};
    FileIO loaded;
    RawImage raw;
    for (const Format format : {Mono12, BayerRG12, RGB12}) {
        const bool isColor = format == RGB12;
        const FileIO deep({reinterpret_cast<const quint8*>(words), isColor ? 1u : 3u, 1, format, nullptr});
        QVERIFY(deep.save(nameOf("a.bmp")) && loaded.load(nameOf("a.bmp")) && loaded.getData(raw));
        QCOMPARE(raw.format, isColor ? RGB8 : Mono8);
        QCOMPARE(QByteArray(reinterpret_cast<const char*>(raw.data), 3), QByteArray("\x12\xFF\x80"));
    }
    QVERIFY(FileIO(fewPixels).save(nameOf("a.JPEG")) && loaded.load(nameOf("a.JPEG")) && loaded.getData(raw));
    QVERIFY(raw.format == Mono8 && raw.width == 4 && raw.height == 2 && qAbs(raw.data[7] - fewBytes[7]) <= 2);
}

void FileIOTest::foreignPicturesAndFalseFields()
{
    const struct
    {
        QImage::Format kind;
        QByteArray field, spare, format; // text, bits, and what is loaded
    } rows[] = {{QImage::Format_Mono, "", "", "Mono8"},
                {QImage::Format_Grayscale16, "", "", "Mono16"},
                {QImage::Format_ARGB32, "", "", "RGBa8"},
                {QImage::Format_RGBA64, "", "", "RGB16"},
                {QImage::Format_RGB32, "RGB9", "", "RGB8"},
                {QImage::Format_Grayscale8, "Mono10", "", "Mono8"},
                {QImage::Format_Grayscale16, "RGB16", "", "Mono16"},
                {QImage::Format_RGBX64, "BGR10p32", "", "RGB16"}, // samples of more than ten bits
                {QImage::Format_Grayscale16, "Mono10p", "spare bits of another frame", "Mono16"}};
    for (const auto& row : rows) {
        QImage image(5, 2, row.kind);
        image.fill(row.spare.isEmpty() ? QColor(200, 100, 50, 99) : QColor(Qt::black)); // which fits ten bits
        image.setText(QStringLiteral("Vistrel Format"), QString::fromLatin1(row.field));
        QVERIFY(image.save(pathOf("b.png")));
        if (!row.spare.isEmpty())
            write("b.png", contentOf("b.png").insert(8 + 25, pngChunk("vsBT" + QByteArray(4, '\0') + row.spare)));
        FileIO file;
        RawImage raw;
        QVERIFY(file.load(nameOf("b.png")) && file.getData(raw) && raw.data);
        QCOMPARE(formatName(raw.format), row.format.constData());
        const Layout layout = layoutOf(raw.format);
        for (unsigned color = 0; color < layout.channels; ++color)
            QCOMPARE(channelAt(raw, 4, 1, channelOf(raw.format, color)), samplesAt(image, 4, 1)[color]);
        QVERIFY(row.kind != QImage::Format_ARGB32 || raw.data[3] == 99);
    }
}

void FileIOTest::badFilesLeaveTheFrame()
{
    const QByteArray png = grayFile("png");
    const QByteArray jpg = grayFile("jpg");
    const QByteArray bmp = grayFile("bmp");
    const int jpgSize = jpg.indexOf("\xFF\xC0") + 5;
    const QByteArray steps = grayFile("jpg", true).chopped(2);
    const QByteArray short1("\1\0\0\0", 4); // what the header says of the length must not count
    const struct
    {
        const char* name;
        QByteArray content;
    } rows[] = {
        {"empty.png", ""},
        {"cut.png", png.left(png.size() / 2)},
        {"damaged.png", QByteArray(png).replace(png.indexOf("IDAT") + 9, 2, "zz")},
        {"damaged extra bytes.png", QByteArray(png).insert(33, pngChunk("vsBT....spare").replace(9, 1, "!"))},
        {"cut.jpg", jpg.left(jpg.size() - 2)},
        {"cut segment.jpg", jpg.left(jpgSize - 2)},
        {"huge.jpg", QByteArray(jpg).replace(jpgSize, 4, "\xF0\xF0\xF0\xF0") + QByteArray(500000, '.')},
        {"too large for its bytes.jpg", QByteArray(jpg).replace(jpgSize, 4, "\x1F\x1F\x1F\x1F")},
        {"many scans.jpg", steps + steps.mid(steps.lastIndexOf("\xFF\xDA")).repeated(64) + "\xFF\xD9"},
        {"cut.bmp", bmp.left(bmp.size() - 1)},
        {"no bits.bmp", QByteArray(bmp).replace(28, 1, QByteArray(1, '\0'))},
        {"run lengths, cut.bmp", QByteArray(bmp).replace(30, 1, "\1").replace(2, 4, short1)},
        {"other type.jpg", png},
    };
    for (const auto& row : rows) {
        write(row.name, row.content);
        FileIO file(fewPixels);
        QVERIFY2(!file.load(nameOf(row.name)), row.name);
        QVERIFY(!file.load(nullptr) && !file.load("") && !file.load(nameOf("")) && !file.load(nameOf("none.png")));
        QCOMPARE(frameOf(file), frameOf(FileIO(fewPixels)));
    }
}

// The toolkit would keep texts and profiles in memory, however long they become, and shows what was in memory before
// where run lengths say nothing.
void FileIOTest::onlyPixelsAreRead()
{
    // The toolkit, which has not to see the first two, would warn of them.
    const std::pair<const char*, QByteArray> rows[] = {
        {"c.png", grayFile("png").insert(8 + 25, pngChunk(QByteArray("zTXtTitle\0\0damaged", 18)))},
        {"c.jpg", grayFile("jpg").insert(2, QByteArray("\xFF\xE2\0\x1B"
                                                       "ICC_PROFILE\0\1\1no profile",
                                                       29))},
        {"c.bmp", grayFile("bmp").chopped(64 * 48).replace(30, 1, "\1") + QByteArray("\0\1", 2)}};
    for (const auto& [name, content] : rows) {
        write(name, content);
        FileIO file;
        RawImage raw;
        QByteArray(64 * 48, '\7').clear(); // memory that has been used
        QVERIFY(file.load(nameOf(name)) && file.getData(raw));
        const int value = name[2] == 'b' ? 0 : 160;
        QVERIFY(std::all_of(raw.data, raw.data + 64 * 48, [=](int byte) { return qAbs(byte - value) <= 1; }));
    }
}

void FileIOTest::fullDiskLeavesTheFile()
{
#ifdef Q_OS_UNIX
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const auto setLongest = [most = limit.rlim_max](rlim_t bytes) { // that a file may get
        const rlimit changed{bytes, most};
        setrlimit(RLIMIT_FSIZE, &changed);
    };
    std::vector<std::uint8_t> bytes(300);
    std::generate(bytes.begin(), bytes.end(), Random(3));
    const FileIO file(RawImage{bytes.data(), 30, 10, Mono8, nullptr});
    // No other file fits beside the one with the long name, which is written in place.
    for (const QByteArray& name :
         {QByteArray("d.png"), QByteArray("d.jpg"), QByteArray("d.bmp"), QByteArray(250, 'd') + ".png"}) {
        bool isSaved = false;
        for (rlim_t free = 3; !isSaved && free < 5000; free += 13) {
            write(name, "old");
            setLongest(free);
            isSaved = file.save(nameOf(name));
            setLongest(limit.rlim_cur);
            QVERIFY(isSaved || contentOf(name) == "old");
        }
        FileIO loaded;
        QVERIFY(loaded.load(nameOf(name)));
        QVERIFY(QDir(m_folder.path()).entryList({QStringLiteral("d*")}).contains(QString::fromLatin1(name)));
    }
#endif
}

void FileIOTest::failedSavesLeaveTheFile()
{
    const std::vector<std::uint8_t> bytes(1000001, 7); // pixels a row that neither type can have
    const FileIO wide(RawImage{bytes.data(), bytes.size(), 1, Mono8, nullptr});
    QDir(m_folder.path()).mkdir(QStringLiteral("folder.png"));
    write("old.png", "old");
    write("old.jpg", "old");
    const uint count = QDir(m_folder.path()).count();
    QVERIFY(!wide.save(nameOf("old.png")) && !wide.save(nameOf("old.jpg")) && !FileIO().save(nameOf("old.png")));
    QVERIFY(contentOf("old.png") == "old" && contentOf("old.jpg") == "old");
    for (const char* name : {"folder.png", "missing/a.png", "a.tif", "png"})
        QVERIFY2(!FileIO(fewPixels).save(nameOf(name)), name);
    QVERIFY(!FileIO(fewPixels).save(nullptr) && !FileIO(fewPixels).save(""));
    QCOMPARE(QDir(m_folder.path()).count(), count);
}

void FileIOTest::badFramesAreRefused()
{
    FileIO file;
    RawImage got;
    QVERIFY(!file.hasData() && !file.getData(got) && !got.data);
    QVERIFY(file.setData({fewBytes, 4, 2, Mono8, &got}) && file.hasData());
    constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
    for (const RawImage& bad :
         {RawImage{nullptr, 4, 2, Mono8, nullptr}, RawImage{fewBytes, 0, 2, Mono8, nullptr},
          RawImage{fewBytes, most / 2 + 1, 2, Mono16, nullptr}, RawImage{fewBytes, 4, 2, Format(9), nullptr},
          RawImage{fewBytes, 4, 2, Format(Mono8 | 0x10000), nullptr}})
        QVERIFY(!file.setData(bad) && !FileIO(bad).hasData());
    QVERIFY(file.getData(got) && file.setData(got)); // its own pixels
    QCOMPARE(frameOf(file), frameOf(FileIO(fewPixels)));
    QVERIFY(file.getData(got) && got.userData == &got && got.data != fewBytes);
    const RawImage stray{fewBytes, 1, 1, Format(BGR8 | BayerRG | PackedNoSwap), nullptr}; // saved as it is shown
    QVERIFY(FileIO(stray).save(nameOf("a.png")) && file.load(nameOf("a.png")) && file.getData(got));
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
    QVERIFY(FileIO(raw).save(pathOf("a.bmp").toStdWString()) && loaded.load(pathOf("a.bmp").toStdWString()));
    QVERIFY(!files.save(raw, nameOf("a.bmp")) && !files.load(nameOf("a.bmp"), &loaded));
    QVERIFY(!files.load(nameOf("deep.PNG"), nullptr) && !files.load(nullptr, &loaded) && !files.save(raw, nullptr));
}

QTEST_GUILESS_MAIN(FileIOTest)
#include "FileIOTest.moc"
