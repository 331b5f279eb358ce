// SPDX-License-Identifier: MIT
// Tests the registry of a host's file formats, and who owns a file interface.
#include <Vistrel/ScopedFileInterface.h>

#include <QtTest/QtTest>

#include <climits>
#include <thread>
#include <vector>

using namespace Vistrel;

namespace {

class Interface : public AbstractFileInterface
{
public:
    explicit Interface(int* destroyed = nullptr) : m_destroyed(destroyed) {}
    ~Interface() override
    {
        if (m_destroyed)
            ++*m_destroyed;
    }

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

private:
    int* m_destroyed;
};

} // namespace

class FileInterfaceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void formatsAreAdded_data();
    void formatsAreAdded();
    void extensionsAreCompared();
    void textOut();
    void threadsFillAndQuery();
    void oneOwner();
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

void FileInterfaceTest::extensionsAreCompared()
{
    const auto compare = Interface::compareExtensions;
    QCOMPARE(compare(".PNG", "png"), 0);
    QVERIFY(compare("z9", ".aaa") > 0 && compare(".aaa", "z9") < 0 && compare("aaa", "z9") != INT_MIN);
    QCOMPARE(compare("tif", "TIFF"), -1);
    QCOMPARE(compare("tiff", "tif"), 1);
    QVERIFY(compare("tif", nullptr) == INT_MIN && compare("t f", "tif") == INT_MIN);
}

void FileInterfaceTest::textOut()
{
    Interface files;
    std::size_t count = 9;
    std::size_t size = 4;
    char text[4] = "xxx";
    QVERIFY(files.addFormat("tif", nullptr, nullptr) && files.addFormat("png", nullptr, nullptr));
    QVERIFY(!files.queryFormats(&count, text, nullptr) && !files.queryFormatPattern("png", text, nullptr));
    QCOMPARE(count, std::size_t{9});
    QVERIFY(files.queryFormats(&count, nullptr, nullptr));
    QCOMPARE(count, std::size_t{2});
    QVERIFY(files.queryFormats(nullptr, text, &size));
    QCOMPARE(QByteArray(text, 4), QByteArray(".pn", 4));
    QCOMPARE(size, std::size_t{10});
}

void FileInterfaceTest::threadsFillAndQuery()
{
    Interface files;
    std::vector<std::thread> threads;
    for (char letter = 'a'; letter < 'e'; ++letter) {
        threads.emplace_back([&files, letter] {
            for (char digit = '0'; digit <= '9'; ++digit) {
                const char extension[] = {letter, digit, '\0'};
                files.addFormat(extension, nullptr, nullptr);
                files.addFormat("same", nullptr, nullptr);
                files.formats();
                files.pattern("same");
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    QCOMPARE(files.formats().split(' ').size(), 41);
}

void FileInterfaceTest::oneOwner()
{
    int destroyed = 0;
    {
        ScopedFileInterface owner(new Interface(&destroyed));
        ScopedFileInterface other(std::move(owner));
        QVERIFY(!owner && other && other->addFormat("tif", nullptr, nullptr) && (*other).hasFormat("tif"));
        QVERIFY(!other->load("a.tif", nullptr) && !other->save(RawImage(), "a.tif"));
        owner.reset(new Interface(&destroyed));
        owner.take(std::move(other));
        QCOMPARE(destroyed, 1);
        QVERIFY(!other.get() && owner.get()->hasFormat("tif"));
    }
    QCOMPARE(destroyed, 2);
}

QTEST_GUILESS_MAIN(FileInterfaceTest)
#include "FileInterfaceTest.moc"
