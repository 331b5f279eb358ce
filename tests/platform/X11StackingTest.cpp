// SPDX-License-Identifier: MIT
// Tests that the window manager keeps a display window above a window that another client of the X server owns.
#include <Vistrel/Window.h>

#include <QtTest/QtTest>

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

using namespace Vistrel;

namespace {

template <typename Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

// A host's own window, on a connection of its own.
class ForeignWindow
{
public:
    ForeignWindow()
    {
        const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        root = screen->root;
        const std::uint32_t color = screen->white_pixel;
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, number, root, 100, 100, 300, 200, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, XCB_CW_BACK_PIXEL, &color);
        xcb_map_window(connection, number);
        xcb_flush(connection);
    }
    ~ForeignWindow() { xcb_disconnect(connection); }
    ForeignWindow(const ForeignWindow&) = delete;
    ForeignWindow& operator=(const ForeignWindow&) = delete;

    HWND handle() const { return reinterpret_cast<HWND>(std::uintptr_t(number)); }

    // As a task bar does: what a window asks for itself, the window manager may refuse.
    void raise(xcb_window_t window) const
    {
        const char name[] = "_NET_ACTIVE_WINDOW";
        const Owned<xcb_intern_atom_reply_t> atom(
            xcb_intern_atom_reply(connection, xcb_intern_atom(connection, false, sizeof name - 1, name), nullptr),
            &std::free);
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = atom->atom;
        message.data.data32[0] = 2; // from a pager
        xcb_send_event(connection, false, root,
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&message));
        xcb_flush(connection);
    }

    // The place of a window's frame among those of the screen, from below; -1 when it is not there.
    int place(xcb_window_t window) const
    {
        while (true) {
            const Owned<xcb_query_tree_reply_t> tree(
                xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr), &std::free);
            if (!tree)
                return -1;
            if (tree->parent == root)
                break;
            window = tree->parent;
        }
        const Owned<xcb_query_tree_reply_t> all(
            xcb_query_tree_reply(connection, xcb_query_tree(connection, root), nullptr), &std::free);
        const xcb_window_t* const frames = xcb_query_tree_children(all.get());
        for (int i = 0; i < all->children_len; ++i) {
            if (frames[i] == window)
                return i;
        }
        return -1;
    }

    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    const xcb_window_t number = xcb_generate_id(connection);
    xcb_window_t root = 0;
};

} // namespace

class X11StackingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void staysAboveTheParent();
};

void X11StackingTest::staysAboveTheParent()
{
    ForeignWindow parent;
    Window child{ScopedAcquisitionInterface()};
    const auto number = xcb_window_t(reinterpret_cast<std::uintptr_t>(child.native_handle()));
    child.setTransientParent(reinterpret_cast<HWND>(std::uintptr_t(0x7FFFFFFF))); // no window
    QVERIFY(!child.transientParent());
    child.setTransientParent(child.native_handle());
    QVERIFY(!child.transientParent());
    child.setTransientParent(parent.handle());
    QCOMPARE(child.transientParent(), parent.handle());
    // A third window tells that the parent has been raised.
    Window other{ScopedAcquisitionInterface()};
    other.show();
    QVERIFY(QTest::qWaitForWindowExposed(other.qt_handle()));
    const auto otherNumber = xcb_window_t(reinterpret_cast<std::uintptr_t>(other.native_handle()));
    const auto raiseOther = [&] {
        parent.raise(otherNumber);
        QTRY_VERIFY(parent.place(otherNumber) > parent.place(parent.number));
    };
    const auto raiseParent = [&] {
        parent.raise(parent.number);
        QTRY_VERIFY(parent.place(otherNumber) < parent.place(parent.number));
    };
    const auto isAbove = [&] { return parent.place(number) > parent.place(parent.number); };
    for (int time = 0; time < 2; ++time) { // the window manager forgets a hidden window
        raiseOther();
        child.hide();
        child.show();
        raiseParent();
        QTRY_VERIFY(isAbove());
    }
    other.setTransientParent(child.native_handle());
    child.setTransientParent(other.native_handle()); // each would be above the other
    QVERIFY(child.transientParent() != other.native_handle());
    other.setTransientParent(nullptr);
    child.setTransientParent(nullptr);
    raiseOther();
    raiseParent();
    QTRY_VERIFY(!isAbove());
}

QTEST_MAIN(X11StackingTest)
#include "X11StackingTest.moc"
