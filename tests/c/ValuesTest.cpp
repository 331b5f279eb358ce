// SPDX-License-Identifier: MIT
// Tests all properties and features of the C interface by tables: what each takes and gives, and what it refuses.
#include "c/CallsTest.h"

#include <cmath>

namespace {

// The numbers, which stay as they are: from the first to the last.
struct Range
{
    std::int32_t first, last;
};
constexpr Range properties[] = {{1200, 1200}, {2000, 2004}, {2100, 2100}, {2200, 2200}, {2202, 2211}, {2220, 2229},
                                {2300, 2303}, {2400, 2405}, {3000, 3003}, {3200, 3215}, {4200, 4202}, {4300, 4301}};
constexpr Range features[] = {{100, 108}, {200, 200}, {300, 300}, {400, 410},   {420, 427},   {500, 500},  {600, 600},
                              {700, 703}, {800, 800}, {900, 900}, {1000, 1001}, {1100, 1100}, {1200, 1200}};

// Sets or clears a feature by its function.
template <typename Result, typename... Arguments>
std::function<std::int32_t(VTWindowHandle, std::int32_t, bool)> setter(std::int32_t (*set)(VTWindowHandle, std::int32_t,
                                                                                           Result (*)(Arguments...)))
{
    return [=](VTWindowHandle window, std::int32_t feature, bool on) {
        return set(window, feature, on ? +[](Arguments...) { return Result(); } : nullptr);
    };
}

} // namespace

class ValuesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_camera.reset(); }
    void everyProperty();
    void ranges();
    void textsAreCut();
    void dataFitWhole();
    void bitmapLock();
    void everyFeature();

private:
    Handle ownerOf(std::int32_t number) const;

    std::unique_ptr<Camera> m_camera;
    Handle m_window{}, m_action{};
};

void ValuesTest::init()
{
    QCOMPARE(VTAppCreate(1, commandLine, &app), VT_OK + 0);
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
    for (const Range& range : properties) {
        for (std::int32_t number = range.first; number <= range.last; ++number) {
            char value[1000] = {};
            std::size_t size = sizeof value;
            const int type = number / 100 % 10;
            QCOMPARE(getAny(type, ownerOf(number), number, Handle{value}, &size), VT_OK + 0);
            const bool isSource = number / 1000 == 3; // whose switches the features set
            for (int i = 0; i < 2 && type == Bool && !isSource; ++i) {
                const bool wanted = !*value;
                QCOMPARE(VTSetPropBool(ownerOf(number), number, wanted), VT_OK + 0);
                QCOMPARE(getAny(type, ownerOf(number), number, Handle{value}, nullptr), VT_OK + 0);
                QCOMPARE(bool(*value), wanted);
            }
        }
    }
}

void ValuesTest::ranges()
{
    const struct
    {
        std::int32_t number;
        std::vector<std::int32_t> good, bad;
    } rows[] = {{VT_WINDOW_COLOR_TABLE, {VT_COLOR_TABLE_CONTOURS, 0}, {-1, VT_COLOR_TABLE_CONTOURS + 1}},
                {VT_WINDOW_BAYER_FILTER_OVERRIDE, {VT_FORMAT_BAYER_BG, 0}, {-1, 1, 5 * VT_FORMAT_BAYER_GB}},
                {VT_WINDOW_SHOW_STATE, {VT_SHOW_MINIMIZED, VT_SHOW_MAXIMIZED, 0}, {-1, VT_SHOW_MAXIMIZED + 1}},
                {VT_WINDOW_ACQUISITION_STATE, {VT_ACQUISITION_RUNNING}, {-1, VT_ACQUISITION_RUNNING + 1}},
                {VT_SOURCE_START_FIXED_MIN, {INT32_MAX, 3}, {0, INT32_MIN}},
                {VT_SOURCE_START_FIXED_MAX, {INT32_MAX, 2}, {0, INT32_MIN}},
                {VT_SOURCE_START_FIXED_INC, {INT32_MAX, 1}, {0, INT32_MIN}}};
    for (const auto& row : rows) {
        for (const std::int32_t wanted : row.good)
            QCOMPARE(VTSetPropInt32(m_window, row.number, wanted), VT_OK + 0);
        for (const std::int32_t wanted : row.bad)
            QCOMPARE(VTSetPropInt32(m_window, row.number, wanted), VT_ERROR_OUT_OF_RANGE + 0);
    }
    for (const auto& row : rows) {
        std::int32_t value = -1;
        QVERIFY(VTGetPropInt32(m_window, row.number, &value) == VT_OK && value == row.good.back());
    }
    const double most = std::pow(1.125, 40);
    for (const double zoom : {1.001 / most, 0.999 * most})
        QCOMPARE(VTSetPropDouble(m_window, VT_WINDOW_ZOOM, zoom), VT_OK + 0);
    for (const double zoom : {0.999 / most, 1.001 * most, -1.0, double(NAN)})
        QCOMPARE(VTSetPropDouble(m_window, VT_WINDOW_ZOOM, zoom), VT_ERROR_OUT_OF_RANGE + 0);
}

// By each capacity; nothing is written behind it, and no text in place of another.
void ValuesTest::textsAreCut()
{
    std::map<std::int32_t, QByteArray> texts;
    for (const std::int32_t number :
         {VT_WINDOW_TITLE, VT_WINDOW_ABOUT_TITLE, VT_WINDOW_ABOUT_TEXT, VT_ACTION_TEXT, VT_ACTION_TOOL_TIP}) {
        texts[number] = QByteArray::number(number) + (number < 4000 ? "\xe9" : ""); // Latin-1
        QCOMPARE(VTSetPropCStr(ownerOf(number), number, texts[number]), VT_OK + 0);
    }
    for (const auto& [number, text] : texts) {
        for (int capacity = 0; capacity <= text.size() + 2; ++capacity) {
            QByteArray buffer(64, '<');
            std::size_t sizes[] = {std::size_t(capacity), std::size_t(capacity)};
            QCOMPARE(VTGetPropCStr(ownerOf(number), number, nullptr, &sizes[0]), VT_OK + 0);
            QCOMPARE(VTGetPropCStr(ownerOf(number), number, buffer.data(), &sizes[1]), VT_OK + 0);
            for (const std::size_t size : sizes)
                QCOMPARE(size, std::size_t(text.size()) + 1);
            QVERIFY(capacity == 0 || text.left(capacity - 1) == buffer.constData());
            QCOMPARE(buffer.mid(capacity), QByteArray(64 - capacity, '<'));
        }
    }
}

// What is set comes back as it is, from any capacity that is enough; nothing is written behind it.
void ValuesTest::dataFitWhole()
{
    const std::int32_t bitmap = VT_WINDOW_BITMAP_LOCK;
    const QVector<std::int32_t> lock = {5, 3, VT_FORMAT_RGB8};
    const struct
    {
        std::int32_t number;
        QVector<std::int32_t> good, bad;
    } rows[] = {{VT_WINDOW_GEOMETRY, {41, 52, 640, 480}, {1, 2, 0, 100}},
                {VT_WINDOW_FRAME_GEOMETRY, {44, 55, 700, 500}, {1, 2, 100, -1}},
                {VT_WINDOW_IMAGE_OFFSET, {0, 0}, {}},
                {VT_WINDOW_TRANSIENT_PARENT, QVector<std::int32_t>(sizeof(void*) / 4), {}},
                {bitmap, lock, {0, 3, VT_FORMAT_MONO8}},
                {bitmap, lock, {5, 0, VT_FORMAT_MONO8}},
                {bitmap, lock, {5, 3, VT_FORMAT_MONO16}},
                {bitmap, lock, {-1, 3, VT_FORMAT_MONO8}}};
    for (const auto& [number, good, bad] : rows) {
        const auto whole = static_cast<std::size_t>(good.size()) * 4;
        QCOMPARE(VTSetPropData(m_window, number, good.constData(), whole), VT_OK + 0);
        if (!bad.isEmpty())
            QCOMPARE(VTSetPropData(m_window, number, bad.constData(), whole), VT_ERROR_OUT_OF_RANGE + 0);
        for (std::size_t capacity = 0; capacity <= whole + 1; ++capacity) {
            const bool isEnough = capacity >= whole;
            QByteArray buffer(64, '<'), wanted = buffer;
            std::size_t size = capacity;
            QVERIFY(VTGetPropData(m_window, number, nullptr, &size) == VT_OK && size == whole);
            size = capacity;
            QCOMPARE(VTGetPropData(m_window, number, buffer.data(), &size),
                     isEnough ? VT_OK : VT_ERROR_BUFFER_TOO_SMALL);
            if (isEnough)
                std::memcpy(wanted.data(), good.constData(), whole);
            QVERIFY(size == whole && buffer == wanted);
            if (capacity > 0 && capacity != whole)
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

// Features ------------------------------------------------------------------------------------------------------------

void ValuesTest::everyFeature()
{
    // The feature that each VT_SOURCE_HAS_* tells of.
    constexpr int told[] = {100, 300, 101, 102, 103, 104, 105, 200, 106, 107, 108, 600, 700, 701, 702, 703};
    const std::function<std::int32_t(VTWindowHandle, std::int32_t, bool)> set[] = {
        setter(VTSetFeatureCommand), setter(VTSetFeatureCount),     setter(VTSetFeatureName),
        setter(VTSetFeatureQuery),   setter(VTSetFeatureText),      setter(VTSetFeatureDouble),
        setter(VTSetFeatureSize),    setter(VTSetFeatureNextFrame), setter(VTSetFeatureReleased),
        setter(VTSetFeatureNotify),  setter(VTSetFeatureLoad),      setter(VTSetFeatureSave)};
    for (const Range& range : features) {
        for (std::int32_t number = range.first; number <= range.last; ++number) {
            for (const bool on : {true, false}) {
                QCOMPARE(set[number / 100 - 1](m_window, number, on), VT_OK + 0);
                QCOMPARE(set[number / 100 % 12](m_window, number, !on), VT_ERROR_FEATURE_SIGNATURE + 0);
                bool isSet = !on;
                QVERIFY(VTIsFeatureSet(m_window, number, &isSet) == VT_OK && isSet == on);
                for (std::int32_t i = 0; i < 16; ++i) {
                    VTGetPropBool(m_window, VT_SOURCE_HAS_SETUP + i, &isSet);
                    QCOMPARE(isSet, on && told[i] == number);
                }
            }
        }
    }
}

QTEST_APPLESS_MAIN(ValuesTest)

#include "ValuesTest.moc"
