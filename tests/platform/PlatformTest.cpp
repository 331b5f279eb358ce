// SPDX-License-Identifier: MIT
// Tests what the library asks of Windows: icons, stacking above windows of other threads. Under Wine the windows are on
// its own desktop: what an X server's window manager does to them is no matter of the library.
#include "platform/IconHandle.h"
#include "platform/TransientParents.h"

#include <Vistrel/Window.h>

#include <QtGui/QImage>
#include <QtTest/QtTest>
#include <QtWidgets/QAction>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include <windows.h>

using namespace Vistrel;

namespace {

HWND createWindow(int x = 0, int y = 0)
{
    const HWND window = CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW | SS_NOTIFY, x, y, 200, 150, nullptr,
                                        nullptr, GetModuleHandleW(nullptr), nullptr);
    ShowWindow(window, SW_SHOWNOACTIVATE);
    return window;
}

void raise(HWND window, HWND place = HWND_TOP)
{
    SetWindowPos(window, place, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

// A window of another thread, as a host has it whose user interface is not the toolkit's.
class ForeignWindow
{
public:
    ForeignWindow()
    {
        std::atomic<HWND> created{nullptr};
        m_thread = std::thread([&] {
            m_threadId = GetCurrentThreadId();
            created = createWindow();
            MSG message;
            while (GetMessageW(&message, nullptr, 0, 0) > 0)
                DispatchMessageW(&message);
        });
        while (!created)
            std::this_thread::yield();
        handle = created;
    }
    // The thread ends with its window still there, as threads do.
    ~ForeignWindow()
    {
        PostThreadMessageW(m_threadId, WM_QUIT, 0, 0);
        m_thread.join();
    }

    HWND handle = nullptr;

private:
    std::thread m_thread;
    DWORD m_threadId = 0;
};

// What is seen directly above a window, nearest first.
std::vector<HWND> above(HWND window, std::size_t count)
{
    std::vector<HWND> found;
    while (found.size() < count && (window = GetWindow(window, GW_HWNDPREV)) != nullptr) {
        if (IsWindowVisible(window))
            found.push_back(window);
    }
    return found;
}

void click(int x, int y)
{
    SetCursorPos(x, y);
    INPUT button[2] = {};
    button[0].type = button[1].type = INPUT_MOUSE;
    button[0].mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
    button[1].mi.dwFlags = MOUSEEVENTF_LEFTUP;
    SendInput(2, button, sizeof(INPUT));
}

bool isTopmost(HWND window)
{
    return (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
}

bool isAbove(HWND upper, HWND lower)
{
    const std::vector<HWND> all = above(lower, 1000);
    return std::find(all.begin(), all.end(), upper) != all.end();
}

} // namespace

class PlatformTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void iconKeepsItsPixels();
    void childrenStayDirectlyAboveTheParent();
    void aClickedHostStaysBelow();
    void registrationsEnd();
    void displayWindowKeepsItsParent();
};

void PlatformTest::iconKeepsItsPixels()
{
    std::vector<quint32> pixels(16 * 16, 0xFF2040C0);
    pixels[0] = 0;             // clear
    pixels[15] = 0xFFFF0000;   // red, at the top right
    pixels[240] = 0x80008000u; // half a green
    std::vector<quint8> mask(16 * 2, 0);
    ICONINFO information = {TRUE, 0, 0, CreateBitmap(16, 16, 1, 1, mask.data()),
                            CreateBitmap(16, 16, 1, 32, pixels.data())};
    const HICON icon = CreateIconIndirect(&information);
    QVERIFY(icon);

    const QImage image = pixmapFromIcon(icon).toImage().convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(image.size(), QSize(16, 16));
    QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
    QCOMPARE(image.pixel(15, 0), 0xFFFF0000);
    QCOMPARE(image.pixel(8, 8), 0xFF2040C0);
    QCOMPARE(qAlpha(image.pixel(0, 15)), 0x80);

    DestroyIcon(icon);
    DeleteObject(information.hbmMask);
    DeleteObject(information.hbmColor);
    QVERIFY(pixmapFromIcon(icon).isNull());
    QVERIFY(pixmapFromIcon(nullptr).isNull());
}

void PlatformTest::childrenStayDirectlyAboveTheParent()
{
    const ForeignWindow parent;
    const HWND first = createWindow();
    const HWND other = createWindow();
    const HWND second = createWindow();
    QVERIFY(addTransientChild(parent.handle, first));
    QVERIFY(addTransientChild(parent.handle, second));
    QVERIFY(addTransientChild(second, other));
    QVERIFY(!addTransientChild(other, parent.handle)); // a circle would go round for ever
    removeTransientChild(other);

    raise(parent.handle);
    QTRY_COMPARE(above(parent.handle, 2), (std::vector<HWND>{first, second}));
    // What comes between goes above both, and their order stays.
    raise(other);
    raise(parent.handle);
    QTRY_COMPARE(above(parent.handle, 2), (std::vector<HWND>{first, second}));

    // A child follows its parent to the topmost windows and back; one that is there by itself stays.
    const HWND topmost = createWindow();
    raise(topmost, HWND_TOPMOST);
    QVERIFY(addTransientChild(parent.handle, topmost));
    raise(parent.handle, HWND_TOPMOST);
    QTRY_COMPARE(above(parent.handle, 3), (std::vector<HWND>{first, second, topmost}));
    raise(parent.handle, HWND_NOTOPMOST);
    QTRY_VERIFY(!isTopmost(first) && !isTopmost(second));
    QTRY_COMPARE(above(parent.handle, 2), (std::vector<HWND>{first, second}));
    QVERIFY(isTopmost(topmost) && isAbove(topmost, parent.handle));

    removeTransientChild(first);
    raise(parent.handle);
    QTRY_COMPARE(above(parent.handle, 1), std::vector<HWND>{second});
    QVERIFY(!isAbove(first, parent.handle));
    removeTransientParents();
    for (const HWND window : {first, other, second, topmost})
        DestroyWindow(window);
}

void PlatformTest::aClickedHostStaysBelow()
{
    const ForeignWindow parent;
    const HWND child = createWindow(80, 60);
    const HWND other = createWindow(120, 20);
    QVERIFY(addTransientChild(parent.handle, child));
    raise(child);
    raise(other);
    // Wine raises the host a while after it has activated it, and tells nobody. On a busy machine it loses clicks.
    const auto isRaised = [&] { return click(40, 100), !isAbove(other, parent.handle); };
    QTRY_VERIFY(isRaised());
    QTRY_COMPARE(above(parent.handle, 2), std::vector<HWND>{child});
    removeTransientParents();
    DestroyWindow(child);
    DestroyWindow(other);
}

void PlatformTest::registrationsEnd()
{
    const HWND child = createWindow();
    HWND gone = nullptr;
    {
        const ForeignWindow parent;
        gone = parent.handle;
        QVERIFY(!addTransientChild(parent.handle, parent.handle));
        QVERIFY(!addTransientChild(parent.handle, nullptr));
        QVERIFY(!addTransientChild(nullptr, child));
        QVERIFY(!addTransientChild(GetDesktopWindow(), child)); // another process owns it
        QVERIFY(addTransientChild(parent.handle, child));
        QVERIFY(isTransientChild(child));
    }
    QVERIFY(!isTransientChild(child));
    QVERIFY(!addTransientChild(gone, child));
    DestroyWindow(child);
}

void PlatformTest::displayWindowKeepsItsParent()
{
    const ForeignWindow first;
    const ForeignWindow second;
    Window window{ScopedAcquisitionInterface()};
    window.show();
    window.setTransientParent(window.native_handle());
    QVERIFY(!window.transientParent());
    window.setTransientParent(first.handle);
    // Of two the last, named by any window in it.
    const HWND panel = CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 9, 9, second.handle, nullptr,
                                       GetModuleHandleW(nullptr), nullptr);
    window.setTransientParent(panel);
    QCOMPARE(window.transientParent(), panel);
    raise(first.handle);
    raise(second.handle);
    QTRY_COMPARE(above(second.handle, 1), std::vector<HWND>{window.native_handle()});
    raise(first.handle);
    QCoreApplication::processEvents();
    QVERIFY(!isAbove(window.native_handle(), first.handle));

    window.setCloseable(false); // which may take another native window
    QCoreApplication::processEvents();
    raise(second.handle);
    QTRY_COMPARE(above(second.handle, 1), std::vector<HWND>{window.native_handle()});
    DestroyWindow(panel);
    QVERIFY(!window.transientParent());

    window.setApplicationAbout("Mill", "2", LoadIconW(nullptr, MAKEINTRESOURCEW(32512)), nullptr, nullptr);
    QVERIFY(window.qt_handle()->findChild<QAction*>(QStringLiteral("actionAbout_Application"))->isVisible());
}

QTEST_MAIN(PlatformTest)
#include "PlatformTest.moc"
