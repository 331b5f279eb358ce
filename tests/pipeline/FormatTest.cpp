// SPDX-License-Identifier: MIT
// Tests the names and properties of pixel formats.
#include "pipeline/PixelReader.h"
#include "pipeline/PixelReference.h"

#include <QtTest/QtTest>

using namespace PixelReference;

class FormatTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyCodeHasItsNameOrNone();
    void unknownNamesAreRefused();
    void everyDepthHasItsSizeOrNone();
};

void FormatTest::everyCodeHasItsNameOrNone()
{
    QMap<unsigned, QByteArray> names;
    for (const NamedFormat& named : namedFormats()) {
        names[named.format] = named.name;
        Format found = Format(0);
        QVERIFY(formatFromName(named.name.constData(), &found));
        QCOMPARE(found, named.format);
    }
    QCOMPARE(names.size(), 47);
    for (unsigned code = 0; code < 0x20000; ++code) {
        const char* const name = formatName(Format(code));
        QCOMPARE(name != nullptr, names.contains(code));
        QCOMPARE(QByteArray(name), names.value(code));
    }
}

void FormatTest::unknownNamesAreRefused()
{
    Format format = BayerGR12;
    for (const char* name : {"", " ", "mono8", "Mono", "Mono8 ", " Mono8", "Mono88", "Mono9", "Mono10P", "BayerRG",
                             "RGB8p", "RGB10", "BayerRGB8", static_cast<const char*>(nullptr)})
        QVERIFY2(!formatFromName(name, &format), name);
    QCOMPARE(format, BayerGR12);
    QVERIFY(!formatFromName("Mono8", nullptr));
}

void FormatTest::everyDepthHasItsSizeOrNone()
{
    QSet<unsigned> known;
    for (const NamedFormat& named : namedFormats()) {
        const Layout layout = layoutOf(named.format);
        known += named.format & 0xFF;
        QCOMPARE(bytesPerPixel(named.format), layout.bytes);
        QCOMPARE(channelMaximum(named.format), (1u << layout.bits) - 1);
        QCOMPARE(isMonochrome(named.format), layout.channels == 1);
        QCOMPARE(isColor(named.format), layout.channels == 3);
    }
    for (unsigned depth = 0; depth < 256; ++depth) {
        QCOMPARE(bytesPerPixel(Format(depth)) != 0, known.contains(depth));
        QCOMPARE(channelMaximum(Format(depth)) != 0, known.contains(depth));
        QCOMPARE(isMonochrome(Format(depth)) || isColor(Format(depth)), known.contains(depth));
    }
}

QTEST_GUILESS_MAIN(FormatTest)
#include "FormatTest.moc"
