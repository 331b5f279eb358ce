// SPDX-License-Identifier: MIT
// Tests the registry of a host's file formats.
#include <Vistrel/AbstractFileInterface.h>

#include <QtTest/QtTest>

using namespace Vistrel;

namespace {

class Interface : public AbstractFileInterface
{
public:
    QByteArray formats() const
    {
        char text[200];
        std::size_t size = sizeof text;
        return queryFormats(nullptr, text, &size) ? QByteArray(text) : QByteArray();
    }
    QByteArray pattern(const char* extension) const
    {
        char text[200];
        std::size_t size = sizeof text;
        return queryFormatPattern(extension, text, &size) ? QByteArray(text) : QByteArray();
    }
};

} // namespace

class FileInterfaceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void formatsAreAdded_data();
    void formatsAreAdded();
};

void FileInterfaceTest::formatsAreAdded_data()
{
    QTest::addColumn<QByteArray>("extensions");
    QTest::addColumn<QByteArray>("description");
    QTest::addColumn<QByteArray>("pattern"); // null for a refusal
    const QByteArray none;
    QTest::newRow("png") << none << none << QByteArray(".png image file (*.png)");
    QTest::newRow(".PnG") << none << none << QByteArray(".PnG image file (*.png)");
    QTest::newRow("PNG") << QByteArray("  z9 .Z9 APNG png ") << QByteArray("Pictures")
                         << QByteArray("Pictures (*.png *.apng *.z9)");
    for (const char* bad : {"", ".", "p ng", "..png", "png.", "p*g", "p\xC4g", "TIF", ".tiff"})
        QTest::newRow(bad) << none << none << none;
    for (const char* bad : {"apng a-b", "apng .tiff", "apng TIF"})
        QTest::newRow("png") << QByteArray(bad) << none << none;
}

void FileInterfaceTest::formatsAreAdded()
{
    QFETCH(QByteArray, extensions);
    QFETCH(QByteArray, description);
    QFETCH(QByteArray, pattern);
    const bool isAdded = !pattern.isNull();
    const auto text = [](const QByteArray& bytes) { return bytes.isNull() ? nullptr : bytes.constData(); };
    Interface files;
    QVERIFY(!files.addFormat(nullptr, nullptr, nullptr) && files.addFormat("tif", "tiff", nullptr));
    QCOMPARE(files.addFormat(QTest::currentDataTag(), text(extensions), text(description)), isAdded);
    QCOMPARE(files.formats(), QByteArray(isAdded ? ".png .tif" : ".tif"));
    QCOMPARE(files.pattern("Png"), pattern);
    for (const char* name : {"PNG", ".png", "png"})
        QCOMPARE(files.hasFormat(name), isAdded);
    QCOMPARE(files.hasFormat("APNG"), isAdded && extensions.contains("APNG"));
    QVERIFY(files.hasFormat("tiff") && files.pattern("tiff").isNull());

    files.clearFormats();
    QVERIFY(!files.hasFormat("tiff") && files.addFormat("tiff", nullptr, ""));
}

QTEST_GUILESS_MAIN(FileInterfaceTest)
#include "FileInterfaceTest.moc"
