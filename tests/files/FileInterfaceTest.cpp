// SPDX-License-Identifier: MIT
// Tests the registry of a host's file formats.
#include <Vistrel/PngFileInterface.h>

#include <QtTest/QtTest>

using namespace Vistrel;

namespace {

template <typename Query>
QByteArray textOf(Query&& query)
{
    char text[200];
    std::size_t size = sizeof text;
    return query(text, &size) ? text : "";
}

} // namespace

class FileInterfaceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void formatsAreAdded();
};

void FileInterfaceTest::formatsAreAdded()
{
    const struct
    {
        const char *extension, *others, *description;
        QByteArray pattern; // empty for a refusal
    } rows[] = {{"png", nullptr, nullptr, ".png image file (*.png)"},
                {".PnG", nullptr, nullptr, ".PnG image file (*.png)"},
                {"PNG", "  z9 .Z9 APNG png ", "Pictures", "Pictures (*.png *.apng *.z9)"},
                {"", nullptr, nullptr, ""},
                {"p ng", nullptr, nullptr, ""},
                {"png.", nullptr, nullptr, ""},
                {"p*g", nullptr, nullptr, ""},
                {"p\xC4g", nullptr, nullptr, ""},
                {"TIF", nullptr, nullptr, ""}, // there already
                {"png", "apng a-b", nullptr, ""},
                {"png", "apng .tiff", nullptr, ""}};
    for (const auto& row : rows) {
        const bool isAdded = !row.pattern.isEmpty();
        PngFileInterface files;
        files.clearFormats();
        QVERIFY(!files.addFormat(nullptr, nullptr, nullptr) && files.addFormat("tif", "tiff", nullptr));
        QCOMPARE(files.addFormat(row.extension, row.others, row.description), isAdded);
        QCOMPARE(textOf([&](char* text, std::size_t* size) { return files.queryFormats(nullptr, text, size); }),
                 QByteArray(isAdded ? ".png .tif" : ".tif"));
        QCOMPARE(textOf([&](char* text, std::size_t* size) { return files.queryFormatPattern("Png", text, size); }),
                 row.pattern);
        QVERIFY(files.hasFormat(".PNG") == isAdded && files.hasFormat("apng") == row.pattern.contains("apng"));
        files.clearFormats();
        QVERIFY(!files.hasFormat("tiff") && files.addFormat("tiff", nullptr, ""));
    }
}

QTEST_GUILESS_MAIN(FileInterfaceTest)
#include "FileInterfaceTest.moc"
