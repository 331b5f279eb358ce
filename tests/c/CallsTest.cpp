// SPDX-License-Identifier: MIT
// Tests what the C functions refuse: every fault that their comments name, by itself and together with the next one,
// with the code that they answer, and that nothing was written.
#include "c/HostCamera.h"

#include <array>
#include <cmath>

namespace {

enum Owner { OfApp, OfWindow, OfAction, OfAny };
enum Trait {
    AnyThread = 1,  // may be called on every thread
    EvenClosed = 2, // does not ask whether the window has been closed
    Ends = 4        // is not called where it would succeed: it ends what the others need, or waits for a user
};

struct Row
{
    Owner owner;
    int traits;
    std::int32_t code; // with good handles
    const char* name;
    std::int32_t (*call)(Handle);
};

// What calls write to, with a byte that nobody writes.
std::array<unsigned char, 1000> memory;
const Handle out{memory.data()};
const Handle none{nullptr};
std::size_t outSize;

#define E(code) VT_ERROR_##code
#define CALL(expression) #expression, [](Handle h) -> std::int32_t { return expression; }

std::int32_t ask(Handle window, std::int32_t kind, std::uint32_t buttons, std::uint32_t first)
{
    return VTMessageBoxDialogShow(window, kind, "title", "text", buttons, first, out);
}

std::int32_t addAction(Handle window, std::int32_t place, const char* menu, const char* text, Handle result = out)
{
    return VTWindowAddAction(window, place, menu, text, nullptr, nullptr, nullptr, result);
}

std::vector<Row> allRows()
{
    return {
        {OfApp, Ends, VT_OK, CALL(VTAppDestroy(h))},
        {OfApp, Ends, VT_OK, CALL(VTAppExec(h, out))},
        {OfApp, AnyThread, VT_OK, CALL(VTAppExit(h, 0))},
        {OfApp, 0, VT_OK, CALL(VTAppAddIdleMethod(h, nullptr, nullptr))},
        {OfApp, 0, VT_OK, CALL(VTWindowCreate(h, out, nullptr))},
        {OfApp, 0, E(NULL_RESULT), CALL(VTWindowCreate(h, none, nullptr))},
        {OfWindow, EvenClosed | Ends, VT_OK, CALL(VTWindowDestroy(h))},
        {OfWindow, 0, VT_OK, CALL(VTWindowGetNativeHandle(h, out))},
        {OfWindow, 0, E(NULL_POINTER), CALL(VTWindowGetNativeHandle(h, none))},
        {OfWindow, 0, VT_OK, CALL(VTWindowGetUserData(h, out))},
        {OfWindow, 0, E(NULL_POINTER), CALL(VTWindowGetUserData(h, none))},
        {OfWindow, AnyThread, VT_OK, CALL(VTWindowSetNextFrame(h, nullptr))},
        {OfWindow, 0, VT_OK, CALL(VTWindowAddSetupMode(h, "New", ""))},
        {OfWindow, 0, E(SETUP_MODE), CALL(VTWindowAddSetupMode(h, "Twice", ""))},
        {OfWindow, 0, E(SETUP_MODE), CALL(VTWindowAddSetupMode(h, nullptr, ""))},
        {OfWindow, 0, VT_OK, CALL(VTWindowClearSetupModes(h))},
        {OfWindow, 0, VT_OK, CALL(VTWindowAddFileFormat(h, "new", nullptr, nullptr))},
        {OfWindow, 0, E(FILE_FORMAT), CALL(VTWindowAddFileFormat(h, nullptr, nullptr, nullptr))},
        {OfWindow, 0, VT_OK, CALL(VTWindowClearFileFormats(h))},
        {OfWindow, 0, VT_OK, CALL(addAction(h, VT_PLACE_MENU, "Menu", "Text"))},
        {OfWindow, 0, VT_OK, CALL(addAction(h, VT_PLACE_INFORMATION, nullptr, "Text"))},
        {OfWindow, 0, E(NULL_RESULT), CALL(addAction(h, 0, "Menu", "Text", none))},
        {OfWindow, 0, E(ACTION_ARGUMENT), CALL(addAction(h, 0, "Menu", "Text"))},
        {OfWindow, 0, E(ACTION_ARGUMENT), CALL(addAction(h, 4, "Menu", "Text"))},
        {OfWindow, 0, E(ACTION_ARGUMENT), CALL(addAction(h, VT_PLACE_MENU, "", "Text"))},
        {OfWindow, 0, E(ACTION_ARGUMENT), CALL(addAction(h, VT_PLACE_TOOL_BAR, "Menu", nullptr))},
        {OfAction, EvenClosed | Ends, VT_OK, CALL(VTActionDestroy(h))},
        {OfAction, 0, VT_OK, CALL(VTActionGetUserData(h, out))},
        {OfAction, 0, E(NULL_POINTER), CALL(VTActionGetUserData(h, none))},
        {OfWindow, AnyThread | Ends, VT_OK, CALL(ask(h, VT_MESSAGE_QUESTION, VT_BUTTON_YES, 0))},
        {OfWindow, AnyThread, E(NULL_POINTER), CALL(VTMessageBoxDialogShow(h, 0, nullptr, "", 0, 0, out))},
        {OfWindow, AnyThread, E(NULL_POINTER), CALL(VTMessageBoxDialogShow(h, 0, "", nullptr, 0, 0, out))},
        {OfWindow, AnyThread, E(NULL_POINTER), CALL(VTMessageBoxDialogShow(h, 0, "", "", 0, 0, none))},
        {OfWindow, AnyThread, E(MESSAGE_KIND), CALL(ask(h, 0, 0x40000, 0))},
        {OfWindow, AnyThread, E(MESSAGE_KIND), CALL(ask(h, 5, VT_BUTTON_YES, 0))},
        {OfWindow, AnyThread, E(MESSAGE_BUTTONS), CALL(ask(h, VT_MESSAGE_WARNING, 0x40000, 0))},
        {OfWindow, AnyThread, E(MESSAGE_BUTTONS), CALL(ask(h, VT_MESSAGE_WARNING, 0, VT_BUTTON_YES))},
        {OfWindow, AnyThread, E(MESSAGE_BUTTONS), CALL(ask(h, VT_MESSAGE_WARNING, 0xC000, 0xC000))},
        {OfWindow, 0, VT_OK, CALL(VTSetFeatureCommand(h, VT_FEATURE_SETUP, nullptr))},
        {OfWindow, 0, E(UNKNOWN_FEATURE), CALL(VTSetFeatureCommand(h, 155, nullptr))},
        {OfWindow, 0, E(FEATURE_SIGNATURE), CALL(VTSetFeatureNotify(h, VT_FEATURE_SETUP, nullptr))},
        {OfWindow, 0, VT_OK, CALL(VTIsFeatureSet(h, VT_FEATURE_SETUP, out))},
        {OfWindow, 0, E(NULL_POINTER), CALL(VTIsFeatureSet(h, VT_FEATURE_SETUP, none))},
        {OfWindow, 0, E(UNKNOWN_FEATURE), CALL(VTIsFeatureSet(h, 155, out))},
        {OfWindow, AnyThread, VT_OK, CALL(VTSendSignal(h, VT_SIGNAL_GET_FRAME_NOW))},
        {OfWindow, AnyThread, E(UNKNOWN_SIGNAL), CALL(VTSendSignal(h, 0))},
        {OfWindow, AnyThread, E(UNKNOWN_SIGNAL), CALL(VTSendSignal(h, 4))},
        {OfWindow, 0, VT_OK, CALL(VTGetPropInt32(h, VT_WINDOW_REFRESH_RATE, out))},
        {OfWindow, 0, VT_OK, CALL(VTGetPropDouble(h, VT_WINDOW_ZOOM, out))},
        {OfWindow, 0, VT_OK, CALL(VTGetPropBool(h, VT_WINDOW_ZOOM_TO_FIT, out))},
        {OfWindow, 0, VT_OK, CALL(VTGetPropCStr(h, VT_WINDOW_TITLE, out, &(outSize = 99)))},
        {OfWindow, 0, VT_OK, CALL(VTGetPropData(h, VT_WINDOW_GEOMETRY, out, &(outSize = 99)))},
        {OfWindow, 0, VT_OK, CALL(VTSetPropInt32(h, VT_WINDOW_COLOR_TABLE, VT_COLOR_TABLE_CONTOURS))},
        {OfWindow, 0, VT_OK, CALL(VTSetPropDouble(h, VT_WINDOW_ZOOM, 1))},
        {OfWindow, 0, VT_OK, CALL(VTSetPropBool(h, VT_WINDOW_ZOOM_TO_FIT, true))},
        {OfWindow, 0, VT_OK, CALL(VTSetPropCStr(h, VT_WINDOW_TITLE, ""))},
        {OfWindow, 0, VT_OK, CALL(VTSetPropData(h, VT_WINDOW_BITMAP_LOCK, nullptr, 0))},
        {OfWindow, 0, E(NULL_POINTER), CALL(VTGetPropInt32(h, VT_WINDOW_REFRESH_RATE, none))},
        {OfWindow, 0, E(NULL_POINTER), CALL(VTGetPropCStr(h, VT_WINDOW_TITLE, out, none))},
        {OfWindow, 0, E(NULL_POINTER), CALL(VTGetPropData(h, VT_WINDOW_GEOMETRY, out, none))},
        {OfWindow, 0, E(NULL_POINTER), CALL(VTSetPropCStr(h, VT_WINDOW_TITLE, none))},
        {OfWindow, 0, E(NULL_POINTER), CALL(VTSetPropData(h, VT_WINDOW_BITMAP, none, 1))},
        {OfAny, 0, E(UNKNOWN_PROPERTY), CALL(VTGetPropInt32(h, 0, out))},
        {OfAny, 0, E(UNKNOWN_PROPERTY), CALL(VTSetPropBool(h, INT32_MAX, true))},
        {OfWindow, 0, E(PROPERTY_TYPE), CALL(VTGetPropCStr(h, VT_WINDOW_ZOOM, out, &outSize))},
        {OfWindow, 0, E(PROPERTY_TYPE), CALL(VTSetPropDouble(h, VT_WINDOW_REFRESH_RATE, 1))},
        {OfWindow, 0, E(READ_ONLY), CALL(VTSetPropInt32(h, VT_SOURCE_SETUP_MODE_COUNT, -1))},
        {OfWindow, 0, E(READ_ONLY), CALL(VTSetPropBool(h, VT_SOURCE_HAS_SETUP, true))},
        {OfWindow, 0, E(READ_ONLY), CALL(VTSetPropData(h, VT_WINDOW_BITMAP, out, 1))},
        {OfWindow, 0, E(WRITE_ONLY), CALL(VTGetPropBool(h, VT_WINDOW_RAISE, out))},
        {OfWindow, 0, E(OUT_OF_RANGE), CALL(VTSetPropInt32(h, VT_WINDOW_REFRESH_RATE, 0))},
        {OfWindow, 0, E(OUT_OF_RANGE), CALL(VTSetPropInt32(h, VT_WINDOW_COLOR_TABLE, VT_COLOR_TABLE_CONTOURS + 1))},
        {OfWindow, 0, E(OUT_OF_RANGE), CALL(VTSetPropInt32(h, VT_WINDOW_SHRINK_MODE, 3))},
        {OfWindow, 0, E(OUT_OF_RANGE), CALL(VTSetPropInt32(h, VT_WINDOW_BAYER_FILTER_OVERRIDE, 1))},
        {OfWindow, 0, E(OUT_OF_RANGE), CALL(VTSetPropInt32(h, VT_WINDOW_SHOW_STATE, -1))},
        {OfWindow, 0, E(OUT_OF_RANGE),
         CALL(VTSetPropInt32(h, VT_WINDOW_ACQUISITION_STATE, VT_ACQUISITION_RUNNING + 1))},
        {OfWindow, 0, E(OUT_OF_RANGE), CALL(VTSetPropInt32(h, VT_SOURCE_START_FIXED_MAX, 0))},
        {OfWindow, 0, E(OUT_OF_RANGE), CALL(VTSetPropDouble(h, VT_WINDOW_ZOOM, 0))},
        {OfWindow, 0, E(OUT_OF_RANGE), CALL(VTSetPropDouble(h, VT_WINDOW_ZOOM, std::nan("")))},
        {OfWindow, 0, E(OUT_OF_RANGE), CALL(VTSetPropData(h, VT_WINDOW_BITMAP_LOCK, out, 1))},
        {OfWindow, 0, E(PROPERTY_REFUSED), CALL(VTSetPropCStr(h, VT_WINDOW_GEOMETRY_TEXT, "zz"))},
        {OfWindow, 0, E(BUFFER_TOO_SMALL), CALL(VTGetPropData(h, VT_WINDOW_GEOMETRY, out, &(outSize = 15)))},
    };
}

/// One handle of each kind, and some that stand for nothing any more.
struct World
{
    World()
    {
        VTSetPropBool(app, VT_APP_QUIT_ON_LAST_WINDOW_CLOSED, false);
        VTWindowAddSetupMode(camera.window, "Twice", "");
        live = {app, camera.window, camera.addAction()};
        dead = {&dead, gone.window, gone.addAction(), camera.addAction(), closed.addAction()};
        VTActionDestroy(Handle{dead[3]});
        VTWindowDestroy(gone.window);
        closed.view->close();
        while (closed.view)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    std::vector<void*> wrongFor(Owner owner) const
    {
        std::vector<void*> wrong = dead;
        for (const Owner other : {OfApp, OfWindow, OfAction}) {
            if (other != owner && owner != OfAny)
                wrong.push_back(live[other]);
        }
        return wrong;
    }

    Camera camera, closed, gone;
    std::vector<void*> live, dead;
};

} // namespace

class CallsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { VTAppDestroy(app); }
    void faultsAreToldInOrder();
    void applicationFaults();

private:
    void expect(std::int32_t code, const Row& row, void* handle);

    QStringList m_complaints;
};

void CallsTest::expect(std::int32_t code, const Row& row, void* handle)
{
    memory.fill(0xa5);
    const std::int32_t answer = row.call(Handle{handle});
    const bool isUntouched = std::count(memory.begin(), memory.end(), 0xa5) == std::ptrdiff_t(memory.size());
    if (answer != code || (code != VT_OK && !isUntouched))
        m_complaints += QStringLiteral("%1: %2 instead of %3").arg(QLatin1String(row.name)).arg(answer).arg(code) +
                        (isUntouched ? QString() : QStringLiteral(", and writes"));
}

void CallsTest::faultsAreToldInOrder()
{
    const std::vector<Row> rows = allRows();
    const std::vector<void*> stale = World().live;
    for (const Row& row : rows) { // the application has ended
        expect(VT_ERROR_NO_APPLICATION, row, nullptr);
        expect(VT_ERROR_NO_APPLICATION, row, stale[OfWindow]);
    }
    QCOMPARE(VTAppGetGlobal(nullptr), VT_ERROR_NO_APPLICATION + 0);

    const World world;
    for (const Row& row : rows) {
        const bool isNull = row.code == VT_ERROR_NULL_POINTER || row.code == VT_ERROR_NULL_RESULT;
        const bool isAfterClosed = row.code == VT_OK || row.code == VT_ERROR_SETUP_MODE ||
                                   row.code == VT_ERROR_FILE_FORMAT || row.code == VT_ERROR_PROPERTY_REFUSED ||
                                   row.code == VT_ERROR_BUFFER_TOO_SMALL;
        const std::int32_t wrongCode = isNull && row.owner != OfApp ? row.code : VT_ERROR_WRONG_HANDLE;
        const std::vector<void*> wrong = world.wrongFor(row.owner);
        void* const good = world.live[row.owner % OfAny];
        expect(row.owner == OfApp ? VT_ERROR_WRONG_HANDLE : VT_ERROR_NULL_HANDLE, row, nullptr);
        for (void* const handle : wrong)
            expect(wrongCode, row, handle);
        if (row.code != VT_OK)
            expect(row.code, row, good);
        if (row.owner == OfWindow && !(row.traits & EvenClosed))
            expect(isAfterClosed ? VT_ERROR_WINDOW_CLOSED : row.code, row, world.closed.window);
        std::thread([&] {
            expect(wrongCode, row, wrong[0]);
            if (!(row.traits & AnyThread))
                expect(isNull ? row.code : VT_ERROR_WRONG_THREAD, row, good);
            else if (row.code != VT_OK)
                expect(row.code, row, good);
            if (row.owner == OfWindow && !(row.traits & (AnyThread | EvenClosed)))
                expect(isNull ? row.code : VT_ERROR_WRONG_THREAD, row, world.closed.window);
        }).join();
    }
    for (const Row& row : rows) {
        if (row.code == VT_OK && !(row.traits & Ends))
            expect(VT_OK, row, world.live[row.owner]);
        const char* const text = VTResultText(row.code);
        QVERIFY(*text && qstrcmp(text, VTResultText(-1)) != 0);
    }
    QVERIFY(VTWindowIsGood(world.camera.window) && !VTWindowIsGood(world.closed.window));
    QVERIFY(!VTWindowIsGood(Handle{app}) && !VTWindowIsGood(nullptr));
    QCOMPARE(m_complaints, QStringList());
}

void CallsTest::applicationFaults()
{
    VTAppHandle result = nullptr;
    void* user = nullptr;
    QCOMPARE(VTAppCreate(-1, nullptr, nullptr), VT_ERROR_NULL_POINTER + 0);
    QCOMPARE(VTAppCreate(-1, commandLine, nullptr), VT_ERROR_NULL_RESULT + 0);
    QCOMPARE(VTAppCreate(-1, commandLine, &result), VT_ERROR_APPLICATION_FAILED + 0);
    QVERIFY(!result);
    QCOMPARE(VTAppCreate(1, commandLine, &app), VT_OK + 0);
    QCOMPARE(VTAppCreate(-1, nullptr, nullptr), VT_ERROR_APPLICATION_EXISTS + 0);
    QCOMPARE(VTAppGetGlobal(nullptr), VT_ERROR_NULL_RESULT + 0);
    QVERIFY(VTAppGetGlobal(&result) == VT_OK && result == app);

    Camera camera;
    QVERIFY(VTWindowGetUserData(camera.window, &user) == VT_OK && user == &camera);
    QVERIFY(VTActionGetUserData(camera.addAction(), &user) == VT_OK && user == &camera);
    int busyCalls = 0;
    const Camera::Act isBusy = [&] {
        busyCalls += VTAppDestroy(app) == VT_ERROR_APPLICATION_BUSY;
        busyCalls += VTAppExec(app, nullptr) == VT_ERROR_APPLICATION_BUSY;
        return true;
    };
    QTimer::singleShot(0, qApp, [&] { VTAppExit(app, isBusy() ? 7 : 0); });
    int exitCode = 0;
    QVERIFY(VTAppExec(app, &exitCode) == VT_OK && exitCode == 7 && busyCalls == 2);
}

QTEST_APPLESS_MAIN(CallsTest)

#include "CallsTest.moc"
