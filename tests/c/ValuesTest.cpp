// SPDX-License-Identifier: MIT
// Tests all properties of the C interface by tables: what each takes and gives, and what it refuses.
#include "c/HostCamera.h"

namespace {

enum Type { Int32, Double, Bool, CStr, Data }; // as the numbers name it

std::int32_t getAny(int type, Handle handle, std::int32_t number, Handle value, std::size_t* size)
{
    return type == Int32    ? VTGetPropInt32(handle, number, value)
           : type == Double ? VTGetPropDouble(handle, number, value)
           : type == Bool   ? VTGetPropBool(handle, number, value)
           : type == CStr   ? VTGetPropCStr(handle, number, value, size)
                            : VTGetPropData(handle, number, value, size);
}

} // namespace

class ValuesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_camera.reset(); }
    void everyProperty();
    void textsAreCut();
    void dataFitWhole();
    void bitmapLock();

private:
    Handle ownerOf(std::int32_t number) const;

    std::unique_ptr<Camera> m_camera;
    Handle m_window{}, m_action{};
};

void ValuesTest::init()
{
    m_camera = std::make_unique<Camera>();
    m_window = Handle{m_camera->window};
    m_action = Handle{m_camera->addAction()};
    QCOMPARE(VTSetPropBool(m_action, VT_ACTION_CHECKABLE, true), VT_OK + 0); // which VT_ACTION_CHECKED asks for
}

Handle ValuesTest::ownerOf(std::int32_t number) const
{
    return number / 1000 == 1 ? Handle{app} : number / 1000 == 4 ? m_action : m_window;
}

// Properties ----------------------------------------------------------------------------------------------------------

// Each is read by its type; a switch keeps what it is set to.
void ValuesTest::everyProperty()
{
    int count = 0;
    for (std::int32_t number = 1000; number < 5000; ++number) {
        char value[1000] = {};
        std::size_t size = sizeof value;
        const int type = number / 100 % 10;
        const std::int32_t code = getAny(type, ownerOf(number), number, Handle{value}, &size);
        if (code == VT_ERROR_UNKNOWN_PROPERTY || number == VT_WINDOW_RAISE)
            continue;
        QCOMPARE(code, VT_OK + 0);
        ++count;
        const bool isSource = number / 1000 == 3; // whose switches the features set
        for (int i = 0; i < 2 && type == Bool && !isSource; ++i) {
            const bool wanted = !*value;
            QCOMPARE(VTSetPropBool(ownerOf(number), number, wanted), VT_OK + 0);
            QCOMPARE(getAny(type, ownerOf(number), number, Handle{value}, nullptr), VT_OK + 0);
            QCOMPARE(bool(*value), wanted);
        }
    }
    QCOMPARE(count, 66);
}

// Nothing is written behind a text, and none in place of another.
void ValuesTest::textsAreCut()
{
    std::map<std::int32_t, QByteArray> texts;
    for (const std::int32_t number :
         {VT_WINDOW_TITLE, VT_WINDOW_ABOUT_TITLE, VT_WINDOW_ABOUT_TEXT, VT_ACTION_TEXT, VT_ACTION_TOOL_TIP}) {
        texts[number] = QByteArray::number(number) + (number < 4000 ? "\xe9" : "."); // Latin-1
        QCOMPARE(VTSetPropCStr(ownerOf(number), number, texts[number]), VT_OK + 0);
    }
    for (const auto& [number, text] : texts) {
        for (const int capacity : {text.size(), text.size() + 1}) {
            QByteArray buffer(8, '<');
            auto size = static_cast<std::size_t>(capacity);
            QCOMPARE(VTGetPropCStr(ownerOf(number), number, buffer.data(), &size), VT_OK + 0);
            QCOMPARE(size, std::size_t(text.size()) + 1);
            QCOMPARE(buffer, text.left(capacity - 1) + '\0' + QByteArray(8 - capacity, '<'));
        }
    }
}

// What is set comes back as it is, from any capacity that is enough; nothing is written behind it.
void ValuesTest::dataFitWhole()
{
    using Words = QVector<std::int32_t>;
    const struct
    {
        std::int32_t number;
        Words good;
        QVector<Words> bad;
    } rows[] = {
        {VT_WINDOW_GEOMETRY, {41, 52, 640, 480}, {{1, 2, 0, 100}, {1, 2, 100, -1}}},
        {VT_WINDOW_FRAME_GEOMETRY, {44, 55, 700, 500}, {{1, 2, 0, 100}, {1, 2, 100, -1}}},
        {VT_WINDOW_IMAGE_OFFSET, {0, 0}, {}},
        {VT_WINDOW_TRANSIENT_PARENT, Words(sizeof(void*) / 4), {}},
        {VT_WINDOW_BITMAP_LOCK,
         {5, 3, VT_FORMAT_RGB8},
         {{0, 3, VT_FORMAT_MONO8}, {5, 0, VT_FORMAT_MONO8}, {5, 3, VT_FORMAT_MONO16}, {-1, 3, VT_FORMAT_MONO8}}}};
    for (const auto& [number, good, bad] : rows) {
        const auto whole = static_cast<std::size_t>(good.size()) * 4;
        QCOMPARE(VTSetPropData(m_window, number, good.constData(), whole), VT_OK + 0);
        for (const Words& data : bad)
            QCOMPARE(VTSetPropData(m_window, number, data.constData(), whole), VT_ERROR_OUT_OF_RANGE + 0);
        for (const std::size_t capacity : {whole - 1, whole, whole + 1}) {
            QByteArray buffer(64, '<'), wanted = buffer;
            std::size_t size = capacity;
            QCOMPARE(VTGetPropData(m_window, number, buffer.data(), &size),
                     capacity < whole ? VT_ERROR_BUFFER_TOO_SMALL : VT_OK);
            if (capacity >= whole)
                std::memcpy(wanted.data(), good.constData(), whole);
            QVERIFY(size == whole && buffer == wanted);
            if (capacity != whole)
                QCOMPARE(VTSetPropData(m_window, number, good.constData(), capacity), VT_ERROR_OUT_OF_RANGE + 0);
        }
    }
}

// One that cannot be had leaves the one that there is.
void ValuesTest::bitmapLock()
{
    const std::uint32_t lock[] = {5, 3, VT_FORMAT_RGB8};
    const std::uint32_t huge[] = {INT32_MAX, INT32_MAX, VT_FORMAT_RGBA8};
    VTRawImage bitmap{}, after{};
    std::size_t size = sizeof bitmap;
    QCOMPARE(VTSetPropData(m_window, VT_WINDOW_BITMAP_LOCK, lock, sizeof lock), VT_OK + 0);
    QVERIFY(VTGetPropData(m_window, VT_WINDOW_BITMAP, &bitmap, &size) == VT_OK && size == sizeof bitmap);
    QVERIFY(bitmap.data && bitmap.width == 5 && bitmap.height == 3 && bitmap.format == VT_FORMAT_RGB8);
    QCOMPARE(VTSetPropData(m_window, VT_WINDOW_BITMAP_LOCK, huge, sizeof huge), VT_ERROR_PROPERTY_REFUSED + 0);
    QVERIFY(VTGetPropData(m_window, VT_WINDOW_BITMAP, &after, &size) == VT_OK && after.data == bitmap.data);
    QCOMPARE(VTSetPropData(m_window, VT_WINDOW_BITMAP_LOCK, nullptr, 0), VT_OK + 0);
    QVERIFY(VTGetPropData(m_window, VT_WINDOW_BITMAP_LOCK, nullptr, &size) == VT_OK && size == 0);
}

QTEST_APPLESS_MAIN(ValuesTest)

#include "ValuesTest.moc"
